#include "ColPrimitivePairs.h"

#include <Col/ColBox.h>

#include "../math/Segments.h"
#include "IxCylinder.h"

namespace {

/// Components of a normal below this are 0: the box meets it with an edge.
constexpr KitReal kNullComponent = 1e-9;

/// Whether the side of a cylinder meets a corner of the box, or an edge that crosses it, and where on
/// the box.
bool sideMeetsPoint(const OverlapAxis& overlap, const lsVec3& radii, const CylinderShape& cylinder,
                    lsVec3* point) noexcept {
    if (overlap.code != kOverlapSides)
        return false;
    const lsVec3& n = overlap.normal;
    lsVec3 corner;
    int along = 0;
    for (int i = 0; i < 3; ++i) {
        corner[i] = n[i] > 0 ? -radii[i] : radii[i];
        if (std::abs(n[i]) < std::abs(n[along]))
            along = i;
    }
    const bool meetsEdge = std::abs(n[along]) <= kNullComponent;
    if (meetsEdge && std::abs(cylinder.axis[along]) > kIxCrossingCosine)
        return false;
    *point = corner;
    if (!meetsEdge)
        return true;
    Segment edge{corner, lsVec3()};
    edge.centre[along] = 0;
    edge.half[along] = radii[along];
    const Segment side{cylinder.centre + cylinder.radius * n, cylinder.halfHeight * cylinder.axis};
    KitReal s = 0, t = 0;
    ClosestPointsOnSegments(edge, side, &s, &t);
    *point = edge.at(s);
    return true;
}

} // namespace

int ColBoxCylinderIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const lsVec3& radii = IxGeometry<ColBox>(pair->model1).mR;
    const CylinderShape cylinder =
        IxCylinderShape(frame.tm2, frame.tm1, IxGeometry<ColCylinder>(pair->model2));
    OverlapAxis overlap;
    if (!OverlapOBBCyl(&overlap, frame.eps, radii, cylinder))
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);
    CandidateList list;
    lsVec3 single = cylinder.farthest(overlap.normal) + overlap.separation * overlap.normal;
    const bool atPoint = overlap.code == kOverlapRims || overlap.code == kOverlapSideRim ||
                         sideMeetsPoint(overlap, radii, cylinder, &single);
    if (!atPoint && overlap.separation <= 0)
        BoxCylIntersect(&list, radii, cylinder, overlap.normal);
    // The end lies under the box; all else is told by the cylinder's points under
    // the box's plane.
    const bool referenceIsBox = overlap.code != kOverlapEnd2;
    return IxWriteCylinderContacts(frame, overlap, referenceIsBox, list, single, result);
}

void ColBoxCylinderSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    const IxPairFrame frame(*pair);
    const auto& box = IxGeometry<ColBox>(pair->model1);
    const auto& cylinder = IxGeometry<ColCylinder>(pair->model2);
    OverlapAxis overlap;
    OverlapOBBCyl(&overlap, kKitInfinity, box.mR, IxCylinderShape(frame.tm2, frame.tm1, cylinder));
    IxSafeTime(*pair, frame.tm1.transformWithoutTranslate(overlap.normal), overlap.separation,
               box.mBoundingRadius, cylinder.mBoundingRadius, maxTime, result);
}

void ColBoxCylinderRegisterInteraction() {
    ColInteractionTableSetElement(kColBox, kColCylinder,
                                  {.intersectFn = ColBoxCylinderIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColBoxCylinderSafeTime},
                                  nullptr);
}
