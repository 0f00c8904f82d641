#include <Col/ColModel.h>
#include <Col/ColSpace.h>
#include <Kit/KitThreadPool.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <tuple>
#include <vector>

namespace {

/// A model whose box the test moves: the bounds function reads it from mBounds.
struct Body : ColModel {
    void set(double x, double y, double z, double half) {
        const double centre[3] = {x, y, z};
        for (int axis = 0; axis < 3; ++axis) {
            mBounds[2 * axis] = centre[axis] - half;
            mBounds[2 * axis + 1] = centre[axis] + half;
        }
    }
};

void readBounds(ColModel* model, lsVec3* min, lsVec3* max, KitReal) {
    for (int axis = 0; axis < 3; ++axis) {
        (*min)[axis] = model->mBounds[2 * axis];
        (*max)[axis] = model->mBounds[2 * axis + 1];
    }
}

using Pair = std::pair<std::uint64_t, std::uint64_t>;

Pair pairOf(const CxPairLink* link) {
    return {link->mSerial1, link->mSerial2};
}

/// A space of bodies, and what it reported in the last interval.
struct World {
    std::unique_ptr<CxSpace, void (*)(CxSpace*)> space{
        ColSpaceAxisSortCreate(ColAllAxes, 4, 4, false), ColSpaceDestroy};
    std::vector<std::unique_ptr<Body>> bodies;
    std::set<Pair> hello, goodbye, staying;

    World() { space->SetAABBUpdateFn(readBounds); }
    ~World() {
        for (auto& body : bodies)
            if (body->mSpaceID >= 0)
                space->Remove(body->mSpaceID);
    }
    Body& add(double x, double y, double z, double half) {
        bodies.push_back(std::make_unique<Body>());
        Body& body = *bodies.back();
        body.serial = bodies.size();
        body.set(x, y, z, half);
        body.mSpaceID = space->Insert(&body, false);
        return body;
    }
    void remove(Body& body) {
        space->Remove(body.mSpaceID);
        body.mSpaceID = -1;
    }
    void step() {
        space->UpdateBegin();
        space->UpdateAll(0);
        space->UpdateEnd();
        hello.clear();
        goodbye.clear();
        staying.clear();
        for (const CxPairLink* link : space->GetNewPairOverlapList())
            hello.insert(pairOf(link));
        for (const CxPairLink* link : space->GetOldPairOverlapList())
            goodbye.insert(pairOf(link));
        for (const CxPairLink* link : space->GetPairOverlapList())
            staying.insert(pairOf(link));
        for (const CxPairLink* link : space->GetRestingPairList())
            staying.insert(pairOf(link));
    }
};

bool overlapStrictly(const Body& a, const Body& b) {
    for (int axis = 0; axis < 3; ++axis)
        if (!(a.mBounds[2 * axis] < b.mBounds[2 * axis + 1] &&
              b.mBounds[2 * axis] < a.mBounds[2 * axis + 1]))
            return false;
    return true;
}

// Bodies wander, jump, freeze, park, come and go, and pairs are switched, at random. After each
// interval the living pairs are those that a test of all pairs finds, and each was reported once.
TEST(BroadPhase, AgreesWithAllPairs) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> place(-6, 6), step(-0.2, 0.2), size(0.1, 1.5);
    const auto chance = [&](int oneIn) { return random() % static_cast<unsigned>(oneIn) == 0; };
    World world;
    std::set<Pair> live, disabled;
    std::set<const Body*> parked, frozen;
    for (int i = 0; i < 120; ++i)
        world.add(place(random), place(random), place(random), chance(30) ? 1e5 : size(random));

    for (int frame = 0; frame < 150; ++frame) {
        const bool inside = world.space->UpdateBegin() || true;
        for (std::size_t i = 0; i < world.bodies.size(); ++i) {
            Body& body = *world.bodies[i];
            if (body.mSpaceID < 0)
                continue;
            if (frozen.count(&body) == 0) {
                const double half = (body.mBounds[1] - body.mBounds[0]) / 2;
                body.set(body.mBounds[0] + half + step(random),
                         body.mBounds[2] + half + step(random),
                         body.mBounds[4] + half + step(random), half);
                if (chance(40))
                    body.set(place(random), place(random), place(random), half);
            } else if (chance(20)) { // a frozen body that is moved by hand
                body.set(place(random), place(random), place(random), size(random));
                world.space->UpdateSingle(body.mSpaceID, 0, true);
            }
            if (chance(30)) {
                const bool freeze = frozen.insert(&body).second;
                if (!freeze)
                    frozen.erase(&body);
                world.space->SetDynamic(body.mSpaceID, !freeze);
                if (freeze)
                    world.space->UpdateSingle(body.mSpaceID, 0, true);
            }
            if (chance(60)) {
                const bool park = parked.insert(&body).second;
                if (!park)
                    parked.erase(&body);
                world.space->Park(body.mSpaceID, park);
            }
            if (chance(10)) {
                Body& other = *world.bodies[random() % world.bodies.size()];
                const Pair key{std::min(body.serial, other.serial),
                               std::max(body.serial, other.serial)};
                if (other.mSpaceID >= 0 && &other != &body) {
                    const bool disable = disabled.insert(key).second;
                    if (!disable)
                        disabled.erase(key);
                    ASSERT_TRUE(world.space->SetPairOverlapEnabled(body.mSpaceID, other.mSpaceID,
                                                                   !disable));
                }
            }
            if (chance(150)) {
                world.remove(body);
                std::erase_if(disabled, [&](const Pair& p) {
                    return p.first == body.serial || p.second == body.serial;
                });
            }
        }
        if (chance(8)) {
            const bool enable = chance(2);
            world.space->SetAllPairOverlapEnabled(enable);
            disabled.clear();
            for (const auto& a : world.bodies)
                for (const auto& b : world.bodies)
                    if (!enable && a->serial < b->serial && a->mSpaceID >= 0 && b->mSpaceID >= 0)
                        disabled.insert({a->serial, b->serial});
        }
        const auto present = static_cast<std::size_t>(
            std::count_if(world.bodies.begin(), world.bodies.end(),
                          [](const auto& body) { return body->mSpaceID >= 0; }));
        ASSERT_EQ(world.space->GetPairOverlapEnabledCount(),
                  present * (present - 1) / 2 - disabled.size());
        if (chance(2))
            world.add(place(random), place(random), place(random), size(random));
        ASSERT_TRUE(inside);
        world.step();

        std::set<Pair> now = world.hello;
        now.insert(world.staying.begin(), world.staying.end());
        std::set<Pair> expected;
        for (const auto& a : world.bodies)
            for (const auto& b : world.bodies)
                if (a->serial < b->serial && a->mSpaceID >= 0 && b->mSpaceID >= 0 &&
                    parked.count(a.get()) + parked.count(b.get()) == 0 &&
                    disabled.count({a->serial, b->serial}) == 0 && overlapStrictly(*a, *b))
                    expected.insert({a->serial, b->serial});
        ASSERT_EQ(now, expected) << "frame " << frame;
        for (const Pair& pair : world.hello) {
            EXPECT_EQ(world.staying.count(pair), 0U);
            // A pair may end and begin in one interval only when a model was parked or removed.
            EXPECT_TRUE(live.count(pair) == 0 || world.goodbye.count(pair) == 1);
        }
        for (const Pair& pair : live)
            EXPECT_TRUE(world.staying.count(pair) == 1 || world.goodbye.count(pair) == 1);
        for (const Pair& pair : world.goodbye)
            EXPECT_EQ(live.count(pair), 1U) << "a goodbye without a hello";
        live = now;
    }
}

TEST(BroadPhase, ExactTouchKeepsTheState) {
    World world;
    Body& a = world.add(0, 0, 0, 1);
    Body& b = world.add(5, 0, 0, 1);
    const auto overlaps = [&](double x) {
        b.set(x, 0, 0, 1);
        world.step();
        return world.space->GetPairOverlapStatus(a.mSpaceID, b.mSpaceID);
    };
    world.step();
    EXPECT_FALSE(overlaps(2)); // comes to touch from outside
    EXPECT_TRUE(overlaps(1.9));
    EXPECT_TRUE(overlaps(2)); // from inside
    EXPECT_FALSE(overlaps(2.1));

    Body& above = world.add(0, 0, 2, 1); // its lower side touches a's upper one
    Body& below = world.add(0, 0, -2, 1);
    world.step();
    EXPECT_TRUE(world.space->GetPairOverlapStatus(a.mSpaceID, above.mSpaceID));
    EXPECT_FALSE(world.space->GetPairOverlapStatus(a.mSpaceID, below.mSpaceID));
}

TEST(BroadPhase, ReportsNetEffectsAndWaitsForTheNextInterval) {
    World world;
    Body& a = world.add(0, 0, 0, 1);
    Body& b = world.add(1, 0, 0, 1);
    Body& c = world.add(0, 1, 0, 1);
    const Pair ab{1, 2}, ac{1, 3}, bc{2, 3};
    world.step();
    EXPECT_EQ(world.hello, (std::set<Pair>{ab, ac, bc}));
    CxSpace& space = *world.space;

    // Disabled outside an interval: in transition until the next one says goodbye.
    EXPECT_TRUE(space.SetPairOverlapEnabled(a.mSpaceID, b.mSpaceID, false));
    EXPECT_FALSE(space.SetPairOverlapEnabled(a.mSpaceID, b.mSpaceID, true));
    world.step();
    EXPECT_EQ(world.goodbye, std::set<Pair>{ab});
    EXPECT_EQ(world.staying, (std::set<Pair>{ac, bc}));
    // Enabled outside, and its model removed before the hello: nobody hears of it.
    EXPECT_TRUE(space.SetPairOverlapEnabled(a.mSpaceID, b.mSpaceID, true));
    world.remove(b);
    world.step();
    EXPECT_EQ(world.goodbye, std::set<Pair>{bc});
    EXPECT_TRUE(world.hello.empty());
    // Disabled and enabled again, or apart and back, within one interval: nothing.
    space.UpdateBegin();
    EXPECT_TRUE(space.SetPairOverlapEnabled(a.mSpaceID, c.mSpaceID, false));
    c.set(9, 9, 9, 1);
    space.UpdateSingle(c.mSpaceID, 0, true);
    c.set(0, 1, 0, 1);
    EXPECT_TRUE(space.SetPairOverlapEnabled(a.mSpaceID, c.mSpaceID, true));
    world.step();
    EXPECT_TRUE(world.hello.empty() && world.goodbye.empty());
    EXPECT_EQ(world.staying, std::set<Pair>{ac});
    // Removed pairs come first, and their records stay readable until the next interval.
    Body& d = world.add(0, 0, 1, 1);
    world.step();
    d.set(9, 9, 9, 1);
    world.remove(c);
    world.step();
    const auto ended = space.GetOldPairOverlapList();
    ASSERT_EQ(ended.size(), 3U); // ac, cd removed; ad ended
    EXPECT_EQ(ended[0]->mPair.model2, &c);
    EXPECT_EQ(ended[0]->mID1, -1);
    EXPECT_EQ(pairOf(ended[2]), (Pair{1, 4}));
    space.ForgetModel(&c);
    EXPECT_EQ(ended[0]->mPair.model2, nullptr);
    EXPECT_EQ(ended[0]->mPair.model1, &a);
}

TEST(BroadPhase, PairsRestWhenBothModelsDo) {
    World world;
    Body& a = world.add(0, 0, 0, 1);
    Body& b = world.add(1, 0, 0, 1);
    world.step();
    CxSpace& space = *world.space;
    const auto restAndStay = [&] {
        return std::pair(space.GetRestingPairList().size(), space.GetPairOverlapList().size());
    };
    space.SetDynamic(a.mSpaceID, false);
    world.step();
    EXPECT_EQ(restAndStay(), std::pair(std::size_t{0}, std::size_t{1}));
    space.SetDynamic(b.mSpaceID, false);
    world.step();
    EXPECT_EQ(restAndStay(), std::pair(std::size_t{1}, std::size_t{0}));
    a.mTemporaryDisabledStatus = kTemporaryDisabledShortTerm;
    space.StatusChanged(a.mSpaceID);
    world.step();
    EXPECT_EQ(restAndStay(), std::pair(std::size_t{0}, std::size_t{1}));
    EXPECT_TRUE(world.goodbye.empty());
}

// A box that is not a number keeps its last extents; one of infinite size meets everybody.
TEST(BroadPhase, SurvivesBadBoxes) {
    World world;
    Body& a = world.add(0, 0, 0, 1);
    world.add(1, 0, 0, 1);
    const double huge = std::numeric_limits<double>::max();
    Body& plane = world.add(0, 0, 0, 1);
    for (int axis = 0; axis < 3; ++axis) {
        plane.mBounds[2 * axis] = -huge;
        plane.mBounds[2 * axis + 1] = axis == 2 ? 0 : huge;
    }
    world.step();
    EXPECT_EQ(world.hello.size(), 3U);
    a.mBounds[2] = std::nan("");
    world.step();
    world.step();
    EXPECT_EQ(world.staying.size(), 3U);
    EXPECT_EQ(world.space->Insert(nullptr, false), -1);
    world.space->Remove(77);
    EXPECT_FALSE(world.space->SetPairOverlapEnabled(0, 0, false));
    EXPECT_EQ(ColSpaceAxisSortCreate(0, 1, 1, false), nullptr);
}

TEST(BroadPhase, ThreadsChangeNothing) {
    std::vector<std::vector<Pair>> reports;
    for (const unsigned threads : {0U, 1U, 4U}) {
        std::unique_ptr<KitThreadPool> pool;
        if (threads > 0)
            pool = std::make_unique<KitThreadPool>(threads);
        World world;
        world.space->SetThreadPool(pool.get());
        std::mt19937 random(7);
        std::uniform_real_distribution<double> place(-5, 5);
        for (int i = 0; i < 400; ++i)
            world.add(place(random), place(random), place(random), 0.4);
        std::vector<Pair> report;
        for (int frame = 0; frame < 20; ++frame) {
            for (auto& body : world.bodies)
                body->set(body->mBounds[0] + 0.4 + 0.02 * place(random), body->mBounds[2] + 0.4,
                          body->mBounds[4] + 0.4, 0.4);
            world.step();
            for (const auto list :
                 {world.space->GetNewPairOverlapList(), world.space->GetPairOverlapList(),
                  world.space->GetOldPairOverlapList()})
                for (const CxPairLink* link : list)
                    report.push_back(pairOf(link));
        }
        reports.push_back(report);
    }
    EXPECT_GT(reports[0].size(), 1000U);
    EXPECT_EQ(reports[0], reports[1]);
    EXPECT_EQ(reports[0], reports[2]);
}

} // namespace
