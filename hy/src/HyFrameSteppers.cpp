#include <Hy/HyFrame.h>

#include <Hy/HyFrameStepperOption.h>
#include <Hy/HyUniverse.h>

#include <algorithm>

// The steppers of a frame and their order.

namespace Hy {
namespace {

HyStepperBase* elementOrNull(const HyArray<HyStepperBase*>& array, int index) {
    const bool inside = index >= 0 && static_cast<std::size_t>(index) < array.size();
    return inside ? array[static_cast<std::size_t>(index)] : nullptr;
}

} // namespace

void HyFrame::addStepper(HyStepperBase* stepper) {
    if (!stepper || hasStepper(stepper))
        return;
    const auto place = std::upper_bound(
        mSteppers.begin(), mSteppers.end(), stepper->getPriority(),
        [](int priority, const HyStepperBase* other) { return priority < other->getPriority(); });
    mSteppers.insert(place, stepper);
    if (stepper->isOfClassType(HyUniverse::getStaticClassType()))
        mUniverseArr.addUnique(stepper);
}

bool HyFrame::removeStepper(HyStepperBase* stepper) {
    std::replace(mStepperWalk.begin(), mStepperWalk.end(), stepper,
                 static_cast<HyStepperBase*>(nullptr));
    if (mUniverseArr.eraseOnce(stepper))
        mStepperOption.universeLeaves(*static_cast<HyUniverse*>(stepper));
    return mSteppers.eraseOnce(stepper);
}

bool HyFrame::hasStepper(const HyStepperBase* stepper) const {
    return std::find(mSteppers.begin(), mSteppers.end(), stepper) != mSteppers.end();
}

int HyFrame::getStepperCount() const {
    return static_cast<int>(mSteppers.size());
}

HyStepperBase* HyFrame::getStepper(int index) const {
    return elementOrNull(mSteppers, index);
}

void HyFrame::addPsStepper(HyStepperBase* stepper) {
    if (!stepper)
        return;
    mPsStepperArr.addUnique(stepper);
    addStepper(stepper);
}

bool HyFrame::removePsStepper(HyStepperBase* stepper) {
    mPsStepperArr.eraseOnce(stepper);
    return removeStepper(stepper);
}

int HyFrame::getPsStepperCount() const {
    return static_cast<int>(mPsStepperArr.size());
}

HyStepperBase* HyFrame::getPsStepper(int index) const {
    return elementOrNull(mPsStepperArr, index);
}

int HyFrame::getUniverseCount() const {
    return static_cast<int>(mUniverseArr.size());
}

HyUniverse* HyFrame::getUniverse(int index) const {
    return static_cast<HyUniverse*>(elementOrNull(mUniverseArr, index));
}

} // namespace Hy
