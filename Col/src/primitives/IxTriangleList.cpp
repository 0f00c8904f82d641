#include "IxTriangleList.h"

#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCylinder.h>
#include <Col/ColSphere.h>

#include "ColPrimitivePairs.h"

#include <memory>

int gColCylinderTriListContactBufferSize = kIxTriangleListBufferSize;

namespace {

constexpr int kThreadListRoom = 128;

struct DestroyList {
    void operator()(ColTriangleList* list) const { ColTriangleListDestroy(list); }
};

} // namespace

ColTriangleList* IxThreadTriangleList() {
    static thread_local const std::unique_ptr<ColTriangleList, DestroyList> list(
        ColTriangleListCreate(kThreadListRoom));
    return list.get();
}

IxNearTriangles::IxNearTriangles(ColModelPair* pair, const IxPairFrame& frame,
                                 ColTriangleList* userList)
    : listInSolid(IxRelative(frame.tm2, frame.tm1)) {
    const auto& list = IxGeometry<ColTriangleList>(pair->model2);
    const lsTransform solidInList = IxRelative(frame.tm1, frame.tm2);
    ColGeometryGetAABB(pair->model1->mGeometry, &solidInList, &low, &high, nullptr);
    const lsVec3 margin(frame.eps, frame.eps, frame.eps);
    low -= margin;
    high += margin;
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
    ColInteractionTableSetElement(
        kColSphere, kColTriangleList,
        {.intersectFn = ColSphereTriangleListIntersect, .pathIntersectFn = ColGenericPathIntersect},
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
