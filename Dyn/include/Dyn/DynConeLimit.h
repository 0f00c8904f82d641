#pragma once
#include <Dyn/DynConstraint.h>
#include <Dync/DynJointRecords.h>

/// Keeps the primary axes of two bodies within an angle. See DynConstraintCreateInPool.
[[nodiscard]] HY_API DynConeLimit* DynConeLimitCreateInPool(KitPool* pool);
/// In rad, pi at first, which never acts; a negative angle opens around the opposite axis. Not
/// finite: a warning, no change.
HY_API void DynConeLimitSetConeHalfAngle(DynConeLimit* joint, KitReal angle);
[[nodiscard]] HY_API KitReal DynConeLimitGetConeHalfAngle(const DynConeLimit* joint);
/// Stiffness above 0 and damping not negative are kept with the joint; its row is softened by
/// relaxing its equation. Values out of range: a warning, no change.
HY_API void DynConeLimitSetStiffness(DynConeLimit* joint, KitReal stiffness);
[[nodiscard]] HY_API KitReal DynConeLimitGetStiffness(const DynConeLimit* joint);
HY_API void DynConeLimitSetDamping(DynConeLimit* joint, KitReal damping);
[[nodiscard]] HY_API KitReal DynConeLimitGetDamping(const DynConeLimit* joint);
