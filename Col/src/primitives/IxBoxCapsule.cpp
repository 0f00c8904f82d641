#include "ColPrimitivePairs.h"

#include <Col/ColBox.h>

#include "IxCapsule.h"

namespace {

bool overlapOf(CapsuleOverlap* out, KitReal eps, const ColBox& box, const Segment& segment,
               KitReal radius) noexcept {
    return OverlapOBBCap(out, eps, box.mR, segment, radius);
}

using BoxCapsule = IxSolidCapsule<ColBox, overlapOf>;

} // namespace

int ColBoxCapsuleIntersect(ColModelPair* pair, ColIntersectResult* result) {
    return BoxCapsule(*pair).intersect(result);
}

void ColBoxCapsuleSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    BoxCapsule(*pair).safeTime(maxTime, result);
}

void ColBoxCapsuleRegisterInteraction() {
    ColInteractionTableSetElement(kColBox, kColCapsule,
                                  {.intersectFn = ColBoxCapsuleIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColBoxCapsuleSafeTime},
                                  nullptr);
}
