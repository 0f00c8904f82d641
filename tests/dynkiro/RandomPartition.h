#pragma once
#include "LcpOracle.h"

#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitMemory.h>

#include <Eigen/Dense>

#include <algorithm>
#include <memory>
#include <random>
#include <utility>
#include <vector>

/// A partition of random rows: constraints between bodies (the same index twice stands for one body
/// and the world) of random masses, with GM and softness filled in, and the dense A that they make.
class RandomPartition {
public:
    struct Joint {
        int body0, body1, rows;
        std::vector<int> others = {}; ///< bodies of further slots, also such as are there already
    };

    RandomPartition(std::mt19937_64& random, int bodyCount, const std::vector<Joint>& joints)
        : bodies(static_cast<std::size_t>(bodyCount)), rows(DynsConstraintsCreate()) {
        int count = 0;
        for (const Joint& joint : joints)
            count += joint.rows;
        for (int i = 0; i < bodyCount; ++i) {
            bodies[static_cast<std::size_t>(i)].localIndex = i;
            bodies[static_cast<std::size_t>(i)].localPartition = 0;
            setMass(random, bodies[static_cast<std::size_t>(i)]);
        }
        DynsConstraintsResize(rows, static_cast<int>(joints.size()), bodyCount, count,
                              &KitMemoryAPI);
        DynsConstraintsReset(rows, count, static_cast<int>(joints.size()), bodyCount);
        rows->partition = 0;
        for (const Joint& joint : joints)
            push(random, joint);
        for (int b = 0; b < rows->n_g_blocks; ++b)
            for (int r = 0; r < rows->g_block_size[b]; ++r)
                Eigen::Map<Vector6>(rows->GM[b][r]) =
                    inverseMass(rows->g_bodies_idx[b]) * Eigen::Map<Vector6>(rows->G[b][r]);
    }
    ~RandomPartition() { DynsConstraintsDestroy(rows, &KitMemoryAPI); }
    RandomPartition(const RandomPartition&) = delete;
    RandomPartition& operator=(const RandomPartition&) = delete;

    [[nodiscard]] int size() const { return rows->n_constraint_rows; }

    /// J M^-1 J^T and the softness.
    [[nodiscard]] Eigen::MatrixXd dense() const {
        const int n = static_cast<int>(bodies.size());
        Eigen::MatrixXd J = Eigen::MatrixXd::Zero(size(), 6 * n), JM = J;
        for (int b = 0; b < rows->n_g_blocks; ++b)
            for (int r = 0; r < rows->g_block_size[b]; ++r)
                for (int k = 0; k < 6; ++k)
                    J(rows->g_block_first_row[b] + r, 6 * rows->g_bodies_idx[b] + k) +=
                        rows->G[b][r][k];
        for (int i = 0; i < n; ++i)
            JM.middleCols<6>(6 * i) = J.middleCols<6>(6 * i) * inverseMass(i);
        Eigen::MatrixXd A = JM * J.transpose();
        for (int i = 0; i < size(); ++i)
            A(i, i) += rows->xepsilon[i];
        return A;
    }

    /// Bounds on some rows and a right-hand side, as of an LCP with this A.
    [[nodiscard]] BoxedLcp lcp(std::mt19937_64& random) const {
        BoxedLcp p = randomLcp(random, size(), 1, 1);
        p.A = dense();
        return p;
    }

    static std::vector<Joint> chain(int links, int rowsEach) {
        std::vector<Joint> joints;
        for (int i = 0; i < links; ++i)
            joints.push_back({i, std::max(i - 1, 0), rowsEach});
        return joints;
    }
    static std::vector<Joint> binaryTree(int nodes, int rowsEach) {
        std::vector<Joint> joints;
        for (int i = 0; i < nodes; ++i)
            joints.push_back({i, i == 0 ? 0 : (i - 1) / 2, rowsEach});
        return joints;
    }
    static std::vector<Joint> hub(int count, int rowsEach) {
        std::vector<Joint> joints;
        for (int i = 1; i <= count; ++i)
            joints.push_back({i, 0, rowsEach});
        return joints;
    }
    /// Up to six slots, among them bodies that fill several.
    static std::vector<Joint> anyHypergraph(std::mt19937_64& random, int bodyCount, int count) {
        std::uniform_int_distribution<int> body(0, bodyCount - 1), slots(0, 4);
        std::vector<Joint> joints = anyGraph(random, bodyCount, count);
        for (Joint& joint : joints)
            for (int k = slots(random); k > 0; --k)
                joint.others.push_back(k == 4 ? joint.body0 : body(random));
        return joints;
    }
    static std::vector<Joint> anyGraph(std::mt19937_64& random, int bodyCount, int count) {
        std::uniform_int_distribution<int> body(0, bodyCount - 1), rowCount(1, 7);
        std::vector<Joint> joints;
        for (int i = 0; i < count; ++i)
            joints.push_back({body(random), body(random), rowCount(random)});
        return joints;
    }

    std::vector<DynsBody> bodies;
    DynsConstraints* rows;

private:
    using Vector6 = Eigen::Matrix<double, 6, 1>;

    static void setMass(std::mt19937_64& random, DynsBody& body) {
        std::uniform_real_distribution<double> anywhere(-1, 1);
        const Eigen::Matrix3d B = Eigen::Matrix3d::NullaryExpr([&] { return anywhere(random); });
        const Eigen::Matrix3d inverse = B * B.transpose() + 0.5 * Eigen::Matrix3d::Identity();
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j)
                body.inverse_massmatrix[i][j] = inverse(i, j);
        body.inverse_massmatrix[0][3] = 1.5 + anywhere(random);
    }
    [[nodiscard]] Eigen::Matrix<double, 6, 6> inverseMass(int body) const {
        const auto& m = bodies[static_cast<std::size_t>(body)].inverse_massmatrix;
        Eigen::Matrix<double, 6, 6> inverse = Eigen::Matrix<double, 6, 6>::Zero();
        for (int i = 0; i < 3; ++i) {
            inverse(i, i) = m[0][3];
            for (int j = 0; j < 3; ++j)
                inverse(3 + i, 3 + j) = m[i][j];
        }
        return inverse;
    }

    void push(std::mt19937_64& random, const Joint& joint) {
        std::normal_distribution<double> gauss;
        DynsGRow G[kDynsMaxConstraintBodies][kDynsMaxConstraintRows];
        for (auto& block : G)
            for (auto& row : block)
                for (double& entry : row)
                    entry = gauss(random);
        DynsInputRowFactors factors{};
        for (int slot = 0; slot < kDynsMaxConstraintBodies; ++slot)
            factors.G[slot] = G[slot];
        std::vector<DynsBody*> at = {&bodies[static_cast<std::size_t>(joint.body0)], nullptr};
        if (joint.body1 != joint.body0)
            at[1] = &bodies[static_cast<std::size_t>(joint.body1)];
        for (const int other : joint.others)
            at.push_back(&bodies[static_cast<std::size_t>(other)]);
        const int first = rows->n_constraint_rows;
        DynsConstraintsPushConstraint(rows, &factors, at.data(), static_cast<int>(at.size()),
                                      joint.rows, 0, nullptr);
        for (int i = first; i < first + joint.rows; ++i) {
            rows->xepsilon[i] = 0.01;
            rows->lower[i] = -kKitInfinity;
            rows->upper[i] = kKitInfinity;
        }
    }
};
