#include <Dyn/DynHinge.h>

#include <Dync/DyncJointTags.h>

DynHinge* DynHingeCreateInPool(KitPool* pool) {
    return static_cast<DynHinge*>(DynConstraintCreateInPool(pool, kDynTagHinge));
}
