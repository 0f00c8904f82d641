#include <Hy/HyUniverseState.h>

#include "HyContactHistory.h"

#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometryState.h>
#include <Hy/HyCollisionPairRequest.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyConstraintState.h>
#include <Hy/HyDynamicsExtensionState.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyPartState.h>
#include <Hy/HyUniverse.h>
#include <Hy/HyUniverseObserver.h>

#include <algorithm>

namespace Hy {

HyUniverseState::HyUniverseState() : mContacts(std::make_unique<HyContactHistory>()) {}
HyUniverseState::~HyUniverseState() = default;

void HyUniverseState::restore() {
    if (mInstance.valid())
        mInstance->restoreState(this);
}

HyUniverseState* HyUniverse::createState() {
    auto* state = new HyUniverseState;
    state->mInstance = this;
    for (HyCollisionGeometry* geometry : mCollisionGeometries)
        state->mCollisionGeometries.emplace_back(geometry->createState());
    state->mParts.reserve(mParts.size());
    for (HyPart* part : mParts)
        state->mParts.emplace_back(part->createState());
    state->mConstraints.reserve(mConstraints.size());
    for (HyConstraint* constraint : mConstraints)
        state->mConstraints.emplace_back(constraint->createState());
    for (HyDynamicsExtension* extension : mExtensions)
        if (HyDynamicsExtensionState* captured = extension->createState())
            state->mExtensions.emplace_back(captured);
    state->mGravity = getGravity();
    state->mPartPartContactCount = getPartPartCollisionPairRequest(0, 0).getContactMaxCount();
    state->mPartSensorContactCount = getSensorPartCollisionPairRequest().getContactMaxCount();
    state->mSensorSensorContactCount = getSensorSensorCollisionPairRequest().getContactMaxCount();
    state->mContacts->capture(*mSpace, *mBridge);
    state->mAutoSleep = getAutoSleep();
    return state;
}

// Much of this wakes parts, so sleep is put back at the end; and contacts come last, for those that the
// reset makes stand for the present positions, while the next step continues those of the last one.
void HyUniverse::restoreState(HyUniverseState* state) {
    if (!state)
        return;
    if (state->mInstance.get() != this || mStepping) {
        HyWarning(0, "HyUniverse::restoreState: the state must be of this universe, which must not "
                     "be stepping.\n");
        return;
    }
    const auto isHere = [this](const auto& each) {
        return each->mInstance.valid() && each->mInstance->getUniverse() == this;
    };
    for (const std::unique_ptr<HyCollisionGeometryState>& geometry : state->mCollisionGeometries)
        if (isHere(geometry) && !geometry->mInstance->getPart()) // a part restores its own
            geometry->restore();
    for (const std::unique_ptr<HyPartState>& part : state->mParts)
        if (isHere(part))
            part->restore();
    for (const std::unique_ptr<HyConstraintState>& constraint : state->mConstraints)
        if (isHere(constraint))
            constraint->restore();
    for (const std::unique_ptr<HyDynamicsExtensionState>& extension : state->mExtensions)
        if (isHere(extension) && !extension->mInstance->getContainer()) // which restores its own
            extension->restore();
    const HyVector3 gravity = getGravity();
    if (!std::equal(gravity.v, gravity.v + 3, state->mGravity.v))
        setGravity(state->mGravity);
    setAutoSleep(state->mAutoSleep);
    getPartPartCollisionPairRequest(0, 0).setContactMaxCount(state->mPartPartContactCount);
    getSensorPartCollisionPairRequest().setContactMaxCount(state->mPartSensorContactCount);
    getSensorSensorCollisionPairRequest().setContactMaxCount(state->mSensorSensorContactCount);
    resetContacts(state->mEnableIntersectSubscribersOnRestore);
    mBridge->setCallBackEnabled(false);
    state->mContacts->restore(*mSpace, *mBridge, *mWorld);
    mBridge->setCallBackEnabled(true);
    for (const std::unique_ptr<HyPartState>& part : state->mParts)
        if (isHere(part))
            part->mInstance->restoreActivity(*part);
    mObservers.forEach([](HyUniverseObserver& observer) { observer.onStateRestored(); });
}

} // namespace Hy
