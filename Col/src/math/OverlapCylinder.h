#pragma once
#include "OverlapOBBs.h"

#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

/// What gave the axis of a test with a cylinder: OverlapAxis::code. A face of a box is kOverlapBoxFace + axis.
enum OverlapCylinderCode : int {
    kOverlapBoxFace = 16, ///< plus the axis of the box
    kOverlapEnd1 = 12,    ///< end face of shape 1, a cylinder
    kOverlapEnd2 = 3,     ///< end face of shape 2
    kOverlapSides = 10,   ///< side against side, edge or corner
    kOverlapRimSide = 8,  ///< rim of shape 1 against a side of shape 2
    kOverlapSideRim = 2,  ///< side or edge of shape 1 against a rim of shape 2
    kOverlapRims = 5,     ///< rim against rim or corner
};

/// A cylinder in the frame of a test.
struct CylinderShape {
    /// Half width along a unit direction, m.
    [[nodiscard]] KitReal extent(const lsVec3& direction) const noexcept;
    /// A point farthest along a unit direction.
    [[nodiscard]] lsVec3 farthest(const lsVec3& direction) const noexcept;

    lsVec3 centre;
    lsVec3 axis;  ///< unit
    lsVec3 xAxis; ///< unit, turns with the cylinder
    KitReal radius = 0, halfHeight = 0;
};

/// Outward normal of an ellipse about the origin at its point nearest to (x, y).
/// @param a,b half axes along x and y, m, positive
/// @return a unit vector; z is 0
[[nodiscard]] lsVec3 EllipseNormalTowards(KitReal a, KitReal b, KitReal x, KitReal y) noexcept;

/// Normal of a rim, seen along `view`, at its point nearest to another line along `view`. Seen so,
/// the rim is an ellipse, and the normal is perpendicular to the view.
/// @return false if the rim is seen edge-on
bool RimNormalSeenAlong(const lsVec3& view, const lsVec3& rimCentre, const CylinderShape& cylinder,
                        const lsVec3& linePoint, lsVec3* normal) noexcept;

/// Separating-axis test of a box about the origin and a cylinder: the faces, the end, the edges and
/// corners against the side, then edges and corners against the rims.
/// @return false once an axis separates them by more than eps
bool OverlapOBBCyl(OverlapAxis* out, KitReal eps, const lsVec3& radii,
                   const CylinderShape& cylinder) noexcept;

/// Separating-axis test of two cylinders: the ends, the sides, each rim against the other side, then
/// the nearest rims against each other. The normal points from the second to the first.
bool OverlapCylCyl(OverlapAxis* out, KitReal eps, const CylinderShape& first,
                   const CylinderShape& second) noexcept;
