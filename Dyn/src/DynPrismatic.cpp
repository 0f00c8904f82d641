#include <Dyn/DynPrismatic.h>

#include <Dync/DyncJointTags.h>

DynPrismatic* DynPrismaticCreateInPool(KitPool* pool) {
    return static_cast<DynPrismatic*>(DynConstraintCreateInPool(pool, kDynTagPrismatic));
}
