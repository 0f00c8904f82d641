#include <Dyn/DynA1P3Joint.h>

#include <Dync/DyncJointTags.h>

DynA1P3Joint* DynA1P3JointCreateInPool(KitPool* pool) {
    return static_cast<DynA1P3Joint*>(DynConstraintCreateInPool(pool, kDynTagA1P3));
}
