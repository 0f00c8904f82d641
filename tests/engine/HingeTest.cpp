#include "JointScene.h"

using namespace Hy;

namespace {

class HingeTest : public JointScene {};

/// Complete elliptic integral of the first kind by the arithmetic-geometric mean.
HyReal ellipticK(HyReal modulus) {
    HyReal a = 1, b = std::sqrt(1 - modulus * modulus);
    for (int i = 0; i < 10; ++i) {
        const HyReal mean = (a + b) / 2;
        b = std::sqrt(a * b);
        a = mean;
    }
    return std::numbers::pi / (2 * a);
}

} // namespace

// T = 4 sqrt(J/(m g L)) K(sin(angle/2)), J about the hinge. The scheme is of first order: two step
// sizes give the value towards which it goes.
TEST_F(HingeTest, PendulumSwingsWithThePeriodOfTheEllipticIntegral) {
    constexpr HyReal kMass = 2, kLength = 0.8, kMoment = 0.3;
    const auto measure = [&](HyReal start, HyReal h) {
        frame->setTimeStep(h);
        HyPart& bob = addBall(kMass, kMoment,
                              HyVector3(0, kLength * std::sin(start), -kLength * std::cos(start)));
        HyHinge& hinge = add<HyHinge>(&bob, nullptr, HyVector3(), HyVector3(1, 0, 0));
        // From one turn at the side where it started to the next.
        HyReal before = bob.getAngularVelocity()[0];
        std::vector<HyReal> turns;
        for (int i = 1; turns.size() < 2 && i < 40000; ++i) {
            frame->step();
            const HyReal now = bob.getAngularVelocity()[0];
            if (before > 0 && now <= 0)
                turns.push_back((i - 1 + before / (before - now)) * h);
            before = now;
        }
        EXPECT_LT(gapOf(hinge), 1e-3);
        universe->destroyConstraint(&hinge);
        universe->destroyPart(&bob);
        return turns.size() == 2 ? turns[1] - turns[0] : 0;
    };
    for (const HyReal start : {0.1, 1.5, 2.5}) {
        const HyReal atHinge = kMoment + kMass * kLength * kLength;
        const HyReal expected =
            4 * std::sqrt(atHinge / (kMass * kGravity * kLength)) * ellipticK(std::sin(start / 2));
        const HyReal coarse = measure(start, 1.0 / 500), fine = measure(start, 1.0 / 1000);
        EXPECT_NEAR(coarse / expected, 1, 0.05) << start;
        EXPECT_LT(std::abs(fine - expected), 0.6 * std::abs(coarse - expected) + 1e-4) << start;
        EXPECT_NEAR((2 * fine - coarse) / expected, 1, 1e-3) << start;
    }
}

// A beam held at its end at rest: each equation, the lock and the force on the part by statics.
TEST_F(HingeTest, HeldBeamAgreesWithStatics) {
    constexpr HyReal kMass = 7, kArm = 1.5;
    HyPart& beam = addBall(kMass, 0.4, HyVector3(kArm, 0, 0));
    HyHinge& hinge = add<HyHinge>(&beam, nullptr, HyVector3(), HyVector3(0, 1, 0));
    hinge.setLockParameters(0, 0, HyConstraint::sDefaultStiffness);
    ASSERT_TRUE(hinge.setControl(0, HyConstraint::kControlLocked));
    const HyVector3 push(3, 5, -2); // N, at the centre of mass
    for (int i = 0; i < 240; ++i) {
        beam.addForce(push);
        frame->step();
    }
    const HyReal weight = kMass * kGravity;
    const HyVector3 load = push + HyVector3(0, 0, -weight);
    const HyVector3 moment = HyVector3(kArm, 0, 0).cross(load); // about the hinge
    const HyReal rounding = 1e-6 * weight;
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(hinge.getConstraintEquationForce(i), -load[i], rounding) << i;
        EXPECT_NEAR(hinge.getPartForce(0)[i], -load[i], rounding) << i;
        EXPECT_NEAR(hinge.getPartTorque(0)[i], 0, rounding) << "no net torque at rest " << i;
    }
    EXPECT_NEAR(hinge.getCoordinateForce(0), -moment[1], rounding);
    EXPECT_NEAR(hinge.getCoordinateControlForce(0), -moment[1], rounding);
    EXPECT_EQ(hinge.getCoordinateLimitForce(0), 0);
    // The orientation equations carry the moment across the axis, about the frame's other axes.
    EXPECT_NEAR(
        std::hypot(hinge.getConstraintEquationForce(3), hinge.getConstraintEquationForce(4)),
        std::hypot(moment[0], moment[2]), rounding);
    for (int axis = 1; axis < 3; ++axis)
        EXPECT_NEAR(std::abs(hinge.getConstraintEquationForce(2 + axis)),
                    std::abs(moment.dot(axisOf(hinge, 0, axis))), rounding)
            << axis;
}

TEST_F(HingeTest, MotorAcceleratesByItsForceUpToItsSpeed) {
    universe->setGravity(0, 0, 0);
    constexpr HyReal kMoment = 0.5, kForce = 2, kSpeed = 3;
    HyPart& wheel = addBall(1, kMoment, HyVector3());
    HyHinge& hinge = add<HyHinge>(nullptr, &wheel, HyVector3(), HyVector3(0, 0, 1));
    hinge.setMotorParameters(0, kSpeed, kForce, 0);
    EXPECT_TRUE(hinge.setControl(0, HyConstraint::kControlMotorized));
    step(20);
    EXPECT_NEAR(hinge.getCoordinateVelocity(0), kForce / kMoment * 20 * kStep, 1e-6);
    EXPECT_NEAR(hinge.getCoordinateForce(0), kForce, 1e-6);
    EXPECT_EQ(hinge.forceLimitReached(5), 1);
    step(60);
    EXPECT_NEAR(hinge.getCoordinateVelocity(0), kSpeed, 1e-6);
    EXPECT_NEAR(wheel.getAngularVelocity()[2], -kSpeed, 1e-6) << "part 1 turns the other way";
    EXPECT_NEAR(hinge.getCoordinateForce(0), 0, 1e-6);
    EXPECT_EQ(hinge.forceLimitReached(5), 0);
}

// The motor closes nine tenths of the way to its stop in each step, and its force ends there.
TEST_F(HingeTest, MotorComesToRestAtAStop) {
    universe->setGravity(0, 0, 0);
    HyPart& wheel = addBall(1, 0.5, HyVector3());
    HyHinge& hinge = add<HyHinge>(&wheel, nullptr, HyVector3(), HyVector3(0, 0, 1));
    hinge.setLimitPositions(0, -1, 1);
    hinge.setLimitsActive(0, true);
    hinge.setMotorParameters(0, 3, 100, 0);
    hinge.setControl(0, HyConstraint::kControlMotorized);
    HyReal furthest = 0;
    for (int i = 0; i < 120; ++i) {
        frame->step();
        furthest = std::max(furthest, hinge.recalculateCoordinateCurrentPosition(0));
    }
    EXPECT_NEAR(furthest, 1, 1e-6) << "and no further";
    EXPECT_NEAR(wheel.getAngularVelocity()[2], 0, 1e-6);
    EXPECT_TRUE(hinge.isLimitReached(0, HyConstraint::kLimitUpper, 1e-5));
    EXPECT_FALSE(hinge.isLimitReached(0, HyConstraint::kLimitLower, 1e-5));
}

TEST_F(HingeTest, MotorTurnsIntoALockAtItsTarget) {
    universe->setGravity(0, 0, 0);
    HyPart& wheel = addBall(1, 0.5, HyVector3());
    HyHinge& hinge = add<HyHinge>(&wheel, nullptr, HyVector3(), HyVector3(0, 0, 1));
    hinge.setMotorParameters(0, 2, 100, 0);
    hinge.setLockPosition(0, 0.5);
    hinge.setMotorStopAtLock(0, true);
    hinge.setControl(0, HyConstraint::kControlMotorized);
    step(120);
    EXPECT_TRUE(hinge.isLocked(0));
    EXPECT_NEAR(hinge.getCoordinateCurrentPosition(0), 0.5, 1e-6);
}

// A lock of stiffness k yields by M/k; its target carries the load along at its own velocity.
TEST_F(HingeTest, LockYieldsAsASpringAndMovesItsTarget) {
    universe->setGravity(0, 0, 0);
    constexpr HyReal kMoment = 0.5, kStiffness = 200, kTorque = 8;
    HyPart& wheel = addBall(1, kMoment, HyVector3());
    HyHinge& hinge = add<HyHinge>(&wheel, nullptr, HyVector3(), HyVector3(0, 0, 1));
    const HyReal critical = 2 * std::sqrt(kStiffness * kMoment);
    hinge.setLockParameters(0, 0.25, HyConstraint::sDefaultStiffness, kStiffness, critical, 0);
    hinge.setControl(0, HyConstraint::kControlLocked);
    const auto push = [&](int n) {
        for (int i = 0; i < n; ++i) {
            wheel.addTorque(HyVector3(0, 0, kTorque));
            frame->step();
        }
    };
    push(300);
    EXPECT_NEAR(hinge.getCoordinateCurrentPosition(0), 0.25 + kTorque / kStiffness, 1e-6);
    EXPECT_NEAR(hinge.getCoordinateForce(0), -kTorque, 1e-5);
    hinge.setLockVelocity(0, 0.5);
    push(120);
    EXPECT_NEAR(hinge.getLockPosition(0), 0.25 + 0.5 * 120 * kStep, 1e-9);
    EXPECT_NEAR(wheel.getAngularVelocity()[2], 0.5, 1e-3);
}

TEST_F(HingeTest, AngleCountsTurnsAndTakesAnOffset) {
    universe->setGravity(0, 0, 0);
    HyPart& wheel = addBall(1, 0.5, HyVector3());
    HyHinge& hinge = add<HyHinge>(&wheel, nullptr, HyVector3(), HyVector3(0, 0, 1));
    hinge.setForceCalculateCoordinatePosition(0, true);
    wheel.setAngularVelocity(0, 0, 4);
    step(240); // 16 rad
    EXPECT_NEAR(hinge.getCoordinateCurrentPosition(0), 4 * 239 * kStep, 1e-4) << "as last seen";
    const HyTransform pose = wheel.getTransform();
    hinge.setCoordinateCurrentPosition(0, 0);
    EXPECT_EQ(wheel.getTransform(), pose);
    EXPECT_NEAR(hinge.getCoordinateCurrentPosition(0), 0, 1e-14);
    wheel.setAngularVelocity(0, 0, -4);
    step(61);
    EXPECT_NEAR(hinge.getCoordinateCurrentPosition(0), -4 * 60 * kStep, 1e-4);
}

// A relaxed position equation is a spring: the part hangs m g/k below its place, and no further than
// its force bound lets it hold.
TEST_F(HingeTest, RelaxedEquationSagsByWeightOverStiffness) {
    constexpr HyReal kMass = 5, kStiffness = 2e4;
    HyPart& part = addBall(kMass, 0.4, HyVector3());
    HyHinge& hinge = add<HyHinge>(&part, nullptr, HyVector3(), HyVector3(1, 0, 0));
    hinge.setRelaxationParameters(2, kStiffness, 2 * std::sqrt(kStiffness * kMass), 0, true);
    stepFor(3);
    EXPECT_NEAR(part.getPosition()[2], -kMass * kGravity / kStiffness, 1e-8);
    EXPECT_NEAR(hinge.getConstraintEquationForce(2), kMass * kGravity, 1e-5);
    EXPECT_EQ(hinge.forceLimitReached(2), 0);
    hinge.setRelaxationMinMaxForce(2, -10, 10); // less than it weighs
    stepFor(1);
    EXPECT_NEAR(part.getLinearVelocity()[2], -(kGravity - 10 / kMass), 1e-6);
    EXPECT_EQ(hinge.forceLimitReached(2), 1);
}

// About a hinge's axis: holds up to its force, and slips at it.
TEST_F(HingeTest, FrictionHoldsAndSlips) {
    universe->setGravity(0, 0, 0);
    constexpr HyReal kMoment = 0.5;
    HyPart& wheel = addBall(1, kMoment, HyVector3());
    HyHinge& hinge = add<HyHinge>(&wheel, nullptr, HyVector3(), HyVector3(0, 0, 1));
    HyConstraintFriction* friction = hinge.getCoordinateFriction(0);
    ASSERT_TRUE(friction);
    EXPECT_EQ(friction, hinge.getFriction(0, false));
    friction->setMaxForce(2);
    friction->setStaticFrictionScale(1.5);
    friction->setEnabled(true);
    const auto push = [&](HyReal torque, int n) {
        for (int i = 0; i < n; ++i) {
            wheel.addTorque(HyVector3(0, 0, torque));
            frame->step();
        }
    };
    push(1.9, 30);
    EXPECT_NEAR(wheel.getAngularVelocity()[2], 0, 1e-6);
    EXPECT_NEAR(hinge.getCoordinateFrictionForceLastFrame(0), -1.9, 1e-6);
    push(2.9, 30); // held by the static part
    EXPECT_NEAR(wheel.getAngularVelocity()[2], 0, 1e-6);
    push(3.5, 31); // breaks away in the first step, then slips at 2
    EXPECT_NEAR(wheel.getAngularVelocity()[2], (0.5 / kMoment + 30 * 1.5 / kMoment) * kStep, 1e-6);
    EXPECT_NEAR(hinge.getCoordinateFrictionForceLastFrame(0), -2, 1e-6);
}
