#include "LcpOracle.h"

#include <Dyns/smv_boxed_keller.h>

#include <gtest/gtest.h>

namespace {

constexpr double kInf = std::numeric_limits<double>::max();

Eigen::VectorXd solveByKeller(const BoxedLcp& p, std::vector<int>* index = nullptr) {
    const int n = p.size();
    Eigen::VectorXd z = Eigen::VectorXd::Constant(n, 77);
    std::vector<int> set(16, 0);
    const Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> M = p.A;
    smv_solve_boxed(M.data(), n, z.data(), p.b.data(), p.lower.data(), p.upper.data(), set.data());
    if (index != nullptr)
        *index = set;
    return z;
}

TEST(BoxedKellerTest, MatchesEnumerationOnRandomProblems) {
    constexpr unsigned kSeed = 20261;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    for (int trial = 0; trial < 400; ++trial) {
        const int n = 1 + trial % 7;
        const BoxedLcp p = randomLcp(random, n, n + 2, 1e-3);
        const auto expected = p.solveByEnumeration();
        ASSERT_TRUE(expected) << trial;
        EXPECT_LT((solveByKeller(p) - *expected).norm(), 1e-8 * (1 + expected->norm())) << trial;
    }
}

// Blocks of twelve rows in six directions: half the rows depend on the others but for the softness.
TEST(BoxedKellerTest, SolvesLargeRedundantBlocks) {
    constexpr unsigned kSeed = 733;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    for (int trial = 0; trial < 2000; ++trial) {
        const BoxedLcp p = randomLcp(random, 12, 6, 1e-6);
        const Eigen::VectorXd z = solveByKeller(p);
        const Eigen::VectorXd w = p.A * z - p.b;
        const double rounding = 1e-8 * (1 + p.b.norm()); // condition 1e7
        for (int i = 0; i < p.size(); ++i) {
            ASSERT_GE(z[i], p.lower[i]) << trial;
            ASSERT_LE(z[i], p.upper[i]) << trial;
            if (z[i] > p.lower[i]) {
                EXPECT_LT(w[i], rounding) << trial << " row " << i;
            }
            if (z[i] < p.upper[i]) {
                EXPECT_GT(w[i], -rounding) << trial << " row " << i;
            }
        }
    }
}

TEST(BoxedKellerTest, SingleRows) {
    struct Case {
        const char* name;
        double M, b, lower, upper, z;
        int index;
    };
    const Case cases[] = {
        {"free from the start", 2, 6, -kInf, kInf, 3, 0},
        {"stays at its lower bound", 2, -6, 0, kInf, 0, 2},
        {"leaves its lower bound", 2, 6, 0, kInf, 3, 0},
        {"meets its other bound first", 1, 2, 0, 1, 1, 4},
        {"starts at its only bound and is driven down", 2, -6, -kInf, 0, -3, 0},
        {"of zero width", 2, 6, 0.5, 0.5, 0.5, 2},
        {"of zero width at zero", 2, 6, 0, 0, 0, 2},
    };
    for (const Case& c : cases) {
        const BoxedLcp p{Eigen::MatrixXd::Constant(1, 1, c.M), Eigen::VectorXd::Constant(1, c.b),
                         Eigen::VectorXd::Constant(1, c.lower),
                         Eigen::VectorXd::Constant(1, c.upper)};
        std::vector<int> index;
        EXPECT_DOUBLE_EQ(solveByKeller(p, &index)[0], c.z) << c.name;
        EXPECT_EQ(index[0], c.index) << c.name;
    }
}

// A contact row whose friction row has collapsed bounds, and a third, open row beside them.
TEST(BoxedKellerTest, FixesRowsOfZeroWidthAndSolvesTheRest) {
    BoxedLcp p;
    p.A.resize(3, 3);
    p.A << 2, 1, 0.5, 1, 3, 0.25, 0.5, 0.25, 1;
    p.b = Eigen::Vector3d(4, 1, 2);
    p.lower = Eigen::Vector3d(0, 0.5, -kInf);
    p.upper = Eigen::Vector3d(kInf, 0.5, kInf);
    const Eigen::VectorXd z = solveByKeller(p);
    Eigen::Matrix2d open;
    open << 2, 0.5, 0.5, 1;
    const Eigen::Vector2d expected = open.inverse() * Eigen::Vector2d(4 - 0.5, 2 - 0.125);
    EXPECT_EQ(z[1], 0.5);
    EXPECT_NEAR(z[0], expected[0], 1e-14);
    EXPECT_NEAR(z[2], expected[1], 1e-14);
}

TEST(BoxedKellerTest, BadDataLeavesFiniteForcesInsideTheBounds) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    BoxedLcp p{Eigen::Matrix2d::Zero(), Eigen::Vector2d(1, -1), Eigen::Vector2d(0, -kInf),
               Eigen::Vector2d(kInf, kInf)};
    const Eigen::VectorXd zero = Eigen::Vector2d(0, 0);
    EXPECT_EQ(solveByKeller(p), zero); // no mass: nothing stops the first row
    p.A = Eigen::Matrix2d::Identity();
    p.b[0] = nan;
    EXPECT_EQ(solveByKeller(p), zero);
    EXPECT_EQ(smv_solve_boxed(nullptr, 0, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
}

} // namespace
