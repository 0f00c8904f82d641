#pragma once
#include <Col/ColInteractions.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

/// Distance of two primitives and their closest points, in the order of the
/// pair's functions: both bounds are the distance, 0 for models that overlap,
/// whose points then are of no use. Serves box, sphere and capsule with each
/// other and a cylinder with a sphere or a capsule; for other pairs the bounds
/// are the largest number.
/// @return 1, or 0 for a pair that is not served
HY_API int ColPrimitivePrimitiveDistance(ColModelPair* pair, ColDistanceResult* result);
/// Registers it for the pairs that it serves.
HY_API void ColPrimitivePrimitiveRegisterDistance();
/// The same as the approximate distance of these pairs.
HY_API void ColPrimitivePrimitiveRegisterApproximateDistance();

/// Distance, m, of a world point from the surface of a box, sphere, cylinder or
/// capsule, negative inside, and the outward normal of the surface at its
/// nearest point, world axes. Another type gives a warning.
/// @return 1, or 0 with nothing stored
HY_API int ColPointSurfaceDistance(const ColModel* model, const lsVec3& point, KitReal* distance,
                                   lsVec3* normal);
