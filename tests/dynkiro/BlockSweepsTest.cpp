#include "../../DynKiro/src/block_sweeps.h"
#include "RandomPartition.h"
#include "SpherePile.h"

#include <Dyns/bvbCholRRT.h>
#include <Dyns/itr_constraint_solver.h>
#include <Dyns/lcp.h>
#include <Kit/KitThreadPool.h>

#include <atomic>
#include <bit>
#include <cstdint>
#include <functional>
#include <numeric>
#include <set>
#include <string>

namespace {

using Joint = RandomPartition::Joint;
using Bits = std::vector<std::uint64_t>;

Bits bitsOf(const KitReal* x, int n) {
    Bits bits;
    for (int i = 0; i < n; ++i)
        bits.push_back(std::bit_cast<std::uint64_t>(x[i]));
    return bits;
}

class BlockSweepsTest : public testing::Test {
protected:
    BlockSweepsTest() : frame(0.01, std::size_t{1} << 25) {
        parameters().it_ct_solver_tol = 0;
        frame.p.iterative_rows_threshold = 1;
    }

    DynsLCPSolverParameters& parameters() { return frame.p.lcp_parameters; }
    KitMemoryPool& pool() { return *frame.p.memory_pool_handler; }

    static void load(DynsConstraints& c, const BoxedLcp& lcp) {
        for (int i = 0; i < lcp.size(); ++i) {
            c.rhs[i] = lcp.b[i];
            c.lower[i] = lcp.lower[i];
            c.upper[i] = lcp.upper[i];
            c.lambda[i] = 0;
        }
    }
    /// Solves by colours with up to this many sweeps.
    Eigen::VectorXd sweep(DynsConstraints& c, int bodies, int sweeps,
                          KitThreadPool* threads = nullptr) {
        parameters().it_ct_solver_max_it = sweeps - 1;
        frame.p.thread_pool = threads;
        itr_constraint_solver solver;
        solver.setup(c.n_constraint_rows, nullptr, &c, &frame.p, nullptr, nullptr, bodies, nullptr);
        EXPECT_EQ(solver.solve(), 0);
        solver.cleanup();
        pool().cleanup();
        return Eigen::Map<Eigen::VectorXd>(c.lambda, c.n_constraint_rows);
    }
    Eigen::VectorXd sweep(RandomPartition& p, int sweeps, KitThreadPool* threads = nullptr) {
        return sweep(*p.rows, static_cast<int>(p.bodies.size()), sweeps, threads);
    }

    FrameParameters frame;
};

std::set<int> movedBodies(const DynsConstraints& c, int constraint) {
    std::set<int> bodies;
    const int first = c.constraint_first_block[constraint];
    for (int g = first; g < first + c.constraint_n_blocks[constraint]; ++g)
        for (int r = 0; r < c.g_block_size[g]; ++r)
            for (int k = 0; k < 6; ++k)
                if (c.GM[g][r][k] != 0)
                    bodies.insert(c.g_bodies_idx[g]);
    return bodies;
}

/// Greedy colours, by comparing each constraint with all before it.
std::vector<int> coloursByComparison(const DynsConstraints& c) {
    std::vector<int> colours;
    std::vector<std::set<int>> moved;
    for (int k = 0; k < c.n_constraints; ++k) {
        moved.push_back(movedBodies(c, k));
        std::set<int> taken;
        for (int j = 0; j < k; ++j)
            for (const int body : moved.back())
                if (moved[static_cast<std::size_t>(j)].count(body) > 0)
                    taken.insert(colours[static_cast<std::size_t>(j)]);
        int colour = 0;
        while (taken.count(colour) > 0 && colour < DynsColours::kMost)
            ++colour;
        if (colour == DynsColours::kMost) // shares its colour with nothing that comes later
            moved.back().clear();
        colours.push_back(colour);
    }
    return colours;
}

void makeImmovable(DynsConstraints& c, int body) {
    for (int g = 0; g < c.n_g_blocks; ++g)
        if (c.g_bodies_idx[g] == body)
            std::fill_n(&c.GM[g][0][0], 6 * c.g_block_size[g], 0.0);
}

// Group by group the constraints of one colour, each by creation; bodies that do not move bind none.
TEST_F(BlockSweepsTest, ColoursAreGreedyInOrderOfCreation) {
    constexpr unsigned kSeed = 80;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    struct Case {
        const char* name;
        std::vector<Joint> joints;
        int bodies, groups; ///< groups, or 0 where they are not known beforehand
        bool immovable, rest;
    };
    const Case cases[] = {
        {"none", {}, 3, 0, false, false},
        {"chain", RandomPartition::chain(40, 2), 40, 2, false, false},
        {"graph", RandomPartition::anyGraph(random, 30, 90), 30, 0, false, false},
        {"hypergraph", RandomPartition::anyHypergraph(random, 60, 50), 60, 0, false, false},
        {"hub", RandomPartition::hub(63, 3), 64, 63, false, false},
        {"greater hub", RandomPartition::hub(100, 3), 101, 65, false, true},
        {"hub that stands still", RandomPartition::hub(100, 3), 101, 1, true, false},
    };
    for (const Case& item : cases) {
        SCOPED_TRACE(item.name);
        RandomPartition p(random, item.bodies, item.joints);
        if (item.immovable)
            makeImmovable(*p.rows, 0);
        const DynsColours colours = DynsColourConstraints(*p.rows, item.bodies, pool());
        const std::vector<int> expected = coloursByComparison(*p.rows);
        std::vector<int> order(expected.size());
        for (std::size_t k = 0; k < order.size(); ++k)
            order[k] = static_cast<int>(k);
        std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
            return expected[static_cast<std::size_t>(a)] < expected[static_cast<std::size_t>(b)];
        });
        EXPECT_EQ(std::vector<int>(colours.order, colours.order + order.size()), order);
        EXPECT_EQ(colours.groups, std::set<int>(expected.begin(), expected.end()).size());
        EXPECT_EQ(colours.hasRest, item.rest);
        if (item.groups > 0) {
            EXPECT_EQ(colours.groups, item.groups);
        }
        for (int g = 0; g < colours.groups; ++g)
            for (int i = colours.starts[g]; i < colours.starts[g + 1]; ++i)
                EXPECT_EQ(expected[static_cast<std::size_t>(colours.order[i])],
                          expected[static_cast<std::size_t>(colours.order[colours.starts[g]])]);
    }
}

// On problems of any shape, with bounds of all kinds, many sweeps come to the direct solution; few
// stay inside the bounds.
TEST_F(BlockSweepsTest, ConvergesToTheDirectSolution) {
    constexpr unsigned kSeed = 81;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    parameters().tolerance = 1e-10;
    parameters().max_iterations = 200;
    for (int trial = 0; trial < 24; ++trial) {
        SCOPED_TRACE(trial);
        const std::vector<Joint> shapes[] = {
            RandomPartition::chain(12, 1 + trial % 7), RandomPartition::hub(8, 3),
            RandomPartition::binaryTree(15, 5), RandomPartition::anyHypergraph(random, 12, 8)};
        RandomPartition p(random, 15, shapes[trial % 4]);
        if (trial % 3 == 0)
            makeImmovable(*p.rows, 0);
        BoxedLcp lcp = p.lcp(random);
        if (trial % 3 == 0) {
            const MatrixX GM = denseJacobian(*p.rows, p.rows->GM, 15);
            lcp.A = GM * denseJacobian(*p.rows, p.rows->G, 15).transpose();
            lcp.A.diagonal().array() += 0.01;
        }
        load(*p.rows, lcp);
        for (const int sweeps : {1, 3}) {
            const Eigen::VectorXd few = sweep(p, sweeps);
            EXPECT_TRUE((few.array() >= lcp.lower.array()).all());
            EXPECT_TRUE((few.array() <= lcp.upper.array()).all());
        }
        const Eigen::VectorXd z = sweep(p, 20000);
        load(*p.rows, lcp);
        bvbCholRRT m;
        m.allocate(p.size());
        m.calcJinvMJT(p.rows);
        m.factorize();
        ASSERT_GT(solve_lcp_system(&m, p.rows, &frame.p, cycle_detect_lcp_solver), 0);
        const Eigen::VectorXd direct = Eigen::Map<Eigen::VectorXd>(p.rows->lambda, p.size());
        EXPECT_LT((z - direct).norm(), 1e-6 * (1 + direct.norm()));
    }
}

// A pile and a hub of many chunks: each number of threads, and a pool that is not free, give the bits
// of one thread, where friction follows its normals too.
TEST_F(BlockSweepsTest, SameBitsForEveryNumberOfThreads) {
    constexpr unsigned kSeed = 82;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    SpherePile pile(random, 6, 6, 0.7);
    DynsConstraints& c = pile.record.c;
    const int bodies = static_cast<int>(pile.bodies.size());
    const Bits lower = bitsOf(c.lower, c.n_constraint_rows);
    const auto run = [&](KitThreadPool* threads) {
        for (int i = 0; i < c.n_constraint_rows; ++i) {
            c.lambda[i] = 0;
            c.lower[i] = 0;
            c.upper[i] = i % 3 == 0 ? kKitInfinity : 0;
        }
        parameters().it_ct_solver_tol = 1e-5;
        (void)sweep(c, bodies, 30, threads);
        Bits bits = bitsOf(c.lambda, c.n_constraint_rows);
        for (const KitReal* bounds : {c.lower, c.upper}) {
            const Bits more = bitsOf(bounds, c.n_constraint_rows);
            bits.insert(bits.end(), more.begin(), more.end());
        }
        return bits;
    };
    const Bits alone = run(nullptr);
    EXPECT_EQ(bitsOf(c.lower, c.n_constraint_rows) == lower, false) << "friction acts";
    for (const unsigned threads : {1U, 2U, 4U}) {
        KitThreadPool workers(threads);
        for (int repeat = 0; repeat < 5; ++repeat)
            ASSERT_EQ(run(&workers), alone) << threads;
    }
    struct Nested final : KitThreadPool::WorkUnit {
        void process() override { bits = work(); }
        std::function<Bits()> work;
        Bits bits;
    };
    KitThreadPool workers(3);
    Nested unit;
    unit.work = [&] { return run(&workers); };
    workers.add(&unit);
    unit.wait();
    EXPECT_EQ(unit.bits, alone);
}

// Numbers that are not finite in one island leave the other one as it is to the bit, and what they
// touch finite and inside its bounds.
TEST_F(BlockSweepsTest, BadNumbersStayInTheirIsland) {
    constexpr unsigned kSeed = 83;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    std::vector<Joint> joints = RandomPartition::chain(10, 3);
    for (const Joint& joint : RandomPartition::anyGraph(random, 10, 12))
        joints.push_back({joint.body0 + 10, joint.body1 + 10, joint.rows});
    RandomPartition p(random, 20, joints);
    const BoxedLcp lcp = p.lcp(random);
    const int rows = 30; // of the chain
    load(*p.rows, lcp);
    const Eigen::VectorXd good = sweep(p, 10);
    const Bits expected = bitsOf(good.data() + rows, p.size() - rows);
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double bad : {nan, kInf, -kInf, 1e300})
        for (const char* where : {"rhs", "GM", "G", "lambda", "lower", "upper"}) {
            SCOPED_TRACE(where);
            SCOPED_TRACE(bad);
            DynsConstraints& c = *p.rows;
            const std::string name = where;
            const std::vector<double> G(&c.G[4][0][0], &c.G[4][0][0] + 6),
                GM(&c.GM[4][0][0], &c.GM[4][0][0] + 6);
            load(c, lcp);
            (name == "rhs"      ? c.rhs[7]
             : name == "GM"     ? c.GM[4][0][2]
             : name == "G"      ? c.G[4][0][2]
             : name == "lambda" ? c.lambda[7]
             : name == "lower"  ? c.lower[7]
                                : c.upper[7]) = bad;
            const Eigen::VectorXd z = sweep(p, 10);
            EXPECT_EQ(bitsOf(z.data() + rows, p.size() - rows), expected);
            for (int i = 0; i < rows; ++i) {
                ASSERT_TRUE(std::isfinite(z[i])) << i;
                if (i != 7) {
                    ASSERT_LE(lcp.lower[i], z[i]) << i;
                    ASSERT_LE(z[i], lcp.upper[i]) << i;
                }
            }
            std::copy(G.begin(), G.end(), &c.G[4][0][0]);
            std::copy(GM.begin(), GM.end(), &c.GM[4][0][0]);
        }
}

// Sweeps that begin with the forces of earlier ones go on as if they had not stopped; from the solution
// of a like problem fewer are needed; a guess beyond all bounds does no harm.
TEST_F(BlockSweepsTest, WarmStartGoesOnFromTheGivenForces) {
    constexpr unsigned kSeed = 84;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    SpherePile pile(random, 4, 4, 0.7);
    DynsConstraints& c = pile.record.c;
    const int bodies = static_cast<int>(pile.bodies.size());
    const auto reset = [&c] {
        for (int i = 0; i < c.n_constraint_rows; ++i)
            c.lower[i] = 0, c.upper[i] = i % 3 == 0 ? kKitInfinity : 0; // as builders leave them
    };
    const auto run = [&](const Eigen::VectorXd& guess, int sweeps) {
        reset();
        std::copy(guess.begin(), guess.end(), c.lambda);
        return sweep(c, bodies, sweeps);
    };
    const Eigen::VectorXd none = Eigen::VectorXd::Zero(c.n_constraint_rows);
    const Eigen::VectorXd solution = run(none, 3000), five = run(none, 5), seven = run(none, 7);
    frame.p.iterative_warm_start = 1;
    EXPECT_LT((run(five, 2) - seven).norm(), 1e-9 * seven.norm());
    EXPECT_LT((run(0.9 * solution, 10) - solution).norm(), 0.5 * (run(none, 10) - solution).norm());
    const Eigen::VectorXd whole = run(five, 2);
    std::fill_n(c.xgamma, c.n_constraint_rows, 0.25);
    EXPECT_LT((run(1.25 * five, 2) - whole).norm(), 1e-12 * whole.norm());
    std::fill_n(c.xgamma, c.n_constraint_rows, 0.0);
    Eigen::VectorXd wild = Eigen::VectorXd::Constant(c.n_constraint_rows, -1e12);
    wild[4] = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(run(wild, 1), run(none, 1));
    frame.p.iterative_warm_start = 0;
}

// Further solves take the changed right-hand side and go on from the last forces, as coupling passes
// need it.
TEST_F(BlockSweepsTest, FurtherSolvesGoOn) {
    constexpr unsigned kSeed = 85;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    RandomPartition p(random, 20, RandomPartition::chain(20, 2));
    const BoxedLcp lcp = p.lcp(random);
    load(*p.rows, lcp);
    const Eigen::VectorXd once = sweep(p, 12);
    load(*p.rows, lcp);
    parameters().it_ct_solver_max_it = 3;
    itr_constraint_solver solver;
    solver.setup(p.size(), nullptr, p.rows, &frame.p, nullptr, nullptr, 20, nullptr);
    for (int k = 0; k < 3; ++k)
        (void)solver.solve();
    const Eigen::VectorXd thrice = Eigen::Map<Eigen::VectorXd>(p.rows->lambda, p.size());
    EXPECT_LT((thrice - once).norm(), 1e-9 * once.norm());
    for (int i = 0; i < p.size(); ++i)
        p.rows->rhs[i] = 0;
    parameters().it_ct_solver_max_it = 5000;
    (void)solver.solve();
    BoxedLcp still = lcp;
    still.b.setZero();
    EXPECT_LT(still.residual(Eigen::Map<Eigen::VectorXd>(p.rows->lambda, p.size())), 1e-8);
    solver.cleanup();
}

// Every chunk of every stage runs once, between the begin of its stage and the next.
TEST(StageTeamTest, StagesFollowOneAnother) {
    struct Counting final : DynsStagedWork {
        int beginStage() override {
            for (std::size_t k = 0; k < runs.size(); ++k)
                wrong += runs[k].load(std::memory_order_relaxed) != (k < chunks ? 1 : 0);
            for (auto& run : runs)
                run.store(0, std::memory_order_relaxed);
            if (stage == 3000)
                return -1;
            chunks = static_cast<std::size_t>(++stage * 7 % 40);
            expected += static_cast<long>(chunks) * stage;
            return static_cast<int>(chunks);
        }
        void runChunk(int chunk) override {
            runs[static_cast<std::size_t>(chunk)].fetch_add(1, std::memory_order_relaxed);
            sums[static_cast<std::size_t>(chunk)] += stage; // not atomic: of one thread at a time
        }
        std::vector<std::atomic<int>> runs = std::vector<std::atomic<int>>(40);
        long sums[40] = {};
        std::size_t chunks = 0;
        int stage = 0, wrong = 0;
        long expected = 0;
    };
    DynsStageTeam team;
    for (const unsigned threads : {0U, 1U, 2U, 4U, 3U}) {
        Counting work;
        KitThreadPool pool(std::max(threads, 1U));
        team.run(work, threads > 0 ? &pool : nullptr);
        EXPECT_EQ(work.stage, 3000);
        EXPECT_EQ(work.wrong, 0) << threads;
        EXPECT_EQ(std::accumulate(work.sums, work.sums + 40, 0L), work.expected);
    }
}

} // namespace
