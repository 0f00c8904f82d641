#include <Hy/HyFrameStepperOption.h>

#include <Hy/HyMessage.h>
#include <Hy/HyStepChecks.h>

#include <algorithm>
#include <iterator>

namespace Hy {
namespace {

/// Solver groups that are forced without a call of the heap.
constexpr std::size_t kFirstSolverData = 10;

/// Actions of the modes, by the value of the mode.
struct ModeActions {
    bool collision, dynamics, integrate, check, recovery;
};
constexpr ModeActions kModeActions[] = {
    {true, true, true, false, false},    // kModeNormal
    {true, true, true, true, false},     // kModeCheck
    {true, true, true, true, true},      // kModeSafe
    {false, false, false, false, false}, // kModeDoNothing
    {true, false, false, false, false},  // kModeCollisionOnly
    {true, true, false, true, false},    // kModeCollisionAndDynamics
    {false, true, true, true, false},    // kModeDynamicsAndIntegrationOnly
};

} // namespace

HyFrameStepperOption::HyFrameStepperOption() : mSolverDataArray(kFirstSolverData) {}
HyFrameStepperOption::~HyFrameStepperOption() = default;

HyFrameStepperOption::CheckSubscriberCB::ReturnTypeEnum
HyFrameStepperOption::CheckSubscriberCB::notifyCheckFailure(HyPart*, const char*) {
    return kReturnTypeEnumAccept;
}

HyFrameStepperOption::CheckSubscriberCB::ReturnTypeEnum
HyFrameStepperOption::CheckSubscriberCB::notifyCheckFailure(HyConstraint*, const char*) {
    return kReturnTypeEnumAccept;
}

HyFrameStepperOption& HyFrameStepperOption::instance() {
    static HyFrameStepperOption option;
    return option;
}

void HyFrameStepperOption::setStepperMode(StepperModeEnum mode) {
    if (mode < kModeNormal || mode > kModeManual) {
        HyWarning(0,
                  "HyFrameStepperOption::setStepperMode: mode must be one of StepperModeEnum.\n");
        return;
    }
    if (mode != kModeManual) {
        const ModeActions& actions = kModeActions[mode];
        setUpdateActionCollision(actions.collision);
        setUpdateActionDynamics(actions.dynamics);
        setUpdateActionIntegrate(actions.integrate);
        setUpdateActionCheck(actions.check);
        setUpdateActionRecovery(actions.recovery);
    }
    mStepperMode = mode;
}

void HyFrameStepperOption::resetStepperMode() {
    setStepperMode(kModeNormal);
    mForceIterativeSolver = false;
    mForceIterativeSolverIterationCount = 1;
    if (mForceIterativeSolverNeedPost) // called from inside a step
        forceIterativeSolverPost();
}

void HyFrameStepperOption::setUpdateActionCollision(bool on) {
    mStepperMode = kModeManual;
    mUpdateActionCollision = on;
    if (!on)
        disableContacts();
}

void HyFrameStepperOption::setUpdateActionDynamics(bool on) {
    mStepperMode = kModeManual;
    mUpdateActionDynamics = on;
}

void HyFrameStepperOption::setUpdateActionIntegrate(bool on) {
    mStepperMode = kModeManual;
    mUpdateActionIntegrate = on;
}

void HyFrameStepperOption::setUpdateActionCheck(bool on) {
    mStepperMode = kModeManual;
    mUpdateActionCheck = on;
}

void HyFrameStepperOption::setUpdateActionRecovery(bool on) {
    mStepperMode = kModeManual;
    mUpdateActionRecovery = on;
}

void HyFrameStepperOption::setRecoverySubstepCount(int count) {
    if (count < 2) {
        HyWarning(0, "HyFrameStepperOption::setRecoverySubstepCount: "
                     "@cout must be superior to 1.");
        return;
    }
    mRecoverySubstepCount = count;
}

void HyFrameStepperOption::setVerbose(bool on) {
    if (on == mVerbose)
        return;
    mVerbose = on;
    for (CheckSubscriber* check : mCheckSubscriberArray)
        if (check) // the array is the user's too
            check->setPrintOutput(on);
}

// A check may take itself or others out, which are then skipped; one added meanwhile waits for the
// next hook.
template <typename Call>
void HyFrameStepperOption::forEachCheck(Call call) {
    mCheckWalk = mCheckSubscriberArray;
    for (CheckSubscriber* check : mCheckWalk) {
        const auto end = mCheckSubscriberArray.end();
        if (check && std::find(mCheckSubscriberArray.begin(), end, check) != end)
            call(*check);
    }
}

void HyFrameStepperOption::preUpdateForce() {
    if (mForceIterativeSolver && mUpdateActionDynamics)
        forceIterativeSolverPre();
    if (mUpdateActionCheck)
        forEachCheck([](CheckSubscriber& check) { check.preUpdateForceCheck(); });
}

void HyFrameStepperOption::postUpdateForce() {
    if (mUpdateActionCheck)
        forEachCheck([](CheckSubscriber& check) { check.postUpdateForceCheck(); });
}

void HyFrameStepperOption::postStep() {
    if (mForceIterativeSolverNeedPost)
        forceIterativeSolverPost();
    if (mUpdateActionCheck)
        forEachCheck([](CheckSubscriber& check) { check.postStepCheck(); });
}

void HyFrameStepperOption::timeOfImpactEvent(HyReal time) {
    forEachCheck([time](CheckSubscriber& check) { check.timeOfImpactEvent(time); });
}

} // namespace Hy
