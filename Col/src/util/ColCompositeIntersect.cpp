#include <Col/ColComposite.h>
#include <Col/ColFrame.h>
#include <Col/ColIntersect.h>
#include <Col/ColIntersectResult.h>
#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColRequest.h>
#include <Col/ColScratch.h>
#include <Col/ColSimplify.h>

#include <algorithm>
#include <cmath>
#include <span>

// A composite meets another model as its solid children do, but for what lies in a hole: there the
// walls of the hole count instead, and on its rim a contact is neither deep nor gone.

namespace {

/// Room for the contacts of all children before they are reduced.
constexpr std::size_t kBufferContacts = 1024;
/// A sum of normals shorter than this has no direction.
constexpr KitReal kMinNormal = 1e-7;

const ColCompositeGeometry* compositeOf(const ColModel* model) {
    return model->mGeometry != nullptr && model->mGeometry->mID == kColComposite
               ? static_cast<const ColCompositeGeometry*>(model->mGeometry)
               : nullptr;
}

bool isEnabled(const ColModel* model) {
    return model->mTemporaryDisabledStatus == kNotTemporaryDisabled;
}

bool boundsMeet(const ColModel& a, const ColModel& b) {
    for (int axis = 0; axis < 3; ++axis)
        if (a.mBounds[2 * axis] > b.mBounds[2 * axis + 1] ||
            b.mBounds[2 * axis] > a.mBounds[2 * axis + 1])
            return false;
    return true;
}

bool filtersAgree(ColModel* child, ColModel* other) {
    const auto ask = gColFramework->host.isPairEnabled;
    if (ask == nullptr)
        return true;
    Hy::HyIntersectFilter *first = child->mIntersectFilter, *second = other->mIntersectFilter;
    return (first == nullptr || ask(first, child, other)) &&
           (second == nullptr || second == first || ask(second, child, other));
}

bool isInHole(const ColModel& hole, const ColContact& contact) {
    const auto holds = [&](int side) {
        lsVec3 point;
        ColContactGetPosition(&contact, side, &point);
        return ColGeometryGetPointInVolume(hole.mGeometry, hole.mGlobalTM, point);
    };
    return holds(0) || (contact.surfaceIndex != kColSurfaceNone && holds(1));
}

/// The collision of a composite with one other model.
class Collision {
public:
    Collision(ColModelPair* pair, ColIntersectResult* result, std::span<ColContact> buffer)
        : mPair(pair), mResult(result), mBuffer(buffer), mComposite(pair->model1),
          mOther(pair->model2) {
        chooseSide();
    }

    int run();

private:
    void chooseSide();
    [[nodiscard]] bool wantsContacts() const {
        return mPair->request->contactMaxCount > 0 && mResult->contactMaxCount > 0;
    }
    void collideWithChild(ColModel* child);
    void helloChild(ColModelPair& pair, ColModel* child) const;
    void removeContactsIn(const ColModel& hole, std::size_t from);
    void collideWithHoles();
    void liftRims(std::size_t holeStart);
    void reduceIfFull();
    void finish();

    ColModelPair* mPair;
    ColIntersectResult* mResult;
    std::span<ColContact> mBuffer;
    std::size_t mCount = 0;
    ColModel* mComposite;
    ColModel* mOther;
    bool mSwapped = false;
    lsVec3 mNormal;
};

// The one without holes is walked, or the larger of two with holes.
void Collision::chooseSide() {
    const ColCompositeGeometry *own = compositeOf(mComposite), *others = compositeOf(mOther);
    if (own->mHoles.empty() || others == nullptr)
        return;
    mSwapped = others->mHoles.empty();
    if (!mSwapped) {
        int larger = 0;
        for (int axis = 0; axis < 3; ++axis)
            larger += mOther->mBounds[2 * axis + 1] - mOther->mBounds[2 * axis] >
                      mComposite->mBounds[2 * axis + 1] - mComposite->mBounds[2 * axis];
        mSwapped = larger >= 2;
    }
    if (mSwapped)
        std::swap(mComposite, mOther);
}

void Collision::helloChild(ColModelPair& pair, ColModel* child) const {
    ColRequest* request = nullptr;
    if (mPair->request->contactMaxCount == 0 || compositeOf(child) != nullptr ||
        compositeOf(mOther) != nullptr)
        request = mPair->request;
    else if (mResult->bridge != nullptr && gColFramework->host.partPartRequest != nullptr)
        request = gColFramework->host.partPartRequest(mResult->bridge, mOther->mRequestID,
                                                      child->mRequestID);
    if (request != nullptr)
        ColHelloWithRequest(&pair, request);
    else
        ColHello(&pair);
}

void Collision::collideWithChild(ColModel* child) {
    if (child->mGeometry == nullptr || !boundsMeet(*child, *mOther) || !filtersAgree(child, mOther))
        return;
    ColModelPair pair;
    ColModelPairReset(&pair, mOther, child);
    helloChild(pair, child);
    ColIntersectResult childResult;
    childResult.contacts = mBuffer.data() + mCount;
    childResult.contactMaxCount = static_cast<int>(mBuffer.size() - mCount);
    childResult.contactPool = mResult->contactPool;
    childResult.userTriangleList = mResult->userTriangleList;
    childResult.threadedData = mResult->threadedData;
    childResult.bridge = mResult->bridge;
    ColIntersect(&pair, &childResult);
    ColGoodbye(&pair);
    if (childResult.touch == 0)
        return;
    mResult->touch = 1;
    if (pair.request->contactMaxCount == 0 || !wantsContacts())
        return;
    const auto added = static_cast<std::size_t>(childResult.contactCount);
    if (pair.model1 != child) {
        for (ColContact& contact : mBuffer.subspan(mCount, added))
            ColContactInvert(&contact);
        childResult.normal = -childResult.normal;
    }
    mCount += added;
    mNormal += childResult.normal;
    reduceIfFull();
}

void Collision::reduceIfFull() {
    if (mCount <= mBuffer.size() / 2 || mCount <= mPair->request->contactMaxCount)
        return;
    ColIntersectResult view;
    view.pair = mPair;
    view.contacts = mBuffer.data();
    view.contactMaxCount = static_cast<int>(mBuffer.size());
    view.contactCount = static_cast<int>(mCount);
    view.contactPool = mResult->contactPool;
    view.normal = mNormal;
    view.normal.normalize();
    ColContactSimplifyResult(&view);
    mCount = static_cast<std::size_t>(view.contactCount);
}

void Collision::removeContactsIn(const ColModel& hole, std::size_t from) {
    for (std::size_t i = from; i < mCount;) {
        if (isInHole(hole, mBuffer[i]))
            mBuffer[i] = mBuffer[--mCount]; // the last one takes the place and is tested next
        else
            ++i;
    }
}

void Collision::collideWithHoles() {
    const auto& holes = compositeOf(mComposite)->mHoles;
    for (const ColModel* hole : holes)
        if (isEnabled(hole) && hole->mGeometry != nullptr)
            removeContactsIn(*hole, 0);
    const std::size_t holeStart = mCount;
    for (ColModel* hole : holes) {
        if (!isEnabled(hole))
            continue;
        const std::size_t before = mCount;
        collideWithChild(hole);
        for (const ColModel* another : holes)
            if (another != hole && isEnabled(another) && another->mGeometry != nullptr)
                removeContactsIn(*another, std::min(before, mCount));
    }
    liftRims(std::min(holeStart, mCount));
}

// Where a contact of a solid and one of a wall are at one place, the body stands on the rim.
void Collision::liftRims(std::size_t holeStart) {
    const auto near = [](const ColContact& a, int sideA, const ColContact& b, int sideB,
                         KitReal t) {
        lsVec3 pointA, pointB;
        ColContactGetPosition(&a, sideA, &pointA);
        ColContactGetPosition(&b, sideB, &pointB);
        return (pointA - pointB).square_norm() < t;
    };
    for (std::size_t i = 0; i < holeStart; ++i)
        for (std::size_t j = holeStart; j < mCount; ++j) {
            const ColContact &solid = mBuffer[i], &wall = mBuffer[j];
            const KitReal reach = std::abs(solid.separation) + wall.model1->mGeometry->mSkin +
                                  wall.model2->mGeometry->mSkin;
            const bool midway =
                solid.surfaceIndex == kColSurfaceNone && wall.surfaceIndex == kColSurfaceNone;
            bool touches = near(solid, 0, wall, 0, reach * reach);
            if (!midway)
                touches = touches || near(solid, 0, wall, 1, reach * reach) ||
                          near(solid, 1, wall, 0, reach * reach) ||
                          near(solid, 1, wall, 1, reach * reach);
            if (touches)
                mBuffer[i].separation = 0;
        }
}

void Collision::finish() {
    if (mNormal.norm() < kMinNormal)
        mNormal = mBuffer[0].normal;
    else
        mNormal.normalize();
    mResult->contactCount =
        ColContactSimplify(&mNormal, mBuffer.data(), static_cast<int>(mCount), mResult);
    mResult->normal = mNormal;
    const std::span<ColContact> contacts(mResult->contacts,
                                         static_cast<std::size_t>(mResult->contactCount));
    if (mSwapped) {
        for (ColContact& contact : contacts)
            ColContactInvert(&contact);
        mResult->normal = -mResult->normal;
        for (int group = 0; group < mResult->groupCount; ++group)
            mResult->groupResult[group].normal = -mResult->groupResult[group].normal;
    }
    if (mPair->model1->mParent != nullptr || mPair->model2->mParent != nullptr)
        return;
    for (ColContact& contact : contacts)
        if (contact.model1->mBody != mPair->model1->mBody) {
            std::swap(contact.model1, contact.model2);
            std::swap(contact.indexElement1, contact.indexElement2);
        }
}

int Collision::run() {
    ColIntersectResultClear(mResult);
    if (!isEnabled(mOther))
        return 0;
    for (ColModel* child : compositeOf(mComposite)->mElements) {
        if (!isEnabled(child))
            continue;
        collideWithChild(child);
        if (mResult->touch != 0 && !wantsContacts())
            return 1;
    }
    if (mResult->touch == 0)
        return 0;
    if (!compositeOf(mComposite)->mHoles.empty())
        collideWithHoles();
    if (mCount == 0)
        return mResult->touch = 0;
    finish();
    return mResult->contactCount > 0;
}

int intersect(ColModelPair* pair, ColIntersectResult* result) {
    ColScratchScope scratch;
    return Collision(pair, result, scratch.take<ColContact>(kBufferContacts)).run();
}

// The nearest of the children's distances, points in the pair's own order.
int approximateDistance(ColModelPair* pair, const ColDistanceRequest* request,
                        ColDistanceResult* result) {
    int known = 0;
    for (ColModel* child : compositeOf(pair->model1)->mElements) {
        if (!isEnabled(child) || child->mGeometry == nullptr)
            continue;
        ColModelPair childPair;
        ColModelPairReset(&childPair, child, pair->model2);
        ColDistanceResult one;
        ColHello(&childPair);
        const int answered = ColApproximateDistance(&childPair, request, &one);
        ColGoodbye(&childPair);
        if (answered == 0 || (known != 0 && one.distanceLB >= result->distanceLB))
            continue;
        if (childPair.model1 != child) {
            std::swap(one.point1, one.point2);
            std::swap(one.element1, one.element2);
        }
        one.pair = pair;
        *result = one;
        known = 1;
    }
    return known;
}

} // namespace

void ColCompositeGenericRegisterInteractions() {
    ColInteractions interactions;
    interactions.intersectFn = intersect;
    interactions.approxDistanceFn = approximateDistance;
    for (int type = 0; type < ColGeometryGetRegisteredTypeMaxId(); ++type)
        if (ColGeometryTypeIdIsValid(type))
            ColInteractionTableSetElement(kColComposite, type, interactions, nullptr);
}
