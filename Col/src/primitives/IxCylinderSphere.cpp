#include "ColPrimitivePairs.h"

#include <Col/ColCylinder.h>

#include "IxSolidSphere.h"

namespace {

bool overlapOf(OverlapAxis* out, lsVec3* point, KitReal eps, const ColCylinder& cylinder,
               const lsVec3& centre, KitReal radius) noexcept {
    return OverlapCylSphere(out, point, eps, cylinder.radius, cylinder.halfHeight, centre, radius);
}

using CylinderSphere = IxSolidSphere<ColCylinder, overlapOf>;

} // namespace

int ColCylinderSphereIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const CylinderSphere overlap(*pair);
    return overlap.intersect(result, overlap.radius);
}

void ColCylinderSphereSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    CylinderSphere(*pair).safeTime(maxTime, result);
}

void ColCylinderSphereRegisterInteraction() {
    ColInteractionTableSetElement(kColCylinder, kColSphere,
                                  {.intersectFn = ColCylinderSphereIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColCylinderSphereSafeTime},
                                  nullptr);
}
