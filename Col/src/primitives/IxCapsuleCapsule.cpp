#include "ColPrimitivePairs.h"

#include <Col/ColCapsule.h>

#include "IxCapsule.h"

namespace {

bool overlapOf(CapsuleOverlap* out, KitReal eps, const ColCapsule& first, const Segment& segment,
               KitReal radius) noexcept {
    return OverlapCapCap(out, eps, first.radius, first.halfHeight, segment, radius);
}

using CapsuleCapsule = IxSolidCapsule<ColCapsule, overlapOf>;

} // namespace

int ColCapsuleCapsuleIntersect(ColModelPair* pair, ColIntersectResult* result) {
    return CapsuleCapsule(*pair).intersect(result);
}

void ColCapsuleCapsuleSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    CapsuleCapsule(*pair).safeTime(maxTime, result);
}

void ColCapsuleCapsuleRegisterInteraction() {
    ColInteractionTableSetElement(kColCapsule, kColCapsule,
                                  {.intersectFn = ColCapsuleCapsuleIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColCapsuleCapsuleSafeTime},
                                  nullptr);
}
