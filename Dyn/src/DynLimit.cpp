#include <Dyn/DynLimit.h>

#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>

namespace {

bool refuse(const char* function, const char* what) {
    KitWarning(12, "%s: %s.\n", function, what);
    return false;
}

bool isFinite(const char* function, KitReal value) {
    return std::isfinite(value) || refuse(function, "the value must be finite");
}

bool isNotNegative(const char* function, KitReal value) {
    return (std::isfinite(value) && value >= 0) ||
           refuse(function, "the value must be finite and not negative");
}

bool setFinite(KitReal& field, const char* function, KitReal value) {
    if (!isFinite(function, value))
        return false;
    field = value;
    return true;
}

bool setNotNegative(KitReal& field, const char* function, KitReal value) {
    if (!isNotNegative(function, value))
        return false;
    field = value;
    return true;
}

bool setForces(KitReal& fmin, KitReal& fmax, const char* function, KitReal force1, KitReal force2) {
    if (!isFinite(function, force1) || !isFinite(function, force2))
        return false;
    fmin = std::min(force1, force2);
    fmax = std::max(force1, force2);
    return true;
}

KitReal complianceOf(KitReal stiffness) {
    if (stiffness == kKitInfinity)
        return 0;
    return stiffness == 0 ? kKitInfinity : std::min(1 / stiffness, kKitInfinity);
}

KitReal stiffnessOf(KitReal compliance) {
    if (compliance == 0)
        return kKitInfinity;
    return compliance == kKitInfinity ? 0 : std::min(1 / compliance, kKitInfinity);
}

bool isValid(const DyncSingleLimit& stop, const char* function) {
    return isFinite(function, stop.stop) && isFinite(function, stop.velocity) &&
           isFinite(function, stop.restitution) && isNotNegative(function, stop.compliance) &&
           isNotNegative(function, stop.damping) && isNotNegative(function, stop.maxForce);
}

// The stop `which`, 0 or 1; the other one gives way.
bool setStop(DyncLimit* limit, int which, const DyncSingleLimit& stop, const char* function) {
    if (!isValid(stop, function))
        return false;
    limit->limit[which] = stop;
    limit->limit[which].restitution = std::clamp(stop.restitution, 0.0, 1.0);
    if (limit->limit[0].stop > limit->limit[1].stop)
        limit->limit[1 - which].stop = stop.stop;
    limit->lock_position =
        std::clamp(limit->lock_position, limit->limit[0].stop, limit->limit[1].stop);
    return true;
}

} // namespace

bool DynSingleLimitSetStop(DyncSingleLimit* stop, KitReal position) {
    return setFinite(stop->stop, "DynSingleLimitSetStop", position);
}

bool DynSingleLimitSetStiffness(DyncSingleLimit* stop, KitReal stiffness) {
    if (!isNotNegative("DynSingleLimitSetStiffness", stiffness))
        return false;
    stop->compliance = complianceOf(stiffness);
    return true;
}

KitReal DynSingleLimitGetStiffness(const DyncSingleLimit* stop) {
    return stiffnessOf(stop->compliance);
}

bool DynSingleLimitSetDamping(DyncSingleLimit* stop, KitReal damping) {
    return setNotNegative(stop->damping, "DynSingleLimitSetDamping", damping);
}

bool DynSingleLimitSetRestitution(DyncSingleLimit* stop, KitReal restitution) {
    if (!isFinite("DynSingleLimitSetRestitution", restitution))
        return false;
    stop->restitution = std::clamp(restitution, 0.0, 1.0);
    return true;
}

bool DynSingleLimitSetVelocity(DyncSingleLimit* stop, KitReal velocity) {
    return setFinite(stop->velocity, "DynSingleLimitSetVelocity", velocity);
}

bool DynSingleLimitSetMaxForce(DyncSingleLimit* stop, KitReal force) {
    if (!std::isfinite(force) || !(force > 0))
        return refuse("DynSingleLimitSetMaxForce", "the force must be finite and above 0");
    stop->maxForce = force;
    return true;
}

bool DynLimitSetLowerLimit(DyncLimit* limit, const DyncSingleLimit* stop) {
    return setStop(limit, 0, *stop, "DynLimitSetLowerLimit");
}

bool DynLimitSetUpperLimit(DyncLimit* limit, const DyncSingleLimit* stop) {
    return setStop(limit, 1, *stop, "DynLimitSetUpperLimit");
}

void DynLimitGetLowerLimit(const DyncLimit* limit, DyncSingleLimit* stop) {
    *stop = limit->limit[0];
}

void DynLimitGetUpperLimit(const DyncLimit* limit, DyncSingleLimit* stop) {
    *stop = limit->limit[1];
}

void DynLimitActivateLimits(DyncLimit* limit, bool on) {
    if (!on) {
        limit->currentLimitState = kDynLimitInactive;
        limit->overshoot = 0;
    } else if (limit->currentLimitState == kDynLimitInactive) {
        limit->currentLimitState = kDynLimitActive;
    }
}

bool DynLimitAreLimitsActive(const DyncLimit* limit) {
    return limit->currentLimitState != kDynLimitInactive;
}

bool DynLimitSetMotor(DyncLimit* limit, KitReal desiredVelocity, KitReal force1, KitReal force2,
                      KitReal loss) {
    constexpr const char* kFunction = "DynLimitSetMotor";
    if (!isFinite(kFunction, desiredVelocity) || !isNotNegative(kFunction, loss) ||
        !setForces(limit->motor_fmin, limit->motor_fmax, kFunction, force1, force2))
        return false;
    limit->motor_desired_vel = desiredVelocity;
    limit->motor_loss = loss;
    return true;
}

bool DynLimitSetMotorVelocity(DyncLimit* limit, KitReal desiredVelocity) {
    return setFinite(limit->motor_desired_vel, "DynLimitSetMotorVelocity", desiredVelocity);
}

bool DynLimitSetMotorForces(DyncLimit* limit, KitReal force1, KitReal force2) {
    return setForces(limit->motor_fmin, limit->motor_fmax, "DynLimitSetMotorForces", force1,
                     force2);
}

bool DynLimitSetMotorLoss(DyncLimit* limit, KitReal loss) {
    return setNotNegative(limit->motor_loss, "DynLimitSetMotorLoss", loss);
}

bool DynLimitSetLockPosition(DyncLimit* limit, KitReal position) {
    return setFinite(limit->lock_position, "DynLimitSetLockPosition", position);
}

bool DynLimitSetLockVelocity(DyncLimit* limit, KitReal velocity) {
    return setFinite(limit->lock_velocity, "DynLimitSetLockVelocity", velocity);
}

bool DynLimitSetLockForces(DyncLimit* limit, KitReal force1, KitReal force2) {
    return setForces(limit->lock_fmin, limit->lock_fmax, "DynLimitSetLockForces", force1, force2);
}

bool DynLimitSetLockSpring(DyncLimit* limit, KitReal stiffness, KitReal damping) {
    if (!isNotNegative("DynLimitSetLockSpring", stiffness) ||
        !isNotNegative("DynLimitSetLockSpring", damping))
        return false;
    limit->lock_compliance = complianceOf(stiffness);
    limit->lock_damping = damping;
    return true;
}

KitReal DynLimitGetLockStiffness(const DyncLimit* limit) {
    return stiffnessOf(limit->lock_compliance);
}

void DynLimitSetControl(DyncLimit* limit, DynConstraintControlState state) {
    // A coordinate must not report the force of a row that the last step did not give it: it had
    // none, or its stop and its lock had one row together or two.
    const DynConstraintControlState before = limit->currentControlState;
    const bool isExceeded = limit->currentLimitState == kDynLimitExceeded;
    const bool hadRow = isExceeded || before != kDynConstraintControlFree;
    const bool changesLock =
        (before == kDynConstraintControlLockActive) != (state == kDynConstraintControlLockActive);
    if ((!hadRow && state != before) || (isExceeded && changesLock))
        limit->lastStepRow = -1;
    limit->currentControlState = state;
}

void DynLimitActivateMotor(DyncLimit* limit, bool on) {
    const bool acts = on && (limit->motor_fmin != 0 || limit->motor_fmax != 0);
    DynLimitSetControl(limit, acts ? kDynConstraintControlMotorActive : kDynConstraintControlFree);
}

void DynLimitActivateLock(DyncLimit* limit, bool on) {
    DynLimitSetControl(limit, on ? kDynConstraintControlLockActive : kDynConstraintControlFree);
}

bool DynLimitController(DyncLimit* limit, KitReal desired, KitReal tolerance, KitReal velocity,
                        KitReal fmin, KitReal fmax) {
    constexpr const char* kFunction = "DynLimitController";
    if (!isFinite(kFunction, desired) || !isNotNegative(kFunction, tolerance))
        return false;
    const KitReal error = limit->position - desired;
    KitReal wanted = 0;
    if (error < -tolerance)
        wanted = velocity;
    else if (error > tolerance)
        wanted = -velocity;
    else if (tolerance > 0)
        wanted = -error * velocity / tolerance;
    if (!DynLimitSetMotor(limit, wanted, fmin, fmax, limit->motor_loss))
        return false;
    DynLimitActivateMotor(limit, true);
    return true;
}
