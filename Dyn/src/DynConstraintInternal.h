#pragma once
#include <Dync/DynBaseConstraint.h>

// Checks that the functions of constraints share; each warns in the name of the function.

[[nodiscard]] bool DynConstraintIsSlot(const DynBaseConstraint* constraint, int slot,
                                       const char* function);
[[nodiscard]] bool DynConstraintIsRow(int row, const char* function);
/// Points every slot at what its body holds.
void DynConstraintBindBodies(DynBaseConstraint* constraint);
