#pragma once
#include <Dyns/Dyns.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMemoryPool.h>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

using Matrix3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using MatrixX = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

inline void setBodyInertia(DynsBody& body, double mass, const Eigen::Vector3d& principal) {
    body.invmass = 1 / mass;
    for (int i = 0; i < 3; ++i) {
        body._i0[i][i] = principal[i];
        body._i0[3 + i][i] = 1 / principal[i];
    }
    body._i0[0][3] = 1 / mass;
    body._i0[3][3] = mass;
}

/// A body of 1 kg and unit inertia at rest at the origin.
inline DynsBody makeBody() {
    DynsBody body{};
    body.tag = kDynsBodyTag;
    body.localIndex = body.localPartition = -1;
    body.qrot[0] = 1;
    for (int i = 0; i < 4; ++i)
        body.tm[i][i] = 1;
    setBodyInertia(body, 1, {1, 1, 1});
    return body;
}

inline DynsBody makeRandomBody(std::mt19937_64& random) {
    std::normal_distribution<double> gauss;
    std::uniform_real_distribution<double> positive(0.5, 2);
    DynsBody body = makeBody();
    // Principal moments within a third of each other, as a body's are.
    setBodyInertia(body, positive(random),
                   Eigen::Vector3d::NullaryExpr([&] { return 1 + positive(random) / 3; }));
    const Eigen::Quaterniond q(
        Eigen::Vector4d::NullaryExpr([&] { return gauss(random); }).normalized());
    const Matrix3 R = q.toRotationMatrix().transpose(); // rows: body axes in world axes
    const double quaternion[4] = {q.w(), q.x(), q.y(), q.z()};
    for (int i = 0; i < 4; ++i)
        body.qrot[i] = quaternion[i];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            body.tm[i][j] = R(i, j);
        body.tm[3][i] = gauss(random);
        body.vel[i] = gauss(random);
        body.velrot[i] = gauss(random);
        body.force[i] = gauss(random);
        body.torque[i] = gauss(random);
    }
    return body;
}

inline Matrix3 tensorOf(const KitReal rows[3][4]) {
    Matrix3 m;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            m(i, j) = rows[i][j];
    return m;
}

/// Two KitVector4 side by side as one vector of 6.
inline Eigen::VectorXd bodyVectorOf(const KitReal* linear, const KitReal* angular) {
    return Eigen::VectorXd{{linear[0], linear[1], linear[2], angular[0], angular[1], angular[2]}};
}

/// Bounds, targets and softness of the rows of one constraint; the default is a hard, unbounded row.
struct RowValues {
    double phi = 0, v0 = 0, lower = -kKitInfinity, upper = kKitInfinity, epsilon = 0, gamma = 0;
};

/// Pushes rows as a builder does: the values beside the rows into the record, J slot by slot.
/// @param J one row a constraint row, six columns a slot
inline void pushRows(DynsConstraints& c, const std::vector<DynsBody*>& bodies, const MatrixX& J,
                     const std::vector<RowValues>& values, int tag = 0) {
    DynsGRow rows[kDynsMaxConstraintBodies][kDynsMaxConstraintRows] = {};
    DynsInputRowFactors factors{};
    const int n = static_cast<int>(J.rows());
    for (std::size_t slot = 0; slot < bodies.size(); ++slot) {
        factors.G[slot] = rows[slot];
        for (int r = 0; r < n && r < kDynsMaxConstraintRows; ++r)
            for (int k = 0; k < 6; ++k)
                rows[slot][r][k] = J(r, static_cast<int>(6 * slot) + k);
    }
    for (int r = 0; r < n && c.n_constraint_rows + r < c.max_constraint_rows; ++r) {
        const RowValues& value = values[static_cast<std::size_t>(r)];
        const int row = c.n_constraint_rows + r;
        c.phi[row] = value.phi;
        c.v0[row] = value.v0;
        c.lower[row] = value.lower;
        c.upper[row] = value.upper;
        c.xepsilon[row] = value.epsilon;
        c.xgamma[row] = value.gamma;
    }
    DynsConstraintsPushConstraint(&c, &factors, bodies.data(), static_cast<int>(bodies.size()), n,
                                  tag, nullptr);
}

inline MatrixX randomJacobian(std::mt19937_64& random, int rows, int slots) {
    std::normal_distribution<double> gauss;
    return MatrixX::NullaryExpr(rows, 6 * slots, [&] { return gauss(random); });
}

/// G or GM of a record as a dense matrix of its rows against six columns a body.
inline MatrixX denseJacobian(const DynsConstraints& c, const DynsGBlock* G, int nBodies) {
    MatrixX J = MatrixX::Zero(c.n_constraint_rows, 6 * nBodies);
    for (int block = 0; block < c.n_g_blocks; ++block)
        for (int r = 0; r < c.g_block_size[block]; ++r)
            for (int k = 0; k < 6; ++k)
                J(c.g_block_first_row[block] + r, 6 * c.g_bodies_idx[block] + k) += G[block][r][k];
    return J;
}

/// Solves rows without regard to their bounds, by a dense factor: an oracle for equations.
class DenseEquationSolver : public constraint_solver {
public:
    void setup(int N, LCPMatrix* M, DynsConstraints* C, DynsParameters* P,
               lcp_solver_function_ptr solver, DynsBody* const* B, int NB, void*) override {
        n = N, m = M, c = C, p = P, lcp_solver = solver, b = B, nb = NB;
        const MatrixX A = denseJacobian(*c, c->GM, nb) * denseJacobian(*c, c->G, nb).transpose();
        const Eigen::VectorXd epsilon = Eigen::Map<Eigen::VectorXd>(c->xepsilon, n);
        factor.compute(MatrixX(A + MatrixX(epsilon.asDiagonal())));
    }
    int solve() override {
        Eigen::Map<Eigen::VectorXd>(c->lambda, n) =
            factor.solve(Eigen::Map<Eigen::VectorXd>(c->rhs, n));
        return 1;
    }
    void cleanup() override {}

private:
    Eigen::LDLT<MatrixX> factor;
};

/// Parameters with a memory pool and the objects of a frame.
class FrameParameters {
public:
    explicit FrameParameters(double stepsize, std::size_t bytes = 1 << 20) : mBuffer(bytes) {
        DynsFrameCreate(&p);
        p.memory_pool_handler->init(mBuffer.data(), bytes);
        p.stepsize = stepsize;
    }
    ~FrameParameters() { DynsFrameDestroy(&p); }
    FrameParameters(const FrameParameters&) = delete;
    FrameParameters& operator=(const FrameParameters&) = delete;

    DynsParameters p;

private:
    std::vector<std::byte> mBuffer;
};

/// A record of rows with the given room and the bodies of partition 0.
class RowRecord {
public:
    RowRecord(std::vector<DynsBody>& bodies, int constraints, int rows)
        : c(*DynsConstraintsCreate()) {
        const int n = static_cast<int>(bodies.size());
        DynsConstraintsResize(&c, constraints, n, rows, &KitMemoryAPI);
        DynsConstraintsReset(&c, rows, constraints, n);
        for (int i = 0; i < n; ++i) {
            DynsBody& body = bodies[static_cast<std::size_t>(i)];
            body.localIndex = i;
            body.localPartition = 0;
            pointers.push_back(&body);
        }
    }
    ~RowRecord() { DynsConstraintsDestroy(&c, &KitMemoryAPI); }
    RowRecord(const RowRecord&) = delete;
    RowRecord& operator=(const RowRecord&) = delete;

    DynsConstraints& c;
    std::vector<DynsBody*> pointers;
};
