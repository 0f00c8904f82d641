#include "RandomPartition.h"
#include "SpherePile.h"

#include <Dyns/bvbCholRRT.h>
#include <Dyns/itr_constraint_solver.h>
#include <Dyns/lcp.h>

namespace {

class IterativeSolverTest : public testing::Test {
protected:
    IterativeSolverTest() : frame(0.01, 1 << 23) {}

    DynsLCPSolverParameters& parameters() { return frame.p.lcp_parameters; }

    /// Gives the rows the bounds and right-hand side of a problem, and no forces.
    static void load(DynsConstraints& c, const BoxedLcp& lcp) {
        for (int i = 0; i < lcp.size(); ++i) {
            c.rhs[i] = lcp.b[i];
            c.lower[i] = lcp.lower[i];
            c.upper[i] = lcp.upper[i];
            c.lambda[i] = 0;
        }
        std::fill(&c.g_forces[0][0], &c.g_forces[c.n_g_blocks][0], 0.0);
    }

    Eigen::VectorXd sweep(DynsConstraints& c, const std::vector<DynsBody>& bodies, int times = 1) {
        itr_constraint_solver solver;
        solver.setup(c.n_constraint_rows, nullptr, &c, &frame.p, nullptr, nullptr,
                     static_cast<int>(bodies.size()), nullptr);
        for (int k = 0; k < times; ++k)
            EXPECT_EQ(solver.solve(), 0);
        solver.cleanup();
        return Eigen::Map<Eigen::VectorXd>(c.lambda, c.n_constraint_rows);
    }

    FrameParameters frame;
};

/// Block Gauss-Seidel on the dense matrix, each block by trying all index sets.
Eigen::VectorXd denseSweeps(const DynsConstraints& c, const BoxedLcp& p, int sweeps) {
    Eigen::VectorXd z = Eigen::VectorXd::Zero(p.size());
    for (int s = 0; s < sweeps; ++s)
        for (int k = 0; k < c.n_constraints; ++k) {
            const int block = c.constraint_first_block[k];
            const int f = c.g_block_first_row[block], n = c.g_block_size[block];
            const Eigen::VectorXd own = z.segment(f, n);
            const Eigen::MatrixXd A = p.A.block(f, f, n, n);
            const Eigen::VectorXd load = p.A.middleRows(f, n) * z - A * own;
            const BoxedLcp part{A, p.b.segment(f, n) - load, p.lower.segment(f, n),
                                p.upper.segment(f, n)};
            z.segment(f, n) = *part.solveByEnumeration(1e-7);
        }
    return z;
}

// One constraint alone is solved by the first sweep, and a further solve does not move it.
TEST_F(IterativeSolverTest, OneConstraintAlone) {
    std::mt19937_64 random(50);
    for (int trial = 0; trial < 50; ++trial) {
        RandomPartition p(random, 3, {{0, 1, 1 + trial % 6, {2, 0}}});
        const BoxedLcp lcp = p.lcp(random);
        const Eigen::VectorXd expected = *lcp.solveByEnumeration();
        load(*p.rows, lcp);
        parameters().it_ct_solver_max_it = 0;
        for (const int times : {1, 3}) {
            const Eigen::VectorXd z = sweep(*p.rows, p.bodies, times);
            EXPECT_LT((z - expected).norm(), 1e-9 * (1 + expected.norm()));
        }
    }
}

// Without a tolerance all sweeps run, one more than the limit says, and one at least.
TEST_F(IterativeSolverTest, CountsItsSweeps) {
    std::mt19937_64 random(51);
    parameters().it_ct_solver_tol = 0;
    for (const int limit : {-3, 0, 1, 4}) {
        RandomPartition p(random, 6, RandomPartition::anyHypergraph(random, 6, 9));
        const BoxedLcp lcp = p.lcp(random);
        load(*p.rows, lcp);
        parameters().it_ct_solver_max_it = limit;
        const Eigen::VectorXd expected = denseSweeps(*p.rows, lcp, std::max(limit, 0) + 1);
        const Eigen::VectorXd z = sweep(*p.rows, p.bodies);
        EXPECT_LT((z - expected).norm(), 1e-8 * (1 + expected.norm())) << limit;
    }
}

// The first residual is measured against 1, also where it is below it.
TEST_F(IterativeSolverTest, FirstSweepIsMeasuredAgainstOne) {
    std::mt19937_64 random(52);
    for (const double size : {0.3, 30.0}) {
        RandomPartition p(random, 6, RandomPartition::chain(6, 4));
        BoxedLcp lcp = p.lcp(random);
        lcp.b *= size;
        const Eigen::VectorXd once = denseSweeps(*p.rows, lcp, 1);
        double square = 0;
        const Eigen::VectorXd w = lcp.A * once - 0.01 * once - lcp.b; // without the softness
        for (int i = 0; i < lcp.size(); ++i) {
            double e = w[i];
            if (lcp.lower[i] > -kKitInfinity)
                e = std::min(e, once[i] - lcp.lower[i]);
            if (lcp.upper[i] < kKitInfinity)
                e = std::max(e, once[i] - lcp.upper[i]);
            square += e * e;
        }
        const double change = std::abs(std::sqrt(square) - 1), nearness = 1e-6;
        ASSERT_LT(change * (1 + nearness), std::max(std::sqrt(square), change * 2));
        for (const double side : {-1.0, 1.0}) {
            if (change * (1 + side * nearness) > std::sqrt(square))
                continue; // small enough by itself
            load(*p.rows, lcp);
            parameters().it_ct_solver_tol = change * (1 + side * nearness);
            const bool moved = (sweep(*p.rows, p.bodies) - once).norm() > 1e-6 * once.norm();
            EXPECT_EQ(moved, side < 0) << size;
        }
    }
}

TEST_F(IterativeSolverTest, ConvergesToTheDirectSolution) {
    std::mt19937_64 random(53);
    parameters().it_ct_solver_tol = 0;
    parameters().it_ct_solver_max_it = 4000;
    parameters().tolerance = 1e-9;
    parameters().max_iterations = 200;
    for (const auto& joints :
         {RandomPartition::chain(12, 3), RandomPartition::anyHypergraph(random, 12, 8)}) {
        RandomPartition p(random, 12, joints);
        const BoxedLcp lcp = p.lcp(random);
        load(*p.rows, lcp);
        const Eigen::VectorXd z = sweep(*p.rows, p.bodies);
        EXPECT_LT(lcp.residual(z), 1e-6);
        load(*p.rows, lcp);
        bvbCholRRT m;
        m.allocate(p.size());
        m.calcJinvMJT(p.rows);
        m.factorize();
        EXPECT_GT(solve_lcp_system(&m, p.rows, &frame.p, cycle_detect_lcp_solver), 0);
        const Eigen::VectorXd direct = Eigen::Map<Eigen::VectorXd>(p.rows->lambda, p.size());
        EXPECT_LT((z - direct).norm(), 1e-5 * (1 + direct.norm()));
    }
}

// Where the pivoting does not end, sweeps do: the forces stay inside their bounds, friction follows
// its normal, the count is negative, and the point is better than none.
TEST_F(IterativeSolverTest, SweepsReplaceASolveThatFails) {
    constexpr unsigned kSeed = 54;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    int fallbacks = 0;
    for (int trial = 0; trial < 80; ++trial) {
        SpherePile pile(random, 2 + trial % 2, 5, trial % 4 == 0 ? 0 : 0.9);
        DynsConstraints& c = pile.record.c;
        bvbCholRRT m;
        m.allocate(c.n_constraint_rows);
        m.calcJinvMJT(&c);
        m.factorize();
        parameters() = {};
        const bool tooFew = trial % 5 == 0;
        parameters().max_iterations = tooFew ? 2 : 35;
        const int count = solve_lcp_system(&m, &c, &frame.p, cycle_detect_lcp_solver);
        const BoxedLcp lcp = pile.lcp();
        const Eigen::VectorXd z = pile.lambda();
        EXPECT_TRUE(count < 0 || c.unconverged_solves == 0);
        EXPECT_EQ(c.fallback_solves, c.unconverged_solves);
        EXPECT_EQ(c.lcp_iteration_count, count);
        fallbacks += !tooFew && c.fallback_solves > 0;
        EXPECT_LT(lcp.residual(z), lcp.residual(Eigen::VectorXd::Zero(lcp.size()))) << trial;
        for (int i = 0; i < lcp.size(); ++i) {
            ASSERT_LE(lcp.lower[i], z[i]) << trial;
            ASSERT_LE(z[i], lcp.upper[i]) << trial;
        }
    }
    EXPECT_GT(fallbacks, 10) << "too few solves fail: the test tests nothing";
    EXPECT_LT(fallbacks, 54);
}

} // namespace
