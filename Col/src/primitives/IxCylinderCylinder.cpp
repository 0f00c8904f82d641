#include "ColPrimitivePairs.h"

#include "IxCylinder.h"

namespace {

/// Both cylinders of a pair in the frame of the first.
struct CylinderPair {
    CylinderPair(const ColModelPair& pair, const IxPairFrame& frame, KitReal eps) noexcept
        : first(IxCylinderShape(frame.tm1, frame.tm1, IxGeometry<ColCylinder>(pair.model1))),
          second(IxCylinderShape(frame.tm2, frame.tm1, IxGeometry<ColCylinder>(pair.model2))),
          touch(OverlapCylCyl(&overlap, eps, first, second)) {}

    CylinderShape first, second;
    OverlapAxis overlap;
    bool touch;
};

bool meetAtPoint(int code) noexcept {
    return code == kOverlapRims || code == kOverlapRimSide || code == kOverlapSideRim;
}

} // namespace

int ColCylinderCylinderIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const CylinderPair cylinders(*pair, frame, frame.eps);
    if (!cylinders.touch)
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);
    const OverlapAxis& overlap = cylinders.overlap;
    CandidateList list;
    if (!meetAtPoint(overlap.code) && overlap.separation <= 0)
        CylCylIntersect(&list, cylinders.first, cylinders.second, overlap.normal);
    // A rim of the first meets the side of the second at a point of the first.
    const lsVec3 single =
        overlap.code == kOverlapRimSide
            ? cylinders.first.farthest(-overlap.normal)
            : cylinders.second.farthest(overlap.normal) + overlap.separation * overlap.normal;
    return IxWriteCylinderContacts(frame, overlap, overlap.code != kOverlapEnd2, list, single,
                                   result);
}

void ColCylinderCylinderSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    const IxPairFrame frame(*pair);
    const OverlapAxis overlap = CylinderPair(*pair, frame, kKitInfinity).overlap;
    IxSafeTime(*pair, frame.tm1.transformWithoutTranslate(overlap.normal), overlap.separation,
               IxGeometry<ColCylinder>(pair->model1).mBoundingRadius,
               IxGeometry<ColCylinder>(pair->model2).mBoundingRadius, maxTime, result);
}

void ColCylinderCylinderRegisterInteraction() {
    ColInteractionTableSetElement(
        kColCylinder, kColCylinder,
        {.intersectFn = ColCylinderCylinderIntersect, .safetimeFn = ColCylinderCylinderSafeTime},
        nullptr);
}
