#pragma once

struct DynBody;

// The enabled list of a world, which is the body's.

/// Puts the body at the head of its list; it must not stand there yet.
void DynEnabledListInsert(DynBody* body);
/// Takes the body off its list; it must stand there.
void DynEnabledListRemove(DynBody* body);
