#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// Moments of a solid of density 1, summed over tetrahedra.
struct KitSolidMoments {
    KitVector3 origin = {0, 0, 0}; ///< point that the moments are about, m; best near the solid
    KitReal volume = 0;            ///< m^3, negative for tetrahedra turned inside out
    KitVector3 first = {0, 0, 0};  ///< integral of x, m^4
    KitMatrix3 second = {{0, 0, 0}, {0, 0, 0}, {0, 0, 0}}; ///< integral of x x^T, m^5
};

/// Adds the tetrahedron of an apex a and a face b, c, d, m. Its volume counts as positive where the
/// face is counterclockwise seen from the side away from the apex. The faces of a closed surface,
/// each with one common apex, add up to the solid inside wherever that apex lies. Points that are not
/// finite get a warning and are left out.
HY_API void TetraMassProp(KitSolidMoments* moments, const KitVector3 a, const KitVector3 b,
                          const KitVector3 c, const KitVector3 d);

/// Inertia tensor about the centre of mass, for density 1.
///
/// With p the corners of a tetrahedron of volume V, the integral of x x^T is
/// V/20 (sum p p^T + (sum p)(sum p)^T); moved to the centre of mass, C gives trace(C) E - C.
/// A negative volume gets a warning, and all moments are negated.
/// @param inertia kg m^2 for 1 kg/m^3, axes of the points
/// @param centre of mass, coordinates of the points, m
/// @param volume m^3, positive
/// @return false, with no result stored, if the volume is zero or not finite
HY_API bool buildInertiaTensor(KitMatrix3 inertia, KitVector3 centre, KitReal* volume,
                               const KitSolidMoments& moments);
