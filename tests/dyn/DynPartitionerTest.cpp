#include "TestWorld.h"

#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <random>

namespace {

using Bodies = std::set<const DynBody*>;

class DynPartitionerTest : public testing::Test {
protected:
    TestWorld t;
    DynPartitionOutput& o = t.world->partitionOutput;
};

TEST_F(DynPartitionerTest, GroupsAreCutAndCoupled) {
    DynBody *a = t.addBody(1), *b = t.addBody(2), *lone = t.addBody(2);
    DynBaseConstraint& c = t.join({a, b});
    DynGroupingGet(t.world, 2)->k_params.coupling_iterations = 3;
    t.partition();
    ASSERT_EQ(o.nPartitions, 4);
    EXPECT_EQ(t.bodiesOf(0), Bodies{a});
    EXPECT_EQ(t.bodiesOf(1), Bodies{b});
    EXPECT_EQ(t.bodiesOf(2), Bodies{lone});
    ASSERT_EQ(t.partitionsOf(1), std::vector<int>{3});
    EXPECT_EQ(t.bodiesOf(3), (Bodies{a, b}));
    EXPECT_EQ(t.constraintsOf(3), std::set<const DynBaseConstraint*>{&c});
    EXPECT_EQ(a->kiroBody.partition_index, 0); // a secondary changes no body
    EXPECT_EQ(b->kiroBody.partition_index, 1);
    const int group[] = {0, 0, kDynNoPartitionGroup, 0}, iterations[] = {3, 3, 0, 3};
    for (int p = 0; p < 4; ++p) {
        EXPECT_EQ(o.pgroupIndex[p], group[p]) << p;
        EXPECT_EQ(o.coupling_iterations[p], iterations[p]) << p;
    }
}

TEST_F(DynPartitionerTest, DepthReachesIntoOtherGroups) {
    // Groups 1 - 2 - 2 - 3: one hop from the start takes the neighbour, which brings its own group's
    // bodies only as far as the depth lasts.
    DynBody *a = t.addBody(1), *b = t.addBody(2), *c = t.addBody(2), *d = t.addBody(3);
    t.join({a, b});
    t.join({b, c});
    t.join({c, d});
    DynWorldSetPartitionerCrossGroupingDepth(t.world, 1);
    t.partition();
    EXPECT_EQ(t.bodiesOf(0), (Bodies{a, b}));
    EXPECT_EQ(t.bodiesOf(1), (Bodies{c, d}));
    EXPECT_EQ(t.partitionsOf(1).size(), 1U);
    // A group's own depth goes first.
    DynGroupingGet(t.world, 1)->cross_grouping_depth = 3;
    t.partition();
    EXPECT_EQ(o.nPartitions, 1);
    // Without groups only islands count.
    DynGroupingGet(t.world, 1)->cross_grouping_depth = 0;
    DynWorldSetPartitionGroupingMode(t.world, kDynPartitionAutoGrouping);
    t.partition();
    EXPECT_EQ(o.nPartitions, 1);
}

TEST_F(DynPartitionerTest, KinematicBodyIsAWall) {
    DynBody *a = t.addBody(), *wall = t.addKinematic(), *c = t.addBody();
    t.join({a, wall});
    t.join({wall, c});
    t.partition();
    ASSERT_EQ(o.nPartitions, 2);
    EXPECT_EQ(t.bodiesOf(0), Bodies{a});
    EXPECT_EQ(t.bodiesOf(1), Bodies{c});
    EXPECT_EQ(o.forceAwake[0], 0);
    EXPECT_EQ(wall->kiroBody.partition_index, -1);

    const KitVector3 fast = {1, 0, 0};
    DynBodySetLinearVelocity(wall, fast);
    t.partition();
    EXPECT_EQ(o.forceAwake[0], 1);
    EXPECT_EQ(o.forceAwake[1], 1);
}

TEST_F(DynPartitionerTest, StrongerBodyStaysOut) {
    DynBody *weak = t.addBody(1), *strong = t.addBody(2), *weak2 = t.addBody(1);
    DynGroupingGet(t.world, 2)->strength = 1;
    DynBaseConstraint& c = t.join({weak, strong});
    DynBaseConstraint& d = t.join({strong, weak2});
    DynWorldSetPartitionerCrossGroupingDepth(t.world, 5);
    t.partition();
    EXPECT_EQ(c.bclH.strongestBody, strong);
    ASSERT_EQ(o.nPartitions, 3);
    EXPECT_EQ(t.partitionsOf(1), std::vector<int>{});
    EXPECT_EQ(t.bodiesOf(0), Bodies{weak});
    EXPECT_EQ(t.constraintsOf(0), std::set<const DynBaseConstraint*>{&c});
    EXPECT_EQ(t.bodiesOf(1), Bodies{weak2});
    EXPECT_EQ(t.constraintsOf(1), std::set<const DynBaseConstraint*>{&d});
    EXPECT_EQ(t.bodiesOf(2), Bodies{strong});
    EXPECT_EQ(o.constraintsSize[2], 0);
}

TEST_F(DynPartitionerTest, StrongestBodyOfAConstraint) {
    DynBody *a = t.addBody(1), *b = t.addBody(2), *c = t.addBody(2), *wall = t.addKinematic();
    DynBaseConstraint& dynamic = t.join({a, b, c});
    DynBaseConstraint& onWall = t.join({a, b, wall});
    EXPECT_EQ(DynConstraintFindStrongestBody(&dynamic), nullptr);
    DynGroupingGet(t.world, 2)->strength = 4;
    EXPECT_EQ(DynConstraintFindStrongestBody(&dynamic), b); // the first of the strongest
    EXPECT_EQ(DynConstraintFindStrongestBody(&onWall), wall);
    DynGroupingGet(t.world, 2)->strength = -1;
    EXPECT_EQ(DynConstraintFindStrongestBody(&dynamic), a);
    dynamic.bclH.bodySeenAsKinematic = c;
    EXPECT_EQ(DynConstraintFindStrongestBody(&dynamic), c);
}

TEST_F(DynPartitionerTest, WeakConstraintStaysSecondaryAndOthersArePromoted) {
    // A ring of three in a partition of at most two: what closes it is secondary when it is met, and
    // internal once both of its bodies have come in.
    DynBody *a = t.addBody(1), *b = t.addBody(1);
    DynGroupingGet(t.world, 1)->max_partition_bodies = 2;
    DynBaseConstraint& second = t.join({a, b});
    DynBaseConstraint& first = t.join({a, b}); // met first: nodes enter at the head
    t.partition();
    ASSERT_EQ(o.nPartitions, 1);
    EXPECT_EQ(o.constraintsSize[0], 2);
    EXPECT_EQ(o.sconstraintsSize[0], 0);
    EXPECT_EQ(o.constraints[0], &first);
    EXPECT_EQ(o.constraints[1], &second);

    second.weak = kDynWeakAlways;
    t.partition();
    ASSERT_EQ(o.nPartitions, 2);
    EXPECT_EQ(t.bodiesOf(0), (Bodies{a, b}));
    EXPECT_EQ(t.constraintsOf(1), std::set<const DynBaseConstraint*>{&second});
    EXPECT_EQ(t.bodiesOf(1), (Bodies{a, b}));
    EXPECT_EQ(o.pgroupIndex[1], 0);
}

TEST_F(DynPartitionerTest, SecondariesAreCutBySize) {
    DynBody *a = t.addBody(1), *b = t.addBody(2);
    for (int i = 0; i < 25; ++i)
        t.join({a, b});
    t.partition();
    ASSERT_EQ(t.partitionsOf(1), (std::vector<int>{2, 3, 4}));
    const int sizes[] = {10, 10, 5};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(o.constraintsSize[2 + i], sizes[i]);
    // In the order of creation.
    for (int i = 0; i < 25; ++i)
        EXPECT_EQ(o.constraints[i]->serial, static_cast<std::uint64_t>(i + 1));
}

TEST_F(DynPartitionerTest, PartitionOfAtMostTwoBodies) {
    std::vector<DynBody*> chain;
    for (int i = 0; i < 5; ++i)
        chain.push_back(t.addBody(1));
    for (std::size_t i = 0; i + 1 < chain.size(); ++i)
        t.join({chain[i], chain[i + 1]});
    DynGroupingGet(t.world, 1)->max_partition_bodies = 2;
    t.partition();
    ASSERT_EQ(t.partitionsOf(0).size(), 3U);
    EXPECT_EQ(t.bodiesOf(0), (Bodies{chain[0], chain[1]}));
    EXPECT_EQ(t.bodiesOf(1), (Bodies{chain[2], chain[3]}));
    EXPECT_EQ(t.bodiesOf(2), Bodies{chain[4]});
    ASSERT_EQ(t.partitionsOf(1), std::vector<int>{3});
    EXPECT_EQ(o.constraintsSize[3], 2);
    EXPECT_EQ(o.pgroupIndex[2], 0);
}

TEST_F(DynPartitionerTest, MergedChildIsPartOfItsRoot) {
    DynBody *root = t.addBody(), *child = t.addBody();
    child->rootParent = root;
    DynBaseConstraint& inner = t.join({root, root});
    inner.merged = 1;
    t.partition();
    ASSERT_EQ(o.nPartitions, 1);
    EXPECT_EQ(t.bodiesOf(0), Bodies{root});
    EXPECT_EQ(o.constraintsSize[0], 0);
    child->rootParent = child;
}

TEST_F(DynPartitionerTest, RestingPartitionIsTakenOff) {
    DynBody *a = t.addBody(), *b = t.addBody(), *mover = t.addBody();
    DynBaseConstraint& c = t.join({a, b});
    const KitVector3 fast = {1, 0, 0};
    DynBodySetLinearVelocity(mover, fast);
    a->enabledTime = b->enabledTime = 10;
    t.partition();
    ASSERT_EQ(o.nPartitions, 1);
    EXPECT_EQ(t.bodiesOf(0), Bodies{mover});
    EXPECT_EQ(o.totalBodies, 1);
    EXPECT_EQ(o.totalConstraints, 0);
    EXPECT_FALSE(DynBodyIsEnabled(a));
    EXPECT_FALSE(DynBodyIsEnabled(b));
    EXPECT_EQ(a->partitionIndex, -1);
    EXPECT_EQ(c.bclH.gflag, 0);
    EXPECT_EQ(c.edge_data.type, kDynGraphEdgeUnseen);
}

// Random graphs against invariants and a brute-force union of what is joined.

struct RandomGraph {
    TestWorld t;

    explicit RandomGraph(std::uint32_t seed, int groups) {
        std::mt19937 random(seed);
        const auto pick = [&](int n) {
            return std::uniform_int_distribution<int>(0, n - 1)(random);
        };
        const int n = 5 + pick(60);
        for (int i = 0; i < n; ++i)
            if (pick(8) == 0)
                t.addKinematic();
            else
                t.addBody(pick(groups));
        const int joints = pick(2 * n);
        for (int i = 0; i < joints; ++i) {
            std::vector<DynBody*> slots;
            for (int k = 1 + pick(3); k > 0; --k)
                slots.push_back(pick(10) == 0 ? nullptr : t.bodies[std::size_t(pick(n))]);
            t.join(slots).weak = groups > 1 && pick(10) == 0 ? kDynWeakAlways : kDynWeakNever;
        }
        for (int g = 0; g < groups; ++g) {
            DynGrouping* group = DynGroupingGet(t.world, g);
            group->strength = groups > 1 ? pick(3) / 2 : 0;
            group->max_partition_bodies = pick(3) == 0 && groups > 1 ? 1 + pick(5) : -1;
            group->k_params.coupling_iterations = 1 + pick(4);
        }
        DynWorldSetPartitionerCrossGroupingDepth(t.world, pick(3));
        DynWorldSetPartitionerSecondaryMaxSize(t.world, 1 + pick(5));
        for (DynBody* body : t.bodies) // some sleep; the partitioner wakes those in reach
            if (DynBodyIsDynamic(body) && pick(6) == 0)
                DynBodyDisable(body);
    }
};

// The dynamic bodies of the slots that take part, without the strongest.
std::vector<DynBody*> movedBodies(const DynBaseConstraint& c) {
    std::vector<DynBody*> moved;
    for (int i = 0; i < c.bclH.n_bodies; ++i)
        if (c.body[i] && c.bclH.b[i] && c.body[i] != c.bclH.strongestBody)
            moved.push_back(c.body[i]);
    return moved;
}

class Components {
public:
    explicit Components(std::size_t n) : mRoot(n) { std::iota(mRoot.begin(), mRoot.end(), 0U); }
    std::size_t find(std::size_t i) {
        while (mRoot[i] != i)
            i = mRoot[i];
        return i;
    }
    void join(std::size_t i, std::size_t k) {
        const std::size_t a = find(i), b = find(k);
        mRoot[std::max(a, b)] = std::min(a, b);
    }

private:
    std::vector<std::size_t> mRoot;
};

void checkBodies(const TestWorld& t) {
    std::map<const DynBody*, int> uses;
    for (const int p : t.partitionsOf(0))
        for (const DynBody* body : t.bodiesOf(p)) {
            ++uses[body];
            EXPECT_EQ(body->kiroBody.partition_index, p);
            EXPECT_EQ(body->partitionIndex, p);
            EXPECT_EQ(body->kiroBody.localPartition, p);
            EXPECT_EQ(t.world->partitionOutput.bodies[t.world->partitionOutput.bodiesStart[p] +
                                                      body->kiroBody.localIndex],
                      body);
        }
    for (const DynBody* body : t.bodies) {
        EXPECT_EQ(uses[body], DynBodyIsEnabled(body) && DynBodyIsDynamic(body) ? 1 : 0);
        EXPECT_EQ(body->node_data.color, kDynGraphNodeWhite);
        EXPECT_FALSE(body->processedByPartitioner);
    }
}

void checkConstraints(const TestWorld& t) {
    std::map<const DynBaseConstraint*, int> uses;
    for (int p = 0; p < t.world->partitionOutput.nPartitions; ++p) {
        Bodies touched;
        for (const DynBaseConstraint* c : t.constraintsOf(p)) {
            ++uses[c];
            for (const DynBody* body : movedBodies(*c)) {
                touched.insert(body);
                EXPECT_TRUE(t.bodiesOf(p).contains(body));
            }
        }
        if (t.world->partitionOutput.partition_type[p] == 1) {
            EXPECT_EQ(touched, t.bodiesOf(p));
        }
    }
    for (const DynBaseConstraint& c : t.constraints) {
        const std::vector<DynBody*> moved = movedBodies(c);
        const bool awake = std::any_of(moved.begin(), moved.end(),
                                       [](const DynBody* b) { return DynBodyIsEnabled(b); });
        EXPECT_EQ(uses[&c], awake ? 1 : 0);
        EXPECT_EQ(c.edge_data.type, kDynGraphEdgeUnseen);
        EXPECT_EQ(c.bclH.gflag, awake ? 1 : 0);
    }
}

// Groups of partitions are what the secondary constraints tie together.
void checkGroups(const TestWorld& t) {
    const DynPartitionOutput& o = t.world->partitionOutput;
    Components groups(static_cast<std::size_t>(o.nPartitions));
    std::vector<bool> coupled(static_cast<std::size_t>(o.nPartitions));
    for (const int p : t.partitionsOf(1)) {
        EXPECT_LE(o.constraintsSize[p], t.world->partition_parameters.secondaryPartitionMaxSize);
        for (const DynBaseConstraint* c : t.constraintsOf(p)) {
            const std::vector<DynBody*> moved = movedBodies(*c);
            for (const DynBody* body : moved) {
                groups.join(static_cast<std::size_t>(moved[0]->kiroBody.partition_index),
                            static_cast<std::size_t>(body->kiroBody.partition_index));
                coupled[static_cast<std::size_t>(body->kiroBody.partition_index)] = true;
            }
        }
    }
    for (const int p : t.partitionsOf(0)) {
        const auto i = static_cast<std::size_t>(p);
        EXPECT_EQ(o.pgroupIndex[p],
                  coupled[i] ? static_cast<int>(groups.find(i)) : kDynNoPartitionGroup);
        EXPECT_EQ(o.sconstraintsSize[p] > 0, coupled[i]);
    }
    for (const int p : t.partitionsOf(1))
        for (const DynBody* body : t.bodiesOf(p))
            EXPECT_EQ(o.pgroupIndex[p], o.pgroupIndex[body->kiroBody.partition_index]);
}

TEST(DynPartitionerRandomTest, InvariantsOfAnyGraph) {
    for (std::uint32_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomGraph graph(seed, 1 + static_cast<int>(seed % 4));
        for (DynBaseConstraint& c : graph.t.constraints)
            c.bclH.gflag = 0;
        graph.t.partition();
        checkBodies(graph.t);
        checkConstraints(graph.t);
        checkGroups(graph.t);
        if (testing::Test::HasFailure())
            return;
    }
}

TEST(DynPartitionerRandomTest, OneGroupGivesIslands) {
    for (std::uint32_t seed = 1; seed <= 100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomGraph graph(seed, 1);
        TestWorld& t = graph.t;
        t.partition();
        Components islands(t.bodies.size());
        const auto indexOf = [&](const DynBody* body) {
            return static_cast<std::size_t>(std::find(t.bodies.begin(), t.bodies.end(), body) -
                                            t.bodies.begin());
        };
        for (const DynBaseConstraint& c : t.constraints) {
            const std::vector<DynBody*> moved = movedBodies(c);
            for (const DynBody* body : moved)
                islands.join(indexOf(moved[0]), indexOf(body));
        }
        for (const DynBody* a : t.bodies)
            for (const DynBody* b : t.bodies)
                if (a->partitionIndex >= 0 && DynBodyIsDynamic(a) && DynBodyIsDynamic(b)) {
                    EXPECT_EQ(a->partitionIndex == b->partitionIndex,
                              islands.find(indexOf(a)) == islands.find(indexOf(b)));
                }
    }
}

// The division must not depend on the order in which bodies and constraints were enabled.
TEST(DynPartitionerRandomTest, OrderIsThatOfCreation) {
    for (std::uint32_t seed = 1; seed <= 50; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        RandomGraph graph(seed, 3);
        TestWorld& t = graph.t;
        const auto order = [&t] {
            const DynPartitionOutput& o = t.partition();
            return std::pair(std::vector<const DynBody*>(o.bodies, o.bodies + o.totalBodies),
                             std::vector<const DynBaseConstraint*>(
                                 o.constraints, o.constraints + o.totalConstraints));
        };
        t.partition(); // wakes what is in reach
        const auto before = order();
        std::mt19937 random(seed);
        std::vector<DynBody*> awake;
        for (DynBody* body : t.bodies)
            if (DynBodyIsEnabled(body) && DynBodyIsDynamic(body))
                awake.push_back(body);
        std::shuffle(awake.begin(), awake.end(), random);
        for (DynBody* body : awake) {
            DynBodyDisable(body);
            DynBodyEnable(body);
        }
        std::vector<DynBaseConstraint*> constraints;
        for (DynBaseConstraint& c : t.constraints)
            constraints.push_back(&c);
        std::shuffle(constraints.begin(), constraints.end(), random);
        for (DynBaseConstraint* c : constraints) {
            TestWorld::disable(*c);
            TestWorld::enable(*c);
        }
        EXPECT_EQ(order(), before);
    }
}

} // namespace
