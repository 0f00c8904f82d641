#include "DynBodyConstraints.h"
#include "DynEnabledList.h"
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>
#include <Kit/KitMessage.h>
#include <Kit/KitVector.h>

// States of a body. Only a dynamic body (stateFlags 0) is ever enabled, and an enabled body of a
// world stands in the world's enabled list (enabledTome not null).

namespace {

void setGeometriesStatic(DynBody* body, bool isStatic) {
    if (body->world->host.setGeometriesStatic)
        body->world->host.setGeometriesStatic(body, isStatic);
}

// Answers whether the body entered the enabled list.
bool enable(DynBody* body) {
    if (body->stateFlags != 0)
        return false;
    const bool enters = body->world && !body->enabledTome;
    if (enters) {
        DynEnabledListInsert(body);
        // What it saved before it slept is of another step.
        body->isUserLoadSaved = false;
    }
    body->enabledTime = 0;
    return enters;
}

// Answers whether the body left the enabled list.
bool disable(DynBody* body) {
    const bool leaves = body->world && body->enabledTome;
    if (leaves) {
        DynEnabledListRemove(body);
        DynBodyResetGraphData(body);
    }
    body->partitionIndex = -1;
    body->kiroBody.partition_index = -1;
    body->kiroBody.localPartition = -1; // a partition of the same number may follow in this step
    body->enabledTime = -1;
    return leaves;
}

void setState(DynBody* body, DynBodyState state, DynsBodyFlag flag) {
    body->stateFlags |= state;
    body->kiroBody.flags |= flag;
}

// A NaN counts as fast.
bool isFaster(const KitVector4 v, KitReal threshold) {
    return !(KitVector3Dot(v, v) <= threshold * threshold);
}

} // namespace

void DynEnabledListInsert(DynBody* body) {
    DynWorld* world = body->world;
    body->enabledNext = world->enabledBodyHead;
    body->enabledTome = &world->enabledBodyHead;
    if (body->enabledNext)
        body->enabledNext->enabledTome = &body->enabledNext;
    world->enabledBodyHead = body;
    ++world->nEnabledBodies;
    DynBuffer<DynBody*>& bodies = world->scratch->enabledBodies;
    body->enabledIndex = bodies.size();
    bodies.push_back(body);
}

void DynEnabledListRemove(DynBody* body) {
    *body->enabledTome = body->enabledNext;
    if (body->enabledNext)
        body->enabledNext->enabledTome = body->enabledTome;
    body->enabledNext = nullptr;
    body->enabledTome = nullptr;
    --body->world->nEnabledBodies;
    // The last one takes its place: what is done to each of the array does not depend on the order.
    DynBuffer<DynBody*>& bodies = body->world->scratch->enabledBodies;
    DynBody* last = bodies[bodies.size() - 1];
    bodies[body->enabledIndex] = last;
    last->enabledIndex = body->enabledIndex;
    body->enabledIndex = -1;
    bodies.resize(bodies.size() - 1);
}

void DynBodyEnable(DynBody* body) {
    if (enable(body))
        setGeometriesStatic(body, false);
}

void DynBodyDisable(DynBody* body) {
    if (disable(body))
        setGeometriesStatic(body, true);
}

void DynBodyEnableNoCB(DynBody* body) {
    enable(body);
}

void DynBodyDisableNoCB(DynBody* body) {
    disable(body);
}

bool DynBodyIsEnabled(const DynBody* body) {
    return body->enabledTime != -1;
}

void DynBodyEnableConnectedBodies(DynBody* body) {
    if (DynBodyIsDynamic(body)) {
        DynBodyEnable(body);
        return;
    }
    for (const KitCListNode* node = body->constraintList; node; node = node->next) {
        const DynBaseConstraint* constraint = node->constraint;
        for (int slot = 0; slot < constraint->bclH.n_bodies; ++slot)
            if (DynBody* other = constraint->body[slot]; other && other != body)
                DynBodyEnable(other);
    }
}

void DynBodyFreeze(DynBody* body) {
    if (DynBodyIsFrozen(body))
        return;
    DynBodyDisableNoCB(body);
    setState(body, kDynBodyFrozen, kDynsBodyFrozen);
    DynBodyRefreshConstraints(body);
}

void DynBodyUnFreeze(DynBody* body) {
    if (!DynBodyIsFrozen(body))
        return;
    body->stateFlags &= ~static_cast<unsigned>(kDynBodyFrozen);
    if (DynBodyIsDynamic(body)) {
        DynBodyEnableNoCB(body);
        DynBodyResetDynamics(body);
    }
    body->kiroBody.flags &= ~kDynsBodyFrozen;
    DynBodyRefreshConstraints(body);
}

bool DynBodyIsFrozen(const DynBody* body) {
    return (body->stateFlags & kDynBodyFrozen) != 0;
}

void DynBodyMakeDynamic(DynBody* body) {
    if (DynBodyIsDynamic(body))
        return;
    body->stateFlags = 0;
    DynBodyEnable(body);
    body->kiroBody.flags &= ~(kDynsBodyFrozen | kDynsBodyKinematic);
    DynBodyRefreshConstraints(body);
}

void DynBodyMakeKinematic(DynBody* body) {
    if (DynBodyIsDynamic(body))
        DynBodyEnable(body);
    if (DynBodyIsKinematic(body))
        return;
    DynBodyDisableNoCB(body);
    setState(body, kDynBodyKinematic, kDynsBodyKinematic);
    DynBodyRefreshConstraints(body);
}

bool DynBodyIsDynamic(const DynBody* body) {
    return body->stateFlags == 0;
}

bool DynBodyIsKinematic(const DynBody* body) {
    return (body->stateFlags & kDynBodyKinematic) != 0;
}

bool DynBodyIsMovingTest(const DynBody* body) {
    const DynAutoDisableParams& limits = body->autoDisableParams;
    const DynsBody& solver = body->kiroBody;
    return isFaster(solver.vel, limits.vel_thresh) ||
           isFaster(solver.velrot, limits.velrot_thresh) ||
           isFaster(solver.accel, limits.acc_thresh) ||
           isFaster(solver.accelrot, limits.accrot_thresh) ||
           body->enabledTime < limits.alive_window;
}

int DynBodyGetEnabledTime(const DynBody* body) {
    return body->enabledTime;
}

void DynBodySetEnabledTime(DynBody* body, int steps) {
    if (steps < 0) {
        KitWarning(12, "DynBodySetEnabledTime: the number of steps must not be negative.\n");
        return;
    }
    if (DynBodyIsEnabled(body))
        body->enabledTime = steps;
}
