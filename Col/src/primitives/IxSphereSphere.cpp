#include "ColPrimitivePairs.h"

#include <Col/ColSphere.h>

#include "IxPair.h"

namespace {

/// Square of a distance of centres that has no direction, m^2.
constexpr KitReal kSameCentreSquare = 1e-14;

struct SphereGap {
    lsVec3 normal; ///< from sphere 2 to sphere 1
    KitReal separation;
};

SphereGap gapOf(const IxPairFrame& frame, KitReal radius1, KitReal radius2) noexcept {
    lsVec3 normal = frame.tm1.t() - frame.tm2.t();
    const KitReal square = normal.square_norm();
    if (square < kSameCentreSquare)
        return {lsVec3(0, 0, 1), std::sqrt(square) - radius1 - radius2};
    const KitReal distance = std::sqrt(square);
    return {normal / distance, distance - radius1 - radius2};
}

} // namespace

int ColSphereSphereIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const KitReal radius1 = IxGeometry<ColSphere>(pair->model1).radius;
    const KitReal radius2 = IxGeometry<ColSphere>(pair->model2).radius;
    const SphereGap gap = gapOf(frame, radius1, radius2);
    if (!(gap.separation <= frame.eps))
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);
    return IxWriteSingleContact(*pair, result, frame.tm1.t() - radius1 * gap.normal, gap.normal,
                                gap.separation, 0x0303, std::min(radius1, radius2), frame.eps);
}

void ColSphereSphereSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    const KitReal radius1 = IxGeometry<ColSphere>(pair->model1).radius;
    const KitReal radius2 = IxGeometry<ColSphere>(pair->model2).radius;
    const SphereGap gap = gapOf(IxPairFrame(*pair), radius1, radius2);
    IxSafeTime(*pair, gap.normal, gap.separation, 0, 0, maxTime, result);
}

void ColSphereSphereRegisterInteraction() {
    ColInteractionTableSetElement(kColSphere, kColSphere,
                                  {.intersectFn = ColSphereSphereIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColSphereSphereSafeTime},
                                  nullptr);
}
