#pragma once
#include <Col/ColLineSeg.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

// Line segments against single shapes. Each answers 1 and writes position, normal and distance of the
// nearest crossing of the surface, or answers 0 and leaves the result alone. A segment that starts
// inside a solid meets the surface where it leaves.

/// Face of a box: the plane x[axis] = min or max.
struct FaceId {
    int axis = 0;
    bool minside = false;
};

/// Ray against an axis-aligned box by slabs.
/// @param direction unit
/// @return 1 for a hit, at a distance of 0 or more: where it enters or, from inside, borders
/// included, where it leaves
int IxRayAABBIntersect(const lsVec3& min, const lsVec3& max, const lsVec3& origin,
                       const lsVec3& direction, lsVec3* outPoint, KitReal* outDistance,
                       FaceId* outFace) noexcept;
/// Whether the ray meets the box: 2, at distance 0, for a start inside.
int IxRayAABBOverlap(const lsVec3& min, const lsVec3& max, const lsVec3& origin,
                     const lsVec3& direction, KitReal* outDistance) noexcept;

/// Sphere about the origin of a transform.
int SphereLineSeg(const lsTransform& transform, KitReal radius, const lsVec3& start,
                  const lsVec3& end, ColLineSegIntersectResult* result) noexcept;
/// Cylinder about the origin of a transform, axis along z.
int CylinderLineSegment(const lsTransform& transform, KitReal radius, KitReal halfHeight,
                        const lsVec3& start, const lsVec3& end,
                        ColLineSegIntersectResult* result) noexcept;

/// A triangle from both sides. Edges are 1e-9 of the triangle wider than they are, so that nothing
/// passes between neighbours.
/// @param t parameter of the crossing, 0 at the start and 1 at the end; a crossing beyond the value
/// that it has at the call is none
/// @param normal unit, by the turn of the vertices
bool IxTriangleLineSegment(const lsVec3& a, const lsVec3& b, const lsVec3& c, const lsVec3& start,
                           const lsVec3& end, KitReal* t, lsVec3* normal) noexcept;
