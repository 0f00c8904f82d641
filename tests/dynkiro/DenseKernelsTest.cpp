#include "../../DynKiro/src/dense_kernels.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace {

Eigen::MatrixXd randomMatrix(std::mt19937_64& random, int rows, int columns) {
    std::normal_distribution<double> gauss;
    return Eigen::MatrixXd::NullaryExpr(rows, columns, [&] { return gauss(random); });
}

TEST(DenseKernelsTest, VariantsOfATileAgree) {
    constexpr unsigned kSeed = 40;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    for (const DynsKernelVariant& variant : DynsKernelVariants())
        for (int trial = 0; trial < 300; ++trial) {
            SCOPED_TRACE(testing::Message() << variant.name << ", trial " << trial);
            const int k = static_cast<int>(random() % 40), columns = 1 + trial % kDynsTileColumns;
            const int ldb = columns + static_cast<int>(random() % 5);
            const Eigen::MatrixXd A = randomMatrix(random, 16, k), B = randomMatrix(random, ldb, k);
            const Eigen::MatrixXd C = randomMatrix(random, 24, kDynsTileColumns);
            Eigen::MatrixXd result = C, expected = C;
            expected.topLeftCorner(kDynsPanelRows, columns) -=
                A.topRows(kDynsPanelRows) * B.topRows(columns).transpose();
            variant.tile(result.data(), 24, A.data(), 16, B.data(), static_cast<std::size_t>(ldb),
                         k, columns);
            EXPECT_LT((result - expected).cwiseAbs().maxCoeff(), 1e-13 * (1 + k));
            result.topLeftCorner(kDynsPanelRows, columns) =
                C.topLeftCorner(kDynsPanelRows, columns);
            EXPECT_EQ(result, C); // nothing else changes
        }
    EXPECT_STREQ(DynsKernelVariants().back().name, "portable");
}

// The partial factor of a front and the update that it leaves, against the dense factor and its
// Schur complement.
TEST(DenseKernelsTest, FrontsFactorLikeDenseMatrices) {
    constexpr unsigned kSeed = 41;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    for (int trial = 0; trial < 100; ++trial) {
        const int n = 1 + static_cast<int>(random() % 50);
        const int pivots = 1 + static_cast<int>(random() % static_cast<unsigned>(n));
        SCOPED_TRACE(testing::Message() << n << " rows, " << pivots << " pivots");
        const Eigen::MatrixXd B = randomMatrix(random, n, n + 3);
        const Eigen::MatrixXd A = B * B.transpose();
        const int ld = DynsPaddedRows(n), rest = n - pivots, ldu = DynsPaddedRows(rest);
        Eigen::MatrixXd panel = Eigen::MatrixXd::Zero(ld, pivots + 1);
        panel.topLeftCorner(n, pivots) = A.leftCols(pivots);
        std::vector<double> inverse(static_cast<std::size_t>(pivots));
        DynsFactorColumns(panel.data(), ld, n, 0, pivots, inverse.data());
        Eigen::MatrixXd update = Eigen::MatrixXd::Zero(ldu, rest + 1);
        update.topLeftCorner(rest, rest) = A.bottomRightCorner(rest, rest);
        const double* L21 = panel.data() + pivots;
        DynsSubtractLower(update.data(), ldu, rest, L21, L21, ld, pivots);

        const Eigen::MatrixXd L = A.llt().matrixL();
        const double rounding = 1e-10 * A.norm();
        for (int j = 0; j < pivots; ++j) {
            EXPECT_NEAR(inverse[static_cast<std::size_t>(j)] * L(j, j), 1, 1e-8);
            for (int i = j; i < n; ++i)
                EXPECT_NEAR(panel(i, j), L(i, j), rounding);
        }
        const Eigen::MatrixXd L22 = L.bottomRightCorner(rest, rest);
        const Eigen::MatrixXd schur = L22 * L22.transpose();
        for (int j = 0; j < rest; ++j)
            for (int i = j; i < rest; ++i)
                EXPECT_NEAR(update(i, j), schur(i, j), rounding);
    }
}

} // namespace
