#pragma once
#include <Dync/DyncLimit.h>
#include <Kit/KitApi.h>

// Coordinates of a joint and their stops. Units: m, N, or rad, N m. What is not finite, and negative
// stiffness, damping and loss, are refused with a warning: false, and nothing changes. DBL_MAX stands
// for rigid in a stiffness and for no bound in a force.

// One stop.

HY_API bool DynSingleLimitSetStop(DyncSingleLimit* stop, KitReal position);
/// 0: the stop does not act.
HY_API bool DynSingleLimitSetStiffness(DyncSingleLimit* stop, KitReal stiffness);
[[nodiscard]] HY_API KitReal DynSingleLimitGetStiffness(const DyncSingleLimit* stop);
HY_API bool DynSingleLimitSetDamping(DyncSingleLimit* stop, KitReal damping);
/// Part of the closing speed that comes back; clamped to [0, 1].
HY_API bool DynSingleLimitSetRestitution(DyncSingleLimit* stop, KitReal restitution);
HY_API bool DynSingleLimitSetVelocity(DyncSingleLimit* stop, KitReal velocity);
/// Above 0.
HY_API bool DynSingleLimitSetMaxForce(DyncSingleLimit* stop, KitReal force);

// Stops of a coordinate. A stop that crosses the other one drags it along, and the lock target is
// clamped into both.

HY_API bool DynLimitSetLowerLimit(DyncLimit* limit, const DyncSingleLimit* stop);
HY_API bool DynLimitSetUpperLimit(DyncLimit* limit, const DyncSingleLimit* stop);
HY_API void DynLimitGetLowerLimit(const DyncLimit* limit, DyncSingleLimit* stop);
HY_API void DynLimitGetUpperLimit(const DyncLimit* limit, DyncSingleLimit* stop);
HY_API void DynLimitActivateLimits(DyncLimit* limit, bool on);
[[nodiscard]] HY_API bool DynLimitAreLimitsActive(const DyncLimit* limit);

// Motor and lock.

/// Bounds in any order.
HY_API bool DynLimitSetMotor(DyncLimit* limit, KitReal desiredVelocity, KitReal force1,
                             KitReal force2, KitReal loss);
HY_API bool DynLimitSetMotorVelocity(DyncLimit* limit, KitReal desiredVelocity);
HY_API bool DynLimitSetMotorForces(DyncLimit* limit, KitReal force1, KitReal force2);
HY_API bool DynLimitSetMotorLoss(DyncLimit* limit, KitReal loss);
/// Leaves the coordinate free if both bounds of the motor are 0, or if it is to be off.
HY_API void DynLimitActivateMotor(DyncLimit* limit, bool on);
/// In coordinates with offset.
HY_API bool DynLimitSetLockPosition(DyncLimit* limit, KitReal position);
HY_API bool DynLimitSetLockVelocity(DyncLimit* limit, KitReal velocity);
HY_API bool DynLimitSetLockForces(DyncLimit* limit, KitReal force1, KitReal force2);
/// A stiffness of 0: only the damping acts.
HY_API bool DynLimitSetLockSpring(DyncLimit* limit, KitReal stiffness, KitReal damping);
[[nodiscard]] HY_API KitReal DynLimitGetLockStiffness(const DyncLimit* limit);
HY_API void DynLimitActivateLock(DyncLimit* limit, bool on);
HY_API void DynLimitSetControl(DyncLimit* limit, DynConstraintControlState state);
/// A motor towards an internal position: at `velocity` outside the tolerance, in proportion to the
/// error within.
HY_API bool DynLimitController(DyncLimit* limit, KitReal desired, KitReal tolerance,
                               KitReal velocity, KitReal fmin, KitReal fmax);
