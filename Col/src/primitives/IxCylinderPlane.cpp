#include "ColPrimitivePairs.h"

#include <Col/ColCylinder.h>

#include "IxPair.h"

namespace {

/// Cosine between normal and axis from which the end lies flat.
constexpr KitReal kFlatCosine = 0.9999999999;
/// Squared cosines from which the end or the side names the feature.
constexpr KitReal kStandingSquare = 0.999999, kLyingSquare = 1e-6;

struct CylinderOnPlane {
    lsVec3 perp; ///< unit, from the axis to the lowest points of the rims; world
    lsVec3 para; ///< unit, across both
    KitReal cosine;
    KitReal separation;
    int dims;
};

CylinderOnPlane OverlapCylPlane(const IxPairFrame& frame, const ColCylinder& cylinder) noexcept {
    const lsVec3 &normal = frame.tm2.axis(2), &axis = frame.tm1.axis(2);
    CylinderOnPlane overlap;
    overlap.cosine = normal.dot(axis);
    const KitReal square = overlap.cosine * overlap.cosine;
    overlap.perp = overlap.cosine * axis - normal;
    // A flat end has no lowest point: its points turn with the cylinder, not with the rounding.
    if (std::abs(overlap.cosine) > kFlatCosine || !(overlap.perp.normalize() > 0))
        overlap.perp = frame.tm1.axis(0);
    overlap.para = axis.cross(overlap.perp);
    overlap.separation = normal.dot(frame.tm1.t() - frame.tm2.t()) -
                         std::abs(overlap.cosine) * cylinder.halfHeight -
                         ColSineOf(overlap.cosine) * cylinder.radius;
    overlap.dims = 0x200 | (square > kStandingSquare ? 2 : square < kLyingSquare ? 3 : 1);
    return overlap;
}

} // namespace

int ColCylinderPlaneIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const auto& cylinder = IxGeometry<ColCylinder>(pair->model1);
    const CylinderOnPlane overlap = OverlapCylPlane(frame, cylinder);
    if (!(overlap.separation <= frame.eps))
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);
    const lsVec3& normal = frame.tm2.axis(2);
    const lsVec3 down =
        (overlap.cosine > 0 ? -cylinder.halfHeight : cylinder.halfHeight) * frame.tm1.axis(2);
    const lsVec3 perp = cylinder.radius * overlap.perp, para = cylinder.radius * overlap.para;
    IxContacts<5> contacts;
    for (const lsVec3& offset : {down + perp, down - perp, down + para, down - para, perp - down}) {
        const lsVec3 point = frame.tm1.t() + offset;
        const KitReal separation = normal.dot(point - frame.tm2.t());
        if (separation <= kIxKeptShare * overlap.separation)
            contacts.add(point, normal, separation, overlap.dims, kColSurfaceModel1);
    }
    return contacts.simplifyInto(result, normal);
}

void ColCylinderPlaneRegisterInteraction() {
    ColInteractionTableSetElement(
        kColCylinder, kColPlane,
        {.intersectFn = ColCylinderPlaneIntersect, .pathIntersectFn = ColGenericPathIntersect},
        nullptr);
}
