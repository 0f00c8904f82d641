#include "ColPrimitivePairs.h"

#include <Col/ColCylinder.h>

#include "IxCapsule.h"

namespace {

bool overlapOf(CapsuleOverlap* out, KitReal eps, const ColCylinder& cylinder,
               const Segment& segment, KitReal radius) noexcept {
    return OverlapCylCap(out, eps, cylinder.radius, cylinder.halfHeight, segment, radius);
}

using CylinderCapsule = IxSolidCapsule<ColCylinder, overlapOf>;

} // namespace

int ColCylinderCapsuleIntersect(ColModelPair* pair, ColIntersectResult* result) {
    return CylinderCapsule(*pair).intersect(result);
}

void ColCylinderCapsuleSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    CylinderCapsule(*pair).safeTime(maxTime, result);
}

void ColCylinderCapsuleRegisterInteraction() {
    ColInteractionTableSetElement(kColCylinder, kColCapsule,
                                  {.intersectFn = ColCylinderCapsuleIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColCylinderCapsuleSafeTime},
                                  nullptr);
}
