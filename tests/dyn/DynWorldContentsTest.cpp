#include "TestWorld.h"

#include <kit/KitTestSupport.h>
#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr KitReal kNaN = std::numeric_limits<KitReal>::quiet_NaN();

class DynWorldContentsTest : public testing::Test {
protected:
    WarningRecorder warnings;
    TestWorld t;
};

TEST_F(DynWorldContentsTest, BodyStandsInOneWorldOnce) {
    DynBody* body = t.addBody();
    TestWorld other;
    DynWorldInsertBody(t.world, body);
    DynWorldInsertBody(other.world, body);
    EXPECT_EQ(
        warnings.take(),
        (std::vector<std::string>{"12: DynWorldInsertBody: Body already in world.\n",
                                  "12: DynWorldInsertBody: Body already in a different world.\n"}));
    EXPECT_EQ(t.world->nBodies, 1);
    EXPECT_EQ(other.world->nBodies, 0);
    DynWorldRemoveBody(other.world, body);
    EXPECT_EQ(body->world, t.world);
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
