#include "ColPrimitivePairs.h"

#include <Col/ColBox.h>

#include "../math/BoxBoxIntersect.h"
#include "IxPair.h"

#include <cstdint>

namespace {

/// The face that won the test, and the box whose face looks towards it.
struct FacePair {
    const lsTransform& reference; ///< world frame of the box whose face won
    const lsVec3& referenceRadii;
    int axis;     ///< of the reference box
    KitReal sign; ///< of the face along it
    const lsTransform& incident;
    const lsVec3& incidentRadii;
    int incidentSurface; ///< index of the incident box, on whose face the points lie
};

FacePair facesOf(const OverlapAxis& overlap, const IxPairFrame& frame, const lsTransform& t12,
                 const lsVec3& r1, const lsVec3& r2) noexcept {
    if (OverlapIsFaceOf1(overlap.code)) {
        const int axis = overlap.code - kOverlapFace1;
        return {frame.tm1, r1, axis, -overlap.normal[axis], frame.tm2, r2, kColSurfaceModel2};
    }
    const int axis = overlap.code / 4;
    const KitReal sign = overlap.normal.dot(t12.axis(axis)) > 0 ? 1 : -1;
    return {frame.tm2, r2, axis, sign, frame.tm1, r1, kColSurfaceModel1};
}

/// Contacts where the face of one box that looks towards a face of the other lies over it.
/// @return the answer of the pair; -1 if the incident face can't stand for its box
int addFaceContacts(const ColModelPair& pair, ColIntersectResult* result,
                    const OverlapAxis& overlap, const lsVec3& worldNormal,
                    const FacePair& faces) noexcept {
    FaceClipPoint points[kColMaxFlatPoints];
    const int count =
        ClipIncidentFace(points, faces.referenceRadii, faces.axis, faces.sign, faces.incidentRadii,
                         IxRelative(faces.incident, faces.reference));
    const int iu = (faces.axis + 1) % 3, iv = (faces.axis + 2) % 3;
    // The normal is that of the face for a face of box 2, and against it for one of box 1.
    const KitReal turn = faces.incidentSurface == kColSurfaceModel1 ? faces.sign : -faces.sign;
    IxFlatPoints flat;
    for (int i = 0; i < count; ++i)
        if (points[i].separation <= kIxKeptShare * overlap.separation)
            flat.add(points[i].position[iu], turn * points[i].position[iv], points[i].separation,
                     i);
    if (flat.count() == 0)
        return -1;
    const auto position = [&](int i) { return faces.reference.transform(points[i].position); };
    if (flat.reduceInto(pair, result, worldNormal, overlap.dims, faces.incidentSurface, position))
        return 1;
    IxContacts<kColMaxFlatPoints> contacts;
    for (int i = 0; i < count; ++i)
        if (points[i].separation <= kIxKeptShare * overlap.separation)
            contacts.add(position(i), worldNormal, points[i].separation, overlap.dims,
                         faces.incidentSurface);
    return contacts.simplifyInto(result, worldNormal);
}

/// Contacts from all edges of both boxes. Each point's depth is its own below the face that won; of
/// crossed edges, below the top of box 2.
void addEdgeContacts(IxContacts<>* contacts, const OverlapAxis& overlap, const lsVec3& worldNormal,
                     const IxPairFrame& frame, const lsTransform& t12, const lsVec3& r1,
                     const lsVec3& r2) noexcept {
    CandidateList list;
    BoxBoxIntersect(&list, t12, r1, r2);
    for (int i = 0; i < list.count; ++i) {
        const KitReal height = overlap.normal.dot(list.points[i]);
        const KitReal separation =
            OverlapIsFaceOf1(overlap.code) ? overlap.plane1 - height : height - overlap.plane2;
        if (separation <= kIxKeptShare * overlap.separation)
            contacts->add(frame.tm1.transform(list.points[i]), worldNormal, separation,
                          overlap.dims, list.surfaces[i]);
    }
}

/// The axis that kept the boxes apart when they were last asked for, in m_cachedData itself. It tells
/// only where to look first: that they are apart is proved anew, so an older one changes no answer.
class LastAxis {
public:
    explicit LastAxis(ColModelPair* pair) noexcept : mPair(pair) {}
    [[nodiscard]] bool separates(KitReal eps, const lsVec3& r1, const lsVec3& r2,
                                 const lsTransform& t12) const noexcept {
        const auto stored = reinterpret_cast<std::uintptr_t>(mPair->m_cachedData);
        return stored != 0 && OverlapAxisSeparates(static_cast<int>(stored - 1), eps, r1, r2, t12);
    }
    void keep(int code) noexcept {
        mPair->m_cachedData =
            reinterpret_cast<void*>(static_cast<std::uintptr_t>(code) + 1); // 0: none
    }
    void forget() noexcept { mPair->m_cachedData = nullptr; }

private:
    ColModelPair* mPair;
};

void beginOrEnd(ColModelPair* pair) {
    LastAxis(pair).forget();
}

} // namespace

int ColBoxBoxIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const lsVec3& r1 = IxGeometry<ColBox>(pair->model1).mR;
    const lsVec3& r2 = IxGeometry<ColBox>(pair->model2).mR;
    const lsTransform t12 = IxRelative(frame.tm2, frame.tm1);
    LastAxis last(pair);
    if (last.separates(frame.eps, r1, r2, t12))
        return IxNoContact(result);
    OverlapAxis overlap;
    if (!overlapOBBs(&overlap, frame.eps, r1, r2, t12)) {
        last.keep(overlap.code);
        return IxNoContact(result);
    }
    last.forget();
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);

    const lsVec3 normal = frame.tm1.transformWithoutTranslate(overlap.normal);
    if (OverlapIsFaceOf1(overlap.code) || OverlapIsFaceOf2(overlap.code)) {
        const FacePair faces = facesOf(overlap, frame, t12, r1, r2);
        const int touch = addFaceContacts(*pair, result, overlap, normal, faces);
        if (touch >= 0)
            return touch;
    }
    IxContacts<> contacts;
    addEdgeContacts(&contacts, overlap, normal, frame, t12, r1, r2);
    return contacts.simplifyInto(result, normal);
}

void ColBoxBoxSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    const IxPairFrame frame(*pair);
    const auto &box1 = IxGeometry<ColBox>(pair->model1), &box2 = IxGeometry<ColBox>(pair->model2);
    OverlapAxis overlap;
    overlapOBBs(&overlap, kKitInfinity, box1.mR, box2.mR, IxRelative(frame.tm2, frame.tm1));
    IxSafeTime(*pair, frame.tm1.transformWithoutTranslate(overlap.normal), overlap.separation,
               box1.mBoundingRadius, box2.mBoundingRadius, maxTime, result);
}

void ColBoxBoxRegisterInteraction() {
    ColInteractionTableSetElement(kColBox, kColBox,
                                  {.helloFn = beginOrEnd,
                                   .goodbyeFn = beginOrEnd,
                                   .intersectFn = ColBoxBoxIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColBoxBoxSafeTime},
                                  nullptr);
}
