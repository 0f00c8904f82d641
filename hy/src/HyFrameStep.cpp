#include <Hy/HyFrame.h>

#include <Hy/HyFrameStepperOption.h>
#include <Hy/HyMessage.h>
#include <Hy/HyTimer.h>
#include <Hy/HyUniverse.h>

#include <Kit/KitProfile.h>

#include <algorithm>
#include <cmath>

namespace Hy {
namespace {

/// Share of the frame's step below which nothing is simulated by itself: a shorter rest between
/// impacts is dropped, and no substep of a recovery is shorter.
constexpr HyReal kSmallestShare = 0.01;

} // namespace

// A step runs over the steppers that it found. One that leaves meanwhile is skipped, one that comes
// waits for the next step, so that each sees whole steps.
struct HyFrame::StepGuard {
    StepGuard(HyFrame& running, const HyArray<HyStepperBase*>& steppers) : frame(running) {
        frame.mInsideStep = true;
        frame.mStepperWalk = steppers;
    }
    StepGuard(const StepGuard&) = delete;
    StepGuard& operator=(const StepGuard&) = delete;
    ~StepGuard() {
        frame.mStepperWalk.clear();
        frame.mInsideStep = false;
    }
    HyFrame& frame;
};

void HyFrame::step() {
    if (refuseInsideStep("step"))
        return;
    const KitProfileScope zone("HyFrame::step");
    const StepGuard guard(*this, mSteppers);
    if (mAutomaticTimeStep)
        followWallClock();
    mAbsStepTime = getAbsoluteTime();
    doStepperPreStep();
    stepUpdate();
    doStepperPostStep();
    mStepperOption.postStep();
    mTimings = sumOfTimings(mSteppers);
    ++mFrameNumber;
}

void HyFrame::stepPs() {
    if (refuseInsideStep("stepPs"))
        return;
    const StepGuard guard(*this, mPsStepperArr);
    forEachStepper([](HyStepperBase& s) { s.preUpdate(); });
    forEachStepper([this](HyStepperBase& s) { s.detectCollisions(mTimeStep); });
    forEachStepper([this](HyStepperBase& s) { s.advanceKinematics(mTimeStep); });
    forEachStepper([this](HyStepperBase& s) { s.solveDynamics(mTimeStep); });
    forEachStepper([this](HyStepperBase& s) { s.advanceDynamics(mTimeStep); });
    forEachStepper([](HyStepperBase& s) { s.postUpdate(); });
    mPsTimings = sumOfTimings(mPsStepperArr);
}

HyStepperBase::Timings HyFrame::sumOfTimings(const HyArray<HyStepperBase*>& steppers) {
    HyStepperBase::Timings sum;
    for (const HyStepperBase* stepper : steppers)
        sum += stepper->getTimings();
    return sum;
}

void HyFrame::followWallClock() {
    const HyReal elapsed = mTimer->stop();
    mTimer->start();
    HyReal dt = mTimeStepDelta * mTimeStep + (1 - mTimeStepDelta) * elapsed;
    if (dt > mMaxTimeStep)
        dt = mMaxTimeStep;
    else if (mMinTimeStep > dt)
        dt = mMinTimeStep;
    setTimeStep(dt);
}

// Phases. Each has its own guard.

template <typename Call>
void HyFrame::forEachStepper(const Call& call) {
    for (std::size_t i = 0; i < mStepperWalk.size(); ++i)
        if (HyStepperBase* stepper = mStepperWalk[i])
            call(*stepper);
}

bool HyFrame::dynamicsRuns() const {
    return mTimeStep != 0 && !mStepAborted && mStepperOption.getUpdateActionDynamics();
}

void HyFrame::doStepperPreStep() {
    forEachStepper([](HyStepperBase& s) { s.preUpdate(); });
}

void HyFrame::doStepperDetectCollisions(HyReal dt) {
    if (!mStepAborted && mStepperOption.getUpdateActionCollision())
        forEachStepper([dt](HyStepperBase& s) { s.detectCollisions(dt); });
}

void HyFrame::doStepperAdvanceKinematics(HyReal dt) {
    forEachStepper([dt](HyStepperBase& s) { s.advanceKinematics(dt); });
}

void HyFrame::doStepperSolveDynamics(HyReal dt) {
    if (!dynamicsRuns())
        return;
    mStepperOption.preUpdateForce();
    forEachStepper([dt](HyStepperBase& s) { s.solveDynamics(dt); });
    mStepperOption.postUpdateForce();
}

void HyFrame::doStepperRevertDynamics() {
    forEachStepper([](HyStepperBase& s) { s.revertDynamics(); });
}

void HyFrame::doStepperAdvanceDynamics(HyReal dt) {
    if (dynamicsRuns() && mStepperOption.getUpdateActionIntegrate())
        forEachStepper([dt](HyStepperBase& s) { s.advanceDynamics(dt); });
}

void HyFrame::doStepperPostStep() {
    forEachStepper([](HyStepperBase& s) { s.postUpdate(); });
}

void HyFrame::restoreExternalForcesForSubstepping() {
    if (mInsideStep) {
        forEachStepper([](HyStepperBase& s) { s.restoreExternalForcesForSubstepping(); });
        return;
    }
    for (HyStepperBase* stepper : mSteppers)
        stepper->restoreExternalForcesForSubstepping();
}

HyReal HyFrame::getCollisionSafeTime() const {
    HyReal safe = mTimeStep;
    if (!mStepperOption.getUpdateActionCollision())
        return safe;
    for (const HyStepperBase* universe : mUniverseArr)
        safe = std::min(safe, static_cast<const HyUniverse*>(universe)->getCollisionSafeTime());
    return safe;
}

// The middle of a step: one pass, or several between times of impact, and the way out of an abort.

void HyFrame::stepUpdate() {
    const HyReal frameStep = mTimeStep;
    const bool automatic = mAutomaticTimeStep;
    mStepAborted = false;
    const HyReal remaining =
        mContinuousCollisionDetection ? simulateBetweenImpacts() : simulateInOnePass();
    if (mStepAborted)
        handleAbort(frameStep, remaining);
    mTimeStep = frameStep;
    mAutomaticTimeStep = automatic;
}

/// Answers the time that an abort leaves to be simulated, s.
HyReal HyFrame::simulateInOnePass() {
    const HyReal frameStep = mTimeStep;
    doStepperDetectCollisions(frameStep);
    doStepperAdvanceKinematics(mTimeStep);
    doStepperSolveDynamics(mTimeStep);
    doStepperAdvanceDynamics(mTimeStep);
    return frameStep;
}

/// The same for a step that is cut at its times of impact: what failed is not subtracted. Each cut
/// has its own detection; the last pass takes all that remains and looks for no impact.
HyReal HyFrame::simulateBetweenImpacts() {
    const HyReal frameStep = mTimeStep;
    HyReal remaining = frameStep;
    for (unsigned index = 0;; ++index) {
        const bool isLast = index >= mContinuousCollisionDetectionMaxSubStepCount;
        if (isLast)
            detectWithoutImpacts(mTimeStep);
        else
            doStepperDetectCollisions(mTimeStep);
        const HyReal safe = getCollisionSafeTime();
        if (safe > 0 && remaining > safe && !isLast) {
            mStepperOption.timeOfImpactEvent(frameStep - remaining + safe);
            mAutomaticTimeStep = false;
            mTimeStep = safe;
        }
        doStepperAdvanceKinematics(mTimeStep);
        if (index > 0) // the first substep has consumed the loads
            restoreExternalForcesForSubstepping();
        doStepperSolveDynamics(mTimeStep);
        doStepperAdvanceDynamics(mTimeStep);
        if (mStepAborted)
            return remaining;
        remaining -= mTimeStep;
        mTimeStep = std::max<HyReal>(remaining, 0);
        if (isLast || !(remaining > kSmallestShare * frameStep))
            return remaining;
    }
}

void HyFrame::detectWithoutImpacts(HyReal dt) {
    const bool continuous = mContinuousCollisionDetection;
    mContinuousCollisionDetection = false;
    doStepperDetectCollisions(dt);
    mContinuousCollisionDetection = continuous;
}

void HyFrame::handleAbort(HyReal frameStep, HyReal remaining) {
    if (mStepperOption.getUpdateActionRecovery()) {
        recover(frameStep, remaining);
        return;
    }
    HyWarning(0, "HyFrame::step: Stability problem detected in stepper mode switched to "
                 "kModeCollisionAndDynamics\n");
    mStepperOption.setStepperMode(HyFrameStepperOption::kModeCollisionAndDynamics);
}

/// Takes the failed pass back and simulates what remains in short substeps, with the checks off so
/// that nothing aborts again.
void HyFrame::recover(HyReal frameStep, HyReal remaining) {
    HyWarning(0, "substepping\n");
    mAutomaticTimeStep = false;
    mStepAborted = false;
    doStepperAdvanceKinematics(-mTimeStep);
    doStepperRevertDynamics();
    const HyFrameStepperOption::StepperModeEnum mode = mStepperOption.getStepperMode();
    mStepperOption.setUpdateActionCheck(false);

    const HyReal shortest = kSmallestShare * frameStep;
    int count = mStepperOption.getRecoverySubstepCount();
    if (shortest > remaining / count)
        count = std::max(1, static_cast<int>(std::trunc(remaining / shortest)));
    mTimeStep = remaining / count;
    for (int i = 0; i < count; ++i) {
        detectWithoutImpacts(mTimeStep);
        doStepperAdvanceKinematics(mTimeStep);
        restoreExternalForcesForSubstepping();
        doStepperSolveDynamics(mTimeStep);
        doStepperAdvanceDynamics(mTimeStep);
    }
    mStepperOption.setStepperMode(mode);
}

} // namespace Hy
