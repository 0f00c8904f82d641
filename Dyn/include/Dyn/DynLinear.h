#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

// Joints that hold positions along axes of frame 1. See DynConstraintCreateInPool.

/// Along axis 0: a point in a plane.
[[nodiscard]] HY_API DynLinear1* DynLinear1CreateInPool(KitPool* pool);
/// Along axes 1 and 2: a point on a line.
[[nodiscard]] HY_API DynLinear2* DynLinear2CreateInPool(KitPool* pool);
/// The same, and axis 1 of frame 0 at a right angle to the line.
[[nodiscard]] HY_API DynLinear3* DynLinear3CreateInPool(KitPool* pool);
/// Attaches at the centre of body 0, the origin without one, and holds the direction from body 1 (or
/// the origin) to a point of the world; along x if they coincide.
HY_API void DynLinear1SetPosition(DynLinear1* joint, KitReal x, KitReal y, KitReal z);
