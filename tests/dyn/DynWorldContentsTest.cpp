#include "TestWorld.h"

#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Kit/KitMessage.h>
#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <limits>

namespace {

constexpr KitReal kNaN = std::numeric_limits<KitReal>::quiet_NaN();

/// Keeps the warnings of its life time.
class Warnings {
public:
    Warnings() { mOld = KitSetWarningHandler(keep); }
    ~Warnings() { KitSetWarningHandler(mOld); }
    Warnings(const Warnings&) = delete;
    Warnings& operator=(const Warnings&) = delete;

    static std::vector<std::string>& texts() {
        static std::vector<std::string> list;
        return list;
    }

private:
    static void keep(int, const char* format, va_list arguments) {
        char text[512];
        std::vsnprintf(text, sizeof text, format, arguments);
        texts().emplace_back(text);
    }
    KitMessageHandler mOld;
};

class DynWorldContentsTest : public testing::Test {
protected:
    DynWorldContentsTest() { Warnings::texts().clear(); }
    Warnings warnings;
    TestWorld t;
};

TEST_F(DynWorldContentsTest, BodyStandsInOneWorldOnce) {
    DynBody* body = t.addBody();
    TestWorld other;
    DynWorldInsertBody(t.world, body);
    DynWorldInsertBody(other.world, body);
    EXPECT_EQ(Warnings::texts(), (std::vector<std::string>{
                                     "DynWorldInsertBody: Body already in world.\n",
                                     "DynWorldInsertBody: Body already in a different world.\n"}));
    EXPECT_EQ(t.world->nBodies, 1);
    EXPECT_EQ(other.world->nBodies, 0);
    DynWorldRemoveBody(other.world, body);
    EXPECT_EQ(body->world, t.world);
}

TEST_F(DynWorldContentsTest, EnabledBodyReturnsToTheEnabledList) {
    DynBody *a = t.addBody(), *b = t.addBody(), *c = t.addBody();
    DynWorldRemoveBody(t.world, b);
    EXPECT_EQ(t.world->nEnabledBodies, 2);
    EXPECT_EQ(t.world->enabledBodyHead, c);
    EXPECT_EQ(c->enabledNext, a);
    EXPECT_EQ(DynBodyGetNext(c), a);
    DynWorldInsertBody(t.world, b);
    EXPECT_EQ(t.world->nEnabledBodies, 3);
    EXPECT_EQ(t.world->enabledBodyHead, b);
    EXPECT_EQ(t.world->nBodies, 3);
}

TEST_F(DynWorldContentsTest, CapacitiesFollowTheContents) {
    for (int i = 0; i < 100; ++i)
        t.addBody();
    for (int i = 0; i + 1 < 100; ++i)
        t.join({t.bodies[std::size_t(i)], t.bodies[std::size_t(i) + 1]});
    t.step();
    EXPECT_EQ(t.world->maxBodies, 100);
    EXPECT_EQ(t.world->maxConstraints, 99);
    EXPECT_EQ(t.world->resize, 0);
    EXPECT_EQ(t.world->partitionOutput.nPartitions, 1);
}

TEST_F(DynWorldContentsTest, WalkSkipsTheRemovedAndGoesByCreation) {
    struct Walk {
        TestWorld* t;
        std::vector<std::uint64_t> met;
    };
    DynBody* body = t.addBody();
    for (int i = 0; i < 6; ++i)
        t.join({body, nullptr});
    Walk walk{&t, {}};
    DynWorldForAllConstraints(
        t.world,
        [](DynBaseConstraint* c, void* data) {
            auto& w = *static_cast<Walk*>(data);
            w.met.push_back(c->serial);
            if (c->serial != 2)
                return;
            w.t->disable(w.t->constraints[1]); // itself
            w.t->disable(w.t->constraints[2]); // the next
            w.t->disable(w.t->constraints[5]); // the last
            w.t->join({w.t->bodies[0], nullptr});
            DynWorldForAllConstraints(
                w.t->world,
                [](DynBaseConstraint* inner, void* innerData) {
                    auto& outer = *static_cast<Walk*>(innerData);
                    if (inner->serial == 5)
                        outer.t->disable(*inner); // out of both walks
                },
                data);
        },
        &walk);
    EXPECT_EQ(walk.met, (std::vector<std::uint64_t>{1, 2, 4}));
    EXPECT_EQ(t.world->nEnabledConstraints, 3);
}

TEST_F(DynWorldContentsTest, NodesOfAConstraint) {
    DynBody *a = t.addBody(), *b = t.addBody();
    DynBaseConstraint &first = t.join({a, b}), &second = t.join({b, a});
    EXPECT_EQ(a->constraintList->constraint, &second);
    EXPECT_EQ(a->constraintList->slot, 1);
    EXPECT_EQ(a->constraintList->next->constraint, &first);
    t.disable(second);
    EXPECT_EQ(a->constraintList->constraint, &first);
    EXPECT_EQ(a->constraintList->next, nullptr);
    t.disable(first);
    EXPECT_EQ(b->constraintList, nullptr);
    EXPECT_EQ(t.world->enabledConstraintHead, nullptr);
    DynWorldRemoveConstraint(t.world, &first);
    EXPECT_EQ(t.world->nConstraints, 1);
    EXPECT_EQ(first.world, nullptr);
}

TEST_F(DynWorldContentsTest, WalkOverABodysConstraintsSkipsTheRemoved) {
    DynBody *a = t.addBody(), *b = t.addBody();
    for (int i = 0; i < 6; ++i)
        t.join({a, b, a});
    TestWorld::disable(t.constraints[4]);
    TestWorld::enable(t.constraints[4]); // the list goes by creation all the same
    struct Walk {
        TestWorld& world;
        std::vector<std::uint64_t> met;
    } walk{t, {}};
    DynBodyForAllConstraints(
        a,
        [](DynBaseConstraint* c, void* data) {
            auto& [world, met] = *static_cast<Walk*>(data);
            met.push_back(c->serial);
            if (c->serial == 5) { // the next one, the one behind it, and one already met
                for (const std::size_t i : {3U, 2U, 5U})
                    TestWorld::disable(world.constraints[i]);
                world.join({world.bodies[0], nullptr});
            }
            if (c->serial == 2)
                TestWorld::disable(*c);
        },
        &walk);
    EXPECT_EQ(walk.met, (std::vector<std::uint64_t>{6, 5, 2, 1}));
}

TEST_F(DynWorldContentsTest, KinematicConstraintsMoveOnceEach) {
    DynBody* body = t.addBody();
    for (int i = 0; i < 12; ++i) {
        DynBaseConstraint& c = t.join({body, nullptr});
        c.updateKinematicFunction = [](DynBaseConstraint* k, KitReal h) {
            k->bclH.lower[0] += h;
            if (k->serial % 3 == 0) // needs no further update
                DynWorldRemoveKinematicConstraint(k->world, k);
        };
        DynWorldAddKinematicConstraint(t.world, &c);
        DynWorldAddKinematicConstraint(t.world, &c);
    }
    EXPECT_EQ(t.world->nKineticConstraints, 12);
    DynWorldUpdateKinematicConstraint(t.world, -0.5);
    EXPECT_EQ(t.world->nKineticConstraints, 8);
    for (const DynBaseConstraint& c : t.constraints) {
        EXPECT_EQ(c.bclH.lower[0], -0.5);
        EXPECT_EQ(c.kinematicUpdateIndex < 0, c.serial % 3 == 0);
        if (c.kinematicUpdateIndex >= 0) {
            EXPECT_EQ(t.world->kineticConstraintHead[c.kinematicUpdateIndex], &c);
        }
    }
    DynWorldUpdateKinematicConstraint(t.world, kNaN);
    EXPECT_EQ(t.constraints[0].bclH.lower[0], -0.5);
}

TEST_F(DynWorldContentsTest, GroupsAreCopiesOfGroupZeroWithStableAddresses) {
    DynGrouping* zero = DynGroupingGet(t.world, 0);
    zero->k_params.coupling_iterations = 17;
    zero->strength = 5;
    DynGrouping* three = DynGroupingGet(t.world, 3);
    EXPECT_EQ(DynGroupingCount(t.world), 4);
    EXPECT_EQ(three->k_params.coupling_iterations, 17);
    EXPECT_EQ(three->strength, 0);
    EXPECT_EQ(three->id, 3);
    EXPECT_EQ(three->secondaryid, 3);
    EXPECT_EQ(three->cross_grouping_depth, -1);
    EXPECT_EQ(three->max_partition_bodies, -1);
    EXPECT_NE(DynGroupingGet(t.world, kDynMaxGrouping), nullptr);
    EXPECT_EQ(DynGroupingGet(t.world, 3), three);
    EXPECT_EQ(DynGroupingGet(t.world, -1), nullptr);
    EXPECT_EQ(DynGroupingGet(t.world, kDynMaxGrouping + 1), nullptr);
    EXPECT_EQ(DynGroupingCount(t.world), kDynMaxGrouping + 1);
}

TEST_F(DynWorldContentsTest, GroupZeroMirrorsTheWorldsSettings) {
    DynGroupingGet(t.world, 1);
    DynWorldLCPSetMaxIterations(t.world, 7);
    DynWorldSetIntegrationModel(t.world, kDynsStepper);
    EXPECT_EQ(DynGroupingGet(t.world, 0)->k_params.lcp_parameters.max_iterations, 7);
    EXPECT_EQ(DynGroupingGet(t.world, 0)->k_params.stepper_model, kDynsStepper);
    EXPECT_EQ(DynGroupingGet(t.world, 1)->k_params.lcp_parameters.max_iterations, 35);
    DynWorldReset(t.world);
    EXPECT_EQ(DynWorldLCPGetMaxIterations(t.world), 35);
    EXPECT_EQ(DynGroupingGet(t.world, 0)->k_params.stepper_model, kDynStableStepper);
    EXPECT_TRUE(Warnings::texts().empty());
}

TEST_F(DynWorldContentsTest, BadSettingsAreRefused) {
    const KitVector3 bad = {0, kNaN, 0};
    DynWorldSetGravity(t.world, bad);
    DynWorldSetTimeStep(t.world, 0);
    DynWorldSetTimeStep(t.world, kNaN);
    DynWorldLCPSetMaxIterations(t.world, 0);
    DynWorldLCPSetTolerance(t.world, kNaN);
    DynWorldLCPSetScaledBoxTolerance(t.world, -1);
    DynWorldLCPSetSolverFunction(t.world, static_cast<DynLCPSolverEnum>(1));
    DynWorldSetLinearSolver(t.world, kDynDenseSolver);
    DynWorldSetLinearSolver(t.world, kDynBVBCholeskySolver);
    DynWorldSetIntegrationModel(t.world, static_cast<DynStepperModelEnum>(2));
    DynWorldSetConstraintSolver(t.world, 99);
    DynWorldSetConstraintSolver(t.world, DynsConstraintSolverRegistry::INVALID_ID);
    DynWorldSetCouplingIterations(t.world, -1);
    DynWorldSetPartitionerSecondaryMaxSize(t.world, 0);
    DynWorldSetPartitionerCrossGroupingDepth(t.world, -1);
    DynWorldSetPartitioner(t.world, nullptr);
    DynWorldSetPartitionGroupingMode(t.world, static_cast<DynPartitionGrouping>(2));
    DynWorldSetDynWorldOnePassPartitionSizeRatio(0.5);
    DynWorldSetDynWorldOnePassPartitionSizeRatio(kNaN);
    EXPECT_EQ(Warnings::texts().size(), 19U);

    KitVector3 gravity;
    DynWorldGetGravity(t.world, gravity);
    EXPECT_EQ(gravity[1], 0);
    EXPECT_EQ(DynWorldGetTimeStep(t.world), 1.0 / 60);
    EXPECT_EQ(DynWorldLCPGetMaxIterations(t.world), 35);
    EXPECT_EQ(DynWorldLCPGetTolerance(t.world), 0.001);
    EXPECT_EQ(DynWorldGetLinearSolver(t.world), kDynBVBRRTCholeskySolver);
    EXPECT_EQ(DynWorldGetIntegrationModel(t.world), kDynStableStepper);
    EXPECT_EQ(DynWorldGetConstraintSolver(t.world), 0U);
    EXPECT_EQ(DynWorldGetPartitionerSecondaryMaxSize(t.world), 10);
    EXPECT_EQ(DynWorldGetPartitionGroupingMode(t.world), kDynPartitionUserGrouping);
    EXPECT_EQ(DynWorldGetDynWorldOnePassPartitionSizeRatio(), 128);
}

TEST_F(DynWorldContentsTest, GravityWakes) {
    DynBody *body = t.addBody(), *wall = t.addKinematic();
    DynBodyDisable(body);
    const KitVector3 gravity = {0, 0, -1};
    DynWorldSetGravity(t.world, gravity);
    EXPECT_TRUE(DynBodyIsEnabled(body));
    EXPECT_FALSE(DynBodyIsEnabled(wall));
}

TEST_F(DynWorldContentsTest, DestroyedWorldLetsItsContentsGo) {
    auto* other = new TestWorld;
    DynBody* body = DynBodyCreate(t.world); // of another pool
    DynWorldInsertBody(other->world, body);
    DynBodyEnable(body);
    other->join({body, nullptr});
    delete other;
    EXPECT_EQ(body->world, nullptr);
    EXPECT_EQ(body->constraintList, nullptr);
    DynWorldInsertBody(t.world, body);
    t.step();
    EXPECT_EQ(t.world->nEnabledBodies, 1);
}

} // namespace
