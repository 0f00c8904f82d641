#pragma once
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

/// Points nearer than this have no direction from one to the other: it would be rounding, m.
constexpr KitReal kMinDirectionLength = 1e-9;

/// A segment as centre + t half, t from -1 to 1.
struct Segment {
    [[nodiscard]] lsVec3 at(KitReal t) const noexcept { return centre + t * half; }

    lsVec3 centre, half;
};

/// Parameter of the point of a segment nearest to a point; 0 for a segment without length.
[[nodiscard]] KitReal ClosestPointOnSegment(const Segment& segment, const lsVec3& point) noexcept;

/// Parameters of the nearest points of two segments (Ericson, "Real-Time Collision Detection", 2005,
/// section 5.1.9); for parallel ones the middle of what lies side by side.
void ClosestPointsOnSegments(const Segment& a, const Segment& b, KitReal* s, KitReal* t) noexcept;

/// Parameter of the point of a segment nearest to a box about the origin. The square of the distance
/// is convex along the segment and quadratic between the planes of the faces.
[[nodiscard]] KitReal ClosestPointToBox(const Segment& segment, const lsVec3& radii) noexcept;

/// Clips the part of a segment between the values that t0 and t1 have at the call to a cylinder about
/// the origin, axis along z; false if nothing is left.
bool SegmentCylinderIntersectWithOutput(const Segment& segment, KitReal radius, KitReal halfHeight,
                                        KitReal* t0, KitReal* t1) noexcept;
/// A unit vector perpendicular to another, by the coordinate axis that is least along it.
[[nodiscard]] lsVec3 AnyPerpendicular(const lsVec3& unit) noexcept;
