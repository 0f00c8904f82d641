#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// Aligned axes; an angle about them and three positions may be driven.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynA1P3Joint* DynA1P3JointCreateInPool(KitPool* pool);
