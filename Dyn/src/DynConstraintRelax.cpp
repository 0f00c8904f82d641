#include <Dyn/DynConstraint.h>

#include "DynConstraintInternal.h"

#include <Dync/DyncJoints.h>
#include <Dync/DyncJointTags.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>

// Softness of equations, and the lock of a whole joint.

namespace {

/// Rows of the lock.
constexpr int kLockRows = 6;

bool isNotNegative(KitReal value, const char* function) {
    if (std::isfinite(value) && value >= 0)
        return true;
    KitWarning(12, "%s: the value must be finite and not negative.\n", function);
    return false;
}

bool isStiffness(KitReal stiffness, const char* function, const char* whenZero) {
    if (stiffness != 0)
        return isNotNegative(stiffness, function);
    KitWarning(12, "%s", whenZero);
    return false;
}

KitReal complianceOf(KitReal stiffness) {
    return stiffness == kKitInfinity ? 0 : std::min(1 / stiffness, kKitInfinity);
}

bool isLockable(const DynBaseConstraint* c) {
    const int tag = c->bclH.tag;
    return tag >= 0 && tag <= kDynTagMotor && tag != kDynTagSumDistance &&
           tag != kDynTagDifferential && tag != kDynTagCoupledDistance &&
           c->bclH.max_rows >= kLockRows;
}

const char* nameOf(const DynBaseConstraint* c) {
    const DynJointType* type = DynJointTypeGet(c->bclH.tag);
    return type ? type->name : "DynBaseConstraint";
}

} // namespace

bool DynConstraintRelaxConstraint(DynBaseConstraint* constraint, int row, KitReal stiffness,
                                  KitReal damping, KitReal loss) {
    constexpr const char* kFunction = "DynConstraintRelaxConstraint";
    if (!DynConstraintIsRow(row, kFunction) ||
        !isStiffness(stiffness, kFunction,
                     "DynConstraintRelaxConstraint: A constraint can't be relaxed with zero "
                     "stiffness.\n") ||
        !isNotNegative(damping, kFunction) || !isNotNegative(loss, kFunction))
        return false;
    constraint->bclH.compliance[row] = complianceOf(stiffness);
    constraint->bclH.damping[row] = damping;
    constraint->bclH.loss[row] = loss;
    constraint->bclH.bRelaxConstraint[row] = 1;
    return true;
}

bool DynConstraintSetRelaxConstraintStiffness(DynBaseConstraint* constraint, int row,
                                              KitReal stiffness) {
    constexpr const char* kFunction = "DynConstraintSetRelaxConstraintStiffness";
    if (!DynConstraintIsRow(row, kFunction) ||
        !isStiffness(stiffness, kFunction,
                     "DynConstraintSetRelaxConstraintStiffness: A constraint can't be relaxed with "
                     "zero stiffness.\n"))
        return false;
    constraint->bclH.compliance[row] = complianceOf(stiffness);
    return true;
}

bool DynConstraintSetRelaxConstraintDamping(DynBaseConstraint* constraint, int row,
                                            KitReal damping) {
    constexpr const char* kFunction = "DynConstraintSetRelaxConstraintDamping";
    if (!DynConstraintIsRow(row, kFunction) || !isNotNegative(damping, kFunction))
        return false;
    constraint->bclH.damping[row] = damping;
    return true;
}

bool DynConstraintSetRelaxConstraintLoss(DynBaseConstraint* constraint, int row, KitReal loss) {
    constexpr const char* kFunction = "DynConstraintSetRelaxConstraintLoss";
    if (!DynConstraintIsRow(row, kFunction) || !isNotNegative(loss, kFunction))
        return false;
    constraint->bclH.loss[row] = loss;
    return true;
}

bool DynConstraintSetRelaxConstraintMinMaxForce(DynBaseConstraint* constraint, int row,
                                                KitReal minForce, KitReal maxForce) {
    constexpr const char* kFunction = "DynConstraintSetRelaxConstraintMinMaxForce";
    if (!DynConstraintIsRow(row, kFunction))
        return false;
    if (!std::isfinite(minForce) || !std::isfinite(maxForce)) {
        KitWarning(12, "%s: the bounds must be finite.\n", kFunction);
        return false;
    }
    constraint->bclH.lower[row] = std::min(minForce, maxForce);
    constraint->bclH.upper[row] = std::max(minForce, maxForce);
    return true;
}

bool DynConstraintEnableRelaxConstraint(DynBaseConstraint* constraint, int row, bool on) {
    if (!DynConstraintIsRow(row, "DynConstraintEnableRelaxConstraint"))
        return false;
    constraint->bclH.bRelaxConstraint[row] = on;
    return true;
}

KitReal DynConstraintGetRelaxConstraintStiffness(const DynBaseConstraint* constraint, int row) {
    if (!DynConstraintIsRow(row, "DynConstraintGetRelaxConstraintStiffness"))
        return 0;
    const KitReal compliance = constraint->bclH.compliance[row];
    return compliance == 0 ? kKitInfinity : std::min(1 / compliance, kKitInfinity);
}

int DynConstraintLockConstraint(DynBaseConstraint* constraint) {
    if (!isLockable(constraint)) {
        KitWarning(12, "DynConstraintLockConstraint: %s not supported on this constraint\n",
                   nameOf(constraint));
        return 0;
    }
    constraint->bclFunction = DyncAddLockJoint;
    DynConstraintResetNeedKinematicUpdate(constraint);
    return 1;
}

void DynConstraintUnlockConstraint(DynBaseConstraint* constraint) {
    if (!isLockable(constraint))
        KitWarning(12, "DynConstraintUnlockConstraint: '%s' constraint is not lockable.\n",
                   nameOf(constraint));
    const DynJointType* type = DynJointTypeGet(constraint->bclH.tag);
    if (type && type->builder)
        constraint->bclFunction = type->builder;
    DynConstraintResetNeedKinematicUpdate(constraint);
}

bool DynConstraintIsLockedConstraint(const DynBaseConstraint* constraint) {
    return constraint->bclFunction == DyncAddLockJoint;
}
