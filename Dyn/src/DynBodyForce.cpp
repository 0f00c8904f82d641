#include <Dyn/DynBodyForce.h>

#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>
#include <Kit/KitMessage.h>
#include <Kit/KitPool.h>
#include <Kit/KitVector.h>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <new>

namespace {

std::atomic<std::uint64_t> sLastForceSerial{0};

void call(DynBodyForceCB callback, DynBodyForce* force) {
    if (callback)
        callback(force);
}

// The loads of the force's bodies that sleep, of which none can go during a step.
void saveRestingLoads(const DynBodyForce& force, DynBuffer<DynRestingLoad>& loads) {
    loads.clear();
    for (int i = 0; i < force.nBodies; ++i) {
        DynBody* body = force.b[i];
        if (!body || body->world != force.w || DynBodyIsEnabled(body))
            continue;
        DynRestingLoad load{};
        load.body = body;
        load.impulseAdded = body->impulseAdded;
        KitVector3Copy(load.force, body->kiroBody.force);
        KitVector3Copy(load.torque, body->kiroBody.torque);
        KitVector3Copy(load.impulseLinear, body->impulseLinear);
        KitVector3Copy(load.impulseAngular, body->impulseAngular);
        loads.push_back(load);
    }
}

void restoreRestingLoads(const DynBuffer<DynRestingLoad>& loads) {
    for (int i = 0; i < loads.size(); ++i) {
        const DynRestingLoad& load = loads[i];
        DynBody* body = load.body;
        if (DynBodyIsEnabled(body))
            continue;
        KitVector3Copy(body->kiroBody.force, load.force);
        KitVector3Copy(body->kiroBody.torque, load.torque);
        KitVector3Copy(body->impulseLinear, load.impulseLinear);
        KitVector3Copy(body->impulseAngular, load.impulseAngular);
        body->impulseAdded = load.impulseAdded;
    }
}

// Nothing takes the load off a body that sleeps: what is added in each step would pile up.
void updateInStep(DynWorld* world, DynBodyForce* force) {
    DynBuffer<DynRestingLoad>& loads = world->scratch->restingLoads;
    saveRestingLoads(*force, loads);
    call(force->update, force);
    restoreRestingLoads(loads);
}

// The list of enabled forces is sorted by serial. Answers the place of the first one after serial.
DynBodyForce** placeAfter(DynWorld* world, std::uint64_t serial) {
    DynBodyForce** place = &world->enabledForceHead;
    while (*place && (*place)->serial <= serial)
        place = &(*place)->enabledNext;
    return place;
}

void linkEnabled(DynBodyForce* force) {
    DynBodyForce** place = placeAfter(force->w, force->serial);
    force->enabledNext = *place;
    force->enabledTome = place;
    *place = force;
    if (force->enabledNext)
        force->enabledNext->enabledTome = &force->enabledNext;
    ++force->w->forceListVersion;
}

void unlinkEnabled(DynBodyForce* force) {
    *force->enabledTome = force->enabledNext;
    if (force->enabledNext)
        force->enabledNext->enabledTome = force->enabledTome;
    force->enabledNext = nullptr;
    force->enabledTome = nullptr;
    ++force->w->forceListVersion;
}

void useDefaultList(DynBodyForce* force) {
    force->b = force->defaultBodyList;
    force->nBodies = DynBodyForce::kDefaultBodies;
}

} // namespace

DynBodyForce* DynBodyForceCreate(DynWorld* world) {
    void* memory = world && world->bodyForcePool ? KitPoolGetStruct(world->bodyForcePool) : nullptr;
    if (!memory)
        return nullptr;
    auto* force = new (memory) DynBodyForce{};
    force->serial = ++sLastForceSerial;
    force->w = world;
    useDefaultList(force);
    force->next = world->forceHead;
    force->tome = &world->forceHead;
    if (force->next)
        force->next->tome = &force->next;
    world->forceHead = force;
    return force;
}

void DynBodyForceDestroy(DynBodyForce* force) {
    if (!force)
        return;
    DynBodyForceDisable(force);
    call(force->destroy, force);
    *force->tome = force->next;
    if (force->next)
        force->next->tome = force->tome;
    KitPoolPutStruct(force->w->bodyForcePool, force);
}

void DynBodyForceReset(DynBodyForce* force) {
    DynBodyForceDisable(force);
    DynBodyForceSetConfig(force, {});
    DynBodyForceSetBodies(force, nullptr, nullptr, nullptr);
}

void DynBodyForceEnable(DynBodyForce* force) {
    if (DynBodyForceIsEnabled(force))
        return;
    linkEnabled(force);
    call(force->enable, force);
}

void DynBodyForceDisable(DynBodyForce* force) {
    if (!DynBodyForceIsEnabled(force))
        return;
    unlinkEnabled(force);
    call(force->disable, force);
}

bool DynBodyForceIsEnabled(const DynBodyForce* force) {
    return force->enabledTome != nullptr;
}

void DynBodyForceSetConfig(DynBodyForce* force, const DynBodyForceConfig& config) {
    static_cast<DynBodyForceConfig&>(*force) = config;
}

void DynBodyForceSetBodies(DynBodyForce* force, DynBody* b0, DynBody* b1, DynBody* b2) {
    force->defaultBodyList[0] = b0;
    force->defaultBodyList[1] = b1;
    force->defaultBodyList[2] = b2;
    useDefaultList(force);
}

DynBody* DynBodyForceGetBody(const DynBodyForce* force, int i) {
    if (i < 0 || i >= force->nBodies) {
        KitWarning(12, "DynBodyForceGetBody: the index must be at least 0 and below %d.\n",
                   force->nBodies);
        return nullptr;
    }
    return force->b[i];
}

void DynBodyForceSetUserBodyArray(DynBodyForce* force, DynBody** bodies, int count) {
    if (!bodies) {
        useDefaultList(force);
        return;
    }
    if (count < 0) {
        KitWarning(12, "DynBodyForceSetUserBodyArray: the count must not be negative.\n");
        return;
    }
    force->b = bodies;
    force->nBodies = count;
}

DynBody** DynBodyForceGetUserBodyArray(const DynBodyForce* force) {
    return force->b == force->defaultBodyList ? nullptr : force->b;
}

DynBodyForce* DynBodyForceGetFirst(DynWorld* world) {
    return world->forceHead;
}

DynBodyForce* DynBodyForceGetNext(DynBodyForce* force) {
    return force->next;
}

void DynBodyForceUpdateEnabled(DynWorld* world) {
    const std::uint64_t newest = sLastForceSerial;
    DynBodyForce* force = world->enabledForceHead;
    while (force && force->serial <= newest) {
        const std::uint64_t serial = force->serial, version = world->forceListVersion;
        DynBodyForce* next = force->enabledNext;
        if (world->scratch->stepping)
            updateInStep(world, force);
        else
            call(force->update, force);
        const bool unchanged = world->forceListVersion == version;
        force = unchanged ? next : *placeAfter(world, serial);
    }
}

void DynBodyForceForgetBody(DynWorld* world, DynBody* body) {
    for (DynBodyForce* force = world->forceHead; force; force = force->next)
        std::replace(std::begin(force->defaultBodyList), std::end(force->defaultBodyList), body,
                     static_cast<DynBody*>(nullptr));
}
