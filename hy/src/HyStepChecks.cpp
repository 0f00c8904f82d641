#include <Hy/HyStepChecks.h>

#include "ForEachUniverse.h"

#include <Hy/HyConstraint.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

#include <cmath>

namespace Hy {
namespace {

using Callback = HyFrameStepperOption::CheckSubscriberCB;

/// Until a call answers false.
template <typename Iterator, typename Call>
void visit(Iterator it, const Iterator& end, Call call) {
    for (; it != end; ++it)
        if (auto* object = *it)
            if (!call(*object))
                return;
}

template <typename Call>
void visitParts(HyUniverse& universe, Call call) {
    visit(universe.dynamicPartBegin(), universe.dynamicPartEnd(), call);
}

template <typename Call>
void visitContacts(HyUniverse& universe, Call call) {
    visit(universe.dynamicsContactBegin(), universe.dynamicsContactEnd(), call);
}

template <typename Call>
void visitConstraints(HyUniverse& universe, Call call) {
    visit(universe.enabledConstraintsBegin(), universe.enabledConstraintsEnd(), call);
}

/// Stores a number that is finite and at least 0, or warns.
void store(HyReal value, HyReal& place, HyReal stored, const char* operation) {
    if (std::isfinite(value) && value >= 0)
        place = stored;
    else
        HyWarning(0, "%s: the limit must be finite and not negative.\n", operation);
}

HyReal square(HyReal x) {
    return x * x;
}

} // namespace

void HyFrameSettle::setSettlingFactor(HyReal factor) {
    if (std::isfinite(factor))
        mSettlingFactor = factor;
    else
        HyWarning(0, "HyFrameSettle::setSettlingFactor: the factor must be finite.\n");
}

bool HyFrameSettle::preUpdateForceCheck() {
    forEachUniverse([this](HyUniverse& universe) {
        visitParts(universe, [this](HyPart& part) {
            part.setLinearVelocity(part.getLinearVelocity() * mSettlingFactor);
            part.setAngularVelocity(part.getAngularVelocity() * mSettlingFactor);
            return true;
        });
    });
    return true;
}

// Along an axis of the world a box of side e turns its ends by about |w| e, for the two components of
// w across it.
bool HyCheckFastMoving::isAccepted(HyPart& part) {
    const HyReal h = HyFrame::currentInstance()->getTimeStep();
    const HyVector3 v = part.getLinearVelocity(), w = part.getAngularVelocity();
    HyVector3 low, high;
    part.getBoundingBox(low, high);
    for (int i = 0; i < 3; ++i) {
        const HyReal e = high[i] - low[i], limit = e * mCheckFastMovingRatio;
        const bool isFast = std::abs(v[i]) * h > limit ||
                            std::abs(w[(i + 1) % 3]) * e * h > limit ||
                            std::abs(w[(i + 2) % 3]) * e * h > limit;
        if (!isFast)
            continue;
        Callback* callback = getCheckSubscriberCB();
        const auto answer = callback ? callback->notifyCheckFailure(&part, "check velocity failure")
                                     : Callback::kReturnTypeEnumAccept;
        if (answer == Callback::kReturnTypeEnumIgnore)
            continue;
        mIsBroken = mIsBroken || answer == Callback::kReturnTypeEnumBreak;
        return false;
    }
    return true;
}

bool HyCheckFastMoving::preUpdateForceCheck() {
    mFailedPart = nullptr;
    mIsBroken = false;
    forEachUniverse([this](HyUniverse& universe) {
        if (mIsBroken)
            return;
        visitParts(universe, [this](HyPart& part) {
            if (part.getFastMoving() || part.getCollisionGeometries().empty() || isAccepted(part))
                return true;
            mFailedPart = &part;
            part.setFastMoving(true);
            if (getPrintOutput())
                output();
            return true;
        });
    });
    return true;
}

void HyCheckFastMoving::output() {
    if (mFailedPart)
        HyWarning(0, "part %s is moving fast without setFastMoving enabled\n",
                  mFailedPart->getName().c_str());
}

void HyCheckContact::setPenetrationThreshold(HyReal threshold) {
    store(threshold, mContactPenetrationThreshold, threshold,
          "HyCheckContact::setPenetrationThreshold");
}

bool HyCheckContact::limit(HyDynamicsContact& contact) {
    if (!(contact.getPenetration() > mContactPenetrationThreshold))
        return true;
    contact.getOriginalPartPair(mPart0, mPart1);
    Callback* callback = getCheckSubscriberCB();
    const auto answer =
        callback ? callback->notifyCheckFailure(mPart0, "check contact penetration failure")
                 : Callback::kReturnTypeEnumAccept;
    if (answer == Callback::kReturnTypeEnumIgnore) {
        mPart0 = mPart1 = nullptr;
        return true;
    }
    contact.setPenetration(mContactPenetrationThreshold);
    if (getPrintOutput())
        output();
    return answer != Callback::kReturnTypeEnumBreak;
}

bool HyCheckContact::preUpdateForceCheck() {
    mPart0 = mPart1 = nullptr;
    bool isBroken = false;
    forEachUniverse([&](HyUniverse& universe) {
        if (isBroken)
            return;
        visitContacts(universe, [&](HyDynamicsContact& contact) {
            isBroken = !limit(contact) || isBroken;
            return true;
        });
    });
    return true;
}

void HyCheckContact::output() {
    const auto name = [](const HyPart* part) {
        return part ? part->getName().c_str() : "frozen part";
    };
    HyWarning(0, "part %s and part %s are deeply inter-penetrated.\n", name(mPart0), name(mPart1));
}

void HyCheckAcceleration::setLinearThreshold(HyReal acceleration) {
    store(acceleration, mCheckAccelerationLinear, square(acceleration),
          "HyCheckAcceleration::setLinearThreshold");
}

void HyCheckAcceleration::setAngularThreshold(HyReal acceleration) {
    store(acceleration, mCheckAccelerationAngular, square(acceleration),
          "HyCheckAcceleration::setAngularThreshold");
}

HyReal HyCheckAcceleration::getLinearThreshold() const {
    return std::sqrt(mCheckAccelerationLinear);
}

HyReal HyCheckAcceleration::getAngularThreshold() const {
    return std::sqrt(mCheckAccelerationAngular);
}

// What is not a number is beyond any limit.
bool HyCheckAcceleration::isBeyond(const HyPart& part) const {
    const HyReal linear = part.getLinearAcceleration().norm();
    const HyReal angular = part.getAngularAcceleration().norm();
    return !(square(linear) <= mCheckAccelerationLinear &&
             square(angular) <= mCheckAccelerationAngular);
}

bool HyCheckAcceleration::look(HyPart& part) {
    if (!isBeyond(part))
        return true;
    Callback* callback = getCheckSubscriberCB();
    const auto answer = callback ? callback->notifyCheckFailure(&part, "check acceleration failure")
                                 : Callback::kReturnTypeEnumBreak;
    if (answer == Callback::kReturnTypeEnumIgnore)
        return true;
    mFailedPart = &part;
    if (getPrintOutput())
        output();
    return answer != Callback::kReturnTypeEnumBreak;
}

bool HyCheckAcceleration::postUpdateForceCheck() {
    mFailedPart = nullptr;
    bool isBroken = false;
    forEachUniverse([&](HyUniverse& universe) {
        if (isBroken)
            return;
        visitParts(universe, [&](HyPart& part) {
            isBroken = !look(part);
            return !isBroken;
        });
    });
    if (mFailedPart)
        HyFrame::currentInstance()->setStepAborted();
    return true;
}

void HyCheckAcceleration::output() {
    if (mFailedPart)
        HyWarning(0, "HyCheckAcceleration: part %s exceeds max acceleration\n",
                  mFailedPart->getName().c_str());
}

bool HyCheckForceFrictionless::preUpdateForceCheck() {
    forEachUniverse([](HyUniverse& universe) {
        visitContacts(universe, [](HyDynamicsContact& contact) {
            DyncContactMaterialSet(contact.getContactMaterial().model,
                                   DyncContactMaterial::kFrictionAxisLinear,
                                   DyncContactMaterial::kFrictionModelNone);
            return true;
        });
    });
    return true;
}

void HyCheckForceKinematicPart::setMassThreshold(HyReal ratio) {
    if (std::isfinite(ratio) && ratio > 0)
        mMassThreshold = ratio;
    else
        HyWarning(0, "HyCheckForceKinematicPart::setMassThreshold: the ratio must be finite and "
                     "above 0.\n");
}

/// Nothing unless both are dynamic parts, -1 unless one is far heavier.
std::optional<int> HyCheckForceKinematicPart::heavierOf(const HyPart* first,
                                                        const HyPart* second) const {
    if (!first || !second || first->getControl() != HyPart::kControlDynamic ||
        second->getControl() != HyPart::kControlDynamic)
        return std::nullopt;
    const HyReal ratio = first->getMass() / second->getMass();
    if (ratio > mMassThreshold)
        return 0;
    return 1 / ratio > mMassThreshold ? 1 : -1;
}

bool HyCheckForceKinematicPart::preUpdateForceCheck() {
    forEachUniverse([this](HyUniverse& universe) {
        visitContacts(universe, [this](HyDynamicsContact& contact) {
            HyPart* parts[2];
            contact.getPartPair(parts[0], parts[1]);
            const int heavier = heavierOf(parts[0], parts[1]).value_or(-1);
            if (heavier >= 0)
                contact.setForcePartKinematicResponse(parts[heavier]);
            return true;
        });
        visitConstraints(universe, [this](HyConstraint& constraint) {
            if (constraint.getPartCount() != 2)
                return true;
            if (const auto heavier = heavierOf(constraint.getPart(0), constraint.getPart(1)))
                constraint.setForcePartKinematicResponseIndex(*heavier);
            return true;
        });
    });
    return true;
}

void HyCheckForceKinematicPart::clearResponses() {
    forEachUniverse([](HyUniverse& universe) {
        visitConstraints(universe, [](HyConstraint& constraint) {
            if (constraint.getPartCount() == 2 && constraint.getPart(0) && constraint.getPart(1))
                constraint.setForcePartKinematicResponseIndex(-1);
            return true;
        });
    });
}

} // namespace Hy
