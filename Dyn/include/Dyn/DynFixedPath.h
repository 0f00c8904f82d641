#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// Joins two attachment points of which one moves along a path. See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynFixedPath* DynFixedPathCreateInPool(KitPool* pool);
/// In the pool of a world, not yet inserted.
[[nodiscard]] HY_API DynFixedPath* DynFixedPathCreate(DynWorld* world);
/// Velocity of point 0 against point 1, world axes, m/s. Not finite: a warning, no change.
HY_API void DynFixedPathSetVelocity(DynFixedPath* joint, const KitVector3 velocity);
HY_API void DynFixedPathGetVelocity(const DynFixedPath* joint, KitVector3 velocity);
