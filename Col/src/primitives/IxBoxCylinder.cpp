#include "ColPrimitivePairs.h"

#include <Col/ColBox.h>

#include "IxCylinder.h"

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
    const bool atPoint = overlap.code == kOverlapRims || overlap.code == kOverlapSideRim;
    if (!atPoint && overlap.separation <= 0)
        BoxCylIntersect(&list, radii, cylinder, overlap.normal);
    // The end lies under the box; all else is told by the cylinder's points under
    // the box's plane.
    const bool referenceIsBox = overlap.code != kOverlapEnd2;
    const lsVec3 single = cylinder.farthest(overlap.normal) + overlap.separation * overlap.normal;
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
    ColInteractionTableSetElement(
        kColBox, kColCylinder,
        {.intersectFn = ColBoxCylinderIntersect, .safetimeFn = ColBoxCylinderSafeTime}, nullptr);
}
