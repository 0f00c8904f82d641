#include <Dyn/DynCylindrical.h>

#include <Dync/DyncJointTags.h>

DynCylindrical* DynCylindricalCreateInPool(KitPool* pool) {
    return static_cast<DynCylindrical*>(DynConstraintCreateInPool(pool, kDynTagCylindrical));
}
