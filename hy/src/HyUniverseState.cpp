#include <Hy/HyUniverseState.h>

#include <Hy/HyCollisionGeometryState.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyConstraintState.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyPartState.h>
#include <Hy/HyUniverse.h>
#include <Hy/HyUniverseObserver.h>

#include <algorithm>

namespace Hy {

HyUniverseState::HyUniverseState() = default;
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
    state->mGravity = getGravity();
    state->mAutoSleep = getAutoSleep();
    return state;
}

// Gravity, if it differs, and constraints come first: both wake parts, which are then brought to the
// sleep in which they were.
void HyUniverse::restoreState(HyUniverseState* state) {
    if (!state)
        return;
    if (state->mInstance.get() != this || mStepping) {
        HyWarning(0, "HyUniverse::restoreState: the state must be of this universe, which must not "
                     "be stepping.\n");
        return;
    }
    const HyVector3 gravity = getGravity();
    if (!std::equal(gravity.v, gravity.v + 3, state->mGravity.v))
        setGravity(state->mGravity);
    setAutoSleep(state->mAutoSleep);
    for (const std::unique_ptr<HyConstraintState>& constraint : state->mConstraints)
        if (constraint->mInstance.valid() && constraint->mInstance->getUniverse() == this)
            constraint->restore();
    for (const std::unique_ptr<HyPartState>& part : state->mParts)
        if (part->mInstance.valid() && part->mInstance->getUniverse() == this)
            part->restore();
    for (const std::unique_ptr<HyCollisionGeometryState>& geometry : state->mCollisionGeometries)
        if (geometry->mInstance.valid() && geometry->mInstance->getUniverse() == this &&
            !geometry->mInstance->getPart()) // a part restores its own
            geometry->restore();
    resetContacts(state->mEnableIntersectSubscribersOnRestore);
    mObservers.forEach([](HyUniverseObserver& observer) { observer.onStateRestored(); });
}

} // namespace Hy
