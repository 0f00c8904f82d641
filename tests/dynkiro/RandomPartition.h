#pragma once
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
/// and the world), with GM and softness filled in, and the dense A that they make.
class RandomPartition {
public:
    struct Joint {
        int body0, body1, rows;
    };

    RandomPartition(std::mt19937_64& random, int bodyCount, const std::vector<Joint>& joints)
        : bodies(static_cast<std::size_t>(bodyCount)), rows(DynsConstraintsCreate()) {
        int count = 0;
        for (const Joint& joint : joints)
            count += joint.rows;
        for (int i = 0; i < bodyCount; ++i) {
            bodies[static_cast<std::size_t>(i)].localIndex = i;
            bodies[static_cast<std::size_t>(i)].localPartition = 0;
        }
        DynsConstraintsResize(rows, static_cast<int>(joints.size()), bodyCount, count,
                              &KitMemoryAPI);
        DynsConstraintsReset(rows, count, static_cast<int>(joints.size()), bodyCount);
        rows->partition = 0;
        for (const Joint& joint : joints)
            push(random, joint);
        for (int i = 0; i < rows->n_g_rows; ++i)
            for (int k = 0; k < 6; ++k) // unit masses: M^-1 is the identity
                rows->gm_rows[i][k] = rows->g_rows[i][k];
    }
    ~RandomPartition() { DynsConstraintsDestroy(rows, &KitMemoryAPI); }
    RandomPartition(const RandomPartition&) = delete;
    RandomPartition& operator=(const RandomPartition&) = delete;

    [[nodiscard]] int size() const { return rows->n_constraint_rows; }

    /// J M^-1 J^T and the softness.
    [[nodiscard]] Eigen::MatrixXd dense() const {
        Eigen::MatrixXd J = Eigen::MatrixXd::Zero(size(), 6 * static_cast<int>(bodies.size()));
        for (int b = 0; b < rows->n_g_blocks; ++b)
            for (int r = 0; r < rows->g_block_size[b]; ++r)
                for (int k = 0; k < 6; ++k)
                    J(rows->g_block_first_row[b] + r, 6 * rows->g_bodies_idx[b] + k) +=
                        rows->G[b][r][k];
        return J * J.transpose() + 0.01 * Eigen::MatrixXd::Identity(size(), size());
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
    void push(std::mt19937_64& random, const Joint& joint) {
        std::normal_distribution<double> gauss;
        DynsGRow G[2][kDynsMaxConstraintRows];
        for (auto& block : G)
            for (auto& row : block)
                for (double& entry : row)
                    entry = gauss(random);
        DynsInputRowFactors factors{};
        factors.G[0] = G[0];
        factors.G[1] = G[1];
        DynsBody* at[2] = {
            &bodies[static_cast<std::size_t>(joint.body0)],
            joint.body1 == joint.body0 ? nullptr : &bodies[static_cast<std::size_t>(joint.body1)]};
        const int first = rows->n_constraint_rows;
        DynsConstraintsPushConstraint(rows, &factors, at, 2, joint.rows, 0, nullptr);
        for (int i = first; i < first + joint.rows; ++i) {
            rows->xepsilon[i] = 0.01;
            rows->lower[i] = -kKitInfinity;
            rows->upper[i] = kKitInfinity;
        }
    }
};
