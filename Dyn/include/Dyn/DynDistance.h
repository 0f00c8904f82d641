#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// A rope: the attachment points come no farther apart than a distance. See
/// DynConstraintCreateInPool.
[[nodiscard]] HY_API DynDistance* DynDistanceCreateInPool(KitPool* pool);
/// In m. Negative or not finite: a warning, no change.
HY_API void DynDistanceSetDistance(DynDistance* joint, KitReal distance);
[[nodiscard]] HY_API KitReal DynDistanceGetDistance(const DynDistance* joint);
