#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// Holds the orientations of two bodies together. See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynAngular3* DynAngular3CreateInPool(KitPool* pool);
/// Leaves the rotation about the primary axis free; off at first.
HY_API void DynAngular3EnableRotation(DynAngular3* joint, bool on);
[[nodiscard]] HY_API bool DynAngular3RotationIsEnabled(const DynAngular3* joint);
