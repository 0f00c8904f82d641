#include "IxTriangleList.h"

#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCylinder.h>
#include <Col/ColPathIntersect.h>
#include <Col/ColSphere.h>

#include "ColPrimitivePairs.h"

#include <cmath>
#include <memory>

int gColCylinderTriListContactBufferSize = kIxTriangleListBufferSize;

namespace {

constexpr int kThreadListRoom = 128;
/// Share by which a ball reaches farther along its path, for rounding.
constexpr KitReal kPathSlack = 1e-6;

struct DestroyList {
    void operator()(ColTriangleList* list) const { ColTriangleListDestroy(list); }
};

bool isNullOrZero(const KitReal* v) {
    return v == nullptr || lsVec3::constCast(v).square_norm() == 0;
}

bool isFastBallOverRest(const ColModelPair& pair) {
    const ColModel &ball = *pair.model1, &list = *pair.model2;
    return ball.mFastMoving && ball.mRefTM == nullptr && ball.linearVelocity != nullptr &&
           ball.mCOMOffset.square_norm() == 0 && isNullOrZero(list.linearVelocity) &&
           isNullOrZero(list.angularVelocity) && isNullOrZero(list.linearAcceleration);
}

/// Whether a ball comes near any triangle of a list at rest within a time, s.
/// @param startTime takes a time before which it reaches none
bool mayReachTriangle(ColModelPair* pair, ColTriangleList* userList, KitReal time,
                      KitReal* startTime) {
    const IxPairFrame frame(*pair);
    const ColModel& ball = *pair->model1;
    const lsVec3& velocity = lsVec3::constCast(ball.linearVelocity);
    const lsVec3 acceleration =
        ball.linearAcceleration ? lsVec3::constCast(ball.linearAcceleration) : lsVec3();
    const lsVec3 way = time * velocity + 0.5 * time * time * acceleration;
    const lsVec3 from = frame.tm2.inverseTransform(frame.tm1.t());
    const Segment chord{from + 0.5 * frame.tm2.inverseTransformWithoutTranslate(way),
                        0.5 * frame.tm2.inverseTransformWithoutTranslate(way)};
    const KitReal bend = time * time * acceleration.norm();
    const KitReal reach =
        (IxGeometry<ColSphere>(pair->model1).radius + frame.eps + bend) * (1 + kPathSlack);
    lsVec3 low, high;
    for (int i = 0; i < 3; ++i) {
        low[i] = chord.centre[i] - std::abs(chord.half[i]) - reach;
        high[i] = chord.centre[i] + std::abs(chord.half[i]) + reach;
    }
    const IxNearTriangles near(pair, frame, low, high, userList);
    KitReal gap = kKitInfinity;
    for (const CxTriangleNE& triangle : near.triangles)
        if (near.isNear(triangle) && !(ClosestPointsOfTriangle(triangle, chord).distance > reach))
            gap = std::min(gap, (ClosestPointOnTriangle(triangle, from).position - from).norm());
    const KitReal speed = velocity.norm() + time * acceleration.norm();
    *startTime = speed > 0 ? std::max((gap - reach) / speed, 0.0) : 0;
    return gap < kKitInfinity;
}

} // namespace

ColTriangleList* IxThreadTriangleList() {
    static thread_local const std::unique_ptr<ColTriangleList, DestroyList> list(
        ColTriangleListCreate(kThreadListRoom));
    return list.get();
}

IxNearTriangles::IxNearTriangles(ColModelPair* pair, const IxPairFrame& frame,
                                 ColTriangleList* userList)
    : listInSolid(IxRelative(frame.tm2, frame.tm1)) {
    const lsTransform solidInList = IxRelative(frame.tm1, frame.tm2);
    ColGeometryGetAABB(pair->model1->mGeometry, &solidInList, &low, &high, nullptr);
    const lsVec3 margin(frame.eps, frame.eps, frame.eps);
    low -= margin;
    high += margin;
    gather(pair, userList);
}

IxNearTriangles::IxNearTriangles(ColModelPair* pair, const IxPairFrame& frame,
                                 const lsVec3& lowCorner, const lsVec3& highCorner,
                                 ColTriangleList* userList)
    : low(lowCorner), high(highCorner), listInSolid(IxRelative(frame.tm2, frame.tm1)) {
    gather(pair, userList);
}

void IxNearTriangles::gather(ColModelPair* pair, ColTriangleList* userList) {
    const auto& list = IxGeometry<ColTriangleList>(pair->model2);
    if (list.triangleListAABBGenerator == nullptr && list.triangleListGenerator == nullptr) {
        triangles = {list.triangleList, static_cast<std::size_t>(list.triangleCount)};
        return;
    }
    if (userList == nullptr)
        userList = IxThreadTriangleList();
    ColTriangleListShallowCopy(&list, userList);
    if (list.triangleListAABBGenerator != nullptr)
        list.triangleListAABBGenerator(pair, low, high, userList);
    else
        list.triangleListGenerator(pair, 0.5 * (low + high), 0.5 * (high - low).norm(), userList);
    triangles = {userList->triangleList, static_cast<std::size_t>(userList->triangleCount)};
}

IxTriangleContactBuffer::IxTriangleContactBuffer(ColModelPair* pair,
                                                 const ColIntersectResult& result,
                                                 const lsTransform& solid, int size) noexcept
    : mOut(&mWork, solid) {
    const int reduced = kColMaxGroups * IxMaxContacts(*pair, result);
    size = std::max(size, reduced + 2 * kMaxContactsOfTriangle);
    const auto memory = mScratch.take<RawContact>(static_cast<std::size_t>(size));
    mWork.pair = pair;
    mWork.contacts = &memory[0].contact;
    mWork.contactMaxCount = size;
}

void IxTriangleContactBuffer::makeRoom() noexcept {
    if (mWork.contactCount + kMaxContactsOfTriangle <= mWork.contactMaxCount)
        return;
    mOut.settle();
    const lsVec3 sum = mWork.normal;
    ColContactSimplifyResult(&mWork);
    mWork.normal = sum;
}

int IxTriangleContactBuffer::simplifyInto(ColIntersectResult* result) noexcept {
    result->contactCount = result->groupCount = 0;
    mOut.settle();
    if (mWork.contactCount == 0)
        return 0;
    result->normal = mWork.normal;
    result->normal.normalize();
    ColContactSimplifyBufferToResult(&result->normal, mWork.contacts, mWork.contactCount, result,
                                     "TriangleList");
    return result->contactCount > 0 ? 1 : 0;
}

int ColSphereTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const KitReal radius = IxGeometry<ColSphere>(pair->model1).radius;
    return IxTriangleListIntersect(
        pair, result, [radius](TriangleContacts* out, const CxTriangleNE& t, KitReal eps) {
            return SphereCxTriangleNEIntersect(out, t, radius, eps);
        });
}

// A fast ball over a list at rest moves along a chord, which its acceleration bends a little: where no
// triangle is near the chord there is no touch, else the search begins where the nearest can be reached.
int ColSphereTriangleListPathIntersect(ColModelPair* pair, ColIntersectResult* result,
                                       KitReal time) {
    ColIntersectResultClear(result);
    KitReal startTime = 0;
    if (time > 0 && isFastBallOverRest(*pair) &&
        !mayReachTriangle(pair, result->userTriangleList, time, &startTime))
        return 0;
    return ColGenericPathIntersectFn(pair, result, time, startTime);
}

int ColBoxTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const lsVec3& radii = IxGeometry<ColBox>(pair->model1).mR;
    return IxTriangleListIntersect(
        pair, result, [&radii](TriangleContacts* out, const CxTriangleNE& t, KitReal eps) {
            return BoxCxTriangleNEIntersect(out, t, radii, eps);
        });
}

int ColCylinderTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const auto& cylinder = IxGeometry<ColCylinder>(pair->model1);
    return IxTriangleListIntersect(
        pair, result,
        [&cylinder](TriangleContacts* out, const CxTriangleNE& t, KitReal eps) {
            return CylinderCxTriangleNEIntersect(out, t, cylinder.radius, cylinder.halfHeight, eps);
        },
        gColCylinderTriListContactBufferSize);
}

int ColCapsuleTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const auto& capsule = IxGeometry<ColCapsule>(pair->model1);
    return IxTriangleListIntersect(
        pair, result, [&capsule](TriangleContacts* out, const CxTriangleNE& t, KitReal eps) {
            return CapsuleCxTriangleNEIntersect(out, t, capsule.radius, capsule.halfHeight, eps);
        });
}

void ColSphereTriangleListRegisterInteraction() {
    ColInteractionTableSetElement(kColSphere, kColTriangleList,
                                  {.intersectFn = ColSphereTriangleListIntersect,
                                   .pathIntersectFn = ColSphereTriangleListPathIntersect},
                                  nullptr);
}

void ColBoxTriangleListRegisterInteraction() {
    ColInteractionTableSetElement(
        kColBox, kColTriangleList,
        {.intersectFn = ColBoxTriangleListIntersect, .pathIntersectFn = ColGenericPathIntersect},
        nullptr);
}

void ColCylinderTriangleListRegisterInteraction() {
    ColInteractionTableSetElement(kColCylinder, kColTriangleList,
                                  {.intersectFn = ColCylinderTriangleListIntersect,
                                   .pathIntersectFn = ColGenericPathIntersect},
                                  nullptr);
}

void ColCapsuleTriangleListRegisterInteraction() {
    ColInteractionTableSetElement(kColCapsule, kColTriangleList,
                                  {.intersectFn = ColCapsuleTriangleListIntersect,
                                   .pathIntersectFn = ColGenericPathIntersect},
                                  nullptr);
}
