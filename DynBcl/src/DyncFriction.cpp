#include <Dync/DyncEndConstraint.h>

#include <Kit/KitMessage.h>

#include <algorithm>
#include <atomic>

namespace {

/// True if the entry's row of the last step did not reach a force bound: the joint sticks.
bool stuckLastStep(const DyncFriction& entry, const DyncConstraintHeader& head) {
    return entry.mLastStepRow > 0 && entry.mLastStepRow < kDynsMaxConstraintRows &&
           (head.dynamic_flags[entry.mLastStepRow] & kDyncRowAtBound) == 0;
}

void setFrictionRow(DynsInputRowFactors* factors, const DyncConstraintParameters* params, int row,
                    DyncFriction& entry, const DyncConstraintHeader& head) {
    const KitReal scale = stuckLastStep(entry, head) ? entry.mStaticFrictionScale : 1;
    factors->phi[row] = 0;
    factors->v0[row] = 0;
    factors->upper[row] = std::min(entry.mMaxForce * scale, kKitInfinity);
    factors->lower[row] = -factors->upper[row];
    factors->xepsilon[row] = entry.mLoss * params->h_inv;
    factors->xgamma[row] = 0;
    factors->flags[row] = (factors->flags[row] & ~(kDynsRowPosition | kDynsRowVelocity)) |
                          kDynsRowVelocity | kDynsRowOwnSoftness;
    entry.mLastStepRow = row;
}

void warnOnce() {
    static std::atomic<bool> warned{false};
    if (!warned.exchange(true))
        KitWarning(12, "DyncAddFriction: a joint has no room for all of its friction rows.\n");
}

} // namespace

int DyncAddFriction(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                    DynBaseConstraint* constraint, const DyncConstraintParameters* params,
                    const DyncWorldFrames& frames) {
    DyncConstraintHeader& head = constraint->bclH;
    int added = 0;
    for (int k = 0; k < 6; ++k) {
        DyncFriction& entry = head.friction[k];
        if (entry.mEnabled == 0 || !(entry.mMaxForce > 0)) {
            entry.mLastStepRow = 0;
            continue;
        }
        const int at = row + added;
        if (at >= head.max_rows) {
            entry.mLastStepRow = -1;
            warnOnce();
            continue;
        }
        const lsVec3& axis = frames.w[entry.mPartRef].axis(k % 3);
        if (k < 3)
            DyncSetDot2Constraint(factors, G, at, frames.d01, axis, frames.p, entry.mPartRef, 1);
        else
            DyncSetAxialConstraint(factors, G, at, axis, 1);
        setFrictionRow(factors, params, at, entry, head);
        ++added;
    }
    return added;
}
