#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>

namespace Hy {

void HyPart::setAutoSleepThreshold(HyReal linearSpeed, HyReal linearAcceleration,
                                   HyReal angularSpeed, HyReal angularAcceleration, int steps) {
    setAutoSleepLinearSpeedThreshold(linearSpeed);
    setAutoSleepLinearAccelerationThreshold(linearAcceleration);
    setAutoSleepAngularSpeedThreshold(angularSpeed);
    setAutoSleepAngularAccelerationThreshold(angularAcceleration);
    setAutoSleepStepLiveThreshold(steps);
}

void HyPart::setAutoSleepLinearSpeedThreshold(HyReal speed) {
    DynBodySetAutoDisableVelocityThreshold(mDynBodyID, speed);
}

void HyPart::setAutoSleepLinearAccelerationThreshold(HyReal acceleration) {
    DynBodySetAutoDisableAccelerationThreshold(mDynBodyID, acceleration);
}

void HyPart::setAutoSleepAngularSpeedThreshold(HyReal speed) {
    DynBodySetAutoDisableAngularVelocityThreshold(mDynBodyID, speed);
}

void HyPart::setAutoSleepAngularAccelerationThreshold(HyReal acceleration) {
    DynBodySetAutoDisableAngularAccelerationThreshold(mDynBodyID, acceleration);
}

void HyPart::setAutoSleepStepLiveThreshold(int steps) {
    DynBodySetAutoDisableAliveWindow(mDynBodyID, steps);
}

HyReal HyPart::getAutoSleepLinearSpeedThreshold() const {
    return DynBodyGetAutoDisableVelocityThreshold(mDynBodyID);
}

HyReal HyPart::getAutoSleepLinearAccelerationThreshold() const {
    return DynBodyGetAutoDisableAccelerationThreshold(mDynBodyID);
}

HyReal HyPart::getAutoSleepAngularSpeedThreshold() const {
    return DynBodyGetAutoDisableAngularVelocityThreshold(mDynBodyID);
}

HyReal HyPart::getAutoSleepAngularAccelerationThreshold() const {
    return DynBodyGetAutoDisableAngularAccelerationThreshold(mDynBodyID);
}

int HyPart::getAutoSleepStepLiveThreshold() const {
    return DynBodyGetAutoDisableAliveWindow(mDynBodyID);
}

void HyPart::setDefaultAutoSleepParameters(HyReal linearSpeed, HyReal linearAcceleration,
                                           HyReal angularSpeed, HyReal angularAcceleration,
                                           int steps) {
    DynBodySetDefaultAutoDisableParams({.vel_thresh = linearSpeed,
                                        .velrot_thresh = angularSpeed,
                                        .acc_thresh = linearAcceleration,
                                        .accrot_thresh = angularAcceleration,
                                        .alive_window = steps});
}

void HyPart::getDefaultAutoSleepParameters(HyReal& linearSpeed, HyReal& linearAcceleration,
                                           HyReal& angularSpeed, HyReal& angularAcceleration,
                                           int& steps) {
    const DynAutoDisableParams& params = DynBodyGetDefaultAutoDisableParams();
    linearSpeed = params.vel_thresh;
    linearAcceleration = params.acc_thresh;
    angularSpeed = params.velrot_thresh;
    angularAcceleration = params.accrot_thresh;
    steps = params.alive_window;
}

} // namespace Hy
