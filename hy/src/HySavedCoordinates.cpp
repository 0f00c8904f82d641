#include "HySavedCoordinates.h"

#include <Dyn/DynContact.h>
#include <Dyn/DynWorld.h>
#include <Kit/KitVector.h>

#include <algorithm>

namespace Hy {
namespace {

template <class Call>
void forEachSummedSlip(const DynWorld& world, Call call) {
    for (DynBaseConstraint* each = world.enabledConstraintHead; each; each = each->enabledNext)
        if (each->bclH.tag == kDynTagContact)
            if (auto* contact = static_cast<DynContact*>(each);
                contact->params.mIntegratedSlipDisplacementActivated)
                call(*contact);
}

} // namespace

// The rows of a contact add to its slip as they are built.
void HySavedCoordinates::saveSlips(const DynWorld& world) {
    slips.clear();
    forEachSummedSlip(world, [this](const DynContact& contact) {
        Slip& slip = slips.add();
        slip.serial = contact.serial;
        std::copy_n(contact.slip_displacement, 2, slip.displacement);
        KitVector3Copy(slip.posRel0, contact.posRel0);
        KitVector3Copy(slip.posRel1, contact.posRel1);
    });
}

void HySavedCoordinates::restoreSlips(const DynWorld& world) {
    std::sort(slips.begin(), slips.end(),
              [](const Slip& a, const Slip& b) { return a.serial < b.serial; });
    forEachSummedSlip(world, [this](DynContact& contact) {
        const auto slip = std::lower_bound(
            slips.begin(), slips.end(), contact.serial,
            [](const Slip& each, std::uint64_t serial) { return each.serial < serial; });
        if (slip == slips.end() || slip->serial != contact.serial)
            return;
        std::copy_n(slip->displacement, 2, contact.slip_displacement);
        KitVector3Copy(contact.posRel0, slip->posRel0);
        KitVector3Copy(contact.posRel1, slip->posRel1);
    });
    slips.clear();
}

} // namespace Hy
