#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// Axes at a right angle; two angles and three positions may be driven.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynA2P3Joint* DynA2P3JointCreateInPool(KitPool* pool);
