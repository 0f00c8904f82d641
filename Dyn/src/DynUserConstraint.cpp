#include <Dyn/DynUserConstraint.h>

#include <Dync/DyncJointTags.h>

DynUserConstraint* DynUserConstraintCreateInPool(KitPool* pool) {
    return static_cast<DynUserConstraint*>(DynConstraintCreateInPool(pool, kDynTagUser));
}

void DynUserConstraintSetFunction(DynUserConstraint* constraint, DyncAddConstraintFn builder) {
    constraint->bclFunction = builder;
}

void DynUserConstraintSetConstraintData(DynUserConstraint* constraint, void* data) {
    constraint->data = data;
}
