#pragma once

struct DynContact;

namespace Hy {

/// Destroys the contacts of a pair from the given one on, which may be null.
/// @param wake wake the bodies that they part from, if one of them moves
void HyDestroyContacts(DynContact* contact, bool wake);

} // namespace Hy
