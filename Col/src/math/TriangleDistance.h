#pragma once
#include <Col/CxTriangleNE.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

/// Distance of a solid and a triangle, seen from both sides, in the frame of the solid.
struct TriangleDistance {
    KitReal distance = kKitInfinity; ///< m, 0 where they overlap: the points are then of no use
    lsVec3 onSolid, onTriangle;
};

// The solids lie about the origin, cylinders and capsules along z.

TriangleDistance sphereTriDist(KitReal radius, const CxTriangleNE& triangle) noexcept;
TriangleDistance capsuleTriDist(KitReal radius, KitReal halfHeight,
                                const CxTriangleNE& triangle) noexcept;
TriangleDistance boxTriDist(const lsVec3& radii, const CxTriangleNE& triangle) noexcept;
TriangleDistance cylinderTriDist(KitReal radius, KitReal halfHeight,
                                 const CxTriangleNE& triangle) noexcept;
