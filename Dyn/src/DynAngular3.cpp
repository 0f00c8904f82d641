#include <Dyn/DynAngular3.h>

#include <Dync/DyncJointTags.h>

DynAngular3* DynAngular3CreateInPool(KitPool* pool) {
    return static_cast<DynAngular3*>(DynConstraintCreateInPool(pool, kDynTagAngular3));
}

void DynAngular3EnableRotation(DynAngular3* joint, bool on) {
    joint->rotationEnabled = on;
}

bool DynAngular3RotationIsEnabled(const DynAngular3* joint) {
    return joint->rotationEnabled != 0;
}
