#include "TestWorld.h"

#include <Dyn/DynBodyForce.h>
#include <Kit/KitThreadPool.h>
#include <gtest/gtest.h>

#include <limits>
#include <utility>

namespace {

constexpr KitReal kStep = 1.0 / 60;
constexpr KitReal kNaN = std::numeric_limits<KitReal>::quiet_NaN();

using Slices = std::vector<std::pair<int, int>>;

/// What the host of a world sees, and what it answers.
struct Host {
    Slices pre, post;
    std::vector<int> finalSlice;
    int abortInSlice = -1; ///< of pre
    bool aborted = false;
    KitThreadPool* pool = nullptr;

    void attach(DynWorld* world) {
        DynWorldHost host;
        host.owner = this;
        host.stepAborted = [](void* owner) { return static_cast<Host*>(owner)->aborted; };
        host.preUpdateForce = [](void* owner, DynWorld* w, int start, int end) {
            auto& self = *static_cast<Host*>(owner);
            self.aborted = static_cast<int>(self.pre.size()) == self.abortInSlice;
            self.pre.emplace_back(start, end);
            self.finalSlice.push_back(w->finalSlicedStep);
        };
        host.postUpdateForce = [](void* owner, DynWorld*, int start, int end) {
            static_cast<Host*>(owner)->post.emplace_back(start, end);
        };
        host.threadPool = [](void* owner) { return static_cast<Host*>(owner)->pool; };
        DynWorldSetHost(world, host);
    }
};

class DynWorldStepTest : public testing::Test {
protected:
    TestWorld t;

    void setVelocity(DynBody* body, KitReal x, KitReal y = 0, KitReal z = 0) {
        const KitVector3 v = {x, y, z};
        DynBodySetLinearVelocity(body, v);
    }
    void setGravity(KitReal g) {
        const KitVector3 v = {0, 0, -g};
        DynWorldSetGravity(t.world, v);
    }
};

TEST_F(DynWorldStepTest, DampingIsImplicit) {
    DynBody* body = t.addBody();
    DynBodySetMass(body, 2);
    DynBodySetLinearVelocityDamping(body, 50);
    setVelocity(body, 3);
    t.step(0.1);
    EXPECT_NEAR(body->kiroBody.vel[0], 2.0 * 3 / (2 + 0.1 * 50), 1e-12);
}

TEST_F(DynWorldStepTest, ImpulseActsInOneStepAndCanBeRearmed) {
    DynBody* body = t.addBody();
    DynBodySetMass(body, 2);
    const KitVector3 impulse = {4, 0, 0};
    DynBodyAddImpulse(body, impulse);
    t.step();
    EXPECT_NEAR(body->kiroBody.vel[0], 2, 1e-12);
    t.step();
    EXPECT_NEAR(body->kiroBody.vel[0], 2, 1e-12);

    DynBodyAddImpulse(body, impulse);
    DynWorldStep(t.world, kStep); // given up: not integrated
    EXPECT_TRUE(body->impulseConsumed);
    EXPECT_FALSE(body->impulseAdded);
    DynBodyResetForces(body);
    DynBodyRearmImpulses(body);
    t.step();
    EXPECT_NEAR(body->kiroBody.vel[0], 4, 1e-12);
    EXPECT_FALSE(body->impulseConsumed);
}

TEST_F(DynWorldStepTest, JoinedBodiesShareTheirMomentum) {
    for (const int otherGroup : {0, 1}) { // within a partition; coupled between two
        TestWorld world;
        DynBody *a = world.addBody(0), *b = world.addBody(otherGroup);
        DynBodySetMass(b, 3);
        setVelocity(a, 4);
        DynBaseConstraint& c = world.join({a, b});
        DynWorldSetCouplingIterations(world.world, 5);
        world.step();
        EXPECT_NEAR(a->kiroBody.vel[0] + 3 * b->kiroBody.vel[0], 4, 1e-10) << otherGroup;
        EXPECT_NEAR(a->kiroBody.vel[0], 1, 1e-8) << otherGroup;
        EXPECT_NEAR(c.resultForce[0][0], -3 / kStep, 1e-5) << otherGroup;
        EXPECT_EQ(c.resultForce[1][0], -c.resultForce[0][0]) << otherGroup;
        EXPECT_EQ(c.bclH.lambda[3], kDynLambdaEnd) << otherGroup;
        KitVector3 load;
        DynBodyGetLastForce(a, load);
        EXPECT_NEAR(load[0], -3 / kStep, 1e-5) << otherGroup;
    }
}

TEST_F(DynWorldStepTest, ConstraintLoadsDoNotPileUpWithoutIntegration) {
    DynBody *a = t.addBody(0), *b = t.addBody(1);
    setVelocity(a, 4);
    DynBaseConstraint& c = t.join({a, b});
    DynWorldStep(t.world, kStep);
    const KitReal force = c.resultForce[0][0];
    DynWorldStep(t.world, kStep);
    EXPECT_EQ(c.resultForce[0][0], force);
}

TEST_F(DynWorldStepTest, ConstraintWithoutRowsReportsNoForce) {
    DynBody *a = t.addBody(), *b = t.addBody();
    setVelocity(a, 4);
    DynBaseConstraint& slack = t.join({a, b});
    DynBaseConstraint& other = t.join({a, b});
    DynBodyForAllConstraints(
        a, [](DynBaseConstraint*, void*) {}, nullptr);
    t.step();
    ASSERT_NE(slack.resultForce[0][0], 0);
    slack.bclFunction = [](DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*) {
        return 0;
    };
    setVelocity(a, 4);
    t.step();
    EXPECT_EQ(slack.resultForce[0][0], 0);
    EXPECT_EQ(slack.bclH.lambda[0], kDynLambdaEnd);
    EXPECT_NE(other.resultForce[0][0], 0);
    EXPECT_EQ(t.world->partitionOutput.constraintsSize[0], 1);
}

TEST_F(DynWorldStepTest, ConstraintWhoseRowsWereDroppedTakesNoOthersResult) {
    DynBody *a = t.addBody(), *b = t.addBody();
    setVelocity(a, 4);
    DynBaseConstraint& honest = t.join({a, b});
    DynBaseConstraint& dropped = t.join({a, b}); // built first
    dropped.bclFunction = [](DynsConstraints*, DynBaseConstraint*,
                             const DyncConstraintParameters*) { return 3; };
    t.step();
    EXPECT_NEAR(honest.resultForce[0][0], -2 / kStep, 1e-5);
    EXPECT_EQ(dropped.resultForce[0][0], 0);
    EXPECT_EQ(dropped.bclH.lambda[0], kDynLambdaEnd);
}

// A number of a partition is used again where its bodies fall asleep; they must not pass for bodies of
// the partition that takes it.
TEST_F(DynWorldStepTest, SleepersLeaveTheirPlaces) {
    DynBody *strong = t.addBody(0), *mover = t.addBody(1);
    DynGroupingGet(t.world, 0)->strength = 1;
    t.join({mover, strong});
    DynBodySetEnabledTime(strong, 100);
    setVelocity(mover, 4);
    t.step();
    EXPECT_FALSE(DynBodyIsEnabled(strong)); // in partition 0, which then is the mover's
    EXPECT_EQ(mover->partitionIndex, 0);
    EXPECT_NEAR(mover->kiroBody.vel[0], 0, 1e-8); // held as by a wall
    EXPECT_EQ(strong->kiroBody.cf[0], 0);

    TestWorld single;
    DynBody *awake = single.addBody(), *asleep = single.addBody();
    single.join({awake, asleep});
    single.step(); // both have a place in partition 0
    DynWorldSetPartitioner(
        single.world, [](DynBody* list, DynPartitionOutput* output, const DynPartitionParameters*) {
            DynMakeSinglePartition(list, output, nullptr);
        });
    DynBodyDisable(asleep);
    setVelocity(awake, 4);
    single.step();
    EXPECT_NEAR(awake->kiroBody.vel[0], 0, 1e-8);
    EXPECT_EQ(asleep->kiroBody.cf[0], 0);
}

TEST_F(DynWorldStepTest, WeaknessOfOneFrameEnds) {
    DynBody *a = t.addBody(), *b = t.addBody();
    DynBaseConstraint &once = t.join({a, b}), &always = t.join({a, b});
    once.weak = kDynWeakOneFrame;
    always.weak = kDynWeakAlways;
    t.step();
    EXPECT_EQ(t.world->partitionOutput.nPartitions, 3);
    EXPECT_EQ(once.weak, kDynWeakNever);
    EXPECT_EQ(always.weak, kDynWeakAlways);
    t.step();
    EXPECT_EQ(t.world->partitionOutput.nPartitions, 2); // one island, and the weak constraint
}

TEST_F(DynWorldStepTest, ProportionalFrictionFollowsTheLoadAcrossTheAxis) {
    setGravity(10);
    DynBody* body = t.addBody();
    DynBody* wall = t.addKinematic();
    const KitVector3 push = {30, 0, 0};
    DynBaseConstraint& c = t.join({body, wall});
    c.bclH.hasProportionalFriction = 1;
    c.bclH.friction[0] = {.mProportional = 1, .mEnabled = 1, .mPartRef = 0, .mCoefficient = 0.5};
    c.bclH.friction[5] = {.mProportional = 1, .mEnabled = 1, .mPartRef = 1, .mCoefficient = 2};
    DynBodyAddForce(body, push);
    t.step();
    EXPECT_NEAR(c.bclH.friction[0].mMaxForce, 0.5 * 10, 1e-6); // along x: the weight is across
    EXPECT_NEAR(c.bclH.friction[5].mMaxForce, 2 * 30, 1e-6);   // about z: the push is across
    c.bclH.friction[0].mEnabled = c.bclH.friction[5].mEnabled = 0;
    t.step();
    EXPECT_EQ(c.bclH.hasProportionalFriction, 0);
}

// A force F at the arm r turns with the body against it like a spring: (F.r) 1 - r F^T.
TEST_F(DynWorldStepTest, JointForcesStiffenBodiesOfGroupsThatWantIt) {
    setGravity(10);
    DynBody *plain = t.addBody(0), *stiff = t.addBody(1), *coupled = t.addBody(2);
    DynBody* wall = t.addKinematic();
    DynGroupingGet(t.world, 1)->k_params.geometric_stiffness = 1;
    for (DynBody* body : {plain, stiff})
        t.join({wall, body}).bclH.ref[1][3][2] = 0.5;
    t.join({stiff, coupled}).bclH.ref[0][3][0] = 1;
    t.step();
    const KitReal weight = t.constraints[1].resultForce[1][2];
    const KitVector4& pull = t.constraints[2].resultForce[0];
    ASSERT_GT(weight, 1);
    EXPECT_NEAR(stiff->kiroBody.geometricStiffness[0][0], 0.5 * weight, 1e-9);
    EXPECT_NEAR(stiff->kiroBody.geometricStiffness[1][1], 0.5 * weight + pull[0], 1e-9);
    EXPECT_NEAR(stiff->kiroBody.geometricStiffness[2][0], -0.5 * pull[2], 1e-9);
    for (const DynBody* body : {plain, coupled})
        EXPECT_EQ(body->kiroBody.geometricStiffness[0][0], 0);
}

TEST_F(DynWorldStepTest, CoupledPartitionsSleepTogether) {
    DynBody *a = t.addBody(0), *b = t.addBody(1), *mover = t.addBody(2);
    t.join({a, b});
    DynBaseConstraint& tie = t.join({b, mover});
    tie.bclFunction = [](DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*) {
        return 0;
    };
    setVelocity(mover, 1);
    for (int i = 0; i < 20; ++i)
        t.step();
    EXPECT_TRUE(DynBodyIsEnabled(a)); // one body of the group moves
    t.disable(tie);
    t.step();
    EXPECT_FALSE(DynBodyIsEnabled(a));
    EXPECT_FALSE(DynBodyIsEnabled(b));
    EXPECT_TRUE(DynBodyIsEnabled(mover));
}

TEST_F(DynWorldStepTest, MovingWallKeepsAwake) {
    DynBody *body = t.addBody(), *wall = t.addKinematic();
    DynBaseConstraint& c = t.join({body, wall});
    c.bclFunction = [](DynsConstraints*, DynBaseConstraint*, const DyncConstraintParameters*) {
        return 0;
    };
    setVelocity(wall, 1);
    for (int i = 0; i < 20; ++i)
        t.step();
    EXPECT_TRUE(DynBodyIsEnabled(body));
    setVelocity(wall, 0);
    t.step();
    EXPECT_FALSE(DynBodyIsEnabled(body));
}

TEST_F(DynWorldStepTest, OnlySolvedBodiesMove) {
    DynBody *body = t.addBody(), *sleeper = t.addBody();
    setVelocity(body, 60);
    setVelocity(sleeper, 60);
    DynBodyDisable(sleeper);
    DynWorldStep(t.world, kStep);
    DynBodyEnable(sleeper); // too late for this step
    DynWorldIntegrate(t.world);
    EXPECT_NEAR(body->bodyTM[3][0], 1, 1e-12);
    EXPECT_EQ(sleeper->bodyTM[3][0], 0);
    // A step that solves nothing leaves nothing to integrate.
    for (const KitReal dt : {0.0, -1.0, kNaN, std::numeric_limits<KitReal>::infinity()})
        t.step(dt);
    EXPECT_NEAR(body->bodyTM[3][0], 1, 1e-12);
    t.step();
    EXPECT_NEAR(body->bodyTM[3][0], 2, 1e-12);
    EXPECT_NEAR(sleeper->bodyTM[3][0], 1, 1e-12);
}

TEST_F(DynWorldStepTest, AbortLeavesTheRemainingSlices) {
    DynWorldSetSolverThreaded(t.world, 0);
    Host host;
    host.abortInSlice = 1;
    host.attach(t.world);
    std::vector<DynBody*> bodies;
    for (int i = 0; i < 150; ++i) {
        bodies.push_back(t.addBody());
        setVelocity(bodies.back(), 1);
    }
    const KitVector3 force = {1, 0, 0};
    DynBodyAddForce(bodies[0], force);
    t.step();
    EXPECT_EQ(host.pre, (Slices{{0, 100}, {100, 150}}));
    EXPECT_EQ(host.post, (Slices{{0, 100}}));
    for (const DynBody* body : bodies) {
        EXPECT_EQ(body->bodyTM[3][0], 0);
        EXPECT_EQ(body->kiroBody.force[0], 0);
    }
    host.aborted = false;
    host.abortInSlice = -1;
    t.step();
    EXPECT_GT(bodies[149]->bodyTM[3][0], 0);
}

// Slices.

struct SliceCase {
    const char* name;
    int threaded, maxFrames;
    DynSolverPartitionSplitting splitting;
    std::vector<int> rows; ///< max_rows of the one constraint of each partition
    Slices slices;
};

std::vector<int> repeat(int n, int rows) {
    return std::vector<int>(static_cast<std::size_t>(n), rows);
}

TEST(DynWorldSlicesTest, SplittingByFramesRowsAndThreads) {
    constexpr auto kAuto = kDynPartitionSplittingAutomatic;
    constexpr auto kOne = kDynPartitionSplittingOnePass;
    constexpr auto kGroup = kDynPartitionSplittingGroup;
    const Slices byFour = {{0, 4}, {4, 8}, {8, 10}};
    const SliceCase cases[] = {
        {"many small partitions", 1, 4, kAuto, repeat(150, 3), {{0, 100}, {100, 150}}},
        {"fit into the frames", 1, 150, kAuto, repeat(150, 3), {{0, 150}}},
        {"no threads", 0, 4, kAuto, repeat(10, 200), byFour},
        {"few small ones", 1, 4, kAuto, repeat(10, 3), {{0, 10}}},
        {"few large ones", 1, 4, kAuto, repeat(10, 200), byFour},
        {"one dominates", 1, 1, kAuto, {2, 1000}, {{0, 2}}},
        {"none dominates", 1, 1, kAuto, {500, 1000}, {{0, 1}, {1, 2}}},
        {"one pass wanted", 0, 1, kOne, repeat(150, 3), {{0, 150}}},
        {"groups wanted", 1, 20, kGroup, repeat(10, 200), {{0, 10}}},
        {"one partition", 1, 1, kAuto, {3}, {{0, 1}}},
    };
    KitThreadPool pool(2);
    for (const SliceCase& c : cases) {
        SCOPED_TRACE(c.name);
        TestWorld t;
        Host host;
        host.pool = &pool;
        host.attach(t.world);
        for (const int rows : c.rows)
            t.join({t.addBody(), nullptr}).bclH.max_rows = rows;
        DynWorldSetSolverThreaded(t.world, c.threaded);
        t.world->maxKiroFrames = c.maxFrames;
        t.world->mSolverPartitionSplitting = c.splitting;
        t.step();
        EXPECT_EQ(host.pre, c.slices);
        EXPECT_EQ(host.post, c.slices);
        for (std::size_t i = 0; i < host.finalSlice.size(); ++i)
            EXPECT_EQ(host.finalSlice[i], i + 1 == host.finalSlice.size());
        EXPECT_EQ(t.world->finalSlicedStep, 0);
        // The larger first.
        const DynPartitionOutput& o = t.world->partitionOutput;
        for (int i = 1; i < o.nPartitions; ++i)
            EXPECT_GE(o.maxConstraintsRows[o.refIndex[i - 1]], o.maxConstraintsRows[o.refIndex[i]]);
    }
}

TEST(DynWorldSlicesTest, AGroupOfPartitionsSharesASlice) {
    TestWorld t;
    Host host;
    host.attach(t.world);
    DynWorldSetSolverThreaded(t.world, 0);
    t.world->maxKiroFrames = 1;
    DynBody* free1 = t.addBody(0);
    DynBody *a = t.addBody(1), *b = t.addBody(2), *c = t.addBody(3), *d = t.addBody(4);
    t.join({a, b});
    t.join({c, d});
    t.step();
    ASSERT_EQ(t.world->partitionOutput.nPartitions, 7);
    EXPECT_EQ(host.pre, (Slices{{0, 3}, {3, 6}, {6, 7}}));
    const DynPartitionOutput& o = t.world->partitionOutput;
    const int types[] = {0, 0, 1, 0, 0, 1, 0}; // secondaries end the slice
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(o.partition_type[o.refIndex[i]], types[i]) << i;
    EXPECT_EQ(o.refIndex[6], free1->kiroBody.partition_index);
}

TEST_F(DynWorldStepTest, NotANumberStaysInItsIsland) {
    DynBody *sick = t.addBody(), *well = t.addBody(), *partner = t.addBody();
    t.join({well, partner});
    setVelocity(well, 2);
    sick->kiroBody.force[0] = kNaN;
    t.step();
    EXPECT_NEAR(well->kiroBody.vel[0], 1, 1e-8);
    EXPECT_NEAR(partner->bodyTM[3][0], kStep, 1e-9);
}

// A load that was there before waits; what the force adds in each step does not pile up.
TEST_F(DynWorldStepTest, BodyForceOnASleepingBodyIsDropped) {
    DynBody *sleeper = t.addBody(), *wall = t.addKinematic(), *awake = t.addBody();
    DynBodyForce* force = DynBodyForceCreate(t.world);
    DynBodyForceSetBodies(force, sleeper, wall, awake);
    DynBodyForceConfig config;
    config.update = [](DynBodyForce* f) {
        const KitVector3 push = {3, 0, 0};
        for (int i = 0; i < 3; ++i) {
            DynBodyAddForce(DynBodyForceGetBody(f, i), push);
            DynBodyAddImpulse(DynBodyForceGetBody(f, i), push);
        }
    };
    DynBodyForceSetConfig(force, config);
    DynBodyForceEnable(force);
    DynBodyDisable(sleeper);
    const KitVector3 waiting = {0, 2, 0};
    DynBodyAddForce(sleeper, waiting);
    for (int i = 0; i < 4; ++i)
        t.step(0.5);
    EXPECT_NEAR(awake->kiroBody.vel[0], 4 * (1.5 + 3), 1e-12);
    EXPECT_EQ(wall->kiroBody.force[0], 0);
    DynBodyEnable(sleeper);
    t.step(0.5);
    EXPECT_NEAR(sleeper->kiroBody.vel[0], 1.5 + 3, 1e-12);
    EXPECT_NEAR(sleeper->kiroBody.vel[1], 1, 1e-12);
}

TEST_F(DynWorldStepTest, BodyThatABodyForcePutsToSleepStaysAsleep) {
    setGravity(10);
    DynBody *body = t.addBody(), *other = t.addBody();
    t.join({body, other});
    DynBodyForce* force = DynBodyForceCreate(t.world);
    DynBodyForceSetBodies(force, body, nullptr, nullptr);
    DynBodyForceConfig config;
    config.update = [](DynBodyForce* f) { DynBodyDisable(DynBodyForceGetBody(f, 0)); };
    DynBodyForceSetConfig(force, config);
    DynBodyForceEnable(force);
    t.step();
    EXPECT_FALSE(DynBodyIsEnabled(body));
    EXPECT_EQ(body->kiroBody.force[2], 0);
    EXPECT_EQ(body->bodyTM[3][2], 0);
    EXPECT_NEAR(other->kiroBody.vel[2], 0, 1e-9); // it does not move, so it holds the other
}

TEST_F(DynWorldStepTest, CallsDuringAStepAreRefused) {
    static DynBody* body;
    body = t.addBody();
    DynWorldHost host;
    host.preUpdateForce = [](void*, DynWorld* w, int, int) {
        DynWorldStep(w, 1);
        DynWorldIntegrate(w);
        DynWorldRemoveBody(w, body);
        DynBodyDestroy(body);
        DynWorldDestroy(w);
    };
    DynWorldSetHost(t.world, host);
    setVelocity(body, 1);
    t.step();
    EXPECT_EQ(t.world->nBodies, 1);
    EXPECT_EQ(body->world, t.world);
    EXPECT_EQ(t.world->params.timeStep, kStep);
}

} // namespace
