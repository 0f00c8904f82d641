#include <Dyn/DynBSJoint.h>

#include <Dync/DyncJointTags.h>

DynBSJoint* DynBSJointCreateInPool(KitPool* pool) {
    return static_cast<DynBSJoint*>(DynConstraintCreateInPool(pool, kDynTagBSJoint));
}
