#pragma once
#include <Dync/DynBaseConstraint.h>

// What the files of constraints share. Checks warn in the name of the function.

[[nodiscard]] bool DynConstraintIsSlot(const DynBaseConstraint* constraint, int slot,
                                       const char* function);
[[nodiscard]] bool DynConstraintIsRow(int row, const char* function);
/// Points a slot at what its body holds: what set1BodyFunc does in most constraints.
void DynConstraintBindSlot(DynBaseConstraint* constraint, int slot, DynBody* body);
/// Points every slot at what its body holds.
void DynConstraintBindBodies(DynBaseConstraint* constraint);

/// The body of the slot learns that the slot holds it, or forgets it. Every change of a slot's body
/// stands between the two.
void DynConstraintHoldBody(DynBaseConstraint* constraint, int slot);
void DynConstraintLetBodyGo(DynBaseConstraint* constraint, int slot);
