#pragma once
#include <Col/ColSphere.h>

#include "../math/OverlapBall.h"
#include "IxPair.h"

/// A pair of a solid and a ball. Solid is its record; kOverlap(out, point, eps, solid, centre, radius)
/// its test against a ball in the solid's frame.
template <class Solid, auto kOverlap>
struct IxSolidSphere {
    explicit IxSolidSphere(const ColModelPair& modelPair) noexcept
        : pair(modelPair), frame(pair), solid(IxGeometry<Solid>(pair.model1)),
          radius(IxGeometry<ColSphere>(pair.model2).radius),
          touch(kOverlap(&overlap, &point, frame.eps, solid,
                         frame.tm1.inverseTransform(frame.tm2.t()), radius)) {}

    /// @param curvature the smaller radius of curvature of both shapes, m
    int intersect(ColIntersectResult* result, KitReal curvature) const noexcept {
        if (!touch)
            return IxNoContact(result);
        if (IxMaxContacts(pair, *result) == 0)
            return IxTouchOnly(result);
        return IxWriteSingleContact(pair, result, frame.tm1.transform(point), normal(),
                                    overlap.separation, overlap.dims, curvature, frame.eps);
    }

    void safeTime(KitReal maxTime, ColSafeTimeResult* result) const noexcept {
        IxSafeTime(pair, normal(), overlap.separation, solid.mBoundingRadius, 0, maxTime, result);
    }

    [[nodiscard]] lsVec3 normal() const noexcept {
        return frame.tm1.transformWithoutTranslate(overlap.normal);
    }

    const ColModelPair& pair;
    IxPairFrame frame;
    const Solid& solid;
    KitReal radius;
    OverlapAxis overlap;
    lsVec3 point; ///< on the solid, its frame
    bool touch;
};
