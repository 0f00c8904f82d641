#include <Dyn/DynDoubleHinge.h>

#include <Dync/DyncJointTags.h>

DynDoubleHinge* DynDoubleHingeCreateInPool(KitPool* pool) {
    return static_cast<DynDoubleHinge*>(DynConstraintCreateInPool(pool, kDynTagDoubleHinge));
}
