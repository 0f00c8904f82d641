#include <Hy/HyConstraintController.h>

#include <Hy/HyMessage.h>

#include <algorithm>
#include <cmath>

namespace Hy {
namespace {

/// A force of a motor below this is none, N or N m.
constexpr HyReal kNoForce = 1e-7;

bool isValid(HyReal increment, HyReal least, HyReal greatest) {
    if (std::isfinite(increment) && increment >= 0 && std::isfinite(least) &&
        std::isfinite(greatest) && least <= greatest)
        return true;
    HyWarning(0, "HyConstraintController::init: increment and bounds must be finite and in "
                 "order.\n");
    return false;
}

bool isFinite(HyReal value, const char* operation) {
    if (std::isfinite(value))
        return true;
    HyWarning(0, "HyConstraintController::%s: the value must be finite.\n", operation);
    return false;
}

void lockWhereItIs(HyConstraint& constraint, int coordinate) {
    constraint.setLockPosition(coordinate, constraint.getCoordinateCurrentPosition(coordinate));
    constraint.setControl(coordinate, HyConstraint::kControlLocked);
}

} // namespace

void HyConstraintController::init(HyConstraint* constraint, HyReal valInc, HyReal valMin,
                                  HyReal valMax, int coordinate) {
    if (!isValid(valInc, valMin, valMax))
        return;
    mConstraint = constraint;
    mValInc = valInc;
    mValMin = valMin;
    mValMax = valMax;
    mCoordID = coordinate;
    mCurrVal = std::clamp(HyReal(0), valMin, valMax);
}

void HyConstraintController::notifyEvent(int event, HyReal value) {
    if (!isFinite(value, "notifyEvent"))
        return;
    if (mConstraint.valid())
        resynchronise(event);
    if (event == kEventIncrease)
        mCurrVal += mValInc;
    else if (event == kEventDecrease)
        mCurrVal -= mValInc;
    else if (event == kEventSet)
        mCurrVal = value;
    else if (event == kEventZero)
        mCurrVal = 0;
    mCurrVal = std::clamp(mCurrVal, mValMin, mValMax);
    if (mConstraint.valid())
        drive();
}

void HyConstraintController::reset(HyReal value) {
    if (isFinite(value, "reset"))
        mCurrVal = std::clamp(value, mValMin, mValMax);
}

void HyLockController::resynchronise(int event) {
    if (event == kEventIncrease || event == kEventDecrease)
        mCurrVal = mConstraint->getLockPosition(mCoordID);
}

void HyLockController::drive() {
    mConstraint->setLockMaximumForce(mCoordID, mMaxForce);
    mConstraint->setLockPosition(mCoordID, mCurrVal);
    mConstraint->setControl(mCoordID, HyConstraint::kControlLocked);
}

void HyLockVelocityController::resynchronise(int) {
    const bool isFree = mConstraint->getControl(mCoordID) == HyConstraint::kControlFree;
    mCurrVal = isFree ? 0 : mConstraint->getCoordinateVelocity(mCoordID);
}

void HyLockVelocityController::drive() {
    mConstraint->setLockVelocity(mCoordID, mCurrVal);
    mConstraint->setLockMaximumForce(mCoordID, mMaxForce);
    if (mConstraint->setControl(mCoordID, HyConstraint::kControlLocked))
        mConstraint->setLockPosition(mCoordID, mConstraint->getCoordinateCurrentPosition(mCoordID));
}

void HyMotorController::resynchronise(int) {
    mCurrVal = 0;
    if (mConstraint->isLocked(mCoordID))
        mCurrVal = mConstraint->getCoordinateVelocity(mCoordID);
    else if (mConstraint->isMotorized(mCoordID))
        mCurrVal = mConstraint->getMotorDesiredVelocity(mCoordID);
}

void HyMotorController::drive() {
    if (mAutoLock && std::abs(mCurrVal) < mValInc) {
        lockWhereItIs(*mConstraint, mCoordID);
        return;
    }
    mConstraint->setMotorDesiredVelocity(mCoordID, mCurrVal);
    mConstraint->setMotorMaximumForce(mCoordID, mMaxForce);
    mConstraint->setControl(mCoordID, HyConstraint::kControlMotorized);
}

void HyMotorForceController::init(HyConstraint* constraint, HyReal valInc, HyReal minVelocity,
                                  HyReal maxVelocity, int coordinate) {
    if (!isValid(valInc, minVelocity, maxVelocity))
        return;
    mMinVelocity = minVelocity;
    mMaxVelocity = maxVelocity;
    constexpr HyReal kUnbounded = HyConstraint::sDefaultStiffness;
    HyConstraintController::init(constraint, valInc, -kUnbounded, kUnbounded, coordinate);
}

void HyMotorForceController::drive() {
    if (std::abs(mCurrVal) < kNoForce) {
        if (mAutoLock)
            lockWhereItIs(*mConstraint, mCoordID);
        else
            mConstraint->setControl(mCoordID, HyConstraint::kControlFree);
        return;
    }
    const bool forward = mCurrVal > 0;
    mConstraint->setMotorDesiredVelocity(mCoordID, forward ? mMaxVelocity : mMinVelocity);
    mConstraint->setMotorMinimumAndMaximumForce(mCoordID, forward ? 0 : mCurrVal,
                                                forward ? mCurrVal : 0);
    mConstraint->setControl(mCoordID, HyConstraint::kControlMotorized);
}

void HyLimitMotorController::drive() {
    mConstraint->setLimitVelocity(mCoordID, mLimit, mCurrVal);
}

} // namespace Hy
