#include <Dyn/DynHomokinetic.h>

#include <Dync/DyncJointTags.h>

DynHomokinetic* DynHomokineticCreateInPool(KitPool* pool) {
    return static_cast<DynHomokinetic*>(DynConstraintCreateInPool(pool, kDynTagHomokinetic));
}
