#include <Dyn/DynFixedPath.h>

#include "DynChecks.h"

#include <Dyn/DynWorld.h>
#include <Dync/DyncJointTags.h>
#include <Kit/KitMessage.h>
#include <Kit/KitVector.h>

DynFixedPath* DynFixedPathCreateInPool(KitPool* pool) {
    return static_cast<DynFixedPath*>(DynConstraintCreateInPool(pool, kDynTagFixedPath));
}

DynFixedPath* DynFixedPathCreate(DynWorld* world) {
    if (world)
        return DynFixedPathCreateInPool(world->constraintPool);
    KitWarning(12, "DynFixedPathCreate: world must not be null.\n");
    return nullptr;
}

void DynFixedPathSetVelocity(DynFixedPath* joint, const KitVector3 velocity) {
    if (DynCheckVector(velocity, "DynFixedPathSetVelocity"))
        KitVector3Copy(joint->velocity, velocity);
}

void DynFixedPathGetVelocity(const DynFixedPath* joint, KitVector3 velocity) {
    KitVector3Copy(velocity, joint->velocity);
}
