#include "Segments.h"

#include <algorithm>
#include <cmath>

namespace {

/// Half length below which a segment is a point, squared, m^2.
constexpr KitReal kPointSquare = 1e-20;
/// Squared sine below which segments count as parallel.
constexpr KitReal kParallelSquareSine = 1e-12;
/// Slope across a slab, m, below which a segment is parallel to it.
constexpr KitReal kParallelComponent = 1e-12;

KitReal clampUnit(KitReal t) noexcept {
    return std::clamp(t, -1.0, 1.0);
}

/// Middle, on a, of the part of a that b lies beside; the nearer end of a if there is none.
KitReal middleBeside(const Segment& a, const Segment& b, KitReal squareA) noexcept {
    const KitReal middle = a.half.dot(b.centre - a.centre) / squareA;
    const KitReal reach = std::abs(a.half.dot(b.half)) / squareA;
    return 0.5 * (clampUnit(middle - reach) + clampUnit(middle + reach));
}

/// Half the slope along the segment of the squared distance to a box.
KitReal slopeToBox(const Segment& segment, const lsVec3& radii, KitReal t) noexcept {
    KitReal slope = 0;
    for (int i = 0; i < 3; ++i) {
        const KitReal p = segment.centre[i] + t * segment.half[i];
        slope += segment.half[i] * (p - std::clamp(p, -radii[i], radii[i]));
    }
    return slope;
}

} // namespace

KitReal ClosestPointOnSegment(const Segment& segment, const lsVec3& point) noexcept {
    const KitReal square = segment.half.square_norm();
    if (square < kPointSquare)
        return 0;
    return clampUnit(segment.half.dot(point - segment.centre) / square);
}

void ClosestPointsOnSegments(const Segment& a, const Segment& b, KitReal* s, KitReal* t) noexcept {
    const KitReal aa = a.half.square_norm(), bb = b.half.square_norm(), ab = a.half.dot(b.half);
    if (aa < kPointSquare || bb < kPointSquare) {
        *s = aa < kPointSquare ? 0 : ClosestPointOnSegment(a, b.centre);
        *t = ClosestPointOnSegment(b, a.at(*s));
        return;
    }
    const lsVec3 between = b.centre - a.centre;
    const KitReal determinant = aa * bb - ab * ab;
    *s = determinant > kParallelSquareSine * aa * bb
             ? clampUnit((a.half.dot(between) * bb - b.half.dot(between) * ab) / determinant)
             : middleBeside(a, b, aa);
    *t = ClosestPointOnSegment(b, a.at(*s));
    *s = ClosestPointOnSegment(a, b.at(*t));
}

KitReal ClosestPointToBox(const Segment& segment, const lsVec3& radii) noexcept {
    KitReal breaks[8] = {-1, 1};
    int count = 2;
    for (int i = 0; i < 3; ++i) {
        if (!(std::abs(segment.half[i]) > kParallelComponent))
            continue;
        for (const KitReal side : {-1.0, 1.0}) {
            const KitReal t = (side * radii[i] - segment.centre[i]) / segment.half[i];
            if (!(t > -1 && t < 1))
                continue;
            int place = count++; // kept in order
            for (; breaks[place - 1] > t; --place)
                breaks[place] = breaks[place - 1];
            breaks[place] = t;
        }
    }
    if (slopeToBox(segment, radii, -1) > 0)
        return -1;
    if (slopeToBox(segment, radii, 1) < 0)
        return 1;
    // The slope never falls: it is 0 from the last break at or below 0 to the first above.
    KitReal low = -1, slopeLow = slopeToBox(segment, radii, -1), flatStart = slopeLow == 0 ? -1 : 2;
    for (int i = 1; i < count; ++i) {
        const KitReal high = breaks[i], slopeHigh = slopeToBox(segment, radii, high);
        if (slopeHigh > 0) {
            if (flatStart <= 1)
                return 0.5 * (flatStart + low);
            return low + (high - low) * (-slopeLow / (slopeHigh - slopeLow));
        }
        if (slopeHigh == 0 && flatStart > 1)
            flatStart = high;
        low = high;
        slopeLow = slopeHigh;
    }
    return flatStart <= 1 ? 0.5 * (flatStart + 1) : 1;
}

bool SegmentCylinderIntersectWithOutput(const Segment& segment, KitReal radius, KitReal halfHeight,
                                        KitReal* t0, KitReal* t1) noexcept {
    const lsVec3 &c = segment.centre, &w = segment.half;
    if (std::abs(w[2]) > kParallelComponent) {
        const KitReal middle = -c[2] / w[2], reach = std::abs(halfHeight / w[2]);
        *t0 = std::max(*t0, middle - reach);
        *t1 = std::min(*t1, middle + reach);
    } else if (!(std::abs(c[2]) <= halfHeight)) {
        return false;
    }
    const KitReal a = w[0] * w[0] + w[1] * w[1];
    const KitReal b = w[0] * c[0] + w[1] * c[1];
    const KitReal outside = c[0] * c[0] + c[1] * c[1] - radius * radius;
    if (a > kParallelComponent * kParallelComponent) {
        const KitReal discriminant = b * b - a * outside;
        if (!(discriminant >= 0))
            return false;
        const KitReal root = std::sqrt(discriminant);
        *t0 = std::max(*t0, (-b - root) / a);
        *t1 = std::min(*t1, (-b + root) / a);
    } else if (!(outside <= 0)) {
        return false;
    }
    return *t0 <= *t1;
}

lsVec3 AnyPerpendicular(const lsVec3& unit) noexcept {
    int least = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(unit[i]) < std::abs(unit[least]))
            least = i;
    lsVec3 axis;
    axis[least] = 1;
    lsVec3 perpendicular = unit.cross(axis);
    perpendicular.normalize();
    return perpendicular;
}
