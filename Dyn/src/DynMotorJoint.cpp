#include <Dyn/DynMotorJoint.h>

#include <Dync/DyncJointTags.h>

DynMotorJoint* DynMotorJointCreateInPool(KitPool* pool) {
    return static_cast<DynMotorJoint*>(DynConstraintCreateInPool(pool, kDynTagMotor));
}
