#include "ColPrimitivePairs.h"

#include "IxCapsule.h"

namespace {

/// Squared cosines between normal and axis from which a capsule stands or lies.
constexpr KitReal kStandingSquare = 0.999999, kLyingSquare = 1e-6;

struct CapsuleOnPlane {
    KitReal height; ///< of the centre, m
    KitReal lift;   ///< height over it of the upper end's centre, m
    KitReal separation;
    int dims;
};

CapsuleOnPlane OverlapCapsulePlane(const IxPairFrame& frame, const ColCapsule& capsule) noexcept {
    const lsVec3& normal = frame.tm2.axis(2);
    const KitReal cosine = normal.dot(frame.tm1.axis(2)), square = cosine * cosine;
    CapsuleOnPlane overlap;
    overlap.height = normal.dot(frame.tm1.t() - frame.tm2.t());
    overlap.lift = cosine * capsule.halfHeight;
    overlap.separation = overlap.height - std::abs(overlap.lift) - capsule.radius;
    overlap.dims = 0x200 | (square > kStandingSquare ? 2 : square < kLyingSquare ? 3 : 1);
    return overlap;
}

} // namespace

int ColCapsulePlaneIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const auto& capsule = IxGeometry<ColCapsule>(pair->model1);
    const CapsuleOnPlane overlap = OverlapCapsulePlane(frame, capsule);
    if (!(overlap.separation <= frame.eps))
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);
    const lsVec3& normal = frame.tm2.axis(2);
    const KitReal limit = IxCapsuleLimit(overlap.separation, frame.eps);
    IxContacts<2> contacts;
    for (const KitReal end : {1.0, -1.0}) {
        const KitReal separation = overlap.height + end * overlap.lift - capsule.radius;
        if (!(separation <= limit))
            continue;
        lsVec3 point = frame.tm1.t();
        point.addMultiple(end * capsule.halfHeight, frame.tm1.axis(2));
        point.substractMultiple(capsule.radius, normal);
        contacts.add(point, normal, separation, overlap.dims, kColSurfaceModel1);
    }
    return contacts.simplifyInto(result, normal);
}

void ColCapsulePlaneRegisterInteraction() {
    ColInteractionTableSetElement(
        kColCapsule, kColPlane,
        {.intersectFn = ColCapsulePlaneIntersect, .pathIntersectFn = ColGenericPathIntersect},
        nullptr);
}
