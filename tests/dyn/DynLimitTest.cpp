#include "JointWorld.h"

#include <kit/KitTestSupport.h>

#include <limits>

namespace {

constexpr KitReal kNan = std::numeric_limits<KitReal>::quiet_NaN();

DyncSingleLimit stopAt(KitReal position, KitReal velocity = 0) {
    DyncSingleLimit stop;
    stop.stop = position;
    stop.velocity = velocity;
    return stop;
}

TEST(DynLimitTest, StopDragsTheOtherAndTheLockTarget) {
    DyncLimit limit;
    const DyncSingleLimit lower = stopAt(-1), upper = stopAt(1), above = stopAt(2);
    DynLimitSetLowerLimit(&limit, &lower);
    DynLimitSetUpperLimit(&limit, &upper);
    limit.lock_position = 0.5;
    DynLimitSetLowerLimit(&limit, &above);
    EXPECT_EQ(limit.limit[1].stop, 2);
    EXPECT_EQ(limit.lock_position, 2);
    DynLimitSetUpperLimit(&limit, &lower);
    EXPECT_EQ(limit.limit[0].stop, -1);
    EXPECT_EQ(limit.lock_position, -1);
}

TEST(DynLimitTest, StiffnessReadsBack) {
    struct Case {
        KitReal stiffness, compliance;
    };
    for (const Case& c : {Case{kKitInfinity, 0}, Case{0, kKitInfinity}, Case{4, 0.25}}) {
        DyncLimit limit;
        DynSingleLimitSetStiffness(&limit.limit[0], c.stiffness);
        EXPECT_EQ(limit.limit[0].compliance, c.compliance);
        EXPECT_EQ(DynSingleLimitGetStiffness(&limit.limit[0]), c.stiffness);
        DynLimitSetLockSpring(&limit, c.stiffness, 1);
        EXPECT_EQ(limit.lock_compliance, c.compliance);
        EXPECT_EQ(DynLimitGetLockStiffness(&limit), c.stiffness);
    }
}

TEST(DynLimitTest, ControllerIsProportionalWithinItsTolerance) {
    struct Case {
        KitReal position, velocity;
    };
    DyncLimit limit;
    for (const Case& c : {Case{-1, 2}, Case{5, -2}, Case{1.05, -1}, Case{1, 0}, Case{0.975, 0.5}}) {
        limit.position = c.position;
        ASSERT_TRUE(DynLimitController(&limit, 1, 0.1, 2, -7, 7));
        EXPECT_NEAR(limit.motor_desired_vel, c.velocity, 1e-14) << c.position;
    }
    EXPECT_EQ(limit.motor_fmin, -7);
    DynLimitController(&limit, limit.position, 0, 2, -7, 7);
    EXPECT_EQ(limit.motor_desired_vel, 0);
}

class KinematicTest : public JointWorld {
protected:
    KinematicTest() : body(addBody()), joint(add(kDynTagPrismatic, body, nullptr)) {
        limit = DynConstraintGetIndexedLimit(joint, 0);
        DynConstraintEnable(joint);
    }
    void setStops(const DyncSingleLimit& lower, const DyncSingleLimit& upper) {
        DynLimitSetLowerLimit(limit, &lower);
        DynLimitSetUpperLimit(limit, &upper);
        DynLimitActivateLimits(limit, true);
        DynConstraintResetNeedKinematicUpdate(joint);
    }

    DynBody* body;
    DynBaseConstraint* joint;
    DyncLimit* limit = nullptr;
};

TEST_F(KinematicTest, MovesStopsUnlessTheyWouldCross) {
    setStops(stopAt(-1, 1), stopAt(1, -0.5));
    EXPECT_EQ(world->nKineticConstraints, 1);
    DynConstraintUpdateKinematic(joint, 1);
    EXPECT_EQ(limit->limit[0].stop, 0);
    EXPECT_EQ(limit->limit[1].stop, 0.5);
    DynConstraintUpdateKinematic(joint, 1); // to 1 and 0: dropped whole
    EXPECT_EQ(limit->limit[0].stop, 0);
    EXPECT_EQ(limit->limit[1].stop, 0.5);
    DynConstraintUpdateKinematic(joint, -1);
    EXPECT_EQ(limit->limit[0].stop, -1);
    EXPECT_EQ(limit->limit[1].stop, 1);
}

TEST_F(KinematicTest, StopsGiveWayToALockTarget) {
    setStops(stopAt(-1, 1), stopAt(1, 0));
    limit->lock_position = -0.75;
    DynLimitActivateLock(limit, true);
    DynConstraintUpdateKinematic(joint, 1);
    EXPECT_EQ(limit->limit[0].stop, -0.75);
}

TEST_F(KinematicTest, MovingStopWakesWhatItReaches) {
    setStops(stopAt(-1, 0.75), stopAt(1));
    DynBodyDisable(body);
    DynConstraintUpdateKinematic(joint, 1);
    EXPECT_FALSE(DynBodyIsEnabled(body)) << "still 0.25 m off";
    DynConstraintUpdateKinematic(joint, 1);
    EXPECT_TRUE(DynBodyIsEnabled(body));
}

TEST_F(KinematicTest, LockTargetRestsJustInsideAStop) {
    setStops(stopAt(-1), stopAt(1));
    DynLimitActivateLock(limit, true);
    DynLimitSetLockVelocity(limit, 0.75);
    DynConstraintResetNeedKinematicUpdate(joint);
    EXPECT_EQ(world->nKineticConstraints, 1);
    DynWorldUpdateKinematicConstraint(world, 1);
    EXPECT_EQ(limit->lock_position, 0.75);
    DynConstraintCoordinates saved;
    DynConstraintSaveCoordinates(joint, &saved);
    DynWorldUpdateKinematicConstraint(world, 1);
    EXPECT_EQ(limit->lock_position, 1 - 1e-14);
    EXPECT_EQ(limit->lock_velocity, 0);
    EXPECT_EQ(world->nKineticConstraints, 0) << "nothing moves any more";
    DynConstraintRestoreCoordinates(joint, saved);
    EXPECT_EQ(limit->lock_position, 0.75);
    EXPECT_EQ(limit->lock_velocity, 0.75);
    EXPECT_EQ(world->nKineticConstraints, 1);
}

// However slowly the target moves, the body follows it and does not sleep.
TEST_F(KinematicTest, SlowLockTargetKeepsItsBodyAwake) {
    DynPartitionParametersSetAutoDisable(&world->partition_parameters, true);
    DynLimitActivateLock(limit, true);
    DynLimitSetLockVelocity(limit, 0.01);
    DynConstraintSetNeedKinematicUpdate(joint);
    step(240);
    EXPECT_NEAR(body->kiroBody.tm[3][0], 0.01 * 240 * kStep, 1e-3);
}

TEST_F(KinematicTest, LockedAndMergedJointsStandStill) {
    DynLimitActivateLock(limit, true);
    DynLimitSetLockVelocity(limit, 1);
    DynConstraintSetNeedKinematicUpdate(joint);
    EXPECT_EQ(world->nKineticConstraints, 1);
    DynConstraintLockConstraint(joint);
    EXPECT_EQ(world->nKineticConstraints, 0);
    DynConstraintUnlockConstraint(joint);
    EXPECT_EQ(world->nKineticConstraints, 1);
    DynConstraintSetBody(joint, 1, body);
    EXPECT_TRUE(joint->merged);
    EXPECT_EQ(world->nKineticConstraints, 0);
    DynConstraintSetBody(joint, 1, nullptr);
    EXPECT_EQ(world->nKineticConstraints, 1);
    DynConstraintDisable(joint);
    EXPECT_EQ(world->nKineticConstraints, 0);
}

// What a row's force is made of, by motor and stop. Rows: 0 before, 1 stop of a locked coordinate, 2
// the coordinate's last.
TEST_F(KinematicTest, ForceIsSplitBetweenControlAndStop) {
    struct Case {
        const char* name;
        DynConstraintControlState control;
        KitReal overshoot, lambda, desired;
        KitReal total, controlForce, stopForce;
    };
    constexpr auto kFree = kDynConstraintControlFree;
    constexpr auto kMotor = kDynConstraintControlMotorActive;
    constexpr auto kLock = kDynConstraintControlLockActive;
    const Case cases[] = {
        {"free inside", kFree, 0, 9, 0, 0, 0, 0},
        {"motor inside", kMotor, 0, 4, 1, 4, 4, 0},
        {"lock inside", kLock, 0, 4, 0, 4, 4, 0},
        {"free at the lower stop", kFree, -1, 9, 0, 9, 0, 9},
        {"lock beyond the stop", kLock, -1, 4, 0, 4 + 30, 4, 30},
        {"motor drives off the lower stop", kMotor, -1, 9, 1, 9, 5, 9 - 5},
        {"motor pulls, stop is left", kMotor, 1, 2, 1, 2, 5, 0},
        {"motor pushes into the lower stop", kMotor, -1, 9, -1, 9, 0, 9},
        {"motor rests at the stop", kMotor, -1, 9, 0, 9, 0, 9},
        {"motor drives off the upper stop", kMotor, 1, -9, -1, -9, -6, -9 + 6},
    };
    joint->bclH.lambda[1] = 30;
    joint->bclH.lambda[3] = kDynLambdaEnd;
    DynLimitSetMotorForces(limit, -6, 5);
    limit->lastStepRow = 2;
    for (const Case& c : cases) {
        limit->currentControlState = c.control;
        limit->currentLimitState = c.overshoot != 0 ? kDynLimitExceeded : kDynLimitActive;
        limit->overshoot = c.overshoot;
        limit->motor_desired_vel = c.desired;
        joint->bclH.lambda[2] = c.lambda;
        EXPECT_EQ(DynConstraintGetLimitForce(joint, limit), c.total) << c.name;
        EXPECT_EQ(DynConstraintGetLimitControlForce(joint, limit), c.controlForce) << c.name;
        EXPECT_EQ(DynConstraintGetLimitStopForce(joint, limit), c.stopForce) << c.name;
    }
    limit->lastStepRow = 3; // not there in the last step
    EXPECT_EQ(DynConstraintGetLimitForce(joint, limit), 0);
    limit->lastStepRow = 2;
    limit->overshoot = 1;
    limit->currentLimitState = kDynLimitExceeded;
    DynLimitSetControl(limit, kLock); // has no row yet
    EXPECT_EQ(DynConstraintGetLimitForce(joint, limit), 0);
}

} // namespace
