#include "EngineFixture.h"

#include <cmath>
#include <functional>

using namespace Hy;

namespace {

constexpr HyReal kGravity = 9.80665; // m/s²
constexpr HyReal kRounding = 1e-12;  // relative, a thousand steps

class FreeFlightTest : public EngineFixture {};

class HookSubscriber : public HyUniverse::UpdateSubscriber {
public:
    explicit HookSubscriber(std::function<void()> update) : mUpdate(std::move(update)) {}
    void update(HyUniverse*) override { mUpdate(); }
    void reset() override {}

private:
    std::function<void()> mUpdate;
};

/// Cuts each step at a fixed time of impact.
class CutUniverse : public HyUniverse {
public:
    explicit CutUniverse(HyReal safeTime) : HyUniverse(2, 2, nullptr), mSafeTime(safeTime) {}
    [[nodiscard]] HyReal getCollisionSafeTime() const override { return mSafeTime; }

private:
    HyReal mSafeTime;
};

/// Aborts the first solve that it sees.
class AbortOnce : public HyFrameStepperOption::CheckSubscriber {
public:
    bool postUpdateForceCheck() override {
        if (!std::exchange(mDone, true))
            HyFrame::instance()->setStepAborted();
        return true;
    }

private:
    bool mDone = false;
};

} // namespace

// Velocity first, then position with the new one: after n steps z = −g h² n (n + 1) / 2, which is
// g h t / 2 below the parabola.
TEST_F(FreeFlightTest, FallsAlongTheParabola) {
    HyPart& part = addPart(3);
    part.setLinearVelocity(2, 0, 5);
    constexpr int kSteps = 600;
    step(kSteps);
    const HyReal t = kSteps * kStep;
    EXPECT_NEAR(part.getLinearVelocity()[2], 5 - kGravity * t, kRounding * kGravity * t);
    EXPECT_NEAR(part.getPosition()[0], 2 * t, kRounding * 2 * t);
    const HyReal parabola = 5 * t - kGravity * t * t / 2;
    EXPECT_NEAR(part.getPosition()[2], parabola - kGravity * kStep * t / 2,
                kRounding * std::abs(parabola));
    EXPECT_NEAR(part.getLinearAcceleration()[2], -kGravity, kRounding * kGravity);
}

// A ball turns evenly, exactly by ω t; its flight does not feel the spin.
TEST_F(FreeFlightTest, ASpinningBallTurnsByItsAngle) {
    HyPart& spinning = addPart(1);
    HyPart& still = addPart(1);
    spinning.setAngularVelocity(0, 0, 3);
    constexpr int kSteps = 120;
    step(kSteps);
    const HyReal angle = 3 * kSteps * kStep;
    const HyTransform& tm = spinning.getTransform();
    EXPECT_NEAR(tm[0][0], std::cos(angle), kRounding);
    EXPECT_NEAR(std::abs(tm[0][1]), std::abs(std::sin(angle)), kRounding);
    EXPECT_EQ(spinning.getPosition()[2], still.getPosition()[2]);
}

// A long body thrown with spin about a skew axis: nothing acts on its spin, so that its angular
// momentum in the world stays, up to the first order of the step.
TEST_F(FreeFlightTest, AThrownTopKeepsItsAngularMomentum) {
    const HyReal inertia[3][3] = {{1, 0, 0}, {0, 2, 0}, {0, 0, 2.5}};
    HyReal drift[2];
    for (int i = 0; i < 2; ++i) {
        start(1);
        const HyReal h = i == 0 ? 1e-3 : 5e-4;
        frame->setTimeStep(h);
        HyPart& part = addPart(2);
        part.setMassAndInertia(2, inertia);
        part.setAngularVelocity(1, 2, 0.5);
        frame->step();
        const HyVector3 before = part.getAngularMomentum();
        step(static_cast<int>(2 / h));
        drift[i] = (part.getAngularMomentum() - before).norm() / before.norm();
    }
    EXPECT_LT(drift[0], 0.01);
    EXPECT_NEAR(drift[0] / drift[1], 2, 0.3) << "first order: half the step, half the error";
}

TEST_F(FreeFlightTest, ImpulseIsForceTimesStep) {
    universe->setGravity(0, 0, 0);
    HyPart& pushed = addPart(4);
    HyPart& struck = addPart(4);
    step(1);
    pushed.addForce(HyVector3(0, 120, 0));
    struck.addImpulse(HyVector3(0, 120 * kStep, 0));
    step(1);
    const HyReal expected = 120 * kStep / 4; // m/s
    EXPECT_NEAR(pushed.getLinearVelocity()[1], expected, kRounding);
    EXPECT_NEAR(struck.getLinearVelocity()[1], expected, kRounding);
    step(5); // both act once
    EXPECT_NEAR(pushed.getLinearVelocity()[1], expected, kRounding);
    EXPECT_NEAR(struck.getLinearVelocity()[1], expected, kRounding);
}

// Substeps of 0.3, 0.3 and 0.4 of the step bear the user's force and the hook's through the whole
// step, and the impulse once.
TEST_F(FreeFlightTest, SubstepsBearTheLoadsOfTheWholeStep) {
    universe = new CutUniverse(0.3 * kStep);
    frame->addUniverse(universe);
    universe->setGravity(0, 0, 0);
    frame->setContinuousCollisionDetection(true);
    frame->setContinuousCollisionDetectionMaxSubStepCount(2);
    HyPart& part = addPart(2);
    step(1);
    HookSubscriber hook([&] { part.addForce(HyVector3(0, 40, 0)); });
    universe->addUpdateSubscriber(&hook);
    part.addForce(HyVector3(30, 0, 0));
    part.addImpulse(HyVector3(0, 0, 5));
    step(1);
    EXPECT_NEAR(part.getLinearVelocity()[0], 30 * kStep / 2, kRounding);
    EXPECT_NEAR(part.getLinearVelocity()[1], 40 * kStep / 2, kRounding);
    EXPECT_NEAR(part.getLinearVelocity()[2], 5.0 / 2, kRounding);
}

// The recovery simulates the step again from where it began: loads act through all of its substeps,
// the impulse once, in the first of them.
TEST_F(FreeFlightTest, RecoveryRepeatsTheStepWithItsLoads) {
    constexpr int kSubsteps = 4;
    constexpr HyReal kSubstep = kStep / kSubsteps;
    HyPart& part = addPart(2);
    step(1);
    part.setLinearVelocity(0, 0, 0);
    part.setPosition(0, 0, 0);
    AbortOnce abort;
    HyFrameStepperOption& option = frame->getStepperOption();
    option.getCheckSubscriberArray().push_back(&abort);
    option.setStepperMode(HyFrameStepperOption::kModeSafe);
    option.setRecoverySubstepCount(kSubsteps);
    HookSubscriber hook([&] { part.addForce(HyVector3(0, 40, 0)); });
    universe->addUpdateSubscriber(&hook);
    part.addForce(HyVector3(30, 0, 0));
    part.addImpulse(HyVector3(0, 0, 5));
    step(1);
    option.setRecoverySubstepCount(10);
    EXPECT_NEAR(part.getLinearVelocity()[0], 30 * kStep / 2, kRounding);
    EXPECT_NEAR(part.getLinearVelocity()[1], 40 * kStep / 2, kRounding);
    EXPECT_NEAR(part.getLinearVelocity()[2], 5.0 / 2 - kGravity * kStep, kRounding);
    // Even acceleration over n substeps covers a h² n (n + 1) / 2, the impulse's speed all of them.
    const HyReal distance = kSubstep * kSubstep * kSubsteps * (kSubsteps + 1) / 2;
    EXPECT_NEAR(part.getPosition()[0], 30.0 / 2 * distance, kRounding);
    EXPECT_NEAR(part.getPosition()[2], 5.0 / 2 * kStep - kGravity * distance, kRounding);
}

// A solve that is not integrated leaves nothing behind that later acts as a foreign load.
TEST_F(FreeFlightTest, AModeWithoutIntegrationMovesNothing) {
    HyPart& part = addPart(1);
    step(1);
    const HyReal z = part.getPosition()[2], v = part.getLinearVelocity()[2];
    HyFrameStepperOption& option = frame->getStepperOption();
    option.setStepperMode(HyFrameStepperOption::kModeCollisionAndDynamics);
    part.addForce(HyVector3(0, 0, 1000));
    step(3);
    EXPECT_EQ(part.getPosition()[2], z);
    EXPECT_EQ(part.getLinearVelocity()[2], v);
    option.setStepperMode(HyFrameStepperOption::kModeNormal);
    step(1);
    EXPECT_NEAR(part.getLinearVelocity()[2], v - kGravity * kStep, kRounding);
}

TEST_F(FreeFlightTest, PartsAtRestFallAsleepAndWakeUp) {
    universe->setGravity(0, 0, 0);
    HyPart& part = addPart(1);
    constexpr int kAliveWindow = 10;
    step(kAliveWindow);
    EXPECT_TRUE(part.isDynamicsAwake());
    step(2);
    EXPECT_FALSE(part.isDynamicsAwake());
    EXPECT_EQ(universe->getLastPartitionCount(), 0);

    part.addForce(HyVector3(60, 0, 0));
    EXPECT_TRUE(part.isDynamicsAwake());
    step(1);
    EXPECT_NEAR(part.getLinearVelocity()[0], 60 * kStep, kRounding);
    EXPECT_EQ(universe->getLastPartitionCount(), 1);
    part.setLinearVelocity(0, 0, 0);
    universe->setAutoSleep(false);
    step(3 * kAliveWindow);
    EXPECT_TRUE(part.isDynamicsAwake());
    universe->destroyParts();
    step(1);
    EXPECT_EQ(universe->getLastPartitionCount(), 0) << "nothing was solved";
}

// A part that wakes in the middle of a step has no load of this step to be given back.
TEST_F(FreeFlightTest, APartThatWakesInASubstepGetsNoOldLoad) {
    universe = new CutUniverse(0.5 * kStep);
    frame->addUniverse(universe);
    universe->setGravity(0, 0, 0);
    frame->setContinuousCollisionDetection(true);
    HyPart& part = addPart(1);
    step(1);
    part.addForce(HyVector3(60, 0, 0));
    step(1);
    part.setLinearVelocity(0, 0, 0);
    part.wakeDynamics(false);
    step(1);
    HookSubscriber hook([&] { part.wakeDynamics(true); });
    universe->addUpdateSubscriber(&hook);
    step(1);
    EXPECT_EQ(part.getLinearVelocity()[0], 0);
}
