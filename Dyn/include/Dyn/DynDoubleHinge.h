#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// Two parallel hinges with a springy link: its length and its angle on either side.
/// See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynDoubleHinge* DynDoubleHingeCreateInPool(KitPool* pool);
