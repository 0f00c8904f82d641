#include "ColPrimitivePairs.h"

#include <Col/ColBox.h>

#include "IxPair.h"

namespace {

/// Cosine below which an axis of the box lies in the plane.
constexpr KitReal kInPlaneCosine = 0.0001;

struct BoxOnPlane {
    lsVec3 lift;    ///< height over the box's centre of the ends of its half axes, m
    KitReal height; ///< of the centre, m
    KitReal separation;
    int dims;
};

BoxOnPlane OverlapOBBPlane(const IxPairFrame& frame, const lsVec3& radii) noexcept {
    const lsVec3& normal = frame.tm2.axis(2);
    BoxOnPlane overlap;
    overlap.height = normal.dot(frame.tm1.t() - frame.tm2.t());
    overlap.separation = overlap.height;
    overlap.dims = 0x200;
    for (int i = 0; i < 3; ++i) {
        const KitReal cosine = normal.dot(frame.tm1.axis(i));
        overlap.lift[i] = cosine * radii[i];
        overlap.separation -= std::abs(overlap.lift[i]);
        overlap.dims += std::abs(cosine) < kInPlaneCosine;
    }
    return overlap;
}

/// Every point where an edge dips under the plane is higher than a corner, so corners suffice.
void BoxPlaneIntersect(IxContacts<8>* contacts, const IxPairFrame& frame, const lsVec3& radii,
                       const BoxOnPlane& overlap) noexcept {
    const KitReal limit = kIxKeptShare * overlap.separation;
    for (int corner = 0; corner < 8; ++corner) {
        const KitReal sx = corner & 1 ? 1 : -1, sy = corner & 2 ? 1 : -1, sz = corner & 4 ? 1 : -1;
        const KitReal separation =
            overlap.height + sx * overlap.lift[0] + sy * overlap.lift[1] + sz * overlap.lift[2];
        if (!(separation <= limit))
            continue;
        const lsVec3 local(sx * radii[0], sy * radii[1], sz * radii[2]);
        contacts->add(frame.tm1.transform(local), frame.tm2.axis(2), separation, overlap.dims,
                      kColSurfaceModel1);
    }
}

} // namespace

int ColBoxPlaneIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const lsVec3& radii = IxGeometry<ColBox>(pair->model1).mR;
    const BoxOnPlane overlap = OverlapOBBPlane(frame, radii);
    if (!(overlap.separation <= frame.eps))
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);
    IxContacts<8> contacts;
    BoxPlaneIntersect(&contacts, frame, radii, overlap);
    return contacts.simplifyInto(result, frame.tm2.axis(2));
}

void ColBoxPlaneSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result) {
    const IxPairFrame frame(*pair);
    const lsVec3& normal = frame.tm2.axis(2);
    lsVec3 lowest;
    ColBoxMaximumPoint(pair->model1->mGeometry, &frame.tm1, -normal, &lowest);
    IxSafeTime(*pair, normal, normal.dot(lowest - frame.tm2.t()),
               IxGeometry<ColBox>(pair->model1).mBoundingRadius, kKitInfinity, maxTime, result);
}

void ColBoxPlaneRegisterInteraction() {
    ColInteractionTableSetElement(kColBox, kColPlane,
                                  {.intersectFn = ColBoxPlaneIntersect,
                                   .pathIntersectFn = ColGenericPathIntersectWithSafeTime,
                                   .safetimeFn = ColBoxPlaneSafeTime},
                                  nullptr);
}
