#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A drive without equations: one coordinate, linear or angular by its type.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynMotorJoint* DynMotorJointCreateInPool(KitPool* pool);
