#pragma once
#include <Col/ColContact.h>

struct ColRequest;

/// A request for this many contacts wants them as they are.
constexpr unsigned kColNoOutline = 9;

/// ColContactSimplifyGroup() for finite contacts.
int ColSimplifyFiniteGroup(const lsVec3& normal, ColContact* contacts, int count,
                           ColContact* outContacts, int maxContacts, const ColRequest& request,
                           KitReal* outSurface);
