#include <Dync/DyncEndConstraint.h>

#include <Dync/DyncSoftness.h>

#include <algorithm>

namespace {

/// Row kinds with a global softness of their own, by exact value of the flags.
constexpr int kLinearPosition = kDynsRowLinear | kDynsRowPosition;
constexpr int kAngularPosition = kDynsRowAngular | kDynsRowPosition;
constexpr int kLinearVelocity = kDynsRowLinear | kDynsRowVelocity;
constexpr int kAngularVelocity = kDynsRowAngular | kDynsRowVelocity;

/// Bounds of the record within those of the row; if they exclude each other, the value of the row's
/// bounds that is nearest to the record's.
void intersectBounds(KitReal& lower, KitReal& upper, KitReal recordLower, KitReal recordUpper) {
    const KitReal low = std::min(std::max(lower, recordLower), upper);
    const KitReal high = std::max(std::min(upper, recordUpper), lower);
    lower = low;
    upper = std::max(low, high);
}

void relaxRow(const DyncConstraintHeader& head, DynsInputRowFactors& factors, int row, KitReal h) {
    if ((factors.flags[row] & kDynsRowPosition) != 0) {
        const DyncSoftness softness =
            DyncSoftnessFromCompliance(head.compliance[row], head.damping[row], h);
        factors.xepsilon[row] = softness.epsilon;
        factors.xgamma[row] = softness.gamma;
        if (!softness.acts)
            factors.lower[row] = factors.upper[row] = 0;
    } else {
        factors.xepsilon[row] = head.loss[row] / h;
        factors.xgamma[row] = 0;
    }
    intersectBounds(factors.lower[row], factors.upper[row], head.lower[row], head.upper[row]);
}

void setGlobalSoftness(DynsInputRowFactors& factors, int row,
                       const DyncConstraintParameters& params) {
    switch (factors.flags[row]) {
    case kLinearPosition:
        factors.xepsilon[row] = params.diag[0];
        factors.xgamma[row] = params.rhs[0];
        break;
    case kAngularPosition:
        factors.xepsilon[row] = params.diag[1];
        factors.xgamma[row] = params.rhs[1];
        break;
    case kLinearVelocity:
        factors.xepsilon[row] = params.diag[2];
        break;
    case kAngularVelocity:
        factors.xepsilon[row] = params.diag[3];
        break;
    default:
        break;
    }
}

/// The global softness of the row's kind is the least that a row may have.
bool raiseToFloor(DynsInputRowFactors& factors, int row, const DyncConstraintParameters& params) {
    const bool angular = (factors.flags[row] & kDynsRowAngular) != 0;
    const bool position = (factors.flags[row] & kDynsRowPosition) != 0;
    const int kind = (position ? 0 : 2) + (angular ? 1 : 0);
    if (!(params.diag[kind] > factors.xepsilon[row]))
        return false;
    factors.xepsilon[row] = params.diag[kind];
    factors.xgamma[row] = position ? params.rhs[kind] : 0;
    return true;
}

/// Takes the velocity of a body that the rows do not move into their targets; a frozen one has none.
void moveIntoTarget(DynsInputRowFactors& factors, int rows, int slot, const KitVector4* velocity) {
    if (velocity == nullptr)
        return;
    for (int row = 0; row < rows; ++row) {
        const KitReal* g = factors.G[slot][row];
        for (int k = 0; k < 3; ++k)
            factors.v0[row] -= g[k] * velocity[0][k] + g[3 + k] * velocity[1][k];
    }
}

} // namespace

int DyncEndConstraint(DynsConstraints* clist, DynBaseConstraint* constraint,
                      DynsInputRowFactors* factors, int rows,
                      const DyncConstraintParameters* params) {
    if (rows == 0)
        return 0;
    DyncConstraintHeader& head = constraint->bclH;
    std::fill(head.dynamic_flags, head.dynamic_flags + kDynsMaxConstraintRows, 0);
    for (int row = 0; row < rows; ++row) {
        if ((factors->flags[row] & kDynsRowOwnSoftness) == 0) {
            if (head.bRelaxConstraint[row] != 0)
                relaxRow(head, *factors, row, params->stepsize);
            else
                setGlobalSoftness(*factors, row, *params);
        }
        if (raiseToFloor(*factors, row, *params))
            head.dynamic_flags[row] |= kDyncRowComplianceRaised;
        head.flags[row] = factors->flags[row];
    }
    if (head.gflag != 0)
        return 0;
    DynsBody* bodies[kDynsMaxConstraintBodies] = {};
    for (int slot = 0; slot < head.n_bodies; ++slot) {
        const bool strongest = head.b[slot] != nullptr && head.b[slot] == head.strongestSolverBody;
        const bool moved = head.b[slot] == nullptr && head.r[slot] != nullptr;
        if (!strongest)
            bodies[slot] = head.b[slot];
        if (strongest || moved)
            moveIntoTarget(*factors, rows, slot, head.velocity[slot]);
    }
    const int before = clist->n_constraint_rows;
    DynsConstraintsPushConstraint(clist, factors, bodies, head.n_bodies, rows, head.tag, nullptr);
    return clist->n_constraint_rows - before; // 0 if no body of the constraint is in the partition
}
