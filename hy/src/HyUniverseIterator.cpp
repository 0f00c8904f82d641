#include <Hy/HyUniverse.h>

#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>

// The iterator holds the present body and the next one, so that either may leave the list of enabled
// bodies. Its universe tells it of bodies that leave the world.

namespace Hy {
namespace {

bool isListed(const DynBody* body) {
    return body && body->enabledTome;
}

} // namespace

HyUniverse::DynamicPartIterator HyUniverse::dynamicPartBegin() {
    return DynamicPartIterator(*this);
}

HyUniverse::DynamicPartIterator HyUniverse::dynamicPartEnd() {
    return DynamicPartIterator();
}

HyUniverse::DynamicPartIterator::DynamicPartIterator(HyUniverse& universe)
    : mRemaining(universe.mWorld->nEnabledBodies) {
    join(&universe);
    mBody = firstFrom(universe.mWorld->enabledBodyHead);
    mNextBody = mBody ? firstFrom(mBody->enabledNext) : nullptr;
}

HyUniverse::DynamicPartIterator::DynamicPartIterator(const DynamicPartIterator& other) {
    copyPlace(other);
}

HyUniverse::DynamicPartIterator&
HyUniverse::DynamicPartIterator::operator=(const DynamicPartIterator& other) {
    if (this != &other) {
        leave();
        copyPlace(other);
    }
    return *this;
}

HyUniverse::DynamicPartIterator::~DynamicPartIterator() {
    leave();
}

HyPart* HyUniverse::DynamicPartIterator::operator*() const {
    return mBody ? mBody->mPart : nullptr;
}

HyUniverse::DynamicPartIterator& HyUniverse::DynamicPartIterator::operator++() {
    DynBody* next = nullptr;
    if (isListed(mNextBody))
        next = firstFrom(mNextBody);
    else if (isListed(mBody))
        next = firstFrom(mBody->enabledNext);
    else if (mNextBody || mNextLost)
        HyWarning(0, "HyUniverse::DynamicPartIterator: part should not be disabled or removed from "
                     "the universe while iterating them. Visit is aborted\n");
    mBody = --mRemaining > 0 ? next : nullptr;
    mNextBody = mBody ? firstFrom(mBody->enabledNext) : nullptr;
    mNextLost = false;
    return *this;
}

bool HyUniverse::DynamicPartIterator::isVisited(const DynBody* body) {
    return isListed(body) && body->rootParent == body && body->mPart &&
           body->mPart->getEffectiveControl() == HyPart::kControlDynamic;
}

/// The first body to visit from a place of the list on.
DynBody* HyUniverse::DynamicPartIterator::firstFrom(DynBody* body) {
    while (body && !isVisited(body))
        body = body->enabledNext;
    return body;
}

void HyUniverse::DynamicPartIterator::copyPlace(const DynamicPartIterator& other) {
    mBody = other.mBody;
    mNextBody = other.mNextBody;
    mRemaining = other.mRemaining;
    mNextLost = other.mNextLost;
    join(other.mUniverse);
}

void HyUniverse::DynamicPartIterator::join(HyUniverse* universe) {
    mUniverse = universe;
    if (!universe)
        return;
    mOlder = universe->mIterators;
    if (mOlder)
        mOlder->mNewer = this;
    universe->mIterators = this;
}

void HyUniverse::DynamicPartIterator::leave() {
    if (mUniverse) {
        (mNewer ? mNewer->mOlder : mUniverse->mIterators) = mOlder;
        if (mOlder)
            mOlder->mNewer = mNewer;
    }
    mUniverse = nullptr;
    mNewer = mOlder = nullptr;
    mBody = mNextBody = nullptr;
    mNextLost = false;
}

void HyUniverse::DynamicPartIterator::bodyLeaves(const DynBody* body) {
    if (body == mBody)
        mBody = nullptr;
    if (body == mNextBody) {
        mNextBody = nullptr;
        mNextLost = true;
    }
}

} // namespace Hy
