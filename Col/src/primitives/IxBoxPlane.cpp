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

lsVec3 cornerOf(const lsVec3& radii, int corner) noexcept {
    return {corner & 1 ? radii[0] : -radii[0], corner & 2 ? radii[1] : -radii[1],
            corner & 4 ? radii[2] : -radii[2]};
}

/// Every point where an edge dips under the plane is higher than a corner, so corners suffice.
int BoxPlaneIntersect(const ColModelPair& pair, ColIntersectResult* result,
                      const IxPairFrame& frame, const lsVec3& radii,
                      const BoxOnPlane& overlap) noexcept {
    const KitReal limit = kIxKeptShare * overlap.separation;
    const lsVec3 &x = frame.tm2.axis(0), &y = frame.tm2.axis(1), &normal = frame.tm2.axis(2);
    const lsVec3 alongX(x.dot(frame.tm1.axis(0)), x.dot(frame.tm1.axis(1)),
                        x.dot(frame.tm1.axis(2)));
    const lsVec3 alongY(y.dot(frame.tm1.axis(0)), y.dot(frame.tm1.axis(1)),
                        y.dot(frame.tm1.axis(2)));
    const lsVec3 ones(1, 1, 1);
    KitReal separations[kColMaxFlatPoints];
    IxFlatPoints flat;
    for (int corner = 0; corner < kColMaxFlatPoints; ++corner) {
        separations[corner] = overlap.height + cornerOf(ones, corner).dot(overlap.lift);
        if (!(separations[corner] <= limit))
            continue;
        const lsVec3 local = cornerOf(radii, corner);
        flat.add(alongX.dot(local), alongY.dot(local), separations[corner], corner);
    }
    const auto position = [&](int corner) { return frame.tm1.transform(cornerOf(radii, corner)); };
    if (flat.reduceInto(pair, result, normal, overlap.dims, kColSurfaceModel1, position))
        return 1;
    IxContacts<kColMaxFlatPoints> contacts;
    for (int corner = 0; corner < kColMaxFlatPoints; ++corner)
        if (separations[corner] <= limit)
            contacts.add(position(corner), normal, separations[corner], overlap.dims,
                         kColSurfaceModel1);
    return contacts.simplifyInto(result, normal);
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
    return BoxPlaneIntersect(*pair, result, frame, radii, overlap);
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
