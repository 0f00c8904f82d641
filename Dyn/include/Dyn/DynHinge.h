#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A hinge: five equations, one angle about axis 0 of frame 0.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynHinge* DynHingeCreateInPool(KitPool* pool);
