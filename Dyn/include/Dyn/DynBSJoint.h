#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A ball and socket: the attachment points coincide.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynBSJoint* DynBSJointCreateInPool(KitPool* pool);
