#include "../../DynKiro/src/small_box.h"

#include "LcpOracle.h"

#include <gtest/gtest.h>

namespace {

using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

struct Solution {
    Eigen::VectorXd z;
    bool isDefinite;
};

/// With the rows as a constant and without, from the given index set.
Solution solve(const BoxedLcp& p, std::uint32_t start, bool constant) {
    const int n = p.size();
    const RowMajor M = p.A;
    RowMajor inverse(n, n);
    Solution s{Eigen::VectorXd::Constant(n, 77), false};
    s.isDefinite = DynsSmallBoxInvert(M.data(), n, inverse.data());
    DynsSmallBox box{.M = M.data(),
                     .inverse = inverse.data(),
                     .b = p.b.data(),
                     .lower = p.lower.data(),
                     .upper = p.upper.data(),
                     .z = s.z.data(),
                     .indexSet = start,
                     .isDefinite = s.isDefinite};
    if (constant && n == 3)
        DynsSolveSmallBox(box, DynsRowsFixed<3>{});
    else if (constant && n == 5)
        DynsSolveSmallBox(box, DynsRowsFixed<5>{});
    else
        DynsSolveSmallBox(box, DynsRowsAny{n});
    return s;
}

// Whatever the index set it begins from, the box has its one solution. Some rows have no width.
TEST(SmallBoxTest, MatchesEnumerationFromAnyIndexSet) {
    constexpr unsigned kSeed = 90;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    std::uniform_int_distribution<std::uint32_t> index(0, 2);
    int definite = 0;
    for (int trial = 0; trial < 600; ++trial) {
        const int n = 1 + trial % 6;
        BoxedLcp p = randomLcp(random, n, n + 2, trial % 5 == 0 ? 1e-8 : 1e-2);
        if (trial % 4 == 0)
            p.lower[n / 2] = p.upper[n / 2] = 0.25;
        const auto expected = p.solveByEnumeration(1e-8);
        ASSERT_TRUE(expected) << trial;
        for (const bool constant : {false, true}) {
            std::uint32_t start = 0;
            for (int i = 0; i < n; ++i)
                start = DynsWithSmallIndex(start, i, index(random));
            const Solution s = solve(p, start, constant);
            definite += s.isDefinite;
            EXPECT_LT((s.z - *expected).norm(), 1e-7 * (1 + expected->norm())) << trial;
        }
    }
    EXPECT_GT(definite, 1000);
}

// Blocks of up to 16 rows of which some depend on others are left to pivoting; the residual tells.
TEST(SmallBoxTest, SolvesLargeAndDependentBlocks) {
    constexpr unsigned kSeed = 91;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    int definite = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const int n = 7 + trial % 10;
        const BoxedLcp p = randomLcp(random, n, trial % 2 == 0 ? n + 3 : 6, 1e-7);
        const Solution s = solve(p, 0, false);
        definite += s.isDefinite;
        EXPECT_LT(p.residual(s.z), 1e-6 * (1 + p.b.norm())) << trial;
        EXPECT_TRUE((s.z.array() >= p.lower.array()).all());
        EXPECT_TRUE((s.z.array() <= p.upper.array()).all());
    }
    EXPECT_GT(definite, 100);
    EXPECT_LT(definite, 300);
}

// Bounds that cross hold the row at the lesser one; a right-hand side that is no number gives zero.
TEST(SmallBoxTest, BadBoundsAndNumbers) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInf = std::numeric_limits<double>::max();
    BoxedLcp p;
    p.A = 2 * Eigen::Matrix3d::Identity();
    p.b = Eigen::Vector3d(2, 4, 6);
    p.lower = Eigen::Vector3d(-kInf, 5, 0);
    p.upper = Eigen::Vector3d(kInf, -5, kInf);
    EXPECT_EQ(solve(p, 0, true).z, Eigen::VectorXd(Eigen::Vector3d(1, -5, 3)));
    for (const double bad : {nan, std::numeric_limits<double>::infinity()}) {
        p.b[0] = bad;
        EXPECT_EQ(solve(p, 0, true).z, Eigen::VectorXd(Eigen::Vector3d(0, -5, 0)));
    }
}

} // namespace
