#pragma once
#include "OverlapOBBs.h"

#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

/// Closest point of a solid's surface to a point, in the solid's frame.
struct SurfacePoint {
    lsVec3 position;
    lsVec3
        outward; ///< unit; from the surface to a point outside, out of the nearest face for one inside
    KitReal distance = 0; ///< m, negative inside
    int dims = 0;         ///< of the feature there: 2 face, 1 edge or rim, 0 corner, 3 curved
};

SurfacePoint boxSurfacePointDist(const lsVec3& radii, const lsVec3& point) noexcept;

/// A box against a ball about `centre`, frame of the box; false beyond eps. The point on the box goes
/// to outPos.
bool OverlapOBBSphere(OverlapAxis* out, lsVec3* outPos, KitReal eps, const lsVec3& radii,
                      const lsVec3& centre, KitReal radius) noexcept;
/// The test of a solid and a ball from the solid's point nearest to the ball's centre.
bool OverlapFromSurfacePoint(OverlapAxis* out, lsVec3* outPos, KitReal eps,
                             const SurfacePoint& surface, KitReal radius) noexcept;

/// Axis along z.
SurfacePoint cylinderSurfacePointDist(KitReal radius, KitReal halfHeight,
                                      const lsVec3& point) noexcept;
/// Axis along z; halfHeight that of the straight part.
SurfacePoint capsuleSurfacePointDist(KitReal radius, KitReal halfHeight,
                                     const lsVec3& point) noexcept;
SurfacePoint sphereSurfacePointDist(KitReal radius, const lsVec3& point) noexcept;

/// A cylinder against a ball, as OverlapOBBSphere().
bool OverlapCylSphere(OverlapAxis* out, lsVec3* outPos, KitReal eps, KitReal cylinderRadius,
                      KitReal halfHeight, const lsVec3& centre, KitReal radius) noexcept;
/// A capsule against a ball, as OverlapOBBSphere().
bool OverlapCapsuleSphere(OverlapAxis* out, lsVec3* outPos, KitReal eps, KitReal capsuleRadius,
                          KitReal halfHeight, const lsVec3& centre, KitReal radius) noexcept;
