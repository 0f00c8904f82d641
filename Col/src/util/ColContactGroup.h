#pragma once
#include <Col/ColContact.h>

struct ColRequest;

/// ColContactSimplifyGroup() for finite contacts.
int ColSimplifyFiniteGroup(const lsVec3& normal, ColContact* contacts, int count,
                           ColContact* outContacts, int maxContacts, const ColRequest& request,
                           KitReal* outSurface);
