#pragma once
#include "BoxBoxIntersect.h"
#include "OverlapCylinder.h"

#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

/// Directions square to a cylinder's axis: `perp` towards what it meets, `para`
/// across.
/// @param n unit normal of the contact; one along the axis gives no direction
/// @param disp takes its place then; if that has none either, the cylinder's x
/// axis does
void CylPerpAndPara(lsVec3* perp, lsVec3* para, const CylinderShape& cylinder, const lsVec3& n,
                    const lsVec3& disp) noexcept;

/// Candidates of a box about the origin and a cylinder, frame of the box: the
/// edges of the box clipped to the cylinder, the cylinder's wires and rims
/// clipped to the box.
/// @param towardsBox unit normal of the contact, from the cylinder to the box
void BoxCylIntersect(CandidateList* list, const lsVec3& radii, const CylinderShape& cylinder,
                     const lsVec3& towardsBox) noexcept;

/// Candidates of two cylinders: the wires of each clipped to the other, and
/// where their rims cross.
/// @param n unit normal of the contact, from the second to the first
void CylCylIntersect(CandidateList* list, const CylinderShape& first, const CylinderShape& second,
                     const lsVec3& n) noexcept;
