#include "ColPrimitivePairs.h"

#include <Col/ColSphere.h>

#include "IxPair.h"

namespace {

KitReal separationOf(const IxPairFrame& frame, KitReal radius) noexcept {
    return frame.tm2.axis(2).dot(frame.tm1.t() - frame.tm2.t()) - radius;
}

} // namespace

int ColSpherePlaneIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const KitReal radius = IxGeometry<ColSphere>(pair->model1).radius;
    const KitReal separation = separationOf(frame, radius);
    if (!(separation <= frame.eps))
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);
    const lsVec3& normal = frame.tm2.axis(2);
    return IxWriteSingleContact(*pair, result, frame.tm1.t() - radius * normal, normal, separation,
                                0x0303, radius, frame.eps);
}

void ColSpherePlaneSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    const IxPairFrame frame(*pair);
    const KitReal radius = IxGeometry<ColSphere>(pair->model1).radius;
    IxSafeTime(*pair, frame.tm2.axis(2), separationOf(frame, radius), 0, kKitInfinity, maxTime,
               result);
}

void ColSpherePlaneRegisterInteraction() {
    ColInteractionTableSetElement(kColSphere, kColPlane,
                                  {.intersectFn = ColSpherePlaneIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColSpherePlaneSafeTime},
                                  nullptr);
}
