#include <Hy/HyUniverse.h>

#include <Hy/HyFrame.h>
#include <Hy/HyMessage.h>
#include <Hy/HySolverParameters.h>

#include <Dyn/DynWorld.h>
#include <Dyns/DynsConstraintFrames.h>

#include <cmath>
#include <limits>

// Settings of the solver by solver group, and what the solver counts.

namespace Hy {
namespace {

bool isCritical(const DyncConstraintParameters& softness) {
    for (const HyReal value : {softness.linear_damping, softness.angular_damping,
                               softness.linear_kinetic_loss, softness.angular_kinetic_loss})
        if (!(value >= 0 && std::isfinite(value)))
            return false;
    return true;
}

/// Critical softness for the frame's step. False, with a warning, if the half life is bad or the
/// result too large for a number; the softness is then not to be used.
bool makeCritical(DyncConstraintParameters& softness, HyReal halfLife, const char* operation) {
    if (halfLife >= 0 && std::isfinite(halfLife)) {
        DyncSetCriticalConstraintParameters(&softness, softness.linear_compliance,
                                            softness.angular_compliance,
                                            HyFrame::instance()->getTimeStep(), halfLife);
        if (isCritical(softness))
            return true;
    }
    HyWarning(0, "HyUniverse::%s: half_life must be finite and not negative.\n", operation);
    return false;
}

/// Critical softness of a single stiffness; without damping and loss if an argument is refused.
DyncConstraintParameters criticalOf(HyReal stiffness, HyReal halfLife, const char* operation) {
    DyncConstraintParameters softness{};
    const HyReal compliance = stiffness == std::numeric_limits<HyReal>::max() ? 0 : 1 / stiffness;
    if (!(stiffness > 0) || !std::isfinite(stiffness) || !std::isfinite(compliance)) {
        HyWarning(0, "HyUniverse::%s: stiffness must be finite and above 0.\n", operation);
        return softness;
    }
    softness.linear_compliance = softness.angular_compliance = compliance;
    return makeCritical(softness, halfLife, operation) ? softness : DyncConstraintParameters{};
}

} // namespace

HySolverParameters* HyUniverse::getSolverParameters(int group) {
    return reinterpret_cast<HySolverParameters*>(DynGroupingGet(mWorld, group));
}

int HyUniverse::getSolverParametersCount() const {
    return DynGroupingCount(mWorld);
}

void HyUniverse::setCriticalConstraintParameters(int group, HyReal half_life) {
    constexpr const char* kOperation = "setCriticalConstraintParameters";
    DynGrouping* grouping = DynGroupingGet(mWorld, group);
    if (!grouping) {
        HyWarning(0, "HyUniverse::%s: group must be from 0 to %d.\n", kOperation, kDynMaxGrouping);
        return;
    }
    DyncConstraintParameters softness = grouping->bcl_params;
    if (!makeCritical(softness, half_life, kOperation))
        return;
    grouping->bcl_params = softness;
    if (group == 0) // which mirrors the world's own settings
        mWorld->params.bcl_params = softness;
}

HyReal HyUniverse::getCriticalDamping(HyReal stiffness, HyReal half_life) const {
    return criticalOf(stiffness, half_life, "getCriticalDamping").linear_damping;
}

HyReal HyUniverse::getCriticalLoss(HyReal stiffness, HyReal half_life) const {
    return criticalOf(stiffness, half_life, "getCriticalLoss").linear_kinetic_loss;
}

long long HyUniverse::getSolverUnconvergedCount() const {
    return DynsConstraintFramesGetUnconvergedCount(mWorld->constraint_frames);
}

long long HyUniverse::getSolverFallbackCount() const {
    return DynsConstraintFramesGetFallbackCount(mWorld->constraint_frames);
}

} // namespace Hy
