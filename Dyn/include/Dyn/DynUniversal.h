#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A universal joint: angles about axis 0 of frame 0 and axis 1 of frame 1.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynUniversal* DynUniversalCreateInPool(KitPool* pool);
