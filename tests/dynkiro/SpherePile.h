#pragma once
#include "LcpOracle.h"
#include "SolverFixture.h"

/// Spheres of 1 kg and a diameter of about 1 m, stacked on a jittered lattice in a walled box, as the
/// rows of their contacts: a normal each, and two friction rows that take their bounds from it.
struct SpherePile {
    static constexpr double kStep = 0.01, kRadius = 0.53, kPitch = 1, kWall = 0.5; // s, m

    SpherePile(std::mt19937_64& random, int across, int high, double friction)
        : bodies(static_cast<std::size_t>(across * across * high), makeBody()),
          record(bodies, 12 * static_cast<int>(bodies.size()),
                 36 * static_cast<int>(bodies.size())),
          coefficient(friction), side(across) {
        std::uniform_real_distribution<double> anywhere(-1, 1);
        for (int i = 0; i < static_cast<int>(bodies.size()); ++i) {
            const Eigen::Vector3d cell(i % across, i / across % across, i / (across * across));
            const auto jitter = [&] {
                return Eigen::Vector3d(
                    Eigen::Vector3d::NullaryExpr([&] { return anywhere(random); }));
            };
            x.emplace_back(kPitch * cell + 0.08 * jitter());
            v.emplace_back(0.3 * jitter());
            addContactsOf(i);
        }
        DynsConstraints& c = record.c;
        c.use_scaled_box_friction = 1;
        for (int i = 0; i < c.n_g_rows; ++i)
            for (int k = 0; k < 6; ++k) // masses and moments of inertia of 1
                c.gm_rows[i][k] = c.g_rows[i][k];
    }

    /// The problem that the rows stand for, with the bounds as they are now.
    [[nodiscard]] BoxedLcp lcp() const {
        const DynsConstraints& c = record.c;
        const int n = c.n_constraint_rows, count = static_cast<int>(bodies.size());
        BoxedLcp p;
        p.A = denseJacobian(c, c.GM, count) * denseJacobian(c, c.G, count).transpose();
        for (int i = 0; i < n; ++i)
            p.A(i, i) += c.xepsilon[i];
        p.b = Eigen::Map<const Eigen::VectorXd>(c.rhs, n);
        p.lower = Eigen::Map<const Eigen::VectorXd>(c.lower, n);
        p.upper = Eigen::Map<const Eigen::VectorXd>(c.upper, n);
        return p;
    }
    [[nodiscard]] Eigen::VectorXd lambda() const {
        return Eigen::Map<const Eigen::VectorXd>(record.c.lambda, record.c.n_constraint_rows);
    }

    std::vector<DynsBody> bodies;
    RowRecord record;

private:
    void addContactsOf(int i) {
        const Eigen::Vector3d& here = x[static_cast<std::size_t>(i)];
        for (int j = 0; j < i; ++j) {
            const Eigen::Vector3d apart = here - x[static_cast<std::size_t>(j)];
            if (apart.norm() < 2 * kRadius)
                addContact(i, j, apart.normalized(), 2 * kRadius - apart.norm());
        }
        for (int axis = 0; axis < 3; ++axis) {
            const double below = here[axis] + kWall - kRadius,
                         above = kPitch * (side - 1) + kWall - kRadius - here[axis];
            if (below < 0)
                addContact(i, -1, Eigen::Vector3d::Unit(axis), -below);
            if (axis < 2 && above < 0)
                addContact(i, -1, -Eigen::Vector3d::Unit(axis), -above);
        }
    }

    /// Pushes sphere i along n off sphere j, or off the world.
    void addContact(int i, int j, const Eigen::Vector3d& n, double depth) {
        DynsConstraints& c = record.c;
        const Eigen::Vector3d t = n.unitOrthogonal();
        const Eigen::Vector3d axes[3] = {n, t, n.cross(t)};
        MatrixX J(3, 12);
        for (int r = 0; r < 3; ++r) {
            const Eigen::RowVector3d turn = -kRadius * n.cross(axes[r]).transpose();
            J.row(r) << axes[r].transpose(), turn, -axes[r].transpose(), turn;
        }
        std::vector<RowValues> values(3, {.lower = 0, .upper = 0, .epsilon = 1e-7});
        values[0].upper = kKitInfinity;
        const int first = c.n_constraint_rows;
        pushRows(c,
                 {record.pointers[static_cast<std::size_t>(i)],
                  j < 0 ? nullptr : record.pointers[static_cast<std::size_t>(j)]},
                 J, values);
        Eigen::Vector3d closing = v[static_cast<std::size_t>(i)];
        Eigen::Vector3d gravity(0, 0, -9.81); // falls alike on both spheres
        if (j >= 0) {
            closing -= v[static_cast<std::size_t>(j)];
            gravity.setZero();
        }
        for (int r = 0; r < 3; ++r) {
            c.rhs[first + r] = -axes[r].dot(closing) / kStep - axes[r].dot(gravity);
            c.friction_coefficient[first + r] = coefficient;
            c.soil_cohesion_coefficient[first + r] = 0;
            if (r > 0)
                c.reference_normal[first + r] = static_cast<unsigned>(r);
        }
        c.rhs[first] += 0.17 * depth / (kStep * kStep);
    }

    double coefficient;
    int side;
    std::vector<Eigen::Vector3d> x, v;
};
