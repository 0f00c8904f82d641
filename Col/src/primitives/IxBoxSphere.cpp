#include "ColPrimitivePairs.h"

#include <Col/ColBox.h>

#include "IxSolidSphere.h"

namespace {

bool overlapOf(OverlapAxis* out, lsVec3* point, KitReal eps, const ColBox& box,
               const lsVec3& centre, KitReal radius) noexcept {
    return OverlapOBBSphere(out, point, eps, box.mR, centre, radius);
}

using BoxSphere = IxSolidSphere<ColBox, overlapOf>;

} // namespace

int ColBoxSphereIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const BoxSphere overlap(*pair);
    return overlap.intersect(result, overlap.radius);
}

void ColBoxSphereSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    BoxSphere(*pair).safeTime(maxTime, result);
}

void ColBoxSphereRegisterInteraction() {
    ColInteractionTableSetElement(kColBox, kColSphere,
                                  {.intersectFn = ColBoxSphereIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColBoxSphereSafeTime},
                                  nullptr);
}
