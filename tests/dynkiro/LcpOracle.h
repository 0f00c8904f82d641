#pragma once
#include <Eigen/Dense>

#include <algorithm>
#include <limits>
#include <optional>
#include <random>
#include <vector>

/// A boxed LCP A z - b = w, small enough that every index set can be tried.
struct BoxedLcp {
    Eigen::MatrixXd A;
    Eigen::VectorXd b, lower, upper;

    [[nodiscard]] int size() const { return static_cast<int>(b.size()); }

    /// Largest violation of the complementarity conditions at z.
    [[nodiscard]] double residual(const Eigen::VectorXd& z) const {
        const Eigen::VectorXd w = A * z - b;
        double worst = 0;
        for (int i = 0; i < size(); ++i) {
            const double inside = std::min(std::max(z[i] - w[i], lower[i]), upper[i]);
            worst = std::max(worst, std::abs(z[i] - inside));
        }
        return worst;
    }

    /// The solution by brute force over all 3^n index sets; A must be positive definite.
    [[nodiscard]] std::optional<Eigen::VectorXd> solveByEnumeration(double tolerance = 1e-9) const {
        std::vector<int> set(static_cast<std::size_t>(size()), 0);
        for (;;) {
            if (auto z = tryIndexSet(set); z && residual(*z) < tolerance)
                return z;
            std::size_t i = 0;
            while (i < set.size() && ++set[i] == 3)
                set[i++] = 0;
            if (i == set.size())
                return std::nullopt;
        }
    }

    /// 0 free, 1 at the lower bound, 2 at the upper one; nothing if a bound is infinite.
    [[nodiscard]] std::optional<Eigen::VectorXd> tryIndexSet(const std::vector<int>& set) const {
        Eigen::VectorXd z = Eigen::VectorXd::Zero(size());
        std::vector<int> freeRows;
        for (int i = 0; i < size(); ++i) {
            const int state = set[static_cast<std::size_t>(i)];
            if (state == 0)
                freeRows.push_back(i);
            else
                z[i] = state == 1 ? lower[i] : upper[i];
            if (std::abs(z[i]) >= std::numeric_limits<double>::max())
                return std::nullopt;
        }
        const Eigen::VectorXd rest = b - A * z;
        const Eigen::MatrixXd block = A(freeRows, freeRows);
        const Eigen::VectorXd right = rest(freeRows);
        const Eigen::VectorXd x = block.ldlt().solve(right);
        for (std::size_t k = 0; k < freeRows.size(); ++k)
            z[freeRows[k]] = x[static_cast<Eigen::Index>(k)];
        return z;
    }
};

/// A = J J^T of random rows, with rank deficit softened by eps on the diagonal; about a third of the
/// bounds each are absent, one-sided and two-sided.
inline BoxedLcp randomLcp(std::mt19937_64& random, int n, int columns, double eps) {
    std::normal_distribution<double> gauss;
    std::uniform_int_distribution<int> kind(0, 3);
    constexpr double kInf = std::numeric_limits<double>::max();
    BoxedLcp p;
    const Eigen::MatrixXd J =
        Eigen::MatrixXd::NullaryExpr(n, columns, [&] { return gauss(random); });
    p.A = J * J.transpose() + eps * Eigen::MatrixXd::Identity(n, n);
    p.b = Eigen::VectorXd::NullaryExpr(n, [&] { return 3 * gauss(random); });
    p.lower = Eigen::VectorXd::Constant(n, -kInf);
    p.upper = Eigen::VectorXd::Constant(n, kInf);
    for (int i = 0; i < n; ++i) {
        const int k = kind(random);
        if (k == 1)
            p.lower[i] = 0;
        if (k == 2 || k == 3) {
            const double half = std::abs(gauss(random));
            p.lower[i] = -half;
            p.upper[i] = k == 2 ? half : kInf;
        }
    }
    return p;
}
