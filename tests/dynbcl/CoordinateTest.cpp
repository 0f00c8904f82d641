#include "JointFixture.h"

#include <Dync/DyncCoordinate.h>
#include <Dync/DyncEndConstraint.h>
#include <Dync/DyncJointTags.h>
#include <Dync/DyncSoftness.h>

#include <gtest/gtest.h>

namespace {

constexpr double kPi = std::numbers::pi;

// A hinge between two bodies, with its angle and speed set by hand through the poses.
class CoordinateTest : public testing::Test {
protected:
    CoordinateTest() : f(3), joint(f.make<DynHinge>(kDynTagHinge, 13, 0, 0)) {
        joint->limits = joint->limit;
        joint->iNumLimits = 1;
        limit().type = kDynLimitTypeAngular;
        for (DynsBody& b : f.body)
            for (int k = 0; k < 3; ++k)
                b.vel[k] = b.velrot[k] = 0;
    }
    DyncLimit& limit() { return joint->limit[0]; }
    int rows() { return f.build(DyncAddHinge, *joint); }
    lsVec3 axis() { return DyncGetWorldFrames(*joint).w[0].axis(0); }

    /// Turns body 0 about the axis and keeps its attachment in place.
    void turn(double angle) {
        const lsVec3 a = axis();
        KitVector3 w = {a[0] * angle, a[1] * angle, a[2] * angle};
        KitQuaternionFiniteRotation(f.body[0].qrot, w, 1);
        DynsBody* one = &f.body[0];
        body_update_rotation(&one, 1);
        const DyncWorldFrames frames = DyncGetWorldFrames(*joint);
        for (int k = 0; k < 3; ++k)
            f.body[0].tm[3][k] -= frames.d01[k];
    }
    void spin(double speed) {
        const lsVec3 a = axis();
        for (int k = 0; k < 3; ++k)
            f.body[0].velrot[k] = a[k] * speed;
    }

    JointFixture f;
    std::unique_ptr<DynHinge> joint;
};

TEST_F(CoordinateTest, AngleKeepsItsTurns) {
    limit().bForceCalculatePosition = 1;
    double angle = 0;
    for (const double step : {0.5, 1.0, 1.5, 1.9, 2.5, -1.0, -3.0, -3.0, -3.0, -2.0}) {
        turn(step);
        angle += step;
        EXPECT_EQ(rows(), 5); // measured, but no row of its own
        EXPECT_NEAR(limit().position, angle, 1e-12);
    }
    EXPECT_NEAR(limit().previous_position, angle + 2.0, 1e-12);
    EXPECT_NEAR(DyncWindAngle(0.1, 20 * kPi), 0.1 + 20 * kPi, 1e-12);
    EXPECT_NEAR(DyncWindAngle(0.1, -20 * kPi), 0.1 - 20 * kPi, 1e-12);
}

TEST_F(CoordinateTest, StopsBounceBySpeedRelativeToTheirOwn) {
    limit().currentLimitState = kDynLimitActive;
    limit().limit[0].stop = -1;
    limit().limit[1].stop = 1;
    limit().limit[1].restitution = 0.5;
    limit().limit[1].velocity = 0.25;
    EXPECT_EQ(rows(), 5); // inside
    turn(1);
    limit().position = 1;
    limit().limit[1].stop = limit().position;
    turn(0.1);
    spin(2);
    ASSERT_EQ(rows(), 6);
    EXPECT_EQ(limit().currentLimitState, kDynLimitExceeded);
    EXPECT_NEAR(f.rows->phi[5], 0.1, 1e-12);
    EXPECT_NEAR(f.rows->v0[5], 0.25 - 0.5 * 1.75, 1e-12);
    EXPECT_EQ(f.rows->lower[5], -kKitInfinity);
    EXPECT_EQ(f.rows->upper[5], 0);
    spin(-2); // already on the way back
    rows();
    EXPECT_NEAR(f.rows->v0[5], 0.25, 1e-12);
}

TEST_F(CoordinateTest, LockBeyondAStopGivesTwoRows) {
    limit().currentLimitState = kDynLimitActive;
    limit().currentControlState = kDynConstraintControlLockActive;
    limit().limit[0].stop = -0.5;
    limit().limit[1].stop = 0.5;
    limit().lock_position = 0.25;
    turn(0.75);
    ASSERT_EQ(rows(), 7);
    EXPECT_NEAR(f.rows->phi[5], 0.25, 1e-12); // the stop's first
    EXPECT_NEAR(f.rows->phi[6], 0.5, 1e-12);  // then the lock's
    EXPECT_EQ(limit().lastStepRow, 6);
    EXPECT_EQ(limit().currentLimitState, kDynLimitExceeded);
}

// A control that has no row of its own lets the coordinate go, but not through its stops.
TEST_F(CoordinateTest, OtherControlIsFreeBetweenItsStops) {
    limit().currentLimitState = kDynLimitActive;
    limit().currentControlState = kDynConstraintControlControllerActive;
    limit().limit[0].stop = -0.5;
    limit().limit[1].stop = 0.5;
    turn(0.25);
    EXPECT_EQ(rows(), 5);
    turn(0.5);
    ASSERT_EQ(rows(), 6);
    EXPECT_EQ(f.rows->upper[5], 0);
    limit().currentLimitState = kDynLimitInactive;
    EXPECT_EQ(rows(), 5);
}

TEST_F(CoordinateTest, MotorSlowsDownBeforeAStopAndNeverTurnsBack) {
    limit().currentLimitState = kDynLimitActive;
    limit().currentControlState = kDynConstraintControlMotorActive;
    limit().limit[0].stop = -1;
    limit().limit[1].stop = 0.01;
    limit().motor_desired_vel = 3;
    limit().motor_fmin = -5;
    limit().motor_fmax = 7;
    ASSERT_EQ(rows(), 6);
    EXPECT_NEAR(f.rows->v0[5], 0.01 * 0.9 / 0.01, 1e-9); // a step of 0.01 s
    EXPECT_EQ(f.rows->lower[5], -5);
    EXPECT_EQ(f.rows->upper[5], 7);
    turn(0.02);
    rows(); // past the stop: one row carries both, and the motor pushes in
    EXPECT_EQ(f.rows->lower[5], -kKitInfinity);
    EXPECT_EQ(f.rows->upper[5], 7);
    limit().motor_desired_vel = -3; // away from it
    rows();
    EXPECT_EQ(f.rows->v0[5], -3);
    limit().limit[1].compliance = kKitInfinity; // no stop at all: the motor alone
    limit().motor_desired_vel = 3;
    rows();
    EXPECT_EQ(f.rows->v0[5], 3);
    EXPECT_EQ(f.rows->lower[5], -5);
    limit().currentControlState = kDynConstraintControlFree;
    for (const double compliance : {kKitInfinity, -1.0}) {
        limit().limit[1].compliance = compliance;
        rows();
        EXPECT_EQ(f.rows->lower[5], 0);
        EXPECT_EQ(f.rows->upper[5], 0);
    }
}

TEST_F(CoordinateTest, MotorTurnsIntoALockWhenItPassesTheTarget) {
    limit().currentControlState = kDynConstraintControlMotorActive;
    limit().bMotorStopAtLock = 1;
    limit().lock_position = 1;
    turn(0.9);
    rows();
    EXPECT_EQ(limit().currentControlState, kDynConstraintControlMotorActive);
    turn(0.2);
    rows();
    EXPECT_EQ(limit().currentControlState, kDynConstraintControlLockActive);
}

// gamma and epsilon against a spring and damper taken implicitly over one step of a unit mass.
TEST(SoftnessTest, IsTheImplicitSpring) {
    struct Case {
        double k, d;
    };
    const double h = 0.02;
    for (const Case& c : {Case{100, 3}, Case{1e8, 1}, Case{5, 0}, Case{0, 7}, Case{1e-3, 1e5}}) {
        const double x = 0.3, v = -2;
        const double next = (v - h * c.k * x) / (1 + h * c.d + h * h * c.k);
        const double force = (next - v) / h;
        double epsilon = 0, gamma = 0;
        DynConvertStiffnessDampingToEpsilonGamma(c.k, c.d, &epsilon, &gamma, h);
        // (1 + epsilon) force = rhs, rhs = -gamma x / h^2 - v / h, as of a row J = 1
        EXPECT_NEAR((-gamma * x / (h * h) - v / h) / (1 + epsilon), force, 1e-9 * std::abs(force));
    }
    EXPECT_EQ(DyncSoftnessFromCompliance(0, 0, h).gamma, 1);      // rigid
    EXPECT_EQ(DyncSoftnessFromCompliance(1e-310, 0, h).gamma, 1); // 1/compliance is beyond numbers
    EXPECT_EQ(DyncSoftnessFromCompliance(0, kKitInfinity, h).gamma, 0);
    EXPECT_FALSE(DyncSoftnessFromCompliance(kKitInfinity, 0, h).acts);
}

// The end step: own softness, relaxation or global value, and the global floor beneath all.
TEST_F(CoordinateTest, GlobalSoftnessIsAFloorForEveryRow) {
    DyncConstraintHeader& head = joint->bclH;
    limit().currentControlState = kDynConstraintControlLockActive;
    head.bRelaxConstraint[0] = 1;
    head.compliance[0] = 1e-3; // softer than the floor
    head.damping[0] = 2;
    head.lower[0] = -4;
    head.bRelaxConstraint[1] = 1;
    head.compliance[1] = 0; // harder than the floor
    head.upper[1] = 9;
    rows();
    const DyncSoftness soft = DyncSoftnessFromCompliance(1e-3, 2, 0.01);
    EXPECT_EQ(f.rows->xepsilon[0], soft.epsilon);
    EXPECT_EQ(f.rows->xgamma[0], soft.gamma);
    EXPECT_EQ(f.rows->lower[0], -4);
    EXPECT_EQ(f.rows->xepsilon[1], f.params.diag[0]);
    EXPECT_EQ(f.rows->xgamma[1], f.params.rhs[0]); // not the 1 of a rigid row
    EXPECT_EQ(f.rows->upper[1], 9);
    EXPECT_EQ(head.dynamic_flags[1], 8);
    EXPECT_EQ(f.rows->xepsilon[3], f.params.diag[1]);
    EXPECT_EQ(f.rows->xgamma[5], f.params.rhs[1]); // the lock
    EXPECT_EQ(head.dynamic_flags[0], 0);
}

} // namespace
