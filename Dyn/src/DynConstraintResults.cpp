#include <Dyn/DynConstraint.h>

#include "DynConstraintInternal.h"

#include <Dync/DyncCoordinate.h>
#include <Kit/KitMessage.h>
#include <Kit/KitVector.h>

#include <algorithm>

namespace {

bool isExceeded(const DyncLimit& limit) {
    return limit.currentLimitState == kDynLimitExceeded;
}

bool hasControl(const DyncLimit& limit, DynConstraintControlState state) {
    return limit.currentControlState == state;
}

// The bound of a motor on the side to which it drives; a motor at rest has none.
KitReal motorBound(const DyncLimit& limit) {
    if (limit.motor_desired_vel == 0)
        return 0;
    return limit.motor_desired_vel > 0 ? limit.motor_fmax : limit.motor_fmin;
}

// Rows of a coordinate, which are not there while the whole joint is locked. A locked coordinate
// beyond a stop has two: the stop's, then the lock's, which lastStepRow names.
KitReal lastRowForce(const DynBaseConstraint* c, const DyncLimit& limit) {
    return DynConstraintIsLockedConstraint(c) ? 0 : DynConstraintGetRowForce(c, limit.lastStepRow);
}

KitReal rowBeforeForce(const DynBaseConstraint* c, const DyncLimit& limit) {
    return DynConstraintIsLockedConstraint(c) ? 0
                                              : DynConstraintGetRowForce(c, limit.lastStepRow - 1);
}

bool hadFrictionRow(const DynBaseConstraint* c, const DyncFriction& friction) {
    if (!friction.mEnabled || friction.mLastStepRow != 0)
        return friction.mEnabled && friction.mLastStepRow > 0;
    // Row 0 also stands for none; only a joint without equations can have friction there.
    const DynJointType* type = DynJointTypeGet(c->bclH.tag);
    return type && type->equations == 0 && friction.mMaxForce > 0;
}

} // namespace

void DynConstraintGetForce(const DynBaseConstraint* constraint, int slot, KitVector3 force) {
    if (DynConstraintIsSlot(constraint, slot, "DynConstraintGetForce"))
        KitVector3Copy(force, constraint->resultForce[slot]);
}

void DynConstraintGetTorque(const DynBaseConstraint* constraint, int slot, KitVector3 torque) {
    if (DynConstraintIsSlot(constraint, slot, "DynConstraintGetTorque"))
        KitVector3Copy(torque, constraint->resultTorque[slot]);
}

const KitReal* DynConstraintGetPhi(const DynBaseConstraint* constraint) {
    return constraint->bclH.phi;
}

const KitReal* DynConstraintGetLambda(const DynBaseConstraint* constraint) {
    return constraint->bclH.lambda;
}

KitReal DynConstraintGetRowForce(const DynBaseConstraint* constraint, int row) {
    const KitReal* lambda = constraint->bclH.lambda;
    if (row < 0 || row >= kDynsMaxConstraintRows ||
        std::find(lambda, lambda + row + 1, kDynLambdaEnd) != lambda + row + 1)
        return 0;
    return lambda[row];
}

KitReal DynConstraintGetEquationForce(const DynBaseConstraint* constraint, int row) {
    if (DynConstraintIsLockedConstraint(constraint))
        return 0;
    for (const DyncFriction& friction : constraint->bclH.friction)
        if (friction.mLastStepRow == row && hadFrictionRow(constraint, friction))
            return 0;
    return DynConstraintGetRowForce(constraint, row);
}

KitReal DynConstraintGetLimitForce(const DynBaseConstraint* constraint, const DyncLimit* limit) {
    if (!isExceeded(*limit))
        return DynConstraintGetLimitControlForce(constraint, limit);
    KitReal force = lastRowForce(constraint, *limit);
    if (hasControl(*limit, kDynConstraintControlLockActive))
        force += rowBeforeForce(constraint, *limit);
    return force;
}

KitReal DynConstraintGetLimitControlForce(const DynBaseConstraint* constraint,
                                          const DyncLimit* limit) {
    if (!DyncLimitIsDriven(*limit))
        return 0;
    const KitReal force = lastRowForce(constraint, *limit);
    if (!isExceeded(*limit) || hasControl(*limit, kDynConstraintControlLockActive))
        return force;
    return force * limit->motor_desired_vel < 0 ? 0 : motorBound(*limit);
}

KitReal DynConstraintGetLimitStopForce(const DynBaseConstraint* constraint,
                                       const DyncLimit* limit) {
    if (!isExceeded(*limit))
        return 0;
    if (hasControl(*limit, kDynConstraintControlLockActive))
        return rowBeforeForce(constraint, *limit);
    const KitReal force = lastRowForce(constraint, *limit);
    if (!hasControl(*limit, kDynConstraintControlMotorActive))
        return force;
    if (limit->overshoot * force > 0)
        return 0;
    return force * limit->motor_desired_vel > 0 ? force - motorBound(*limit) : force;
}

KitReal DynConstraintGetFrictionForce(const DynBaseConstraint* constraint, int entry) {
    if (entry < 0 || entry >= 6) {
        KitWarning(12, "DynConstraintGetFrictionForce: the entry must be 0 to 5.\n");
        return 0;
    }
    const DyncFriction& friction = constraint->bclH.friction[entry];
    if (DynConstraintIsLockedConstraint(constraint) || !hadFrictionRow(constraint, friction))
        return 0;
    return DynConstraintGetRowForce(constraint, friction.mLastStepRow);
}

int DynConstraintForceLimitReached(const DynBaseConstraint* constraint, int row) {
    if (!DynConstraintIsRow(row, "DynConstraintForceLimitReached"))
        return 0;
    const int flags = constraint->bclH.dynamic_flags[row];
    if (flags & kDyncRowAtUpper)
        return 1;
    return flags & kDyncRowAtLower ? -1 : 0;
}

int DynConstraintComplianceOverride(const DynBaseConstraint* constraint, int row) {
    if (!DynConstraintIsRow(row, "DynConstraintComplianceOverride"))
        return 0;
    return constraint->bclH.dynamic_flags[row] & kDyncRowComplianceRaised ? 1 : 0;
}
