#pragma once
#include <Dync/DynBaseConstraint.h>
#include <Kit/KitApi.h>

// The links of a constraint: its place in the world's list of enabled constraints, and one node a
// body slot in the list of that body. All take constant time, but for a walk that is under way.

/// Puts the constraint at the head of its world's enabled list; nothing without a world or if it
/// stands there already.
HY_API void DynConstraintEnabledListInsert(DynBaseConstraint* constraint);
/// Takes it off; a walk over the list that has not reached it yet will skip it.
HY_API void DynConstraintEnabledListRemove(DynBaseConstraint* constraint);

/// Puts a node for the slot at the head of the list of the slot's body; nothing for an empty slot, or
/// one that has its node. Answers false, with a warning, if the node pool cannot grow.
HY_API bool KitCListNodeInsert(DynBaseConstraint* constraint, int slot);
/// Takes the node of the slot out of its list and gives it back; nothing if there is none.
HY_API void KitCListNodeRemove(DynBaseConstraint* constraint, int slot);
