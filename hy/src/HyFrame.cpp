#include <Hy/HyFrame.h>

#include <Hy/HyFrameStepperOption.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPluginStepperFactoryRegistry.h>
#include <Hy/HyThread.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace Hy {
namespace {

HyFrame* theFrame = nullptr;

/// Limits and weight of the automatic step that setTimeStep() turns on, s.
constexpr HyReal kAutomaticMinimum = 0.0125F, kAutomaticMaximum = 0.05F, kAutomaticDelta = 0.9F;
/// Weight that stands in for one outside of [0, 1].
constexpr HyReal kFallbackDelta = 0.1F;

} // namespace

// Life.

HyFrame::HyFrame()
    : mStepperOption(HyFrameStepperOption::instance()), mTimer(std::make_unique<HyTimer>(true)),
      mAbsTimer(std::make_unique<HyTimer>(true)), mMaxThreadCount(HyThreadGetCPUCount()) {
    setName("Frame");
    resetHyBaseCounter();
    mStepperOption.resetStepperMode();
}

// The arrays are emptied first, so that a stepper that leaves finds nothing to leave; one that
// deletes another takes it out of the walk.
HyFrame::~HyFrame() {
    mReleasing = true;
    mStepperWalk = mSteppers;
    mSteppers.clear();
    mPsStepperArr.clear();
    mUniverseArr.clear();
    for (std::size_t i = 0; i < mStepperWalk.size(); ++i)
        delete mStepperWalk[i];
    mAbsTimer.reset();
    theFrame = nullptr;
}

HyFrame* HyFrame::instance() {
    if (!theFrame) {
        theFrame = new HyFrame;
        HyPluginStepperFactoryRegistry::addToHyFrame(
            HyPluginStepperFactoryRegistry::instance().getRegisteredFactories());
    }
    return theFrame;
}

HyFrame* HyFrame::currentInstance() {
    return theFrame;
}

void HyFrame::release() {
    if (theFrame && !theFrame->mReleasing && !theFrame->refuseInsideStep("release"))
        delete theFrame;
}

// Time step.

void HyFrame::setTimeStep(HyReal dt) {
    if (!std::isfinite(dt)) {
        HyWarning(0, "HyFrame::setTimeStep: time step must be finite.\n");
        return;
    }
    if (dt >= 0)
        mTimeStep = dt;
    else if (!refuseInsideStep("setTimeStep(below 0)"))
        setAutomaticTimeStep(true, kAutomaticMinimum, kAutomaticMaximum, kAutomaticDelta);
}

void HyFrame::setAutomaticTimeStep(bool on, HyReal minimum, HyReal maximum, HyReal delta) {
    const bool valid =
        minimum >= 0 && std::isfinite(minimum) && maximum >= 0 && std::isfinite(maximum);
    if (!valid) {
        HyWarning(0, "HyFrame::setAutomaticTimeStep: limits must be finite and not negative.\n");
        return;
    }
    mAutomaticTimeStep = on;
    mMinTimeStep = minimum;
    mMaxTimeStep = maximum;
    mTimeStepDelta = delta >= 0 && delta <= 1 ? delta : kFallbackDelta;
    if (on)
        mTimeStep = mMinTimeStep;
}

void HyFrame::setContinuousCollisionDetectionMaxSubStepCount(unsigned count) {
    if (count < 2)
        HyWarning(0, "HyFrame::setContinuousCollisionDetectionMaxSubStepCount: cound >= 2");
    mContinuousCollisionDetectionMaxSubStepCount = count;
}

// Wall clock.

HyReal HyFrame::getTime() const {
    return mTimer ? mTimer->getTime() : 0;
}

HyReal HyFrame::getAbsoluteTime() const {
    return mAbsTimer ? mAbsTimer->getTime() : 0;
}

// Threads and others.

HyThreadPool* HyFrame::getThreadPool() {
    if (!mThreadPool)
        mThreadPool = std::make_unique<HyThreadPool>(static_cast<unsigned>(mMaxThreadCount));
    return mThreadPool.get();
}

void HyFrame::setMaxThreadCount(int count) {
    if (count < 0) {
        HyWarning(0, "HyFrame::setMaxThreadCount: count must not be negative.\n");
        return;
    }
    mMaxThreadCount = count;
}

void HyFrame::setWarningLevel(int level) {
    setHyWarningLevel(level);
}

int HyFrame::getNewInternalID(int n) {
    if (n < 1 || n > std::numeric_limits<int>::max() - mInternalIDStart) {
        HyWarning(0, "HyFrame::getNewInternalID: n must be at least 1 and leave numbers.\n");
        return 0;
    }
    const int first = mInternalIDStart;
    mInternalIDStart += n;
    return first;
}

void HyFrame::crash() {
    std::abort();
}

// Memory tracking.

void HyFrame::setEnableMemoryTracking(bool on) {
    mEnableMemoryTracking = on;
    if (!on)
        mHyBaseList.clear();
}

void HyFrame::addHyBaseInstance(HyBase* object) {
    if (mEnableMemoryTracking)
        mHyBaseList.insert(object);
}

bool HyFrame::removeHyBaseInstance(HyBase* object) {
    return mEnableMemoryTracking && mHyBaseList.erase(object);
}

bool HyFrame::isHyBaseValid(const HyBase* object) const {
    return mHyBaseList.contains(const_cast<HyBase*>(object));
}

bool HyFrame::refuseInsideStep(const char* operation) const {
    if (mInsideStep)
        HyWarning(0, "HyFrame::%s: must not be called inside a step.\n", operation);
    return mInsideStep;
}

} // namespace Hy
