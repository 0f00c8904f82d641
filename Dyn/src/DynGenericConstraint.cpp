#include <Dyn/DynGenericConstraint.h>

#include <Dync/DyncJointTags.h>
#include <Kit/KitMessage.h>

#include <algorithm>

namespace {

int inRange(int value, int last, const char* what) {
    if (value < 1 || value > last)
        KitWarning(12, "DynGenericConstraintCreateInPool: %s must be 1 to %d.\n", what, last);
    return std::clamp(value, 1, last);
}

} // namespace

DynGenericConstraint* DynGenericConstraintCreateInPool(KitPool* pool, int parts, int maxRows) {
    auto* constraint =
        static_cast<DynGenericConstraint*>(DynConstraintCreateInPool(pool, kDynTagGeneric));
    if (!constraint)
        return nullptr;
    constraint->bclH.n_bodies = inRange(parts, kDynsMaxConstraintBodies, "the number of parts");
    constraint->bclH.max_rows = inRange(maxRows, kDynsMaxConstraintRows, "the number of rows");
    return constraint;
}

void DynGenericConstraintSetHyPointer(DynGenericConstraint* constraint, void* object,
                                      DynGenericConstraint::RowsFn rows) {
    constraint->data = object;
    constraint->rowsFunction = rows;
}
