#include <Hy/HyUniverse.h>

#include "HyUserContacts.h"

#include <Hy/HyContactMaterial.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMaterialTable.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>

#include <cmath>

namespace Hy {

namespace {

bool mayTouch(const HyUniverse& universe, const HyPart* part1, const HyPart* part2) {
    if (part1 == part2) // a part does not touch itself
        return false;
    bool dynamic = false;
    for (const HyPart* part : {part1, part2}) {
        if (!part)
            continue;
        if (part->getUniverse() != &universe)
            return false;
        dynamic |= part->getEffectiveControl() == HyPart::kControlDynamic;
    }
    return dynamic;
}

} // namespace

HyDynamicsContact* HyUniverse::createUserDynamicsContact(HyPart* part1, HyPart* part2,
                                                         const HyContactMaterial* contactMaterial,
                                                         const HyVector3& position,
                                                         const HyVector3& normal,
                                                         HyReal penetration) {
    if (!mayTouch(*this, part1, part2)) {
        HyWarning(0, "HyUniverse::createUserDynamicsContact: need at least one dynamic, non-frozen "
                     "part for the contact to be valid.\n");
        return nullptr;
    }
    if (!position.isFinite() || !normal.isFinite() || !(normal.dot(normal) > 0) ||
        !std::isfinite(penetration)) {
        HyWarning(0, "HyUniverse::createUserDynamicsContact: position, normal and penetration must "
                     "be finite, and the normal not zero.\n");
        return nullptr;
    }
    if (!contactMaterial) {
        const HyMaterial* standard = mMaterialTable->getDefaultMaterial();
        contactMaterial = mMaterialTable->getContactMaterial(standard, standard);
    }
    if (contactMaterial)
        return mUserContacts->create(part1, part2, *contactMaterial, position, normal, penetration);
    const HyContactMaterial plain; // the table was cleared
    return mUserContacts->create(part1, part2, plain, position, normal, penetration);
}

void HyUniverse::deleteUserDynamicsContact(HyDynamicsContact* contact) {
    mUserContacts->destroy(contact);
}

void HyUniverse::deleteAllUserDynamicsContacts() {
    mUserContacts->destroyAll();
}

const HyArray<HyDynamicsContact*>& HyUniverse::getUserDynamicsContacts() const {
    return mUserContacts->all();
}

} // namespace Hy
