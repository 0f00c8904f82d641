#include "JointWorld.h"

#include <Kit/KitMatrix4.h>
#include <Kit/KitVector.h>
#include <kit/KitTestSupport.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>

namespace {

constexpr KitReal kPi = std::numbers::pi;
constexpr KitReal kNan = std::numeric_limits<KitReal>::quiet_NaN();

class DynConstraintTest : public JointWorld {
protected:
    static void place(DynBody* body, std::mt19937& random) {
        std::normal_distribution<KitReal> gauss;
        KitVector4 q = {gauss(random), gauss(random), gauss(random), gauss(random)};
        const KitVector3 p = {gauss(random), gauss(random), gauss(random)};
        DynBodySetQuaternion(body, q);
        DynBodySetPosition(body, p);
        KitMatrix4 com;
        KitMatrix4SetIdentity(com);
        com[3][0] = gauss(random);
        DynBodySetCenterOfMassRelativeTransform(body, com);
    }
};

// With every feature in use at once, rows stay in the record and what comes back is finite.
TEST_F(DynConstraintTest, EveryTypeSolvesUnderFullLoad) {
    for (const DynJointType& type : DynJointTypeGetAll()) {
        SCOPED_TRACE(type.name);
        DynBody *a = addBody(0.3, 0.1, 0), *b = addBody(0, 0, 0.2);
        DynBaseConstraint* joint = add(type.tag, a, b);
        ASSERT_TRUE(joint);
        EXPECT_EQ(joint->iNumLimits, static_cast<int>(type.coordinates.size()));
        for (int i = 0; i < joint->iNumLimits; ++i) {
            DyncLimit* limit = DynConstraintGetIndexedLimit(joint, i);
            DyncSingleLimit stop;
            stop.stop = 5;
            DynLimitSetLowerLimit(limit, &stop);
            DynLimitActivateLimits(limit, true);
            DynLimitActivateLock(limit, true);
        }
        for (DyncFriction& friction : joint->bclH.friction)
            friction.mEnabled = 1, friction.mMaxForce = 3;
        ASSERT_TRUE(DynConstraintEnable(joint));
        KitPool* before = joint->pool;
        step(3);
        int rows = 0;
        while (rows < kDynsMaxConstraintRows && joint->bclH.lambda[rows] != kDynLambdaEnd) {
            EXPECT_TRUE(std::isfinite(joint->bclH.lambda[rows]));
            ++rows;
        }
        EXPECT_EQ(rows > 0, type.builder != nullptr);
        EXPECT_LE(rows, type.max_rows);
        EXPECT_EQ(joint->pool, before);
        EXPECT_TRUE(std::isfinite(a->kiroBody.tm[3][0]) && std::isfinite(b->kiroBody.tm[3][0]));
        DynConstraintDisable(joint);
    }
}

TEST_F(DynConstraintTest, EnablingLinksAndDisablingUndoesIt) {
    DynBody *a = addBody(), *b = addBody();
    DynBaseConstraint* joint = add(kDynTagHinge, a, b);
    EXPECT_EQ(joint->bclH.b[0], nullptr) << "the solver sees an enabled constraint only";
    EXPECT_TRUE(DynConstraintEnable(joint));
    EXPECT_TRUE(DynConstraintEnable(joint)) << "twice is once";
    EXPECT_EQ(world->nEnabledConstraints, 1);
    EXPECT_EQ(nodesOf(a), 1);
    EXPECT_EQ(joint->bclH.b[1], &b->kiroBody);

    DynBodyMakeKinematic(a);
    EXPECT_EQ(joint->bclH.b[0], nullptr);
    EXPECT_NE(joint->bclH.velocity[0], nullptr);
    DynBodyFreeze(a);
    EXPECT_EQ(joint->bclH.velocity[0], nullptr);
    EXPECT_NE(joint->bclH.r[0], nullptr);
    DynBodyMakeDynamic(a);
    EXPECT_EQ(joint->bclH.b[0], &a->kiroBody);

    DynConstraintDisable(joint);
    EXPECT_EQ(world->nEnabledConstraints, 0);
    EXPECT_EQ(nodesOf(a) + nodesOf(b), 0);
    EXPECT_EQ(joint->bclH.b[0], nullptr);
}

TEST_F(DynConstraintTest, IsEnabledOnlyWhereItCanAct) {
    WarningRecorder warnings;
    DynWorld* other = DynWorldCreate(1, 1);
    DynBody* stranger = DynBodyCreate(other);
    DynWorldInsertBody(other, stranger);
    DynBaseConstraint* joint = add(kDynTagBSJoint, nullptr, nullptr);
    EXPECT_FALSE(DynConstraintEnable(joint)) << "no body";
    DynConstraintSetBody(joint, 0, stranger);
    EXPECT_FALSE(DynConstraintEnable(joint)) << "another world";
    DynBody* mine = addBody();
    DynConstraintSetBody(joint, 0, mine);
    EXPECT_TRUE(DynConstraintEnable(joint));
    DynConstraintSetBody(joint, 1, stranger);
    EXPECT_EQ(DynConstraintGetBody(joint, 1), nullptr);
    DynConstraintSetBody(joint, 2, mine); // no such slot
    EXPECT_EQ(WarningRecorder::take().size(), 4U);
    DynWorldDestroy(other);
}

// Whatever goes first, a constraint that does not act points at no body that is gone, and the other
// way round.
TEST_F(DynConstraintTest, DisabledConstraintsAndBodiesForgetEachOther) {
    DynBody *a = addBody(), *b = addBody();
    DynBaseConstraint *idle = add(kDynTagHinge, a, b), *twice = add(kDynTagHinge, a, a),
                      *once = add(kDynTagGeneric, b, nullptr), *reset = add(kDynTagHinge, a, b);
    DynBaseConstraint* outside = DynConstraintCreateInPool(&pool, kDynTagHinge); // in no world
    DynConstraintSetBodies(outside, b, a);
    DynConstraintSetBody(once, 5, a);
    DynConstraintEnable(idle);
    DynConstraintDisable(idle);
    DynConstraintSetBodySeenAsKinematic(idle, a);
    DynConstraintReset(reset);
    DynConstraintDestroy(outside);
    DynBodyDestroy(a);
    EXPECT_EQ(idle->body[0], nullptr);
    EXPECT_EQ(idle->bclH.bodySeenAsKinematic, nullptr);
    EXPECT_EQ(idle->bclH.r[0], nullptr);
    EXPECT_EQ(twice->body[0], nullptr);
    EXPECT_EQ(twice->body[1], nullptr);
    EXPECT_EQ(once->body[5], nullptr);
    EXPECT_EQ(idle->body[1], b) << "the other body stays";
    EXPECT_TRUE(DynConstraintEnable(idle));
    EXPECT_TRUE(DynConstraintEnable(once));
    step();
}

// A constraint outlives the world of its bodies, and bodies outlive the world of their constraints.
TEST_F(DynConstraintTest, DestroyedWorldIsForgotten) {
    DynWorld* other = DynWorldCreate(1, 1);
    DynBody *theirs = DynBodyCreate(other), *mine = DynBodyCreate(world), *left = addBody();
    DynWorldInsertBody(other, theirs);
    DynWorldInsertBody(other, mine);
    DynBaseConstraint* joint = DynConstraintCreateInPool(&pool, kDynTagHinge);
    joints.push_back(joint);
    DynConstraintSetBodies(joint, theirs, mine);
    DynWorldInsertConstraint(other, joint);
    DynConstraintReset(joint); // stays in its world
    DynConstraintSetBodies(joint, theirs, mine);
    DynBaseConstraint* goes = DynConstraintCreateInPool(other->constraintPool, kDynTagHinge);
    DynConstraintSetBodies(goes, mine, left);
    DynWorldInsertConstraint(other, goes);
    DynWorldDestroy(other);
    EXPECT_EQ(joint->world, nullptr);
    EXPECT_EQ(joint->body[0], nullptr);
    EXPECT_EQ(joint->body[1], mine);
    DynBodyDestroy(mine);
    DynBodyDestroy(left);
    EXPECT_EQ(joint->body[1], nullptr);
}

TEST_F(DynConstraintTest, AttachmentsFollowTheirFrames) {
    std::mt19937 random(7);
    for (int round = 0; round < 20; ++round) {
        DynBody *a = addBody(), *b = addBody();
        place(a, random);
        place(b, random);
        DynBaseConstraint* joint = add(kDynTagHinge, a, b);
        const KitVector3 p = {0.1 * round, -1, 2}, axis = {3, 0.2 * round, -4};
        DynConstraintSetPosition(joint, p);
        DynConstraintSetAxis(joint, axis);
        for (int slot = 0; slot < 2; ++slot)
            for (int move = 0; move < 2; ++move) {
                KitVector3 now, x, y, z, rel, relX, relY, other;
                DynConstraintBodyGetPosition(joint, slot, now);
                DynConstraintBodyGetAxis(joint, slot, 0, x);
                DynConstraintBodyGetAxis(joint, slot, 1, y);
                DynConstraintBodyGetAxis(joint, slot, 2, z);
                DynConstraintBodyGetAxis(joint, 0, 1, other);
                EXPECT_NEAR(KitVector3Dot(x, axis) / KitVector3Norm(axis), 1, 1e-14);
                EXPECT_NEAR(KitVector3Dot(x, y), 0, 1e-14);
                KitVector3Cross(rel, x, y);
                for (int i = 0; i < 3; ++i) {
                    EXPECT_NEAR(now[i], p[i], 1e-13);
                    EXPECT_NEAR(z[i], rel[i], 1e-14);
                    EXPECT_NEAR(y[i], other[i], 1e-14) << "one axis gives one frame";
                }
                // Written back in the body's frame, they are the same.
                DynConstraintBodyGetPositionRel(joint, slot, rel);
                DynConstraintBodyGetAxisRel(joint, slot, 0, relX);
                DynConstraintBodyGetAxisRel(joint, slot, 1, relY);
                DynConstraintBodySetPositionRel(joint, slot, rel);
                DynConstraintBodySetAxesRel(joint, slot, relX, relY);
                // Another body in the slot carries the same place of the world.
                DynConstraintSetBody(joint, slot, move == 0 ? nullptr : b);
            }
    }
}

TEST_F(DynConstraintTest, BadAxesAndPositionsAreRefused) {
    WarningRecorder warnings;
    DynBaseConstraint* joint = add(kDynTagHinge, addBody(), nullptr);
    const KitVector3 zero = {0, 0, 0}, nan = {kNan, 0, 0}, x = {1e-200, 0, 0}, big = {1e200, 0, 0};
    KitVector3 axis;
    DynConstraintBodySetAxes(joint, 0, zero, nullptr);
    DynConstraintBodySetAxes(joint, 0, nan, nullptr);
    DynConstraintBodySetAxes(joint, 0, x, nan);
    DynConstraintBodySetPosition(joint, 0, nan);
    EXPECT_EQ(WarningRecorder::take().size(), 4U);
    DynConstraintBodySetAxes(joint, 0, x, x); // a parallel one leaves the choice open
    DynConstraintBodyGetAxis(joint, 0, 0, axis);
    EXPECT_EQ(axis[0], 1);
    DynConstraintBodySetAxes(joint, 0, big, nullptr);
    DynConstraintBodyGetAxis(joint, 0, 1, axis);
    EXPECT_NEAR(KitVector3Norm(axis), 1, 1e-15);
    EXPECT_TRUE(WarningRecorder::take().empty());
}

// The body of the stronger group falls as if it were alone; the weaker one follows it.
TEST_F(DynConstraintTest, StrongestBodyIsNotMoved) {
    const KitVector3 gravity = {0, 0, -10}, point = {0.5, 0, 0};
    DynWorldSetGravity(world, gravity);
    DynBody *weak = addBody(), *strong = addBody(1);
    DynGroupingGet(world, 1)->strength = 5;
    DynBodySetUserGroup(strong, 1);
    const KitVector3 sideways = {0, 2, 0};
    DynBodySetLinearVelocity(strong, sideways);
    DynBaseConstraint* joint = add(kDynTagBSJoint, weak, strong);
    DynConstraintSetPosition(joint, point);
    DynConstraintEnable(joint);
    step(30);
    KitVector3 v, p0, p1;
    DynBodyGetLinearVelocity(strong, v);
    EXPECT_EQ(v[0], 0);
    EXPECT_NEAR(v[1], 2, 1e-12);
    EXPECT_NEAR(v[2], -10 * 30 * kStep, 1e-12);
    EXPECT_EQ(joint->resultForce[1][1], 0);
    DynConstraintBodyGetPosition(joint, 0, p0);
    DynConstraintBodyGetPosition(joint, 1, p1);
    EXPECT_NEAR(p0[1], p1[1], 1e-3);
    EXPECT_GT(p0[1], 0.5);
}

// Steps pass a constraint by while its bodies sleep; once awake, it goes by what holds then.
TEST_F(DynConstraintTest, StrengthSetDuringSleepCounts) {
    DynBody *weak = addBody(), *strong = addBody(1);
    addBody(9); // keeps the world stepping
    DynBodySetUserGroup(strong, 1);
    DynBaseConstraint* joint = add(kDynTagBSJoint, weak, strong);
    DynConstraintEnable(joint);
    step();
    DynBodyDisable(weak);
    DynBodyDisable(strong);
    DynGroupingGet(world, 1)->strength = 5;
    step(2);
    EXPECT_EQ(joint->bclH.strongestBody, nullptr) << "nothing was done for it";
    DynConstraintEnableBodiesIfMoving(joint);
    EXPECT_FALSE(DynBodyIsEnabled(weak)) << "none of its bodies moves";
    DynBodyEnable(weak);
    DynConstraintEnableBodiesIfMoving(joint);
    EXPECT_FALSE(DynBodyIsEnabled(strong)) << "the strongest one sleeps on";
    const KitVector3 push = {0, 60, 0};
    DynBodyAddForce(weak, push);
    step();
    EXPECT_EQ(strong->kiroBody.vel[1], 0);
    EXPECT_NEAR(weak->kiroBody.vel[1], 0, 0.1) << "held at its end, it turns";
}

TEST_F(DynConstraintTest, BodySeenAsKinematicIsNotMoved) {
    DynBody *a = addBody(), *b = addBody(1);
    DynBaseConstraint* joint = add(kDynTagBSJoint, a, b);
    WarningRecorder warnings;
    DynConstraintSetBodySeenAsKinematic(joint, addBody()); // not one of its bodies
    EXPECT_EQ(WarningRecorder::take().size(), 1U);
    DynConstraintSetBodySeenAsKinematic(joint, a);
    EXPECT_EQ(DynConstraintFindStrongestBody(joint), a);
    DynConstraintEnable(joint);
    const KitVector3 v = {0, 3, 0};
    DynBodySetLinearVelocity(b, v);
    step(5);
    EXPECT_EQ(a->kiroBody.vel[1], 0);
    DynConstraintSetBody(joint, 0, nullptr);
    EXPECT_EQ(joint->bclH.bodySeenAsKinematic, nullptr);
}

TEST_F(DynConstraintTest, LockAllSwapsTheBuilder) {
    WarningRecorder warnings;
    DynBody* body = addBody();
    DynBaseConstraint* hinge = add(kDynTagHinge, body, nullptr);
    DynConstraintEnable(hinge);
    EXPECT_EQ(DynConstraintLockConstraint(hinge), 1);
    EXPECT_TRUE(DynConstraintIsLockedConstraint(hinge));
    DynConstraintRelaxConstraint(hinge, 1, 1, 0, 0); // of the joint; the lock's row 1 is an angle
    const KitVector3 torque = {5, 0, 0}, tilt = {5, 5, 5};
    DynBodyAddTorque(body, tilt);
    step();
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(body->kiroBody.velrot[i], 0, 1e-6) << i;
    EXPECT_EQ(DynConstraintGetEquationForce(hinge, 3), 0) << "the lock has no equations";
    DynConstraintUnlockConstraint(hinge);
    DynConstraintEnableRelaxConstraint(hinge, 1, false);
    DynBodyAddTorque(body, torque);
    step();
    EXPECT_NEAR(body->kiroBody.velrot[0], 5 / 0.4 * kStep, 1e-6);
    EXPECT_TRUE(WarningRecorder::take().empty());

    DynBaseConstraint* user = add(kDynTagUser, body, nullptr);
    EXPECT_EQ(DynConstraintLockConstraint(user), 0);
    EXPECT_EQ(WarningRecorder::take().at(0), "12: DynConstraintLockConstraint: DynUserConstraint "
                                             "not supported on this constraint\n");
    DynConstraintUnlockConstraint(user);
    EXPECT_EQ(WarningRecorder::take().at(0), "12: DynConstraintUnlockConstraint: "
                                             "'DynUserConstraint' constraint is not lockable.\n");
}

// A slack rope has no row of its own; what stands in its place is friction.
TEST_F(DynConstraintTest, EquationWithoutARowBearsNoForce) {
    DynBody* body = addBody(1);
    auto* rope = add<DynDistance>(kDynTagDistance, body, nullptr);
    const KitVector3 end = {1, 0, 0};
    DynConstraintBodySetPosition(rope, 0, end);
    DyncFriction& friction = rope->bclH.friction[0];
    friction.mEnabled = 1, friction.mMaxForce = 3;
    DynConstraintEnable(rope);
    const KitVector3 push = {2, 0, 0};
    for (const bool taut : {false, true}) {
        DynDistanceSetDistance(rope, taut ? 0.5 : 2);
        DynBodyAddForce(body, push);
        step();
        EXPECT_EQ(DynConstraintGetEquationForce(rope, 0) < 0, taut);
        EXPECT_EQ(DynConstraintGetEquationForce(rope, 0) == 0, !taut);
        EXPECT_NE(DynConstraintGetFrictionForce(rope, 0), 0);
    }
}

// A cone of 0.3 rad about the axis, and one that opens around the opposite axis.
TEST_F(DynConstraintTest, ConeKeepsItsAngle) {
    for (const KitReal half : {0.3, -0.3}) {
        DynBody* body = addBody();
        auto* cone = add<DynConeLimit>(kDynTagConeLimit, nullptr, body);
        const KitVector3 axis = {half < 0 ? -1.0 : 1.0, 0, 0};
        DynConstraintBodySetAxes(cone, 1, axis, nullptr);
        DynConeLimitSetConeHalfAngle(cone, half);
        DynConstraintEnable(cone);
        const KitVector3 spin = {0, 0, 1};
        DynBodySetAngularVelocity(body, spin);
        KitReal largest = 0;
        for (int i = 0; i < 60; ++i) {
            step();
            KitVector3 now;
            DynConstraintBodyGetAxis(cone, 1, 0, now);
            largest = std::max(largest, std::acos(now[0] * axis[0]));
        }
        EXPECT_GT(largest, 0.29) << half;
        EXPECT_LT(largest, 0.3 + 1.5 * kStep) << "what one step overshoots " << half;
        EXPECT_LT(std::abs(body->kiroBody.velrot[2]), 1) << half;
        DynConstraintDisable(cone);
    }
}

TEST_F(DynConstraintTest, UpdateTurnsCoordinateIntoWhatTheBodiesSay) {
    DynBody* body = addBody();
    DynBaseConstraint* hinge = add(kDynTagHinge, body, nullptr);
    DyncLimit* angle = DynConstraintGetIndexedLimit(hinge, 0);
    DynConstraintEnable(hinge);
    DynLimitSetMotor(angle, 3, -kKitInfinity, kKitInfinity, 0);
    DynLimitActivateMotor(angle, true);
    step(300);
    EXPECT_NEAR(angle->position, 3 * 299 * kStep, 1e-3) << "turns are counted";
    const KitReal wound = angle->position;

    DynConstraintCoordinates saved;
    DynConstraintSaveCoordinates(hinge, &saved);
    DynConstraintResetDynamics(hinge);
    EXPECT_NEAR(angle->position, std::remainder(wound + 3 * kStep, 2 * kPi), 1e-3);
    EXPECT_EQ(DynConstraintGetRowForce(hinge, 0), 0);
    EXPECT_NEAR(angle->velocity, 3, 1e-6);
    DynConstraintRestoreCoordinates(hinge, saved);
    EXPECT_EQ(angle->position, wound);
}

TEST_F(DynConstraintTest, LinearOneHoldsTheDirectionToAPoint) {
    DynBody *a = addBody(1, 2, 3), *b = addBody(0, 0, 1);
    auto* joint = add<DynLinear1>(kDynTagLinear1, a, b);
    KitVector3 v;
    DynLinear1SetPosition(joint, 0, 4, 1);
    DynConstraintBodyGetAxis(joint, 1, 0, v);
    EXPECT_NEAR(v[1], 1, 1e-15);
    DynConstraintBodyGetPosition(joint, 1, v);
    EXPECT_NEAR(v[2], 3, 1e-15);
    DynLinear1SetPosition(joint, 0, 0, 1);
    DynConstraintBodyGetAxis(joint, 1, 0, v);
    EXPECT_EQ(v[0], 1);
}

TEST_F(DynConstraintTest, FixedPathMovesAtItsVelocity) {
    DynBody* body = addBody();
    DynFixedPath* path = DynFixedPathCreate(world);
    joints.push_back(path);
    DynWorldInsertConstraint(world, path);
    DynConstraintSetBody(path, 0, body);
    DynConstraintEnable(path);
    const KitVector3 v = {0, 1.5, 0};
    DynFixedPathSetVelocity(path, v);
    step();
    EXPECT_NEAR(body->kiroBody.vel[1], 1.5, 1e-6);
}

} // namespace
