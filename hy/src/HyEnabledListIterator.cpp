#include <Hy/HyEnabledListIterator.h>

#include <Hy/HyConstraint.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

#include <Dync/DynBaseConstraint.h>
#include <Dync/DynContactRecord.h>
#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>

// The iterator holds the present record and the next one, so that either may leave the list. Its
// universe tells it of records that leave the world.

namespace Hy {
namespace {

template <class Record>
bool isListed(const Record* record) {
    return record && record->enabledTome;
}

/// What differs between the lists.
template <class Object>
struct List;

template <>
struct List<HyPart> {
    static constexpr const char* kVisitAborted =
        "HyUniverse::DynamicPartIterator: part should not be disabled or removed from the universe "
        "while iterating them. Visit is aborted\n";
    static DynBody* head(const DynWorld& world) { return world.enabledBodyHead; }
    static int size(const DynWorld& world) { return world.nEnabledBodies; }
    static HyPart* object(const DynBody& body) { return body.mPart; }
    static bool isVisited(const DynBody& body) {
        return body.rootParent == &body && body.mPart &&
               body.mPart->getEffectiveControl() == HyPart::kControlDynamic;
    }
};

template <>
struct List<HyConstraint> {
    static constexpr const char* kVisitAborted =
        "HyUniverse::EnabledConstraintsIterator: constraint should not be disabled or removed from "
        "the universe while iterating them. Visit is aborted\n";
    static DynBaseConstraint* head(const DynWorld& world) { return world.enabledConstraintHead; }
    static int size(const DynWorld& world) { return world.nEnabledConstraints; }
    static HyConstraint* object(const DynBaseConstraint& record) { return record.mConstraint; }
    static bool isVisited(const DynBaseConstraint& record) {
        return record.bclH.tag != kDynTagContact && record.mConstraint;
    }
};

template <>
struct List<HyDynamicsContact> {
    static constexpr const char* kVisitAborted =
        "HyUniverse::DynamicsContactIterator: contact should not be disabled or removed from the "
        "universe while iterating them. Visit is aborted\n";
    static DynBaseConstraint* head(const DynWorld& world) { return world.enabledConstraintHead; }
    static int size(const DynWorld& world) { return world.nEnabledConstraints; }
    static HyDynamicsContact* object(DynBaseConstraint& record) {
        return HyDynamicsContact::fromDynContact(static_cast<DynContact*>(&record));
    }
    static bool isVisited(const DynBaseConstraint& record) {
        return record.bclH.tag == kDynTagContact;
    }
};

} // namespace

template <class Record, class Object>
HyEnabledListIterator<Record, Object>::HyEnabledListIterator(Visits& visits, const DynWorld& world)
    : mRemaining(List<Object>::size(world)) {
    join(&visits);
    mRecord = firstFrom(List<Object>::head(world));
    mNextRecord = mRecord ? firstFrom(mRecord->enabledNext) : nullptr;
}

template <class Record, class Object>
HyEnabledListIterator<Record, Object>::HyEnabledListIterator(const HyEnabledListIterator& other) {
    copyPlace(other);
}

template <class Record, class Object>
HyEnabledListIterator<Record, Object>&
HyEnabledListIterator<Record, Object>::operator=(const HyEnabledListIterator& other) {
    if (this != &other) {
        leave();
        copyPlace(other);
    }
    return *this;
}

template <class Record, class Object>
HyEnabledListIterator<Record, Object>::~HyEnabledListIterator() {
    leave();
}

template <class Record, class Object>
Object* HyEnabledListIterator<Record, Object>::operator*() const {
    return mRecord ? List<Object>::object(*mRecord) : nullptr;
}

template <class Record, class Object>
HyEnabledListIterator<Record, Object>& HyEnabledListIterator<Record, Object>::operator++() {
    Record* next = nullptr;
    if (isListed(mNextRecord))
        next = firstFrom(mNextRecord);
    else if (isListed(mRecord))
        next = firstFrom(mRecord->enabledNext);
    else if (mNextRecord || mNextLost)
        HyWarning(0, "%s", List<Object>::kVisitAborted);
    mRecord = --mRemaining > 0 ? next : nullptr;
    mNextRecord = mRecord ? firstFrom(mRecord->enabledNext) : nullptr;
    mNextLost = false;
    return *this;
}

template <class Record, class Object>
bool HyEnabledListIterator<Record, Object>::isVisited(const Record* record) {
    return isListed(record) && List<Object>::isVisited(*record);
}

/// The first record to visit from a place of the list on.
template <class Record, class Object>
Record* HyEnabledListIterator<Record, Object>::firstFrom(Record* record) {
    while (record && !isVisited(record))
        record = record->enabledNext;
    return record;
}

template <class Record, class Object>
void HyEnabledListIterator<Record, Object>::copyPlace(const HyEnabledListIterator& other) {
    mRecord = other.mRecord;
    mNextRecord = other.mNextRecord;
    mRemaining = other.mRemaining;
    mNextLost = other.mNextLost;
    join(other.mVisits);
}

template <class Record, class Object>
void HyEnabledListIterator<Record, Object>::join(Visits* visits) {
    mVisits = visits;
    if (!visits)
        return;
    mOlder = visits->mNewest;
    if (mOlder)
        mOlder->mNewer = this;
    visits->mNewest = this;
}

template <class Record, class Object>
void HyEnabledListIterator<Record, Object>::leave() {
    if (mVisits) {
        (mNewer ? mNewer->mOlder : mVisits->mNewest) = mOlder;
        if (mOlder)
            mOlder->mNewer = mNewer;
    }
    mVisits = nullptr;
    mNewer = mOlder = nullptr;
    mRecord = mNextRecord = nullptr;
    mNextLost = false;
}

template <class Record, class Object>
void HyEnabledListIterator<Record, Object>::recordLeaves(const Record* record) {
    if (record == mRecord)
        mRecord = nullptr;
    if (record == mNextRecord) {
        mNextRecord = nullptr;
        mNextLost = true;
    }
}

template <class Record, class Object>
void HyEnabledListVisits<Record, Object>::leaves(const Record* record) {
    for (auto* iterator = mNewest; iterator; iterator = iterator->mOlder)
        iterator->recordLeaves(record);
}

template <class Record, class Object>
void HyEnabledListVisits<Record, Object>::end() {
    while (mNewest)
        mNewest->leave();
}

template class HY_API HyEnabledListIterator<DynBody, HyPart>;
template class HY_API HyEnabledListIterator<DynBaseConstraint, HyConstraint>;
template class HY_API HyEnabledListIterator<DynBaseConstraint, HyDynamicsContact>;
template class HyEnabledListVisits<DynBody, HyPart>;
template class HyEnabledListVisits<DynBaseConstraint, HyConstraint>;
template class HyEnabledListVisits<DynBaseConstraint, HyDynamicsContact>;

} // namespace Hy
