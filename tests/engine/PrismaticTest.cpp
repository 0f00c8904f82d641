#include "JointScene.h"

using namespace Hy;

namespace {

class PrismaticTest : public JointScene {};

} // namespace

// A slider between two stops: what comes back is the restitution of the closing speed.
TEST_F(PrismaticTest, BouncesOffItsStops) {
    universe->setGravity(0, 0, 0);
    for (const HyReal restitution : {0.0, 0.4, 1.0}) {
        HyPart& slider = addBall(2, 0.1, HyVector3());
        HyPrismatic& joint = add<HyPrismatic>(&slider, nullptr, HyVector3(), HyVector3(1, 0, 0));
        joint.setLowerLimit(0, -0.5, 0, restitution);
        joint.setUpperLimit(0, 0.5, 0, restitution);
        joint.setLimitsActive(0, true);
        slider.setLinearVelocity(3, 0, 0);
        bool wasExceeded = false;
        HyReal after = 3;
        for (int i = 0; i < 60 && after > 0; ++i) {
            frame->step();
            wasExceeded |= joint.isLimitExceeded(0);
            after = slider.getLinearVelocity()[0];
            if (wasExceeded)
                break;
        }
        EXPECT_TRUE(wasExceeded);
        // The stop also takes a part of the step's overshoot back.
        EXPECT_LE(after, -3 * restitution + 1e-6);
        EXPECT_GE(after, -3 * (restitution + 1.0 / 6) - 1e-6);
        EXPECT_LT(joint.getCoordinateLimitForce(0), 0);
        EXPECT_EQ(joint.getCoordinateControlForce(0), 0);
        universe->destroyConstraint(&joint);
        universe->destroyPart(&slider);
    }
}

// A load on a vertical slider rests on its lower stop: a rigid one, and a spring.
TEST_F(PrismaticTest, RestsOnItsStop) {
    constexpr HyReal kMass = 3, kStiffness = 5e3;
    HyPart& slider = addBall(kMass, 0.1, HyVector3());
    HyPrismatic& joint = add<HyPrismatic>(&slider, nullptr, HyVector3(), HyVector3(0, 0, 1));
    joint.setLimitPositions(0, -0.2, 1);
    joint.setLimitsActive(0, true);
    stepFor(3);
    EXPECT_NEAR(slider.getPosition()[2], -0.2, 1e-4);
    EXPECT_NEAR(joint.getCoordinateLimitForce(0), kMass * kGravity, 0.1);
    joint.setLimitStiffness(0, HyConstraint::kLimitLower, kStiffness);
    joint.setLimitDamping(0, HyConstraint::kLimitLower, 2 * std::sqrt(kStiffness * kMass));
    stepFor(3);
    EXPECT_NEAR(slider.getPosition()[2], -0.2 - kMass * kGravity / kStiffness, 1e-6);
    EXPECT_NEAR(joint.getCoordinateLimitForce(0), kMass * kGravity, 1e-4);
}

// A moving stop takes the slider along, asleep or not.
TEST_F(PrismaticTest, MovingStopPushesASleepingSlider) {
    universe->setAutoSleep(true);
    universe->setGravity(0, 0, 0);
    HyPart& slider = addBall(3, 0.1, HyVector3());
    HyPrismatic& joint = add<HyPrismatic>(&slider, nullptr, HyVector3(), HyVector3(1, 0, 0));
    slider.setLinearVelocityDamping(50); // it does not run ahead of the stop
    joint.setLimitPositions(0, -1, 5);
    joint.setLimitsActive(0, true);
    step(60);
    EXPECT_FALSE(slider.isDynamicsAwake());
    joint.setLimitVelocity(0, HyConstraint::kLimitLower, 0.5);
    stepFor(4); // the stop stands at 1
    EXPECT_NEAR(joint.getLimitPosition(0, HyConstraint::kLimitLower), 1, 1e-9);
    EXPECT_NEAR(slider.getPosition()[0], 1, 0.02);
}

// A block on an incline holds while the coefficient exceeds the tangent of its angle.
TEST_F(PrismaticTest, ProportionalFrictionFollowsTheLoad) {
    constexpr HyReal kSlope = 0.4, kMass = 6; // rad, kg
    const HyVector3 down(std::cos(kSlope), 0, -std::sin(kSlope));
    for (const bool worldFirst : {false, true})
        for (const HyReal ratio : {1.2, 0.7}) {
            const HyReal coefficient = ratio * std::tan(kSlope);
            HyPart& block = addBall(kMass, 0.2, HyVector3());
            HyPart& ramp = addPart(1);
            ramp.setControl(HyPart::kControlStatic);
            HyPrismatic& joint = add<HyPrismatic>(worldFirst ? &ramp : &block,
                                                  worldFirst ? &block : &ramp, HyVector3(), down);
            HyConstraintFriction* friction = joint.getCoordinateFriction(0);
            friction->setProportional(true);
            friction->setCoefficient(coefficient);
            friction->setEnabled(true);
            step(10);
            const HyReal start = block.getLinearVelocity().dot(down);
            step(60);
            const HyReal load = kMass * kGravity * std::cos(kSlope);
            EXPECT_NEAR(friction->getMaxForce(), coefficient * load, 1e-4 * load);
            const HyReal pull = kGravity * (std::sin(kSlope) - coefficient * std::cos(kSlope));
            if (ratio > 1)
                EXPECT_NEAR(block.getLinearVelocity().dot(down), 0, 1e-5);
            else
                EXPECT_NEAR(block.getLinearVelocity().dot(down), start + pull * 60 * kStep, 1e-4);
            universe->destroyConstraints();
            universe->destroyParts();
        }
}
