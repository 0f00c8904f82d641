#include "OverlapBall.h"

#include "Segments.h"

#include <algorithm>
#include <cmath>

namespace {

/// Dims of a surface without flat features.
constexpr int kCurved = 3;

/// A point within a radius or more of a centre; without a direction between them it is `fallback`.
SurfacePoint fromCentre(const lsVec3& centre, const lsVec3& fallback, KitReal radius,
                        const lsVec3& point) noexcept {
    SurfacePoint surface;
    surface.outward = point - centre;
    const KitReal length = surface.outward.norm();
    surface.outward = length > kMinDirectionLength ? surface.outward / length : fallback;
    surface.position = centre + radius * surface.outward;
    surface.distance = length - radius;
    surface.dims = kCurved;
    return surface;
}

/// A point inside a box leaves by the nearest face, the first of equal ones.
SurfacePoint nearestFace(const lsVec3& radii, const lsVec3& point) noexcept {
    int axis = 0;
    for (int i = 1; i < 3; ++i)
        if (radii[i] - std::abs(point[i]) < radii[axis] - std::abs(point[axis]))
            axis = i;
    const KitReal side = point[axis] < 0 ? -1 : 1;
    SurfacePoint surface;
    surface.position = point;
    surface.position[axis] = side * radii[axis];
    surface.outward[axis] = side;
    surface.distance = std::abs(point[axis]) - radii[axis];
    surface.dims = 2;
    return surface;
}

} // namespace

SurfacePoint boxSurfacePointDist(const lsVec3& radii, const lsVec3& point) noexcept {
    SurfacePoint surface;
    int clamped = 0;
    for (int i = 0; i < 3; ++i) {
        surface.position[i] = std::clamp(point[i], -radii[i], radii[i]);
        clamped += surface.position[i] != point[i];
    }
    surface.outward = point - surface.position;
    surface.distance = surface.outward.norm();
    if (!(surface.distance > kMinDirectionLength))
        return nearestFace(radii, point);
    surface.outward /= surface.distance;
    surface.dims = 3 - clamped;
    return surface;
}

bool OverlapFromSurfacePoint(OverlapAxis* out, lsVec3* outPos, KitReal eps,
                             const SurfacePoint& surface, KitReal radius) noexcept {
    out->separation = surface.distance - radius;
    out->normal = -surface.outward;
    out->plane1 = out->normal.dot(surface.position);
    out->plane2 = out->plane1 - out->separation;
    out->dims = surface.dims | 0x300;
    *outPos = surface.position;
    return out->separation <= eps;
}

bool OverlapOBBSphere(OverlapAxis* out, lsVec3* outPos, KitReal eps, const lsVec3& radii,
                      const lsVec3& centre, KitReal radius) noexcept {
    return OverlapFromSurfacePoint(out, outPos, eps, boxSurfacePointDist(radii, centre), radius);
}

SurfacePoint sphereSurfacePointDist(KitReal radius, const lsVec3& point) noexcept {
    return fromCentre(lsVec3(), lsVec3(0, 0, 1), radius, point);
}

SurfacePoint capsuleSurfacePointDist(KitReal radius, KitReal halfHeight,
                                     const lsVec3& point) noexcept {
    const lsVec3 centre(0, 0, std::clamp(point[2], -halfHeight, halfHeight));
    return fromCentre(centre, lsVec3(1, 0, 0), radius, point);
}

SurfacePoint cylinderSurfacePointDist(KitReal radius, KitReal halfHeight,
                                      const lsVec3& point) noexcept {
    const KitReal offset = std::hypot(point[0], point[1]);
    const lsVec3 radial = offset > kMinDirectionLength
                              ? lsVec3(point[0] / offset, point[1] / offset, 0)
                              : lsVec3(1, 0, 0);
    const lsVec3 axial(0, 0, point[2] < 0 ? -1 : 1);
    const KitReal beyondSide = offset - radius, beyondEnd = std::abs(point[2]) - halfHeight;

    SurfacePoint surface;
    if (beyondSide > 0 && beyondEnd > 0) {
        surface.position = radius * radial + halfHeight * axial;
        surface.distance = std::hypot(beyondSide, beyondEnd);
        surface.outward = surface.distance > kMinDirectionLength
                              ? (beyondSide * radial + beyondEnd * axial) / surface.distance
                              : axial;
        surface.dims = 1;
    } else if (beyondEnd >= beyondSide) {
        surface.position = lsVec3(point[0], point[1], halfHeight * axial[2]);
        surface.outward = axial;
        surface.distance = beyondEnd;
        surface.dims = 2;
    } else {
        surface.position = radius * radial + lsVec3(0, 0, point[2]);
        surface.outward = radial;
        surface.distance = beyondSide;
        surface.dims = kCurved;
    }
    return surface;
}

bool OverlapCylSphere(OverlapAxis* out, lsVec3* outPos, KitReal eps, KitReal cylinderRadius,
                      KitReal halfHeight, const lsVec3& centre, KitReal radius) noexcept {
    return OverlapFromSurfacePoint(
        out, outPos, eps, cylinderSurfacePointDist(cylinderRadius, halfHeight, centre), radius);
}

bool OverlapCapsuleSphere(OverlapAxis* out, lsVec3* outPos, KitReal eps, KitReal capsuleRadius,
                          KitReal halfHeight, const lsVec3& centre, KitReal radius) noexcept {
    return OverlapFromSurfacePoint(
        out, outPos, eps, capsuleSurfacePointDist(capsuleRadius, halfHeight, centre), radius);
}
