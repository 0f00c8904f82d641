#include <Hy/HyConstraint.h>

#include <Dyn/DynConstraint.h>
#include <Hy/ConstraintAccessors.h>
#include <Hy/HyMessage.h>

// Relaxation of equations, and friction of equations and coordinates.

namespace Hy {

const ConstraintEquation* HyConstraint::findEquation(int e) const {
    for (const ConstraintEquation* equation : mEquations)
        if (equation->getIndex() == e)
            return equation;
    return nullptr;
}

bool HyConstraint::isEquation(int e, const char* operation) const {
    if (findEquation(e))
        return true;
    HyWarning(0, "HyConstraint::%s: the constraint must have the equation.\n", operation);
    return false;
}

template <class Set>
void HyConstraint::changeEquation(int e, const char* operation, Set set) {
    if (isEquation(e, operation) && set())
        wakePartsIf(mConstraint->bclH.bRelaxConstraint[e] != 0);
}

void HyConstraint::setRelaxationParameters(int e, HyReal stiffness, HyReal damping, HyReal loss,
                                           bool enable) {
    if (!isEquation(e, "setRelaxationParameters"))
        return;
    const bool before = getRelaxationEnabled(e);
    if (!DynConstraintRelaxConstraint(mConstraint, e, stiffness, damping, loss))
        return;
    DynConstraintEnableRelaxConstraint(mConstraint, e, enable);
    wakePartsIf(before || enable);
}

void HyConstraint::getRelaxationParameters(int e, HyReal& stiffness, HyReal& damping, HyReal& loss,
                                           bool& enabled) const {
    stiffness = damping = loss = 0;
    enabled = false;
    if (!isEquation(e, "getRelaxationParameters"))
        return;
    stiffness = DynConstraintGetRelaxConstraintStiffness(mConstraint, e);
    damping = mConstraint->bclH.damping[e];
    loss = mConstraint->bclH.loss[e];
    enabled = mConstraint->bclH.bRelaxConstraint[e] != 0;
}

void HyConstraint::setRelaxationStiffnessAndDamping(int e, HyReal stiffness, HyReal damping) {
    changeEquation(e, "setRelaxationStiffnessAndDamping", [=, this] {
        const HyReal before = mConstraint->bclH.damping[e];
        if (!DynConstraintSetRelaxConstraintDamping(mConstraint, e, damping))
            return false;
        if (DynConstraintSetRelaxConstraintStiffness(mConstraint, e, stiffness))
            return true;
        mConstraint->bclH.damping[e] = before;
        return false;
    });
}

void HyConstraint::setRelaxationStiffness(int e, HyReal stiffness) {
    changeEquation(e, "setRelaxationStiffness", [=, this] {
        return DynConstraintSetRelaxConstraintStiffness(mConstraint, e, stiffness);
    });
}

void HyConstraint::setRelaxationDamping(int e, HyReal damping) {
    changeEquation(e, "setRelaxationDamping", [=, this] {
        return DynConstraintSetRelaxConstraintDamping(mConstraint, e, damping);
    });
}

void HyConstraint::setRelaxationLoss(int e, HyReal loss) {
    changeEquation(e, "setRelaxationLoss",
                   [=, this] { return DynConstraintSetRelaxConstraintLoss(mConstraint, e, loss); });
}

void HyConstraint::enableRelaxation(int e, bool enable) {
    if (!isEquation(e, "enableRelaxation") || getRelaxationEnabled(e) == enable)
        return;
    DynConstraintEnableRelaxConstraint(mConstraint, e, enable);
    wakeParts();
}

bool HyConstraint::getRelaxationEnabled(int e) const {
    return isEquation(e, "getRelaxationEnabled") && mConstraint->bclH.bRelaxConstraint[e] != 0;
}

void HyConstraint::setRelaxationMinMaxForce(int e, HyReal minForce, HyReal maxForce) {
    changeEquation(e, "setRelaxationMinMaxForce", [=, this] {
        return DynConstraintSetRelaxConstraintMinMaxForce(mConstraint, e, minForce, maxForce);
    });
}

void HyConstraint::getRelaxationMinMaxForce(int e, HyReal& minForce, HyReal& maxForce) const {
    minForce = maxForce = 0;
    if (!isEquation(e, "getRelaxationMinMaxForce"))
        return;
    minForce = mConstraint->bclH.lower[e];
    maxForce = mConstraint->bclH.upper[e];
}

HyReal HyConstraint::getConstraintEquationForce(int e) const {
    return isEquation(e, "getConstraintEquationForce")
               ? DynConstraintGetEquationForce(mConstraint, e)
               : 0;
}

int HyConstraint::forceLimitReached(int row) const {
    return DynConstraintForceLimitReached(mConstraint, row);
}

int HyConstraint::complianceOverride(int row) const {
    return DynConstraintComplianceOverride(mConstraint, row);
}

// Friction.

bool HyConstraint::getConstraintEquationFrictionIndex(int e, int& index) const {
    const ConstraintEquation* equation = findEquation(e);
    if (!equation || equation->mFriction < 0)
        return false;
    index = equation->mFriction;
    return true;
}

bool HyConstraint::getCoordinateFrictionIndex(int i, int& index) const {
    const DyncLimit* limit = silentCoordinateAt(i);
    if (!limit || limit->type == kDynLimitTypeDistance)
        return false;
    index = limit->coord + (limit->type == kDynLimitTypeAngular ? 3 : 0);
    return true;
}

HyConstraintFriction* HyConstraint::getCoordinateFriction(int i) const {
    int index = 0;
    return getCoordinateFrictionIndex(i, index) ? &mFriction[static_cast<std::size_t>(index)]
                                                : nullptr;
}

HyConstraintFriction* HyConstraint::getConstraintEquationFriction(int e) const {
    int index = 0;
    return getConstraintEquationFrictionIndex(e, index)
               ? &mFriction[static_cast<std::size_t>(index)]
               : nullptr;
}

HyConstraintFriction* HyConstraint::getFriction(int i, bool linear) const {
    if (i < 0 || i > 2) {
        HyWarning(0, "HyConstraint::getFriction: the axis must be 0, 1 or 2.\n");
        return nullptr;
    }
    return &mFriction[static_cast<std::size_t>(linear ? i : 3 + i)];
}

HyReal HyConstraint::getCoordinateFrictionForceLastFrame(int i) const {
    int index = 0;
    return getCoordinateFrictionIndex(i, index) ? DynConstraintGetFrictionForce(mConstraint, index)
                                                : 0;
}

HyReal HyConstraint::getConstraintEquationFrictionForceLastFrame(int e) const {
    int index = 0;
    return getConstraintEquationFrictionIndex(e, index)
               ? DynConstraintGetFrictionForce(mConstraint, index)
               : 0;
}

bool HyConstraint::getCoordinateFrictionAvailable(int i) const {
    return getCoordinateFriction(i) != nullptr;
}

bool HyConstraint::getConstraintEquationFrictionAvailable(int e) const {
    return getConstraintEquationFriction(e) != nullptr;
}

} // namespace Hy
