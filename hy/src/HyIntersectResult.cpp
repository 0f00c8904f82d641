#include <Hy/HyIntersectResult.h>

#include <Col/ColIntersectResult.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColTriangleList.h>
#include <Hy/HyCollisionContact.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyTriListMemProvider.h>

#include <vector>

namespace Hy {

/// A result with a room for contacts and for the triangles of generators, both its own.
struct HyIntersectResult::Owned {
    Owned() {
        result.userTriangleList =
            HyTriListMemProvider::createTriList(HyTriListMemProvider::kDefaultTriangleMaxCount);
    }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    ~Owned() { HyTriListMemProvider::destroyTriList(result.userTriangleList); }

    ColIntersectResult result;
    ColModelPair pair;
    std::vector<ColContact> contacts;
};

HyIntersectResult::HyIntersectResult(std::size_t contactCapacity)
    : mOwned(std::make_unique<Owned>()), mIntersectResult(&mOwned->result) {
    mOwned->contacts.resize(contactCapacity);
    mOwned->result.contacts = mOwned->contacts.data();
    mOwned->result.contactMaxCount = static_cast<int>(contactCapacity);
}

HyIntersectResult::HyIntersectResult(ColIntersectResult* result) : mIntersectResult(result) {}

HyIntersectResult::~HyIntersectResult() = default;

void HyIntersectResult::reset() {
    if (!mIntersectResult)
        return;
    ColIntersectResultClear(mIntersectResult);
    mIntersectResult->data = nullptr;
    mIntersectResult->pair = nullptr;
    mIntersectResult->safeTime = 0;
    if (mIntersectResult->userTriangleList)
        ColTriangleListClear(mIntersectResult->userTriangleList);
}

void HyIntersectResult::keepPair(const ColModelPair& pair) {
    if (mOwned)
        mOwned->pair = pair;
    if (mIntersectResult)
        mIntersectResult->pair = mOwned ? &mOwned->pair : nullptr;
}

bool HyIntersectResult::isPairTouching() const {
    return mIntersectResult && mIntersectResult->touch != 0;
}

bool HyIntersectResult::hasPairEnded() const {
    const ColModelPair* pair = mIntersectResult ? mIntersectResult->pair : nullptr;
    return pair && (pair->m_flags & kColPairEnded) != 0;
}

int HyIntersectResult::getContactMaxCount() const {
    return mIntersectResult ? mIntersectResult->contactMaxCount : 0;
}

int HyIntersectResult::getContactCount() const {
    return mIntersectResult ? mIntersectResult->contactCount : 0;
}

HyReal HyIntersectResult::getSafeTime() const {
    return mIntersectResult ? mIntersectResult->safeTime : 0;
}

void HyIntersectResult::getContactsNormal(HyVector3& normal) const {
    normal = mIntersectResult ? HyVector3(mIntersectResult->normal.v) : HyVector3();
}

// Groups.

int HyIntersectResult::getGroupCount() const {
    return mIntersectResult ? mIntersectResult->groupCount : 0;
}

void HyIntersectResult::getGroupNormal(int group, HyVector3& normal) const {
    const bool valid = group >= 0 && group < getGroupCount();
    normal = valid ? HyVector3(mIntersectResult->groupResult[group].normal.v) : HyVector3();
}

HyReal HyIntersectResult::getGroupSurface(int group) const {
    return group >= 0 && group < getGroupCount() ? mIntersectResult->groupResult[group].surface : 0;
}

int HyIntersectResult::getGroupContactCount(int group) const {
    return group >= 0 && group < getGroupCount() ? mIntersectResult->groupResult[group].contactCount
                                                 : 0;
}

int HyIntersectResult::getGroupFirstContactIndex(int group) const {
    int first = 0;
    for (int before = 0; before < group && before < getGroupCount(); ++before)
        first += mIntersectResult->groupResult[before].contactCount;
    return first;
}

// Contacts.

HyCollisionContact HyIntersectResult::CollisionContactIterator::operator*() const {
    const ColModelPair* pair = mResult->getColIntersectResult()->pair;
    return HyCollisionContact(m_pColContact, pair ? pair->model1 : nullptr,
                              pair ? pair->model2 : nullptr);
}

HyIntersectResult::CollisionContactIterator&
HyIntersectResult::CollisionContactIterator::operator++() {
    ++m_pColContact;
    return *this;
}

HyIntersectResult::CollisionContactIterator
HyIntersectResult::CollisionContactIterator::operator++(int) {
    const CollisionContactIterator before = *this;
    ++*this;
    return before;
}

HyIntersectResult::CollisionContactIterator HyIntersectResult::collisionContactBegin() const {
    return {mIntersectResult ? mIntersectResult->contacts : nullptr, this};
}

HyIntersectResult::CollisionContactIterator HyIntersectResult::collisionContactEnd() const {
    return {mIntersectResult ? mIntersectResult->contacts + mIntersectResult->contactCount
                             : nullptr,
            this};
}

HyIntersectResult::CollisionContactIterator HyIntersectResult::getContact(int index) const {
    if (index < 0 || index >= getContactCount())
        return collisionContactEnd();
    return {mIntersectResult->contacts + index, this};
}

// Pair.

void HyIntersectResult::getCollisionGeometryPair(HyCollisionGeometry*& g1,
                                                 HyCollisionGeometry*& g2) const {
    const ColModelPair* pair = mIntersectResult ? mIntersectResult->pair : nullptr;
    if (!pair)
        return;
    g1 = pair->model1 ? pair->model1->mCollisionGeometry : nullptr;
    g2 = pair->model2 ? pair->model2->mCollisionGeometry : nullptr;
}

void HyIntersectResult::getEntityPair(HyPart*& p1, HyPart*& p2) const {
    HyCollisionGeometry *g1 = nullptr, *g2 = nullptr;
    if (!mIntersectResult || !mIntersectResult->pair)
        return;
    getCollisionGeometryPair(g1, g2);
    p1 = g1 ? g1->getPart() : nullptr;
    p2 = g2 ? g2->getPart() : nullptr;
}

void HyIntersectResult::getResponseIDPair(int& id1, int& id2) const {
    const ColModelPair* pair = mIntersectResult ? mIntersectResult->pair : nullptr;
    if (!pair)
        return;
    id1 = pair->mResponseID1;
    id2 = pair->mResponseID2;
}

} // namespace Hy
