#include <Dyn/DynDistance.h>

#include <Dync/DyncJointTags.h>
#include <Kit/KitMessage.h>

#include <cmath>

DynDistance* DynDistanceCreateInPool(KitPool* pool) {
    return static_cast<DynDistance*>(DynConstraintCreateInPool(pool, kDynTagDistance));
}

void DynDistanceSetDistance(DynDistance* joint, KitReal distance) {
    if (!(distance >= 0) || !std::isfinite(distance)) {
        KitWarning(12, "DynDistanceSetDistance: distance must be finite and not negative.\n");
        return;
    }
    joint->distance = distance;
}

KitReal DynDistanceGetDistance(const DynDistance* joint) {
    return joint->distance;
}
