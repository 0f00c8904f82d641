#pragma once
#include <Col/ColCapsule.h>

#include "../math/OverlapCapsule.h"
#include "IxPair.h"

/// Segment of model2, a capsule, in the frame of model1.
inline Segment IxCapsuleSegment(const IxPairFrame& frame, const ColCapsule& capsule) noexcept {
    return {frame.tm1.inverseTransform(frame.tm2.t()),
            frame.tm1.inverseTransformWithoutTranslate(capsule.halfHeight * frame.tm2.axis(2))};
}

/// Separation up to which a point of the capsule becomes a contact.
inline KitReal IxCapsuleLimit(KitReal separation, KitReal eps) noexcept {
    return separation < 0 ? kIxKeptShare * separation : eps;
}

/// A pair of a solid and a capsule. Solid is its record; kOverlap(out, eps, solid, segment, radius) its
/// test against a capsule in the solid's frame.
template <class Solid, auto kOverlap>
struct IxSolidCapsule {
    explicit IxSolidCapsule(const ColModelPair& modelPair) noexcept
        : pair(modelPair), frame(pair), solid(IxGeometry<Solid>(pair.model1)),
          capsule(IxGeometry<ColCapsule>(pair.model2)), segment(IxCapsuleSegment(frame, capsule)),
          touch(kOverlap(&overlap, frame.eps, solid, segment, capsule.radius)) {}

    /// Contacts stand where the capsule's segment begins and ceases to run along the solid.
    int intersect(ColIntersectResult* result) const noexcept {
        if (!touch)
            return IxNoContact(result);
        if (IxMaxContacts(pair, *result) == 0)
            return IxTouchOnly(result);
        IxContacts<2> contacts;
        addAt(overlap.low, &contacts);
        if (overlap.high > overlap.low)
            addAt(overlap.high, &contacts);
        if (contacts.count() == 0)
            addAt(overlap.nearest, &contacts);
        return contacts.simplifyInto(result, normal());
    }

    void safeTime(KitReal maxTime, ColSafeTimeResult* result) const noexcept {
        IxSafeTime(pair, normal(), overlap.separation, solid.mBoundingRadius,
                   capsule.mBoundingRadius, maxTime, result);
    }

    [[nodiscard]] lsVec3 normal() const noexcept {
        return frame.tm1.transformWithoutTranslate(overlap.normal);
    }

    /// The contact of a point of the capsule's segment, on the solid.
    void addAt(KitReal t, IxContacts<2>* contacts) const noexcept {
        const KitReal separation = overlap.separationAt(segment, t);
        if (!(separation <= IxCapsuleLimit(overlap.separation, frame.eps)))
            return;
        const lsVec3 point = segment.at(t) + (capsule.radius + separation) * overlap.normal;
        contacts->add(frame.tm1.transform(point), normal(), separation, overlap.dims,
                      kColSurfaceModel1);
    }

    const ColModelPair& pair;
    IxPairFrame frame;
    const Solid& solid;
    const ColCapsule& capsule;
    Segment segment; ///< frame of the solid
    CapsuleOverlap overlap;
    bool touch;
};
