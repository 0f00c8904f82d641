#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A constraint whose rows an object of the application writes, with friction as in a joint.
/// @param parts body slots, 1 to 6
/// @param maxRows most rows of a step, friction included, 1 to 16; out of range: a warning and the
///        nearest value that will do
[[nodiscard]] HY_API DynGenericConstraint* DynGenericConstraintCreateInPool(KitPool* pool,
                                                                            int parts, int maxRows);
/// The object that writes the rows, not owned, and its function; null for none.
HY_API void DynGenericConstraintSetHyPointer(DynGenericConstraint* constraint, void* object,
                                             DynGenericConstraint::RowsFn rows);
