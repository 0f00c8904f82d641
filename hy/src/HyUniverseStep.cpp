#include <Hy/HyUniverse.h>

#include "HySavedCoordinates.h"
#include "HyUserContacts.h"

#include <Col/ColSpace.h>
#include <Hy/HyBridge.h>
#include <Hy/HyDynamicsExtension.h>
#include <Hy/HyFrame.h>
#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynWorld.h>
#include <Kit/KitProfile.h>

// The phases of a universe. A step visits the awake bodies and the parts that asked for it: what
// sleeps costs nothing.

namespace Hy {
namespace {

constexpr HyReal kMillisecondsPerSecond = 1000;

} // namespace

template <typename Stage>
void HyUniverse::measure(HyReal& milliseconds, const char* name, Stage stage) {
    const KitProfileScope zone(name);
    mTimer.reset();
    mTimer.start();
    stage();
    milliseconds = kMillisecondsPerSecond * mTimer.stop();
}

void HyUniverse::preUpdateImpl() {
    mUniverseTimings = UniverseTimings();
    mStepping = false;
    measure(mUniverseTimings.preStepParts, "parts before", [this] { preStepParts(); });
    callExtensions(&HyDynamicsExtension::preStep, mUniverseTimings.preStepExtensions,
                   "extensions before");
}

void HyUniverse::callExtensions(void (HyDynamicsExtension::*hook)(), HyReal& milliseconds,
                                const char* name) {
    if (mExtensions.empty())
        return;
    measure(milliseconds, name, [this, hook] {
        for (HySafeWalk walk(mExtensions); HyDynamicsExtension* extension = walk.next();)
            (extension->*hook)();
    });
}

// Loads are saved for later substeps once all parts have had their say.
void HyUniverse::preStepParts() {
    mSteppedParts.clear();
    mSteppedParts.swap(mPreStepParts);
    for (HySafeWalk walk(mSteppedParts); HyPart* part = walk.next();)
        part->preStep();
    DynWorldSaveUserForces(mWorld);
}

void HyUniverse::detectCollisionsImpl(HyReal dt) {
    mStepping = true;
    measure(mUniverseTimings.applyCollisionRules, "collision rules",
            [this] { stepCollisionRules(); });
    callExtensions(&HyDynamicsExtension::preCollision, mUniverseTimings.preCollisionExtensions,
                   "extensions before collision");
    HyFrame* frame = HyFrame::instance();
    mSpace->SetThreadPool(mBroadPhaseMultithreaded ? frame->getThreadPool() : nullptr);
    measure(mUniverseTimings.collisionDetectionBroadPhase, "broad phase",
            [this, dt] { ColSpacePathUpdateAll(mSpace, dt); });
    mBridge->resetAccumulatedIntersectSubscriberTime();
    measure(mUniverseTimings.collisionDetectionContactGeneration, "contacts",
            [this, dt] { mBridge->updateContacts(dt); });
    mUniverseTimings.intersectSubscribers =
        kMillisecondsPerSecond * mBridge->getAccumulatedIntersectSubscriberTime();
    measure(mUniverseTimings.updateSubscribers, "update subscribers", [this] {
        mUpdateSubscriberList.forEach(
            [this](UpdateSubscriber& subscriber) { subscriber.update(this); });
    });
    callExtensions(&HyDynamicsExtension::step, mUniverseTimings.stepExtensions, "extensions");
}

void HyUniverse::advanceKinematicsImpl(HyReal dt) {
    mStepping = true;
    measure(mUniverseTimings.advanceKinematics, "kinematics", [this, dt] {
        if (dt > 0)
            saveLockTargets();
        DynWorldUpdateKinematicConstraint(mWorld, dt);
        if (dt < 0)
            restoreLockTargets();
    });
}

// A step back does not undo a lock target that was stopped, nor a stop that gave way.
void HyUniverse::saveLockTargets() {
    mSavedCoordinates->entries.clear();
    for (int i = 0; i < mWorld->nKineticConstraints; ++i) {
        HySavedCoordinates::Entry& entry = mSavedCoordinates->entries.add();
        entry.record = mWorld->kineticConstraintHead[i];
        DynConstraintSaveCoordinates(entry.record, &entry.coordinates);
    }
}

void HyUniverse::restoreLockTargets() {
    for (const HySavedCoordinates::Entry& entry : mSavedCoordinates->entries)
        if (entry.record)
            DynConstraintRestoreCoordinates(entry.record, entry.coordinates);
    mSavedCoordinates->entries.clear();
}

void HyUniverse::solveDynamicsImpl(HyReal dt) {
    mStepping = true;
    mUserContacts->resolveFriction();
    mSavedCoordinates->saveSlips(*mWorld);
    measure(mUniverseTimings.solveDynamics, "dynamics", [this, dt] { DynWorldStep(mWorld, dt); });
}

void HyUniverse::revertDynamicsImpl() {
    DynWorldRevertLoads(mWorld);
    mSavedCoordinates->restoreSlips(*mWorld);
    resetConstraintDynamics();
}

// The coordinates know how often they have turned, which their bodies do not.
void HyUniverse::resetConstraintDynamics() {
    const auto reset = [](DynBaseConstraint* record, void*) {
        if (record->bclH.tag == kDynTagContact)
            return;
        DynConstraintCoordinates coordinates;
        DynConstraintSaveCoordinates(record, &coordinates);
        DynConstraintResetDynamics(record);
        DynConstraintRestoreCoordinates(record, coordinates);
    };
    DynWorldForAllConstraints(mWorld, reset, nullptr);
}

void HyUniverse::restoreExternalForcesForSubstepping() {
    DynWorldRestoreUserForces(mWorld);
}

void HyUniverse::advanceDynamicsImpl(HyReal) {
    mStepping = true;
    measure(mUniverseTimings.integrate, "integrate", [this] { DynWorldIntegrate(mWorld); });
    mStepping = false;
}

void HyUniverse::postUpdateImpl() {
    mStepping = false;
    mUserContacts->disableAll();
    measure(mUniverseTimings.postStepParts, "parts after", [this] { postStepParts(); });
    callExtensions(&HyDynamicsExtension::postStep, mUniverseTimings.postStepExtensions,
                   "extensions after");
    mFirstStep = false;
}

// All that HyPart::postStep() does for an awake part is to clear its load.
void HyUniverse::postStepParts() {
    DynWorldClearUserForces(mWorld);
    for (HySafeWalk walk(mSteppedParts); HyPart* part = walk.next();)
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
