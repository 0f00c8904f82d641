#include "../../DynKiro/src/index_set_hash.h"
#include "PivotReference.h"

#include <Dyns/DynsParameters.h>
#include <Dyns/lcp.h>
#include <Dyns/smv_matrix.h>
#include <Kit/KitMemoryPool.h>

#include <gtest/gtest.h>

namespace {

constexpr double kInf = std::numeric_limits<double>::max();

class CycleDetectLcpTest : public testing::Test {
protected:
    CycleDetectLcpTest() : memory(1 << 20) { pool.init(memory.data(), memory.size()); }

    int solve(const BoxedLcp& p) {
        matrix.allocate(p.size());
        for (int i = 0; i < p.size(); ++i)
            for (int j = 0; j <= i; ++j)
                matrix.setElement(i, j, p.A(i, j));
        matrix.factorize();
        BoxedLcp data = p;
        z = Eigen::VectorXd::Zero(p.size());
        if (parameters.warm_start == 0)
            index.assign(static_cast<std::size_t>(p.size()), 0);
        return cycle_detect_lcp_solver(&matrix, z.data(), data.b.data(), data.lower.data(),
                                       data.upper.data(), index.data(), &parameters, &pool,
                                       &status);
    }

    std::vector<char> memory;
    KitMemoryPool pool;
    smv_matrix matrix;
    DynsLCPSolverParameters parameters;
    DynsLCPStatus status;
    Eigen::VectorXd z;
    std::vector<int> index;
};

TEST_F(CycleDetectLcpTest, MatchesTheConditionsOnRandomProblems) {
    constexpr unsigned kSeed = 4711;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    parameters.tolerance = 1e-9; // the answer is exact to it
    parameters.max_iterations = 200;
    int converged = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const BoxedLcp p = randomLcp(random, 1 + trial % 7, 9, 1e-2);
        solve(p);
        if (!status.converged)
            continue;
        ++converged;
        EXPECT_LT(p.residual(z), 1e-7) << trial;
    }
    EXPECT_GT(converged, 390);
}

TEST(IndexSetHashTest, IsThePublishedOneOfTheBytes) {
    std::mt19937 random(8);
    for (std::size_t n = 0; n < 40; ++n) {
        std::vector<int> set(n);
        for (int& entry : set)
            entry = n % 2 == 0 ? 2 * static_cast<int>(random() % 3) : static_cast<int>(random());
        const auto* bytes = reinterpret_cast<const unsigned char*>(set.data());
        EXPECT_EQ(DynsIndexSetHash(set), lookup2(bytes, static_cast<std::uint32_t>(4 * n), 0)) << n;
    }
}

// Index sets, counts of passes and points against the method step by step, on problems that go
// through all of its turns: cycles, single mode by cycle and by count, the way back, giving up.
TEST_F(CycleDetectLcpTest, TakesTheStepsOfTheMethod) {
    constexpr unsigned kSeed = 12;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    struct Settings {
        int iterations, blockIterations, detection;
    };
    int cycles = 0, giveUps = 0, returns = 0, unconverged = 0;
    for (const Settings& s : {Settings{35, 20, 1}, Settings{60, 1000, 1}, Settings{40, 0, 1},
                              Settings{8, 3, 1}, Settings{50, 4, 0}, Settings{30, -5, 1}})
        for (int trial = 0; trial < 500; ++trial) {
            BoxedLcp p = randomLcp(random, 3 + trial % 12, 5, 1e-3);
            if (trial % 2 == 0) {
                p.lower.setZero();
                p.upper.setConstant(kInf);
            }
            if (trial % 3 == 0)
                p.lower[1] = p.upper[1] = 0;
            parameters.tolerance = 1e-8;
            parameters.max_iterations = s.iterations;
            parameters.max_block_iterations = s.blockIterations;
            parameters.cycle_detection = s.detection;
            PivotReference reference(p, parameters);
            const int passes = reference.solve();
            ASSERT_EQ(solve(p), passes) << trial;
            ASSERT_EQ(index, reference.index) << trial;
            ASSERT_EQ(status.converged, reference.converged) << trial;
            ASSERT_LT((z - reference.z).norm(), 1e-6 * (1 + reference.z.norm())) << trial;
            cycles += reference.cycles;
            giveUps += reference.giveUps;
            returns += reference.returns;
            unconverged += !reference.converged;
            parameters.warm_start = 1; // from a set of another right-hand side
            p.b *= 0.9;
            PivotReference again(p, parameters);
            again.index = reference.index;
            const int morePasses = again.solve();
            ASSERT_EQ(solve(p), morePasses) << trial;
            ASSERT_EQ(index, again.index) << trial;
            parameters.warm_start = 0;
        }
    for (const int turn : {cycles, giveUps, returns, unconverged})
        EXPECT_GT(turn, 10) << "a turn that the test does not see";
}

TEST_F(CycleDetectLcpTest, CountsPasses) {
    std::mt19937_64 random(5);
    BoxedLcp p = randomLcp(random, 6, 9, 1e-2);
    p.lower.setConstant(-kInf);
    p.upper.setConstant(kInf);
    EXPECT_EQ(solve(p), 1);
    EXPECT_TRUE(status.converged);
    EXPECT_LT((p.A * z - p.b).norm(), 1e-10);

    parameters.max_iterations = 1; // converges on the very last pass, and is reported as negative
    EXPECT_EQ(solve(p), -1);
    EXPECT_TRUE(status.converged);

    parameters.max_iterations = 0; // the free solution
    EXPECT_EQ(solve(p), 0);
    EXPECT_TRUE(status.converged) << "it lies within the bounds";
    p.b[0] = -1;
    p.A.row(0).tail(5).setZero();
    p.A.col(0).tail(5).setZero();
    p.lower.setConstant(0);
    EXPECT_EQ(solve(p), 0);
    EXPECT_FALSE(status.converged);
    EXPECT_LT((p.A * z - p.b).norm(), 1e-10);
}

TEST_F(CycleDetectLcpTest, RowsOfZeroWidthStayAtZero) {
    std::mt19937_64 random(6);
    BoxedLcp p = randomLcp(random, 4, 9, 1e-2);
    p.lower.setConstant(-kInf);
    p.upper.setConstant(kInf);
    p.lower[2] = p.upper[2] = 0;
    solve(p);
    EXPECT_EQ(z[2], 0.0);
    EXPECT_EQ(index[2], 48);
    const Eigen::VectorXd w = p.A * z - p.b;
    for (int i : {0, 1, 3})
        EXPECT_NEAR(w[i], 0, 1e-10);
}

// The tests of the pivoting are strict: within the tolerance nothing changes.
TEST_F(CycleDetectLcpTest, ToleranceIsStrict) {
    parameters.tolerance = 0.125;
    const auto oneRow = [](double b, double lower, double upper) {
        return BoxedLcp{Eigen::MatrixXd::Identity(1, 1), Eigen::VectorXd::Constant(1, b),
                        Eigen::VectorXd::Constant(1, lower), Eigen::VectorXd::Constant(1, upper)};
    };
    solve(oneRow(2.125, -1, 2)); // above the bound by exactly the tolerance
    EXPECT_EQ(index[0], 0);
    EXPECT_EQ(z[0], 2.125);

    parameters.warm_start = 1;
    index = {4};
    solve(oneRow(1.875, -1, 2)); // at the upper bound w is +tolerance: the row leaves it
    EXPECT_EQ(index[0], 0);
    index = {4};
    solve(oneRow(1.9375, -1, 2)); // half of it: the row stays
    EXPECT_EQ(index[0], 4);
    EXPECT_EQ(z[0], 2.0);
}

// Without detection block pivoting returns to sets that it has seen for ever; single pivots end that.
TEST_F(CycleDetectLcpTest, SinglePivotsEndACycle) {
    constexpr unsigned kSeed = 99;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    int cyclesWithoutDetection = 0, ended = 0;
    for (int trial = 0; trial < 3000; ++trial) {
        BoxedLcp p = randomLcp(random, 12, 5, 1e-3);
        p.lower.setZero();
        p.upper.setConstant(kInf);
        parameters.tolerance = 1e-10;
        parameters.max_iterations = 200;
        parameters.max_block_iterations = 1000;
        parameters.cycle_detection = 0;
        solve(p);
        if (status.converged)
            continue;
        ++cyclesWithoutDetection;
        parameters.cycle_detection = 1;
        solve(p);
        if (status.converged) {
            ++ended;
            EXPECT_LT(p.residual(z), 1e-6) << trial;
        }
    }
    EXPECT_GT(cyclesWithoutDetection, 0) << "no problem cycles: the test tests nothing";
    EXPECT_GT(ended, cyclesWithoutDetection * 9 / 10);
}

TEST(ScaleBoxTest, BoundsFollowTheNormalForce) {
    struct Case {
        const char* name;
        double normal, friction, cohesion, upper;
    };
    const double inf = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {"pressing", 10, 0.5, 1, 6},  {"pulling", -10, 0.5, 1, 6},  {"no normal", 0, 0.5, 1, 1},
        {"no friction", 10, 0, 2, 2}, {"infinite", inf, 0.5, 3, 3},
    };
    for (const Case& c : cases) {
        const double lambda[2] = {c.normal, 0};
        double lower[2] = {0, 0}, upper[2] = {0, 0};
        const unsigned reference[2] = {~0U, 1};
        const double friction[2] = {0, c.friction}, cohesion[2] = {0, c.cohesion};
        int index[2] = {2, 48};
        EXPECT_EQ(scale_box_lcp_data(2, lambda, lower, upper, reference, friction, cohesion, index),
                  1);
        EXPECT_DOUBLE_EQ(upper[1], c.upper) << c.name;
        EXPECT_DOUBLE_EQ(lower[1], -c.upper) << c.name;
        EXPECT_EQ(index[0], 2);
        EXPECT_EQ(index[1], 0);
    }
}

} // namespace
