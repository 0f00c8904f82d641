#include "DynConstraintInternal.h"
#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynBodyForce.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynConstraintLinks.h>
#include <Dyn/DynJointType.h>
#include <Dyn/DynPartition.h>
#include <Dyns/DynsConstraintFrames.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace {

constexpr int kBodyAlignment = 64;
constexpr int kNodesOfConstraint = kDynsMaxConstraintBodies;
constexpr int kFirstForces = 10;
constexpr int kFirstGroupings = 10;

void makePool(KitPool*& pool, KitPool& storage, int count, std::size_t size, int alignment,
              const char* name) {
    pool = &storage;
    KitPoolInit(pool, count, static_cast<int>(size), alignment);
    KitPoolSetPoolName(pool, name);
}

void makePools(DynWorld* world) {
    DynWorldScratch& s = *world->scratch;
    makePool(world->bodyPool, s.bodies, world->maxBodies, sizeof(DynBody), kBodyAlignment,
             "world bodyPool");
    makePool(world->constraintPool, s.constraints, world->maxConstraints,
             static_cast<std::size_t>(getDynConstraintUnionSize()), alignof(DynBaseConstraint),
             "world constraintPool");
    makePool(world->cNodePool, s.constraintNodes, kNodesOfConstraint * world->maxConstraints,
             sizeof(KitCListNode), alignof(KitCListNode), "world cNodePool");
    makePool(world->bodyForcePool, s.bodyForces, kFirstForces, sizeof(DynBodyForce),
             alignof(DynBodyForce), "world bodyForcePool");
    makePool(world->groupings_pool, s.groupings, kFirstGroupings, sizeof(DynGrouping),
             alignof(DynGrouping), "Groupings Pool");
}

void makeFrames(DynWorld* world) {
    world->constraint_frames = DynsConstraintFramesCreate(&KitMemoryAPI);
    DynsConstraintFramesSetHost(world->constraint_frames,
                                {.owner = world, .threadPool = [](void* owner) -> KitThreadPool* {
                                     const DynWorldHost& host = static_cast<DynWorld*>(owner)->host;
                                     return host.threadPool ? host.threadPool(host.owner) : nullptr;
                                 }});
}

template <class T>
T* makeRecord() {
    void* memory = KitMemoryAPI_create(sizeof(T));
    return memory ? new (memory) T{} : nullptr;
}

template <class T>
void freeRecord(T* record) {
    record->~T();
    KitMemoryAPI_destroy(record);
}

int atLeastOne(int count, const char* what) {
    if (count >= 1)
        return count;
    KitWarning(12, "DynWorldCreate: %s must be at least 1.\n", what);
    return 1;
}

void letConstraintGo(DynWorld* world, DynBaseConstraint* constraint) {
    for (int slot = 0; slot < kDynsMaxConstraintBodies; ++slot)
        KitCListNodeRemove(constraint, slot);
    DynConstraintEnabledListRemove(constraint);
    DynWorldRemoveConstraint(world, constraint);
    for (int slot = 0; constraint->pool == world->constraintPool && slot < kDynsMaxConstraintBodies;
         ++slot)
        DynConstraintLetBodyGo(constraint, slot);
}

// Of a body and a constraint that holds it, one goes with its pool and the other may stay.
void dropHolders(const DynWorld* world, DynBody* body) {
    for (KitCListNode *hold = body->holders, *next; hold; hold = next) {
        next = hold->next;
        if (body->pool == world->bodyPool || hold->constraint->pool == world->constraintPool)
            DynConstraintSetBody(hold->constraint, hold->slot, nullptr);
    }
}

void leaveContents(DynWorld* world) {
    while (world->constraintHead)
        letConstraintGo(world, world->constraintHead);
    while (world->nKineticConstraints > 0)
        DynWorldRemoveKinematicConstraint(world, world->kineticConstraintHead[0]);
    while (world->forceHead)
        DynBodyForceDestroy(world->forceHead);
    while (DynBody* body = world->bodyHead) {
        dropHolders(world, body);
        DynWorldRemoveBody(world, body);
    }
}

} // namespace

DynWorld* DynWorldCreate(int maxBodies, int maxConstraints) {
    auto* world = makeRecord<DynWorld>();
    if (!world)
        return nullptr;
    world->scratch = makeRecord<DynWorldScratch>();
    if (!world->scratch) {
        freeRecord(world);
        return nullptr;
    }
    world->maxBodies = atLeastOne(maxBodies, "maxBodies");
    world->maxConstraints = atLeastOne(maxConstraints, "maxConstraints");
    world->maxKiroFrames = std::numeric_limits<int>::max();
    makePools(world);
    makeFrames(world);
    DynPartitionOutputInit(&world->partitionOutput, world, world->maxBodies, world->maxConstraints,
                           &KitMemoryAPI);
    DynWorldReset(world);
    return world;
}

void DynWorldDestroy(DynWorld* world) {
    if (!world)
        return;
    if (DynWorldRefusesDuringStep(world, "DynWorldDestroy"))
        return;
    leaveContents(world);
    DynsConstraintFramesDestroy(world->constraint_frames);
    DynPartitionOutputDestroy(&world->partitionOutput);
    DynGroupingDestroyAll(world);
    for (KitPool* pool :
         {world->bodyPool, world->constraintPool, world->cNodePool, world->bodyForcePool})
        KitPoolTerm(pool);
    KitMemoryAPI_destroy(world->thread_data);
    KitMemoryAPI_destroy(world->kineticConstraintHead);
    freeRecord(world->scratch);
    freeRecord(world);
}

void DynWorldReset(DynWorld* world) {
    world->params.timeStep = DynWorldParams{}.timeStep;
    std::fill_n(world->params.gravity, 4, 0.0);
    world->mSolverPartitionSplitting = kDynPartitionSplittingAutomatic;
    DynPartitionParametersSetDefault(&world->partition_parameters);
    DynWorldForSolverParameters(world, [](DynsParameters& k) { DynsParametersSetDefault(&k); });
    DyncSetDefaultConstraintParameters(&world->params.bcl_params);
    if (DynGrouping* group = DynGroupingFind(world, 0))
        group->bcl_params = world->params.bcl_params;
}

void DynWorldResize(DynWorld* world, int maxBodies, int maxConstraints) {
    world->maxBodies = std::max(world->maxBodies, maxBodies);
    world->maxConstraints = std::max(world->maxConstraints, maxConstraints);
    DynPartitionOutputResize(&world->partitionOutput, 0, world->maxBodies, world->maxConstraints,
                             nullptr);
}

void DynWorldSetHost(DynWorld* world, const DynWorldHost& host) {
    world->host = host;
}

void DynWorldSetGravity(DynWorld* world, const KitVector3 gravity) {
    for (int i = 0; i < 3; ++i)
        if (!std::isfinite(gravity[i])) {
            KitWarning(12, "DynWorldSetGravity: gravity must be finite.\n");
            return;
        }
    std::copy_n(gravity, 3, world->params.gravity);
    for (DynBody* body = world->bodyHead; body; body = body->next)
        DynBodyEnable(body);
}

void DynWorldGetGravity(const DynWorld* world, KitVector3 gravity) {
    std::copy_n(world->params.gravity, 3, gravity);
}

void DynWorldSetTimeStep(DynWorld* world, KitReal dt) {
    if (!(dt > 0) || !std::isfinite(dt)) {
        KitWarning(12, "DynWorldSetTimeStep: the step must be finite and above 0.\n");
        return;
    }
    world->params.timeStep = dt;
}

KitReal DynWorldGetTimeStep(const DynWorld* world) {
    return world->params.timeStep;
}

void DynWorldResetForces(DynWorld* world) {
    for (DynBody* body = world->bodyHead; body; body = body->next)
        DynBodyResetForces(body);
}

void DynWorldResetDynamics(DynWorld* world) {
    for (DynBody* body = world->bodyHead; body; body = body->next)
        DynBodyResetDynamics(body);
}
