#include <Dyn/DynUniversal.h>

#include <Dync/DyncJointTags.h>

DynUniversal* DynUniversalCreateInPool(KitPool* pool) {
    return static_cast<DynUniversal*>(DynConstraintCreateInPool(pool, kDynTagUniversal));
}
