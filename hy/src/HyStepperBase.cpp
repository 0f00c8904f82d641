#include <Hy/HyStepperBase.h>

#include <Hy/HyFrame.h>

namespace Hy {

HyStepperBase::Timings& HyStepperBase::Timings::operator+=(const Timings& other) {
    preUpdate += other.preUpdate;
    detectCollisions += other.detectCollisions;
    advanceKinematics += other.advanceKinematics;
    solveDynamics += other.solveDynamics;
    revertDynamics += other.revertDynamics;
    advanceDynamics += other.advanceDynamics;
    postUpdate += other.postUpdate;
    return *this;
}

HyStepperBase::Timings& HyStepperBase::Timings::operator*=(HyReal factor) {
    preUpdate *= factor;
    detectCollisions *= factor;
    advanceKinematics *= factor;
    solveDynamics *= factor;
    revertDynamics *= factor;
    advanceDynamics *= factor;
    postUpdate *= factor;
    return *this;
}

HyStepperBase::Timings HyStepperBase::Timings::operator+(const Timings& other) const {
    Timings sum = *this;
    return sum += other;
}

HyStepperBase::Timings HyStepperBase::Timings::operator*(HyReal factor) const {
    Timings product = *this;
    return product *= factor;
}

HyReal HyStepperBase::Timings::getTotal() const {
    return detectCollisions + advanceKinematics + solveDynamics + revertDynamics + advanceDynamics +
           postUpdate;
}

HyStepperBase::HyStepperBase(int priority) : mPriority(priority) {}

HyStepperBase::~HyStepperBase() {
    if (HyFrame* frame = HyFrame::currentInstance())
        frame->removePsStepper(this);
}

void HyStepperBase::restoreExternalForcesForSubstepping() {}

void HyStepperBase::printContent(const char*) {}

template <typename Phase>
void HyStepperBase::measure(HyReal& seconds, Phase phase) {
    mTimer.start();
    phase();
    seconds += mTimer.stop();
}

void HyStepperBase::preUpdate() {
    mTimings = Timings();
    measure(mTimings.preUpdate, [this] { preUpdateImpl(); });
}

void HyStepperBase::detectCollisions(HyReal dt) {
    measure(mTimings.detectCollisions, [this, dt] { detectCollisionsImpl(dt); });
}

void HyStepperBase::advanceKinematics(HyReal dt) {
    measure(mTimings.advanceKinematics, [this, dt] { advanceKinematicsImpl(dt); });
}

void HyStepperBase::solveDynamics(HyReal dt) {
    measure(mTimings.solveDynamics, [this, dt] { solveDynamicsImpl(dt); });
}

void HyStepperBase::revertDynamics() {
    measure(mTimings.revertDynamics, [this] { revertDynamicsImpl(); });
}

void HyStepperBase::advanceDynamics(HyReal dt) {
    measure(mTimings.advanceDynamics, [this, dt] { advanceDynamicsImpl(dt); });
}

void HyStepperBase::postUpdate() {
    measure(mTimings.postUpdate, [this] { postUpdateImpl(); });
}

} // namespace Hy
