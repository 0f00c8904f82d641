#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A slider: five equations, one position along axis 0 of frame 0.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynPrismatic* DynPrismaticCreateInPool(KitPool* pool);
