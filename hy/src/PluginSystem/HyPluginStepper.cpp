#include <Hy/HyPluginStepper.h>

#include "PluginSteppers.h"

#include <Hy/HyMessage.h>
#include <Hy/IStepper.h>

namespace Hy {
namespace {

using HyPluginSystem::IStepper;

IStepper* orOneThatDoesNothing(IStepper* instance) {
    if (instance)
        return instance;
    HyWarning(0, "mInstance != __null");
    return new IStepper;
}

} // namespace

HyArray<HyPluginStepper*>& HyLivePluginSteppers() {
    static HyArray<HyPluginStepper*>& steppers = *new HyArray<HyPluginStepper*>;
    return steppers;
}

HyPluginStepper::HyPluginStepper(IStepper* instance)
    : HyClass(instance ? instance->getPriority() : IStepper::kDefaultPriority),
      mInstance(orOneThatDoesNothing(instance)) {
    HyLivePluginSteppers().push_back(this);
}

HyPluginStepper::~HyPluginStepper() {
    mObservers.forEach([this](Observer& observer) { observer.aboutToBeDestroyed(this); });
    HyLivePluginSteppers().eraseOnce(this);
    delete mInstance;
}

void HyPluginStepper::preUpdateImpl() {
    mInstance->preUpdate();
}

void HyPluginStepper::detectCollisionsImpl(HyReal dt) {
    mInstance->detectCollisions(dt);
}

void HyPluginStepper::advanceKinematicsImpl(HyReal dt) {
    mInstance->advanceKinematics(dt);
}

void HyPluginStepper::solveDynamicsImpl(HyReal dt) {
    mInstance->solveDynamics(dt);
}

void HyPluginStepper::revertDynamicsImpl() {
    mInstance->revertDynamics();
}

void HyPluginStepper::advanceDynamicsImpl(HyReal dt) {
    mInstance->advanceDynamics(dt);
}

void HyPluginStepper::postUpdateImpl() {
    mInstance->postUpdate();
}

} // namespace Hy
