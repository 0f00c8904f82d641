#include <Hy/HyFrameStepperOption.h>

#include "ForEachUniverse.h"

#include <Hy/HyDynamicsContact.h>
#include <Hy/HyStepChecks.h>
#include <Hy/HyUniverse.h>

#include <algorithm>

// The checks that the option offers itself: made when first asked for, active while they stand in the
// array.

namespace Hy {

template <class Check>
Check& HyFrameStepperOption::need(std::unique_ptr<Check>& check) {
    if (!check)
        check = std::make_unique<Check>();
    return *check;
}

void HyFrameStepperOption::setActive(CheckSubscriber& check, bool on) {
    if (on && !isActive(&check)) {
        check.setPrintOutput(mVerbose);
        mCheckSubscriberArray.push_back(&check);
    } else if (!on)
        mCheckSubscriberArray.eraseOnce(&check);
}

bool HyFrameStepperOption::isActive(const CheckSubscriber* check) const {
    const auto end = mCheckSubscriberArray.end();
    return check && std::find(mCheckSubscriberArray.begin(), end, check) != end;
}

void HyFrameStepperOption::setSettle(bool on) {
    setActive(need(mFrameSettle), on);
}

bool HyFrameStepperOption::getSettle() const {
    return isActive(mFrameSettle.get());
}

void HyFrameStepperOption::setCheckFastMoving(bool on) {
    setActive(need(mCheckFastMoving), on);
}

bool HyFrameStepperOption::getCheckFastMoving() const {
    return isActive(mCheckFastMoving.get());
}

void HyFrameStepperOption::setCheckContactPenetration(bool on) {
    setActive(need(mCheckContact), on);
}

bool HyFrameStepperOption::getCheckContactPenetration() const {
    return isActive(mCheckContact.get());
}

void HyFrameStepperOption::setCheckAcceleration(bool on) {
    setActive(need(mCheckAcceleration), on);
}

bool HyFrameStepperOption::getCheckAcceleration() const {
    return isActive(mCheckAcceleration.get());
}

void HyFrameStepperOption::setCheckForceFrictionless(bool on) {
    setActive(need(mCheckForceFrictionless), on);
}

bool HyFrameStepperOption::getCheckForceFrictionless() const {
    return isActive(mCheckForceFrictionless.get());
}

void HyFrameStepperOption::setCheckForceKinematicPart(bool on) {
    setActive(need(mCheckForceKinematicPart), on);
    if (!on)
        HyCheckForceKinematicPart::clearResponses();
}

bool HyFrameStepperOption::getCheckForceKinematicPart() const {
    return isActive(mCheckForceKinematicPart.get());
}

void HyFrameStepperOption::setSettlingFactor(HyReal factor) {
    need(mFrameSettle).setSettlingFactor(factor);
}

HyReal HyFrameStepperOption::getSettlingFactor() {
    return need(mFrameSettle).getSettlingFactor();
}

void HyFrameStepperOption::setCheckForceKinematicPartMassThreshold(HyReal ratio) {
    need(mCheckForceKinematicPart).setMassThreshold(ratio);
}

HyReal HyFrameStepperOption::getCheckForceKinematicPartMassThreshold() {
    return need(mCheckForceKinematicPart).getMassThreshold();
}

void HyFrameStepperOption::setCheckContactPenetrationThreshold(HyReal penetration) {
    need(mCheckContact).setPenetrationThreshold(penetration);
}

HyReal HyFrameStepperOption::getCheckContactPenetrationThreshold() {
    return need(mCheckContact).getPenetrationThreshold();
}

void HyFrameStepperOption::setCheckAccelerationLinearThreshold(HyReal acceleration) {
    need(mCheckAcceleration).setLinearThreshold(acceleration);
}

HyReal HyFrameStepperOption::getCheckAccelerationLinearThreshold() {
    return need(mCheckAcceleration).getLinearThreshold();
}

void HyFrameStepperOption::setCheckAccelerationAngularThreshold(HyReal acceleration) {
    need(mCheckAcceleration).setAngularThreshold(acceleration);
}

HyReal HyFrameStepperOption::getCheckAccelerationAngularThreshold() {
    return need(mCheckAcceleration).getAngularThreshold();
}

void HyFrameStepperOption::staticCheck() const {
    forEachUniverse([](const HyUniverse& universe) {
        universe.verifyDynamics("HyFrameStepperOption::staticCheck", 2);
        universe.verifyUniverseContent();
    });
}

// Contacts of a detection that will not be renewed would hold on to parts that have moved on.
void HyFrameStepperOption::disableContacts() {
    forEachUniverse([](HyUniverse& universe) {
        const auto end = universe.dynamicsContactEnd();
        for (auto it = universe.dynamicsContactBegin(); it != end; ++it)
            if (HyDynamicsContact* contact = *it)
                contact->enableContact(false);
    });
}

} // namespace Hy
