#include <Hy/HyConstraint.h>

#include <Dyn/DynConstraint.h>
#include <Dyn/DynLimit.h>
#include <Dync/DyncCoordinate.h>
#include <Hy/HyMessage.h>

#include <algorithm>
#include <cmath>

// Coordinates, their motors and their locks.

namespace Hy {
namespace {

/// A stop or lock target below this does not set the update in motion by itself, m/s or rad/s.
constexpr HyReal kMinKinematicVelocity = 1e-7;

bool isRunning(const DyncLimit& limit) {
    return limit.currentControlState == kDynConstraintControlMotorActive;
}

bool isHeld(const DyncLimit& limit) {
    return limit.currentControlState == kDynConstraintControlLockActive;
}

DynConstraintControlState stateFor(const DyncLimit& limit,
                                   HyConstraint::CoordinateControlEnum control) {
    if (control == HyConstraint::kControlMotorized && limit.motor_fmax > limit.motor_fmin)
        return kDynConstraintControlMotorActive;
    if (control == HyConstraint::kControlLocked && limit.lock_fmax > limit.lock_fmin)
        return kDynConstraintControlLockActive;
    return kDynConstraintControlFree;
}

} // namespace

DyncLimit* HyConstraint::silentCoordinateAt(int i) const {
    return DynConstraintGetIndexedLimit(mConstraint, i);
}

DyncLimit* HyConstraint::coordinateAt(int i, const char* operation) const {
    DyncLimit* limit = silentCoordinateAt(i);
    if (!limit)
        HyWarning(0, "HyConstraint::%s: the constraint must have the coordinate.\n", operation);
    return limit;
}

int HyConstraint::getCoordinateCount() const {
    return DynConstraintGetLimitCount(mConstraint);
}

bool HyConstraint::isCoordinateControllable(int i) const {
    const DyncLimit* limit = silentCoordinateAt(i);
    return limit && limit->type != kDynLimitTypeDistance;
}

HyConstraint::CoordinateTypeEnum HyConstraint::getCoordinateType(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getCoordinateType");
    return limit ? static_cast<CoordinateTypeEnum>(limit->type) : kCoordinateLinear;
}

bool HyConstraint::setControl(int i, CoordinateControlEnum control) {
    DyncLimit* limit = coordinateAt(i, "setControl");
    if (!limit)
        return false;
    if (control < kControlFree || control > kControlLocked) {
        HyWarning(0, "HyConstraint::setControl: the control must be one of "
                     "CoordinateControlEnum.\n");
        return false;
    }
    const DynConstraintControlState before = limit->currentControlState;
    if (!measuresCoordinates() || !DyncLimitIsActive(*limit)) // nobody has followed the parts
        limit->position = DynConstraintComputeLimitPosition(mConstraint, limit);
    DynLimitSetControl(limit, stateFor(*limit, control));
    DynConstraintResetNeedKinematicUpdate(mConstraint);
    wakeParts();
    return limit->currentControlState != before;
}

HyConstraint::CoordinateControlEnum HyConstraint::getControl(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getControl");
    if (!limit || !DyncLimitIsDriven(*limit))
        return kControlFree;
    return isHeld(*limit) ? kControlLocked : kControlMotorized;
}

// Positions.

// The joint's own rows measure its coordinates; those of a locked joint do not, and a joint within one
// body has none.
bool HyConstraint::measuresCoordinates() const {
    return mEnabledInternal && !mConstraint->merged && !isLockedAll();
}

bool HyConstraint::tracksPosition(const DyncLimit& limit) const {
    return measuresCoordinates() &&
           (DynLimitAreLimitsActive(&limit) || limit.bForceCalculatePosition);
}

HyReal HyConstraint::getCoordinateCurrentPosition(int i) const {
    const DyncLimit* limit = silentCoordinateAt(i);
    if (!limit)
        return 0;
    const HyReal internal = tracksPosition(*limit)
                                ? limit->position
                                : DynConstraintComputeLimitPosition(mConstraint, limit);
    return internal + limit->m_offset;
}

void HyConstraint::setCoordinateCurrentPosition(int i, HyReal position) {
    DyncLimit* limit = silentCoordinateAt(i);
    if (!limit)
        return;
    if (!std::isfinite(position)) {
        HyWarning(0, "HyConstraint::setCoordinateCurrentPosition: the position must be finite.\n");
        return;
    }
    limit->position = DynConstraintComputeLimitPosition(mConstraint, limit);
    limit->m_offset = position - limit->position;
    wakePartsIf(isHeld(*limit) || DynLimitAreLimitsActive(limit));
}

HyReal HyConstraint::recalculateCoordinateCurrentPosition(int i) {
    DyncLimit* limit = silentCoordinateAt(i);
    if (!limit)
        return 0;
    limit->position = DynConstraintComputeLimitPosition(mConstraint, limit);
    return limit->position + limit->m_offset;
}

HyReal HyConstraint::getCoordinateVelocity(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getCoordinateVelocity");
    if (!limit)
        return 0;
    return tracksPosition(*limit) ? limit->velocity
                                  : DynConstraintComputeLimitVelocity(mConstraint, limit);
}

void HyConstraint::setForceCalculateCoordinatePosition(int i, bool force) {
    DyncLimit* limit = coordinateAt(i, "setForceCalculateCoordinatePosition");
    if (!limit)
        return;
    if (force && !limit->bForceCalculatePosition)
        limit->position = DynConstraintComputeLimitPosition(mConstraint, limit);
    limit->bForceCalculatePosition = force;
}

HyReal HyConstraint::getCoordinateOffset(int i) const {
    const DyncLimit* limit = silentCoordinateAt(i);
    return limit ? limit->m_offset : 0;
}

void HyConstraint::setCoordinateOffset(int i, HyReal offset) {
    DyncLimit* limit = silentCoordinateAt(i);
    if (!limit)
        return;
    if (!std::isfinite(offset)) {
        HyWarning(0, "HyConstraint::setCoordinateOffset: the offset must be finite.\n");
        return;
    }
    limit->m_offset = offset;
    wakePartsIf(isHeld(*limit) || DynLimitAreLimitsActive(limit));
}

void HyConstraint::setCoordinateInternalPosition(int i, HyReal position) {
    DyncLimit* limit = silentCoordinateAt(i);
    if (!limit)
        return;
    if (!std::isfinite(position)) {
        HyWarning(0, "HyConstraint::setCoordinateInternalPosition: the position must be finite.\n");
        return;
    }
    limit->position = limit->previous_position = position;
}

HyReal HyConstraint::getCoordinateInternalPosition(int i) const {
    const DyncLimit* limit = silentCoordinateAt(i);
    return limit ? limit->position : 0;
}

void HyConstraint::setCoordinateReferencePartIndex(int i, int) {
    if (coordinateAt(i, "setCoordinateReferencePartIndex"))
        HyWarning(0, "HyConstraint::setCoordinateReferencePartIndex: the joint leaves no choice of "
                     "the part.\n");
}

int HyConstraint::getCoordinateReferencePartIndex(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getCoordinateReferencePartIndex");
    return limit ? limit->bodyRef : 0;
}

// Forces.

HyReal HyConstraint::getCoordinateForce(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getCoordinateForce");
    return limit ? DynConstraintGetLimitForce(mConstraint, limit) : 0;
}

HyReal HyConstraint::getCoordinateControlForce(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getCoordinateControlForce");
    return limit ? DynConstraintGetLimitControlForce(mConstraint, limit) : 0;
}

HyReal HyConstraint::getCoordinateLimitForce(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getCoordinateLimitForce");
    return limit ? DynConstraintGetLimitStopForce(mConstraint, limit) : 0;
}

// Motor.

template <class Set>
void HyConstraint::changeMotor(int i, const char* operation, Set set) {
    DyncLimit* limit = coordinateAt(i, operation);
    if (limit && set(limit))
        wakePartsIf(isRunning(*limit));
}

void HyConstraint::setMotorParameters(int i, HyReal velocity, HyReal maxForce, HyReal loss) {
    changeMotor(i, "setMotorParameters", [=](DyncLimit* limit) {
        return DynLimitSetMotor(limit, velocity, -maxForce, maxForce, loss);
    });
}

void HyConstraint::setMotorDesiredVelocity(int i, HyReal velocity) {
    changeMotor(i, "setMotorDesiredVelocity",
                [=](DyncLimit* limit) { return DynLimitSetMotorVelocity(limit, velocity); });
}

void HyConstraint::setMotorMaximumForce(int i, HyReal maxForce) {
    changeMotor(i, "setMotorMaximumForce", [=](DyncLimit* limit) {
        return DynLimitSetMotorForces(limit, -maxForce, maxForce);
    });
}

void HyConstraint::setMotorMinimumAndMaximumForce(int i, HyReal minForce, HyReal maxForce) {
    changeMotor(i, "setMotorMinimumAndMaximumForce", [=](DyncLimit* limit) {
        return DynLimitSetMotorForces(limit, minForce, maxForce);
    });
}

void HyConstraint::setMotorLoss(int i, HyReal loss) {
    changeMotor(i, "setMotorLoss",
                [=](DyncLimit* limit) { return DynLimitSetMotorLoss(limit, loss); });
}

void HyConstraint::setMotorStopAtLock(int i, bool stop) {
    changeMotor(i, "setMotorStopAtLock", [=](DyncLimit* limit) {
        limit->bMotorStopAtLock = stop;
        return true;
    });
}

HyReal HyConstraint::getMotorDesiredVelocity(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getMotorDesiredVelocity");
    return limit ? limit->motor_desired_vel : 0;
}

HyReal HyConstraint::getMotorMaximumForce(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getMotorMaximumForce");
    return limit ? limit->motor_fmax : 0;
}

HyReal HyConstraint::getMotorMinimumForce(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getMotorMinimumForce");
    return limit ? limit->motor_fmin : 0;
}

HyReal HyConstraint::getMotorLoss(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getMotorLoss");
    return limit ? limit->motor_loss : 0;
}

bool HyConstraint::getMotorStopAtLock(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getMotorStopAtLock");
    return limit && limit->bMotorStopAtLock;
}

// Lock.

template <class Set>
void HyConstraint::changeLock(int i, const char* operation, Set set) {
    DyncLimit* limit = coordinateAt(i, operation);
    if (limit && set(limit))
        wakePartsIf(isHeld(*limit));
}

// A velocity that counts sets the update in motion; a smaller one may end it.
void HyConstraint::noteVelocity(HyReal velocity) {
    if (std::abs(velocity) > kMinKinematicVelocity)
        DynConstraintSetNeedKinematicUpdate(mConstraint);
    else if (mConstraint->needKinematicUpdate)
        DynConstraintResetNeedKinematicUpdate(mConstraint);
}

void HyConstraint::setLockParameters(int i, HyReal position, HyReal maxForce, HyReal stiffness,
                                     HyReal damping, HyReal velocity) {
    changeLock(i, "setLockParameters", [=, this](DyncLimit* limit) {
        DyncLimit changed = *limit;
        if (!DynLimitSetLockPosition(&changed, position) ||
            !DynLimitSetLockForces(&changed, -maxForce, maxForce) ||
            !DynLimitSetLockSpring(&changed, stiffness, damping) ||
            !DynLimitSetLockVelocity(&changed, velocity))
            return false;
        *limit = changed;
        noteVelocity(velocity);
        return true;
    });
}

void HyConstraint::setLockPosition(int i, HyReal position) {
    changeLock(i, "setLockPosition",
               [=](DyncLimit* limit) { return DynLimitSetLockPosition(limit, position); });
}

void HyConstraint::setLockVelocity(int i, HyReal velocity) {
    changeLock(i, "setLockVelocity", [=, this](DyncLimit* limit) {
        if (!DynLimitSetLockVelocity(limit, velocity))
            return false;
        noteVelocity(velocity);
        return true;
    });
}

void HyConstraint::setLockMaximumForce(int i, HyReal maxForce) {
    changeLock(i, "setLockMaximumForce",
               [=](DyncLimit* limit) { return DynLimitSetLockForces(limit, -maxForce, maxForce); });
}

void HyConstraint::setLockMinimumAndMaximumForce(int i, HyReal minForce, HyReal maxForce) {
    changeLock(i, "setLockMinimumAndMaximumForce",
               [=](DyncLimit* limit) { return DynLimitSetLockForces(limit, minForce, maxForce); });
}

void HyConstraint::setLockStiffness(int i, HyReal stiffness) {
    changeLock(i, "setLockStiffness", [=](DyncLimit* limit) {
        return DynLimitSetLockSpring(limit, stiffness, limit->lock_damping);
    });
}

void HyConstraint::setLockDamping(int i, HyReal damping) {
    changeLock(i, "setLockDamping", [=](DyncLimit* limit) {
        return DynLimitSetLockSpring(limit, DynLimitGetLockStiffness(limit), damping);
    });
}

void HyConstraint::setLockStiffnessAndDamping(int i, HyReal stiffness, HyReal damping) {
    changeLock(i, "setLockStiffnessAndDamping",
               [=](DyncLimit* limit) { return DynLimitSetLockSpring(limit, stiffness, damping); });
}

HyReal HyConstraint::getLockPosition(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getLockPosition");
    return limit ? limit->lock_position : 0;
}

HyReal HyConstraint::getLockVelocity(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getLockVelocity");
    return limit ? limit->lock_velocity : 0;
}

HyReal HyConstraint::getLockMaximumForce(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getLockMaximumForce");
    return limit ? limit->lock_fmax : 0;
}

HyReal HyConstraint::getLockMinimumForce(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getLockMinimumForce");
    return limit ? limit->lock_fmin : 0;
}

HyReal HyConstraint::getLockStiffness(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getLockStiffness");
    return limit ? DynLimitGetLockStiffness(limit) : 0;
}

HyReal HyConstraint::getLockDamping(int i) const {
    const DyncLimit* limit = coordinateAt(i, "getLockDamping");
    return limit ? limit->lock_damping : 0;
}

} // namespace Hy
