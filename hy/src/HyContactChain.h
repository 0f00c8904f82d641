#pragma once

struct DynContact;

namespace Hy {

// The contacts of a pair: a chain from its first one, which may be null.

/// Ends one contact: no list and no universe knows it any more.
void HyDestroyContact(DynContact* contact);
/// Destroys the contacts from the given one on.
/// @param wake wake the bodies that they part from, if one of them moves
void HyDestroyContacts(DynContact* contact, bool wake);
/// Turns the friction models of the contacts from the given one on into those that their rows know.
/// Comes after every call-back that may have chosen others.
void HyResolveFriction(DynContact* contact);

} // namespace Hy
