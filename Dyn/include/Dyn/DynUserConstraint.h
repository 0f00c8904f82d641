#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A constraint whose rows the application builds. See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynUserConstraint* DynUserConstraintCreateInPool(KitPool* pool);
/// The builder; null for none. It must write no more than kDynsMaxConstraintRows rows.
HY_API void DynUserConstraintSetFunction(DynUserConstraint* constraint,
                                         DyncAddConstraintFn builder);
/// What the builder finds in DynUserConstraint::data; not owned.
HY_API void DynUserConstraintSetConstraintData(DynUserConstraint* constraint, void* data);
