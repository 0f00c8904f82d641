#include "ColPrimitivePairs.h"

#include "../math/Segments.h"
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

/// Whether the cylinders meet at one point, and where on the first.
bool meetAtPoint(const CylinderPair& cylinders, lsVec3* point) noexcept {
    const CylinderShape &first = cylinders.first, &second = cylinders.second;
    const OverlapAxis& overlap = cylinders.overlap;
    const lsVec3& n = overlap.normal;
    *point = second.farthest(n) + overlap.separation * n;
    if (overlap.code == kOverlapRims || overlap.code == kOverlapSideRim)
        return true;
    if (overlap.code == kOverlapRimSide) {
        *point = first.farthest(-n);
        return true;
    }
    if (overlap.code != kOverlapSides || std::abs(first.axis.dot(second.axis)) > kIxCrossingCosine)
        return false;
    const Segment side1{first.centre - first.radius * n, first.halfHeight * first.axis};
    const Segment side2{second.centre + second.radius * n, second.halfHeight * second.axis};
    KitReal s = 0, t = 0;
    ClosestPointsOnSegments(side1, side2, &s, &t);
    *point = side1.at(s);
    return true;
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
    lsVec3 single;
    if (!meetAtPoint(cylinders, &single) && overlap.separation <= 0)
        CylCylIntersect(&list, cylinders.first, cylinders.second, overlap.normal);
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
    ColInteractionTableSetElement(kColCylinder, kColCylinder,
                                  {.intersectFn = ColCylinderCylinderIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColCylinderCylinderSafeTime},
                                  nullptr);
}
