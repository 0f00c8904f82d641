#include <Dyn/DynA2P3Joint.h>

#include <Dync/DyncJointTags.h>

DynA2P3Joint* DynA2P3JointCreateInPool(KitPool* pool) {
    return static_cast<DynA2P3Joint*>(DynConstraintCreateInPool(pool, kDynTagA2P3));
}
