#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A slider that may turn: a position along axis 0 of frame 0 and an angle about it.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynCylindrical* DynCylindricalCreateInPool(KitPool* pool);
