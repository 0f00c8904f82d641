#include "OverlapCapsule.h"

#include "BoxBoxIntersect.h"
#include "OverlapBall.h"

#include <algorithm>
#include <cmath>

namespace {

/// Sine up to which a normal is along an axis of the solid; it is exact but for rounding.
constexpr KitReal kAlongSine = 1e-6;
/// Sine of the angle up to which a segment runs along an edge, a side or another segment.
constexpr KitReal kBesideSine = 0.05;
/// Squared cosines between normal and axis from which a capsule stands or lies.
constexpr KitReal kStandingSquare = 0.999999, kLyingSquare = 1e-6;
/// Components of a box's normal below this are 0.
constexpr KitReal kNullComponent = 1e-10;

/// Unit direction of a segment, z for one without length.
lsVec3 directionOf(const Segment& segment) noexcept {
    lsVec3 direction = segment.half;
    return direction.normalize() > 0 ? direction : lsVec3(0, 0, 1);
}

int capsuleFeature(const lsVec3& normal, const lsVec3& axis) noexcept {
    const KitReal cosine = normal.dot(axis), square = cosine * cosine;
    return square > kStandingSquare ? 2 : square < kLyingSquare ? 3 : 1;
}

/// Completes an overlap from the normal and the separation of the capsule's segment.
bool finish(CapsuleOverlap* out, KitReal eps, const Segment& segment, KitReal radius,
            KitReal segmentSeparation, int solidFeature) noexcept {
    out->separation = segmentSeparation - radius;
    out->dims = capsuleFeature(out->normal, directionOf(segment)) << 8 | solidFeature;
    return out->separation <= eps;
}

/// Axis of greatest separation of a solid and a segment that pierces it.
struct PiercedAxis {
    KitReal separation = -kKitInfinity;
    lsVec3 normal; ///< from the segment to the solid

    /// @param extents sum of half widths of both along the axis, m
    void offer(const lsVec3& axis, const lsVec3& centre, KitReal extents) noexcept {
        const KitReal height = axis.dot(centre);
        if (std::abs(height) - extents > separation) {
            separation = std::abs(height) - extents;
            normal = height > 0 ? -axis : axis;
        }
    }
};

PiercedAxis pierceBox(const lsVec3& radii, const Segment& segment) noexcept {
    PiercedAxis best;
    for (int i = 0; i < 3; ++i) {
        lsVec3 axis;
        axis[i] = 1;
        best.offer(axis, segment.centre, radii[i] + std::abs(segment.half[i]));
    }
    for (int i = 0; i < 3; ++i) {
        lsVec3 axis;
        axis[(i + 1) % 3] = -segment.half[(i + 2) % 3];
        axis[(i + 2) % 3] = segment.half[(i + 1) % 3];
        if (axis.normalize() > kMinDirectionLength)
            best.offer(axis, segment.centre,
                       radii[(i + 1) % 3] * std::abs(axis[(i + 1) % 3]) +
                           radii[(i + 2) % 3] * std::abs(axis[(i + 2) % 3]));
    }
    return best;
}

PiercedAxis pierceCylinder(KitReal radius, KitReal halfHeight, const Segment& segment) noexcept {
    PiercedAxis best;
    best.offer(lsVec3(0, 0, 1), segment.centre, halfHeight + std::abs(segment.half[2]));
    // Seen along z: the side leaves by the point of the segment nearest to the axis.
    const Segment flat{lsVec3(segment.centre[0], segment.centre[1], 0),
                       lsVec3(segment.half[0], segment.half[1], 0)};
    lsVec3 radial = flat.at(ClosestPointOnSegment(flat, lsVec3()));
    if (!(radial.normalize() > kMinDirectionLength)) {
        radial = lsVec3(-segment.half[1], segment.half[0], 0);
        if (!(radial.normalize() > kMinDirectionLength))
            radial = lsVec3(1, 0, 0);
    }
    best.offer(radial, segment.centre, radius + std::abs(radial.dot(segment.half)));
    return best;
}

/// The part of a segment over a box's face or along its edge; the other axes do not limit it.
/// @param along the axes of the box that limit it
void alongBox(CapsuleOverlap* out, const lsVec3& radii, const Segment& segment,
              const bool (&along)[3]) noexcept {
    lsVec3 limits = radii * (1 + kClipSlack);
    for (int i = 0; i < 3; ++i)
        if (!along[i])
            limits[i] = kKitInfinity;
    KitReal t0 = -1, t1 = 1;
    if (ClipSegmentToBox(segment.centre, segment.half, limits, &t0, &t1)) {
        out->low = t0;
        out->high = t1;
    }
}

void findBoxRange(CapsuleOverlap* out, const lsVec3& radii, const Segment& segment) noexcept {
    const lsVec3& n = out->normal;
    const lsVec3 direction = directionOf(segment);
    for (int i = 0; i < 3; ++i) {
        const KitReal sine = std::hypot(n[(i + 1) % 3], n[(i + 2) % 3]);
        if (sine < kAlongSine)
            return alongBox(out, radii, segment, {i != 0, i != 1, i != 2});
    }
    for (int i = 0; i < 3; ++i) {
        const KitReal sine = std::hypot(direction[(i + 1) % 3], direction[(i + 2) % 3]);
        if (std::abs(n[i]) < kAlongSine && sine < kBesideSine)
            return alongBox(out, radii, segment, {i == 0, i == 1, i == 2});
    }
}

void findCylinderRange(CapsuleOverlap* out, KitReal radius, KitReal halfHeight,
                       const Segment& segment) noexcept {
    const lsVec3& n = out->normal;
    const lsVec3 direction = directionOf(segment);
    const bool onEnd = std::hypot(n[0], n[1]) < kAlongSine;
    const bool onSide =
        std::abs(n[2]) < kAlongSine && std::hypot(direction[0], direction[1]) < kBesideSine;
    if (!onEnd && !onSide)
        return;
    KitReal t0 = -1, t1 = 1;
    const KitReal reach = onEnd ? radius * (1 + kClipSlack) : 1e6 * (radius + halfHeight);
    const KitReal height = onEnd ? 1e6 * (radius + halfHeight) : halfHeight * (1 + kClipSlack);
    if (SegmentCylinderIntersectWithOutput(segment, reach, height, &t0, &t1)) {
        out->low = t0;
        out->high = t1;
    }
}

} // namespace

// The distance is convex along the segment, so its slope is bracketed and halved, by secants where they
// halve faster.
KitReal ClosestPointToCylinder(const Segment& segment, KitReal radius,
                               KitReal halfHeight) noexcept {
    constexpr int kMaxSteps = 100;
    constexpr KitReal kTolerance = 1e-13;
    const auto slope = [&](KitReal t) {
        const lsVec3 p = segment.at(t);
        const SurfacePoint surface = cylinderSurfacePointDist(radius, halfHeight, p);
        return surface.distance > 0 ? segment.half.dot(p - surface.position) : 0;
    };
    KitReal low = -1, high = 1, slopeLow = slope(low), slopeHigh = slope(high);
    if (slopeLow > 0)
        return -1;
    if (slopeHigh < 0)
        return 1;
    // Inside, and beside a parallel side, the slope is 0 over a range.
    if (slopeLow == 0 && slopeHigh == 0)
        return 0;
    for (int i = 0; i < kMaxSteps && high - low > kTolerance; ++i) {
        KitReal t = 0.5 * (low + high);
        if (i % 2 == 0 && slopeLow < 0 && slopeHigh > 0)
            t = std::clamp(low - slopeLow * (high - low) / (slopeHigh - slopeLow),
                           low + 0.01 * (high - low), high - 0.01 * (high - low));
        const KitReal s = slope(t);
        if (s == 0)
            return t;
        (s < 0 ? low : high) = t;
        (s < 0 ? slopeLow : slopeHigh) = s;
    }
    return 0.5 * (low + high);
}

bool OverlapOBBCap(CapsuleOverlap* out, KitReal eps, const lsVec3& radii, const Segment& segment,
                   KitReal radius) noexcept {
    *out = CapsuleOverlap{};
    out->nearest = ClosestPointToBox(segment, radii);
    const lsVec3 point = segment.at(out->nearest);
    const SurfacePoint surface = boxSurfacePointDist(radii, point);
    KitReal separation = surface.distance;
    out->normal = -surface.outward;
    if (separation <= 0) {
        const PiercedAxis axis = pierceBox(radii, segment);
        separation = axis.separation;
        out->normal = axis.normal;
        out->nearest = segment.half.dot(axis.normal) > 0 ? 1 : -1;
    }
    out->low = out->high = out->nearest;
    int flat = 0;
    for (int i = 0; i < 3; ++i)
        flat += std::abs(out->normal[i]) < kNullComponent;
    const bool touch = finish(out, eps, segment, radius, separation, flat);
    if (touch)
        findBoxRange(out, radii, segment);
    return touch;
}

bool OverlapCylCap(CapsuleOverlap* out, KitReal eps, KitReal cylinderRadius, KitReal halfHeight,
                   const Segment& segment, KitReal radius) noexcept {
    *out = CapsuleOverlap{};
    out->nearest = ClosestPointToCylinder(segment, cylinderRadius, halfHeight);
    const SurfacePoint surface =
        cylinderSurfacePointDist(cylinderRadius, halfHeight, segment.at(out->nearest));
    KitReal separation = surface.distance;
    out->normal = -surface.outward;
    int feature = surface.dims;
    if (separation <= 0) {
        const PiercedAxis axis = pierceCylinder(cylinderRadius, halfHeight, segment);
        separation = axis.separation;
        out->normal = axis.normal;
        out->nearest = segment.half.dot(axis.normal) > 0 ? 1 : -1;
        feature = std::abs(axis.normal[2]) == 1 ? 2 : 3;
    }
    out->low = out->high = out->nearest;
    const bool touch = finish(out, eps, segment, radius, separation, feature);
    if (touch)
        findCylinderRange(out, cylinderRadius, halfHeight, segment);
    return touch;
}

bool OverlapCapCap(CapsuleOverlap* out, KitReal eps, KitReal radius1, KitReal halfHeight1,
                   const Segment& segment, KitReal radius2) noexcept {
    *out = CapsuleOverlap{};
    const Segment axis1{lsVec3(), lsVec3(0, 0, halfHeight1)};
    KitReal s = 0;
    ClosestPointsOnSegments(axis1, segment, &s, &out->nearest);
    out->low = out->high = out->nearest;
    const lsVec3 direction = directionOf(segment);
    lsVec3 between = axis1.at(s) - segment.at(out->nearest);
    KitReal distance = between.norm();
    if (distance > kMinDirectionLength) {
        out->normal = between / distance;
    } else {
        // Axes that meet: out along their common perpendicular.
        distance = 0;
        out->normal = lsVec3(0, 0, 1).cross(direction);
        if (!(out->normal.normalize() > kAlongSine))
            out->normal = AnyPerpendicular(direction);
    }
    const bool touch = finish(out, eps, segment, radius2, distance - radius1,
                              capsuleFeature(out->normal, lsVec3(0, 0, 1)));
    const bool beside = std::hypot(direction[0], direction[1]) < kBesideSine &&
                        std::abs(out->normal.dot(direction)) < kBesideSine;
    KitReal t0 = -1, t1 = 1;
    if (touch && beside && halfHeight1 > 0 &&
        SegmentCylinderIntersectWithOutput(segment, 1e6 * (radius1 + halfHeight1), halfHeight1, &t0,
                                           &t1)) {
        out->low = t0;
        out->high = t1;
    }
    return touch;
}
