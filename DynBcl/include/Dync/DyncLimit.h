#pragma once
#include <Kit/KitTypes.h>

enum DynConstraintControlState : int {
    kDynConstraintControlFree = 0,
    kDynConstraintControlLockActive = 1,
    kDynConstraintControlMotorActive = 2,
    kDynConstraintControlControllerActive = 3,
};

enum DynLimitState : int {
    kDynLimitInactive = 0,
    kDynLimitActive = 1,
    kDynLimitExceeded = 2,
};

enum DynLimitType : int {
    kDynLimitTypeLinear = 0,
    kDynLimitTypeAngular = 1,
    kDynLimitTypeDistance = 2,
};

/// One stop of a coordinate, m or rad, N or N m.
struct DyncSingleLimit {
    KitReal stop = 0;
    KitReal compliance = 0;
    KitReal damping = 0;
    KitReal restitution = 0; ///< in [0, 1]
    KitReal velocity = 0;    ///< the stop's own velocity
    KitReal maxForce = kKitInfinity;
};

/// A coordinate: a degree of freedom that a joint leaves free, with motor, lock and stops.
struct DyncLimit {
    KitReal overshoot = 0;     ///< signed distance past the stop this step, 0 inside
    KitReal position = 0;      ///< internal position, before the offset
    KitReal lock_position = 0; ///< in offset coordinates
    KitReal lock_velocity = 0; ///< rate at which the lock target moves
    KitReal lock_compliance = 0;
    KitReal lock_damping = 0;
    KitReal lock_fmax = kKitInfinity;
    KitReal lock_fmin = -kKitInfinity;
    KitReal previous_position = 0; ///< position of the previous step
    KitReal m_offset = 0;          ///< the reported position is position + m_offset
    KitReal velocity = 0;
    DyncSingleLimit limit[2] = {{.stop = -kKitInfinity}, {.stop = kKitInfinity}}; ///< lower, upper
    KitReal motor_desired_vel = 0;
    KitReal motor_fmax = kKitInfinity;
    KitReal motor_fmin = -kKitInfinity;
    KitReal motor_loss = 0; ///< velocity softness of the motor row
    DynConstraintControlState currentControlState = kDynConstraintControlFree;
    DynLimitState currentLimitState = kDynLimitInactive;
    DynLimitType type = kDynLimitTypeLinear;
    int coord = 0;       ///< row of the reference attachment frame that is the coordinate's axis
    int bodyRef = 0;     ///< slot whose frame carries that axis
    int lastStepRow = 0; ///< row used last step, for reading the multiplier
    KitBool bForceCalculatePosition = 0; ///< compute the position every step even if free
    KitBool bMotorStopAtLock = 0;        ///< the motor turns into a lock on passing lock_position
};
