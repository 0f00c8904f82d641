#include "HyContactChain.h"

#include <Dyn/DynConstraint.h>
#include <Dyn/DynContact.h>
#include <Dyn/DynWorld.h>
#include <Hy/HyUniverse.h>

namespace Hy {

void HyDestroyContact(DynContact* contact) {
    DynConstraintDisable(contact);
    if (HyUniverse* universe = contact->world->universe)
        universe->dynContactLeaves(contact);
    DynContactDestroy(contact);
}

void HyDestroyContacts(DynContact* contact, bool wake) {
    while (contact) {
        DynContact* next = contact->nextContact;
        if (wake)
            DynConstraintEnableBodiesIfMoving(contact);
        HyDestroyContact(contact);
        contact = next;
    }
}

void HyResolveFriction(DynContact* contact) {
    for (; contact; contact = contact->nextContact) {
        KitReal low = 0, high = 0;
        DynContactGetPairMasses(contact->body[0], contact->body[1], &low, &high);
        DynContactResolveFriction(contact, low, high);
    }
}

} // namespace Hy
