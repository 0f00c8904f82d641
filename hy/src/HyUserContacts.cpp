#include "HyUserContacts.h"

#include "HyContactChain.h"
#include "HyInternedName.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynContact.h>
#include <Hy/HyContactMaterial.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyPart.h>

#include <algorithm>

namespace Hy {

namespace {

DynBody* bodyOf(const HyPart* part) {
    return part ? part->getDynBody() : nullptr;
}

void setMaterial(DynContact* contact, const HyContactMaterial& material) {
    DynContactSetParams(contact, &material.getValue(),
                        HyInternName(material.getName(), contact->contactMaterialName));
    HyResolveFriction(contact);
}

} // namespace

HyDynamicsContact* HyUserContacts::create(HyPart* part1, HyPart* part2,
                                          const HyContactMaterial& material,
                                          const HyVector3& position, const HyVector3& normal,
                                          HyReal penetration) {
    DynContact* contact = DynContactCreate(mWorld);
    if (!contact)
        return nullptr;
    DynContactSetBodies(contact, bodyOf(part1), bodyOf(part2));
    contact->originalBodies[0] = contact->body[0];
    contact->originalBodies[1] = contact->body[1];
    DynConstraintEnableBodiesIfMoving(contact);
    DynConstraintEnable(contact);
    DynContactSetNormal(contact, normal.v);
    DynContactSetPosition(contact, position.v);
    DynContactSetPenetration(contact, penetration);
    DynContactSetSurface(contact, 0);
    DynContactSetWeakContact(contact, kDynWeakNever);
    DynContactSetGroupIndex(contact, 0);
    setMaterial(contact, material);
    mContacts.push_back(HyDynamicsContact::fromDynContact(contact));
    return mContacts.back();
}

bool HyUserContacts::destroy(HyDynamicsContact* contact) {
    const auto place = std::find(mContacts.begin(), mContacts.end(), contact);
    if (place == mContacts.end() || !DynContactDestroy(contact->getDynContact()))
        return false;
    mContacts.erase(place);
    return true;
}

void HyUserContacts::destroyAll() {
    while (!mContacts.empty() && destroy(mContacts.back())) {
    }
}

void HyUserContacts::disableAll() {
    for (HyDynamicsContact* contact : mContacts)
        contact->enableContact(false);
}

void HyUserContacts::resolveFriction() {
    for (HyDynamicsContact* each : mContacts)
        if (each->isEnabled())
            HyResolveFriction(each->getDynContact());
}

void HyUserContacts::forget(const DynBody* body) {
    for (HyDynamicsContact* each : mContacts) {
        DynContact* contact = each->getDynContact();
        for (DynBody*& original : contact->originalBodies)
            if (original == body)
                original = nullptr;
        DynBody* const bodies[2] = {contact->body[0], contact->body[1]};
        if (bodies[0] != body && bodies[1] != body)
            continue;
        if (each->enableContact(false))
            continue;
        DynContactSetBodies(contact, bodies[0] == body ? nullptr : bodies[0],
                            bodies[1] == body ? nullptr : bodies[1]);
    }
}

} // namespace Hy
