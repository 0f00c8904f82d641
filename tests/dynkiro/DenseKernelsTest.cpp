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
    for (const DynsKernelVariant* variant : DynsKernelVariants())
        for (int trial = 0; trial < 300; ++trial) {
            SCOPED_TRACE(testing::Message() << variant->name << ", trial " << trial);
            const int k = static_cast<int>(random() % 40), columns = 1 + trial % kDynsTileColumns;
            const int ldb = columns + static_cast<int>(random() % 5);
            const Eigen::MatrixXd A = randomMatrix(random, 16, k), B = randomMatrix(random, ldb, k);
            const Eigen::MatrixXd C = randomMatrix(random, 24, kDynsTileColumns);
            Eigen::MatrixXd result = C, expected = C;
            expected.topLeftCorner(kDynsPanelRows, columns) -=
                A.topRows(kDynsPanelRows) * B.topRows(columns).transpose();
            variant->tile(result.data(), 24, A.data(), 16, B.data(), static_cast<std::size_t>(ldb),
                          k, columns);
            EXPECT_LT((result - expected).cwiseAbs().maxCoeff(), 1e-13 * (1 + k));
            result.topLeftCorner(kDynsPanelRows, columns) =
                C.topLeftCorner(kDynsPanelRows, columns);
            EXPECT_EQ(result, C); // nothing else changes

            const Eigen::MatrixXd T = B.transpose();
            variant->tileTransposed(result.data(), 24, A.data(), 16, T.data(),
                                    static_cast<std::size_t>(k), k, columns);
            EXPECT_LT((result - expected).cwiseAbs().maxCoeff(), 1e-13 * (1 + k));
        }
    EXPECT_STREQ(DynsKernelVariants().back()->name, "portable");
}

// A panel of L in a solve, one right-hand side by each variant and several side by side.
TEST(DenseKernelsTest, PanelsSolveLikeTriangles) {
    constexpr unsigned kSeed = 42;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    for (int trial = 0; trial < 100; ++trial) {
        const int rows = 1 + static_cast<int>(random() % 50), ld = DynsPaddedRows(rows);
        const int pivots = 1 + static_cast<int>(random() % static_cast<unsigned>(rows));
        const int rest = rows - pivots;
        SCOPED_TRACE(testing::Message() << rows << " rows, " << pivots << " pivots");
        const auto wide = static_cast<std::size_t>(ld);
        Eigen::MatrixXd L = Eigen::MatrixXd::Zero(ld, pivots + 1);
        L.topLeftCorner(rows, pivots) = randomMatrix(random, rows, pivots) / rows;
        L.diagonal().head(pivots).array() += 2;
        const Eigen::VectorXd inverse = L.diagonal().head(pivots).cwiseInverse();
        const auto triangle = L.topLeftCorner(pivots, pivots).triangularView<Eigen::Lower>();
        const Eigen::MatrixXd Y = randomMatrix(random, kDynsManySides, rows);
        Eigen::MatrixXd down = Y, up = Y; // a right-hand side a row
        down.leftCols(pivots) = triangle.solve(Y.leftCols(pivots).transpose()).transpose();
        down.rightCols(rest) -=
            down.leftCols(pivots) * L.block(pivots, 0, rest, pivots).transpose();
        const Eigen::MatrixXd known =
            Y.leftCols(pivots) - Y.rightCols(rest) * L.block(pivots, 0, rest, pivots);
        up.leftCols(pivots) = triangle.transpose().solve(known.transpose()).transpose();

        for (const DynsKernelVariant* variant : DynsKernelVariants()) {
            Eigen::VectorXd y = Eigen::VectorXd::Zero(ld);
            y.head(rows) = Y.row(0);
            variant->forward(L.data(), wide, rows, pivots, inverse.data(), y.data());
            EXPECT_LT((y.head(rows) - down.row(0).transpose()).norm(), 1e-12) << variant->name;
            y.head(rows) = Y.row(0);
            variant->backward(L.data(), wide, rows, pivots, inverse.data(), y.data());
            EXPECT_LT((y.head(rows) - up.row(0).transpose()).norm(), 1e-12) << variant->name;

            Eigen::MatrixXd C = randomMatrix(random, 24, 8);
            const Eigen::MatrixXd before = C;
            const int columns = std::min(pivots, 8);
            variant->solveRows(C.data(), 24, 16, L.data(), wide, inverse.data(), columns);
            const auto corner = L.topLeftCorner(columns, columns).triangularView<Eigen::Lower>();
            const Eigen::MatrixXd product =
                C.topLeftCorner(16, columns) * corner.toDenseMatrix().transpose();
            EXPECT_LT((product - before.topLeftCorner(16, columns)).norm(), 1e-11);
            EXPECT_EQ(C.bottomRows(8), before.bottomRows(8));
        }
        Eigen::MatrixXd many = Y;
        DynsForwardMany(L.data(), ld, rows, pivots, inverse.data(), many.data());
        EXPECT_LT((many - down).norm(), 1e-12);
        many = Y;
        DynsBackwardMany(L.data(), ld, rows, pivots, inverse.data(), many.data());
        EXPECT_LT((many - up).norm(), 1e-12);
    }
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
        DynsSubtractLower(update.data(), ldu, rest, 0, rest, L21, L21, ld, pivots);

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
