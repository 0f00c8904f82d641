#include <Dyn/DynLinear.h>

#include "DynChecks.h"

#include <Dyn/DynBody.h>
#include <Dync/DyncJointTags.h>
#include <Kit/KitVector.h>

namespace {

void positionOf(const DynBody* body, KitVector3 position) {
    if (body)
        DynBodyGetPosition(body, position);
    else
        KitVector3Zero(position);
}

} // namespace

DynLinear1* DynLinear1CreateInPool(KitPool* pool) {
    return static_cast<DynLinear1*>(DynConstraintCreateInPool(pool, kDynTagLinear1));
}

DynLinear2* DynLinear2CreateInPool(KitPool* pool) {
    return static_cast<DynLinear2*>(DynConstraintCreateInPool(pool, kDynTagLinear2));
}

DynLinear3* DynLinear3CreateInPool(KitPool* pool) {
    return static_cast<DynLinear3*>(DynConstraintCreateInPool(pool, kDynTagLinear3));
}

void DynLinear1SetPosition(DynLinear1* joint, KitReal x, KitReal y, KitReal z) {
    const KitVector3 point = {x, y, z};
    if (!DynCheckVector(point, "DynLinear1SetPosition"))
        return;
    KitVector3 axis, origin, centre;
    positionOf(joint->body[1], origin);
    positionOf(joint->body[0], centre);
    KitVector3Subtract(axis, point, origin);
    if (!(KitVector3Normalize(axis) > 0))
        KitVector3Set(axis, 1, 0, 0);
    DynConstraintSetAxis(joint, axis);
    DynConstraintSetPosition(joint, centre);
}
