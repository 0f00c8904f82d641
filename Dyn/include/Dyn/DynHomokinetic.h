#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A homokinetic joint: carries rotation over a bend at constant speed.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynHomokinetic* DynHomokineticCreateInPool(KitPool* pool);
