#include "ColPrimitivePairs.h"

#include <Col/ColCapsule.h>

#include "IxSolidSphere.h"

namespace {

bool overlapOf(OverlapAxis* out, lsVec3* point, KitReal eps, const ColCapsule& capsule,
               const lsVec3& centre, KitReal radius) noexcept {
    return OverlapCapsuleSphere(out, point, eps, capsule.radius, capsule.halfHeight, centre,
                                radius);
}

using CapsuleSphere = IxSolidSphere<ColCapsule, overlapOf>;

} // namespace

int ColCapsuleSphereIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const CapsuleSphere overlap(*pair);
    return overlap.intersect(result, std::min(overlap.radius, overlap.solid.radius));
}

void ColCapsuleSphereSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    CapsuleSphere(*pair).safeTime(maxTime, result);
}

void ColCapsuleSphereRegisterInteraction() {
    ColInteractionTableSetElement(kColCapsule, kColSphere,
                                  {.intersectFn = ColCapsuleSphereIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColCapsuleSphereSafeTime},
                                  nullptr);
}
