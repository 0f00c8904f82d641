#pragma once
#include "Segments.h"

#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

/// How a solid and a capsule meet. A capsule is its segment grown by its radius, so the separation is
/// that of the segment less the radius, apart and overlapping alike.
struct CapsuleOverlap {
    /// Separation at a point of the capsule's segment: the solid is flat around the nearest one.
    [[nodiscard]] KitReal separationAt(const Segment& segment, KitReal t) const noexcept {
        return separation - (t - nearest) * normal.dot(segment.half);
    }

    KitReal separation = 0; ///< m, negative if the shapes overlap
    lsVec3 normal;          ///< unit, from the capsule to the solid
    int dims = 0;           ///< as of a contact, the solid's in the low byte
    KitReal nearest = 0; ///< parameter on the capsule's segment of its point nearest to the solid
    KitReal low = 0, high = 0; ///< part of the segment that runs along the solid; a point if equal
};

/// Parameter of the point of a segment nearest to a cylinder about the origin, axis along z.
[[nodiscard]] KitReal ClosestPointToCylinder(const Segment& segment, KitReal radius,
                                             KitReal halfHeight) noexcept;

/// A box against a capsule. All tests answer false beyond eps.
/// @param segment the capsule's, frame of the box
bool OverlapOBBCap(CapsuleOverlap* out, KitReal eps, const lsVec3& radii, const Segment& segment,
                   KitReal radius) noexcept;
/// A cylinder about the origin, axis along z, against a capsule.
bool OverlapCylCap(CapsuleOverlap* out, KitReal eps, KitReal cylinderRadius, KitReal halfHeight,
                   const Segment& segment, KitReal radius) noexcept;
/// Two capsules: the first lies about the origin along z.
bool OverlapCapCap(CapsuleOverlap* out, KitReal eps, KitReal radius1, KitReal halfHeight1,
                   const Segment& segment, KitReal radius2) noexcept;
