#include <Hy/HyUniverse.h>

#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyDynamicsExtension.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyPointer.h>
#include <Hy/HyUniverseObserver.h>

// How objects enter and leave a universe, and who hears of it. Observers may delete what they are
// told of; a weak pointer follows it where there are observers to do so.

namespace Hy {

/// One kind of member: where the universe keeps it and what observers hear of it.
template <typename T>
struct HyUniverse::MemberKind {
    HyWalkedObjects<T> HyUniverse::*members;
    void (HyUniverseObserver::*onAdded)(T*);
    void (HyUniverseObserver::*onRemoved)(T*);
};

const HyUniverse::MemberKind<HyPart> HyUniverse::kParts{
    &HyUniverse::mParts, &HyUniverseObserver::onPartAdded, &HyUniverseObserver::onPartRemoved};

const HyUniverse::MemberKind<HyConstraint> HyUniverse::kConstraints{
    &HyUniverse::mConstraints, &HyUniverseObserver::onConstraintAdded,
    &HyUniverseObserver::onConstraintRemoved};

const HyUniverse::MemberKind<HyCollisionGeometry> HyUniverse::kGeometries{
    &HyUniverse::mCollisionGeometries, &HyUniverseObserver::onCollisionGeometryAdded,
    &HyUniverseObserver::onCollisionGeometryRemoved};

const HyUniverse::MemberKind<HyDynamicsExtension> HyUniverse::kExtensions{
    &HyUniverse::mExtensions, &HyUniverseObserver::onExtensionAdded,
    &HyUniverseObserver::onExtensionRemoved};

/// Answers whether the member has outlived the calls.
template <typename T>
bool HyUniverse::tellObservers(void (HyUniverseObserver::*call)(T*), T* member) {
    if (mObservers.empty())
        return true;
    const HyPointer<T> alive(member);
    mObservers.forEach([&](HyUniverseObserver& observer) {
        if (alive.valid())
            (observer.*call)(member);
    });
    return alive.valid();
}

template <typename T>
void HyUniverse::tellOfContents(HyUniverseObserver& observer, const MemberKind<T>& kind,
                                void (HyUniverseObserver::*call)(T*)) {
    for (HySafeWalk walk(this->*kind.members); T* member = walk.next();)
        (observer.*call)(member);
}

void HyUniverse::tellOfAllContents(HyUniverseObserver& observer, bool added) {
    tellOfContents(observer, kParts, added ? kParts.onAdded : kParts.onRemoved);
    tellOfContents(observer, kGeometries, added ? kGeometries.onAdded : kGeometries.onRemoved);
    tellOfContents(observer, kConstraints, added ? kConstraints.onAdded : kConstraints.onRemoved);
    tellOfContents(observer, kExtensions, added ? kExtensions.onAdded : kExtensions.onRemoved);
}

// The member stands here before it leaves its other universe. If an observer there deletes it, its
// place here is cleared by address, as it can be compared no more. If one takes it elsewhere, it goes
// there.
template <typename T>
bool HyUniverse::addMember(const MemberKind<T>& kind, T* member) {
    HyWalkedObjects<T>& members = this->*kind.members;
    if (!member || !members.insert(member))
        return false;
    HyUniverse* other = member->getUniverse();
    if (other && !other->removeMember(kind, member)) {
        SortedVector<T*, HyCreationOrder> rest;
        for (T* each : members)
            if (each != member)
                rest.insert(each);
        members.swap(rest);
        return false;
    }
    if (member->getUniverse() || !members.contains(member)) {
        members.erase(member);
        return false;
    }
    member->setUniverse(this);
    tellObservers(kind.onAdded, member);
    return true;
}

template <typename T>
T* HyUniverse::removeMember(const MemberKind<T>& kind, T* member) {
    if (!member || !(this->*kind.members).erase(member))
        return nullptr;
    member->setUniverse(nullptr);
    return tellObservers(kind.onRemoved, member) ? member : nullptr;
}

template <typename T>
void HyUniverse::destroyMembers(const MemberKind<T>& kind) {
    const HyWalkedObjects<T>& members = this->*kind.members;
    while (!members.empty())
        delete removeMember(kind, members[members.size() - 1]);
}

bool HyUniverse::addPart(HyPart* part) {
    return addMember(kParts, part);
}

HyPart* HyUniverse::removePart(HyPart* part) {
    return removeMember(kParts, part);
}

void HyUniverse::destroyPart(HyPart* part) {
    delete removeMember(kParts, part);
}

void HyUniverse::destroyParts() {
    destroyMembers(kParts);
}

bool HyUniverse::addConstraint(HyConstraint* constraint) {
    return addMember(kConstraints, constraint);
}

HyConstraint* HyUniverse::removeConstraint(HyConstraint* constraint) {
    return removeMember(kConstraints, constraint);
}

void HyUniverse::destroyConstraint(HyConstraint* constraint) {
    delete removeMember(kConstraints, constraint);
}

void HyUniverse::destroyConstraints() {
    destroyMembers(kConstraints);
}

bool HyUniverse::addExtension(HyDynamicsExtension* extension) {
    return addMember(kExtensions, extension);
}

HyDynamicsExtension* HyUniverse::removeExtension(HyDynamicsExtension* extension) {
    return removeMember(kExtensions, extension);
}

void HyUniverse::destroyExtension(HyDynamicsExtension* extension) {
    delete removeMember(kExtensions, extension);
}

void HyUniverse::destroyExtensions() {
    destroyMembers(kExtensions);
}

// A geometry of a part comes and goes with it; one of a composite with that.
bool HyUniverse::addCollisionGeometry(HyCollisionGeometry* geometry) {
    if (geometry && (geometry->getParent() ||
                     (geometry->getPart() && geometry->getPart()->getUniverse() != this))) {
        HyWarning(0,
                  "HyUniverse::addCollisionGeometry: the geometry must not be in a composite or in "
                  "a part of another universe.\n");
        return false;
    }
    return addMember(kGeometries, geometry);
}

HyCollisionGeometry* HyUniverse::removeCollisionGeometry(HyCollisionGeometry* geometry) {
    return removeMember(kGeometries, geometry);
}

void HyUniverse::destroyCollisionGeometry(HyCollisionGeometry* geometry) {
    if (mCollisionGeometries.contains(geometry))
        delete geometry;
}

void HyUniverse::destroyCollisionGeometries() {
    while (!mCollisionGeometries.empty())
        delete mCollisionGeometries[mCollisionGeometries.size() - 1];
}

// Observers.

void HyUniverse::registerObserver(HyUniverseObserver* observer, bool notify) {
    if (!observer || observer->mObservedUniverse == this)
        return;
    if (observer->mObservedUniverse)
        observer->mObservedUniverse->unregisterObserver(observer, false);
    observer->mObservedUniverse = this;
    mObservers.add(observer);
    if (notify)
        tellOfAllContents(*observer, true);
}

void HyUniverse::unregisterObserver(HyUniverseObserver* observer, bool notify) {
    if (!mObservers.remove(observer))
        return;
    observer->mObservedUniverse = nullptr;
    if (notify)
        tellOfAllContents(*observer, false);
}

HyUniverseObserver::~HyUniverseObserver() {
    if (mObservedUniverse)
        mObservedUniverse->unregisterObserver(this, false);
}

} // namespace Hy
