#include <Hy/HyUniverse.h>

#include <Hy/HyPart.h>
#include <Hy/HySafeWalk.h>

#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>

// The phases of a universe. A step visits the awake bodies and the parts that asked for it: what
// sleeps costs nothing.

namespace Hy {
namespace {

constexpr HyReal kMillisecondsPerSecond = 1000;

template <typename Call>
void forEachEnabledBody(const DynWorld& world, Call call) {
    for (DynBody* body = world.enabledBodyHead; body; body = body->enabledNext)
        call(body);
}

} // namespace

template <typename Stage>
void HyUniverse::measure(HyReal& milliseconds, Stage stage) {
    mTimer.reset();
    mTimer.start();
    stage();
    milliseconds = kMillisecondsPerSecond * mTimer.stop();
}

void HyUniverse::preUpdateImpl() {
    mUniverseTimings = UniverseTimings();
    mStepping = false;
    measure(mUniverseTimings.preStepParts, [this] { preStepParts(); });
}

// Loads are saved for later substeps once all parts have had their say.
void HyUniverse::preStepParts() {
    mSteppedParts.clear();
    mSteppedParts.swap(mPreStepParts);
    for (HySafeWalk walk(mSteppedParts); HyPart* part = walk.next();)
        part->preStep();
    forEachEnabledBody(*mWorld, DynBodySaveUserForces);
}

void HyUniverse::detectCollisionsImpl(HyReal) {
    mStepping = true;
    measure(mUniverseTimings.updateSubscribers, [this] {
        mUpdateSubscriberList.forEach(
            [this](UpdateSubscriber& subscriber) { subscriber.update(this); });
    });
}

void HyUniverse::advanceKinematicsImpl(HyReal dt) {
    mStepping = true;
    measure(mUniverseTimings.advanceKinematics,
            [this, dt] { DynWorldUpdateKinematicConstraint(mWorld, dt); });
}

void HyUniverse::solveDynamicsImpl(HyReal dt) {
    mStepping = true;
    measure(mUniverseTimings.solveDynamics, [this, dt] { DynWorldStep(mWorld, dt); });
}

void HyUniverse::revertDynamicsImpl() {
    forEachEnabledBody(*mWorld, [](DynBody* body) {
        DynBodyResetForces(body);
        DynBodyRearmImpulses(body);
    });
}

void HyUniverse::restoreExternalForcesForSubstepping() {
    forEachEnabledBody(*mWorld, DynBodyRestoreUserForces);
}

void HyUniverse::advanceDynamicsImpl(HyReal) {
    mStepping = true;
    measure(mUniverseTimings.integrate, [this] { DynWorldIntegrate(mWorld); });
    mStepping = false;
}

void HyUniverse::postUpdateImpl() {
    mStepping = false;
    measure(mUniverseTimings.postStepParts, [this] { postStepParts(); });
}

void HyUniverse::postStepParts() {
    const DynamicPartIterator end = dynamicPartEnd();
    for (DynamicPartIterator part = dynamicPartBegin(); part != end; ++part)
        part->postStep();
    for (HySafeWalk walk(mSteppedParts); HyPart* part = walk.next();)
        if (!DynamicPartIterator::isVisited(part->getDynBody()))
            part->postStep();
    mSteppedParts.clear();
}

void HyUniverse::partNeedsPreStep(HyPart* part) {
    if (part)
        mPreStepParts.insert(part);
}

void HyUniverse::partNeedsPostStep(HyPart* part) {
    if (part)
        (mStepping ? mSteppedParts : mPreStepParts).insert(part);
}

void HyUniverse::partLeavesPreStep(HyPart* part) {
    mPreStepParts.erase(part);
    mSteppedParts.erase(part);
}

} // namespace Hy
