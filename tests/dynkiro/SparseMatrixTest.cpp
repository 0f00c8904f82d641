#include "LcpOracle.h"
#include "RandomPartition.h"

#include <Dyns/DynsParameters.h>
#include <Dyns/bvbCholRRT.h>
#include <Dyns/lcp.h>
#include <Dyns/smv_matrix.h>
#include <Dyns/vbChol.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitThreadPool.h>

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct Graph {
    const char* name;
    int bodies;
    std::vector<RandomPartition::Joint> joints;
};

std::vector<Graph> graphs(std::mt19937_64& random) {
    std::vector<Graph> list;
    list.push_back({"one row", 1, {{0, 0, 1}}});
    list.push_back({"chain", 30, RandomPartition::chain(30, 5)});
    list.push_back({"tree", 31, RandomPartition::binaryTree(31, 3)});
    list.push_back({"hub", 25, RandomPartition::hub(24, 3)});
    list.push_back({"islands", 4, {{0, 1, 3}, {2, 3, 4}, {0, 0, 2}, {3, 3, 1}}});
    list.push_back({"loops", 12, RandomPartition::anyGraph(random, 12, 40)});
    list.push_back({"dense", 4, RandomPartition::anyGraph(random, 4, 25)});
    list.push_back({"sparse", 60, RandomPartition::anyGraph(random, 60, 70)});
    list.push_back({"hyperedges", 40, RandomPartition::anyHypergraph(random, 40, 25)});
    list.push_back({"dense hyperedges", 9, RandomPartition::anyHypergraph(random, 9, 30)});
    return list;
}

Eigen::VectorXd randomVector(std::mt19937_64& random, int n) {
    std::normal_distribution<double> gauss;
    return Eigen::VectorXd::NullaryExpr(n, [&] { return gauss(random); });
}

void expectElements(LCPMatrix& m, RandomPartition& p) {
    const Eigen::MatrixXd A = p.dense();
    m.allocate(p.size());
    m.calcJinvMJT(p.rows);
    const double tolerance = 1e-12 * A.norm();
    for (int i = 0; i < p.size(); ++i)
        for (int j = 0; j < p.size(); ++j)
            ASSERT_NEAR(m.getElement(i, j), A(i, j), tolerance);
}

void expectSolvesLikeDense(LCPMatrix& m, RandomPartition& p) {
    const int n = p.size();
    const Eigen::MatrixXd A = p.dense();
    expectElements(m, p);
    m.factorize();
    std::mt19937_64 random(1);
    const Eigen::VectorXd b = randomVector(random, n);
    std::vector<double> x(static_cast<std::size_t>(n + 16));
    std::copy(b.begin(), b.end(), x.begin());
    m.solve(x.data(), 1);
    const Eigen::VectorXd solved = Eigen::Map<Eigen::VectorXd>(x.data(), n);
    EXPECT_LT((A * solved - b).norm(), 1e-9 * (1 + b.norm()));

    std::vector<double> y(static_cast<std::size_t>(n + 16));
    m.multiply(x.data(), y.data());
    EXPECT_LT((Eigen::Map<Eigen::VectorXd>(y.data(), n) - b).norm(), 1e-8 * (1 + b.norm()));

    const Eigen::MatrixXd inverse = A.inverse();
    for (int j = 0; j < n; j += 1 + n / 7) {
        const Eigen::VectorXd column = Eigen::Map<const Eigen::VectorXd>(m.inverseColumn(j), n);
        EXPECT_LT((column - inverse.col(j)).norm(), 1e-9 * inverse.norm());
        EXPECT_EQ(m.inverseColumn(j), m.inverseColumn(j));
        EXPECT_EQ(m.column_solved[j], 3U);
    }
    const Eigen::MatrixXd L = A.llt().matrixL();
    const double tolerance = 1e-9 * L.norm();
    for (int i = 0; i < n; i += 1 + n / 9)
        for (int j = 0; j <= i; ++j)
            EXPECT_NEAR(m.getElementFactor(i, j), L(i, j), tolerance);
}

TEST(SparseMatrixTest, SolvesLikeTheDenseMatrix) {
    constexpr unsigned kSeed = 31;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    vbChol skyline;
    bvbCholRRT sparse; // one object through all graphs, as a frame keeps it
    for (const Graph& graph : graphs(random)) {
        SCOPED_TRACE(graph.name);
        RandomPartition p(random, graph.bodies, graph.joints);
        expectSolvesLikeDense(skyline, p);
        expectSolvesLikeDense(sparse, p);
        RandomPartition again(random, graph.bodies, graph.joints); // same graph, other rows
        expectSolvesLikeDense(sparse, again);
        if (p.size() <= smv_matrix::kMaxRows) {
            smv_matrix small;
            expectElements(small, p);
        }
    }
}

// One body in several slots of a constraint adds the products of its blocks with each other.
TEST(SparseMatrixTest, OneBodyInSeveralSlots) {
    std::mt19937_64 random(35);
    RandomPartition p(random, 3, {{0, 1, 4, {0, 1, 0}}, {1, 2, 2, {0, 2}}});
    smv_matrix small;
    expectElements(small, p);
    smv_matrix block;
    block.allocate(4);
    block.calcJinvMJT(p.rows, 0);
    const Eigen::MatrixXd A = p.dense();
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            EXPECT_NEAR(block.getElement(i, j), A(i, j), 1e-12 * A.norm());
}

TEST(SparseMatrixTest, FreeRowsMatchTheReducedSystem) {
    constexpr unsigned kSeed = 32;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    bvbCholRRT sparse;
    vbChol skyline;
    for (const Graph& graph : graphs(random)) {
        SCOPED_TRACE(graph.name);
        RandomPartition p(random, graph.bodies, graph.joints);
        const int n = p.size();
        LCPMatrix& m = random() % 3 == 0 ? static_cast<LCPMatrix&>(skyline) : sparse;
        m.allocate(n);
        m.calcJinvMJT(p.rows);
        m.factorize();
        const Eigen::MatrixXd A = p.dense();
        for (const unsigned share : {0U, 1U, 3U, 4U}) { // quarters of the rows that are tight
            std::vector<int> index(static_cast<std::size_t>(n), 0);
            std::vector<int> freeRows;
            Eigen::VectorXd z = randomVector(random, n), w(n);
            const Eigen::VectorXd b = randomVector(random, n);
            for (int i = 0; i < n; ++i) {
                const bool tight = random() % 4 < share;
                index[static_cast<std::size_t>(i)] = tight ? 2 + 2 * (i % 2) : 0;
                if (!tight) {
                    freeRows.push_back(i);
                    z[i] = 0;
                }
            }
            const Eigen::VectorXd rest = b - A * z;
            Eigen::VectorXd expected = z;
            if (!freeRows.empty()) {
                const Eigen::MatrixXd block = A(freeRows, freeRows);
                const Eigen::VectorXd right = rest(freeRows);
                const Eigen::VectorXd x = block.llt().solve(right);
                for (std::size_t k = 0; k < freeRows.size(); ++k)
                    expected[freeRows[k]] = x[static_cast<Eigen::Index>(k)];
            }
            ASSERT_TRUE(m.solveFreeRows(index.data(), b.data(), z.data(), w.data()));
            EXPECT_LT((z - expected).norm(), 1e-9 * (1 + expected.norm()));
            const Eigen::VectorXd residual = A * expected - b;
            for (int i = 0; i < n; ++i)
                EXPECT_NEAR(w[i], index[static_cast<std::size_t>(i)] != 0 ? residual[i] : 0,
                            1e-8 * (1 + residual.norm()));
        }
    }
}

// A forest of joints is eliminated from its leaves: no entry is filled, whatever the order in which
// the joints come.
TEST(SparseMatrixTest, JointForestsFillNothing) {
    constexpr unsigned kSeed = 33;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    auto joints = RandomPartition::binaryTree(511, 5);
    std::shuffle(joints.begin(), joints.end(), random);
    RandomPartition p(random, 511, joints);
    bvbCholRRT sparse;
    vbChol skyline;
    for (LCPMatrix* m : {static_cast<LCPMatrix*>(&sparse), static_cast<LCPMatrix*>(&skyline)}) {
        m->allocate(p.size());
        m->calcJinvMJT(p.rows);
    }
    double pairs = 0; // of joints that share a body, each with itself too
    for (const auto& a : joints)
        for (const auto& b : joints)
            pairs += a.body0 == b.body0 || a.body0 == b.body1 || a.body1 == b.body0 ||
                     a.body1 == b.body1;
    EXPECT_LE(sparse.solveFlops() / 4, 25 * (pairs + 511) / 2);
    EXPECT_LT(sparse.pendingFactorFlops(), 1e6);
    EXPECT_GT(skyline.solveFlops(), 10 * sparse.solveFlops());
}

// A body with hundreds of constraints costs no more than they do, also where some of them hold it to
// the world, where its partners have more rows than freedom, and where the rows are all but rigid.
TEST(SparseMatrixTest, HubsAreExactAndLinear) {
    constexpr unsigned kSeed = 36;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    bvbCholRRT m;
    double flops[2];
    for (const int k : {0, 1}) {
        RandomPartition star(random, 801, RandomPartition::hub(400 + 400 * k, 3));
        m.allocate(star.size());
        m.calcJinvMJT(star.rows);
        flops[k] = m.pendingFactorFlops();
    }
    EXPECT_LT(flops[0], 400 * 9 * 9 * 3.0);
    EXPECT_LT(flops[1], 2.1 * flops[0]);

    auto held = RandomPartition::hub(40, 4);
    held.push_back({0, 0, 3});
    held.insert(held.begin(), {0, 0, 2});
    auto pairs = RandomPartition::hub(40, 3);
    for (int i = 1; i < 40; i += 2)
        pairs.push_back({i, i + 1, 2});
    auto twoHubs = RandomPartition::hub(60, 3);
    for (int i = 31; i <= 60; ++i)
        twoHubs[static_cast<std::size_t>(i - 1)].body1 = 61;
    twoHubs.push_back({0, 61, 5});
    auto crowded = RandomPartition::hub(30, 6);
    for (int i = 1; i <= 30; ++i)
        crowded.push_back({i, 0, 4, {(i + 7) % 31}});
    for (const auto& joints : {held, pairs, twoHubs, crowded})
        for (const double epsilon : {1e-2, 1e-7, 1e-12}) {
            SCOPED_TRACE(testing::Message() << joints.size() << " joints, softness " << epsilon);
            RandomPartition p(random, 62, joints);
            const int n = p.size();
            std::fill(p.rows->xepsilon, p.rows->xepsilon + n, epsilon);
            m.allocate(n);
            m.calcJinvMJT(p.rows);
            EXPECT_LT(m.pendingFactorFlops(), std::pow(n, 3) / 6) << "no hub was found";
            const Eigen::MatrixXd A = p.dense();
            const Eigen::LLT<Eigen::MatrixXd> factor(A);
            const Eigen::VectorXd b = randomVector(random, n), expected = factor.solve(b);
            Eigen::VectorXd x = b;
            m.solve(x.data(), 1);
            m.calcJinvMJT(p.rows); // as the next step does: it knows nothing of this one
            Eigen::VectorXd again = b;
            m.solve(again.data(), 1);
            EXPECT_EQ(again, x);
            const double rounding = 1e-13 / factor.rcond();
            EXPECT_LT((A * x - b).norm(), 1e-12 * A.norm() * x.norm());
            EXPECT_LT((x - expected).norm(), rounding * expected.norm());
            const Eigen::VectorXd column = Eigen::Map<const Eigen::VectorXd>(m.inverseColumn(7), n);
            const Eigen::VectorXd unit = factor.solve(Eigen::VectorXd::Unit(n, 7));
            EXPECT_LT((column - unit).norm(), rounding * unit.norm());

            std::vector<int> index(static_cast<std::size_t>(n), 0), freeRows;
            Eigen::VectorXd z = randomVector(random, n), w(n);
            for (int i = 0; i < n; ++i)
                if (random() % 3 == 0)
                    index[static_cast<std::size_t>(i)] = 2;
                else
                    freeRows.push_back(i);
            ASSERT_TRUE(m.solveFreeRows(index.data(), b.data(), z.data(), w.data()));
            const Eigen::VectorXd residual = A * z - b;
            EXPECT_LT(residual(freeRows).norm(), 1e-12 * A.norm() * z.norm());
            EXPECT_LT((w - residual).norm(), 1e-11 * A.norm() * z.norm());
        }
}

// A hub that cannot be moved has no inverse mass; one that has left is a body as others are.
TEST(SparseMatrixTest, HubsThatCannotMoveOrLeave) {
    constexpr unsigned kSeed = 39;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    auto two = RandomPartition::hub(60, 3);
    for (int i = 31; i <= 60; ++i)
        two[static_cast<std::size_t>(i - 1)].body1 = 61;
    two.push_back({0, 61, 5});
    auto one = RandomPartition::hub(30, 3);
    one.push_back({0, 61, 5});
    const std::vector<RandomPartition::Joint> none = {{0, 61, 5}, {3, 61, 2}};
    bvbCholRRT m;
    for (const auto& joints : {two, one, none, two})
        for (const int fixed : {-1, 0, 61}) {
            SCOPED_TRACE(testing::Message() << joints.size() << " joints, fixed " << fixed);
            RandomPartition p(random, 62, joints);
            const int n = p.size();
            if (fixed >= 0) {
                DynsBody& body = p.bodies[static_cast<std::size_t>(fixed)];
                for (auto& row : body.inverse_massmatrix)
                    std::fill(std::begin(row), std::end(row), 0.0);
                for (int block = 0; block < p.rows->n_g_blocks; ++block)
                    if (p.rows->g_bodies[block] == &body)
                        std::fill_n(&p.rows->GM[block][0][0], 6 * p.rows->g_block_size[block], 0.0);
            }
            m.allocate(n);
            m.calcJinvMJT(p.rows);
            const Eigen::MatrixXd A = p.dense();
            const Eigen::VectorXd b = randomVector(random, n), expected = A.llt().solve(b);
            Eigen::VectorXd x = b;
            m.solve(x.data(), 1);
            EXPECT_LT((x - expected).norm(), 1e-9 * expected.norm());
        }
}

/// Ties each node of a square net to its neighbours.
std::vector<RandomPartition::Joint> net(int side, int rows) {
    std::vector<RandomPartition::Joint> joints = {{0, 0, rows}};
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const int i = x + side * y;
            if (x > 0)
                joints.push_back({i, i - 1, rows});
            if (y > 0)
                joints.push_back({i, i - side, rows});
        }
    return joints;
}

// Sets of free rows that follow each other by a few rows are solved by a border on the factor of an
// earlier one; whatever the order in which they come, as exactly as by a factor of their own.
TEST(SparseMatrixTest, BordersFollowTheFreeRows) {
    constexpr unsigned kSeed = 37;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    bvbCholRRT m;
    for (const auto& joints : {net(15, 3), RandomPartition::hub(80, 3), net(3, 4)})
        for (const double epsilon : {1e-2, 1e-9}) {
            SCOPED_TRACE(testing::Message() << joints.size() << " joints, softness " << epsilon);
            RandomPartition p(random, 225, joints);
            const int n = p.size();
            std::fill(p.rows->xepsilon, p.rows->xepsilon + n, epsilon);
            m.allocate(n);
            m.calcJinvMJT(p.rows);
            const Eigen::MatrixXd A = p.dense();
            std::vector<int> index(static_cast<std::size_t>(n), 0);
            for (int& i : index)
                i = random() % 2 == 0 ? 2 : 0;
            const std::vector<int> first = index;
            bvbCholRRT fresh; // which has no factor yet
            fresh.allocate(n);
            fresh.calcJinvMJT(p.rows);
            int borders = 0;
            for (int step = 0; step < 40; ++step) {
                if (step % 10 == 9)
                    index = first; // as a coupling pass does
                for (int flips = static_cast<int>(random() % 7); flips > 0; --flips) {
                    int& i = index[random() % index.size()];
                    i = i == 0 ? 4 : 0;
                }
                borders += m.freeRowsFlops(index.data()) < fresh.freeRowsFlops(index.data());
                Eigen::VectorXd z = randomVector(random, n), w(n), expected = z;
                const Eigen::VectorXd b = randomVector(random, n);
                std::vector<int> freeRows;
                for (int i = 0; i < n; ++i)
                    if (index[static_cast<std::size_t>(i)] == 0) {
                        freeRows.push_back(i);
                        expected[i] = 0;
                    }
                const Eigen::VectorXd right = (b - A * expected)(freeRows);
                const Eigen::LLT<Eigen::MatrixXd> factor(A(freeRows, freeRows));
                const Eigen::VectorXd x = factor.solve(right);
                expected(freeRows) = x;
                ASSERT_TRUE(m.solveFreeRows(index.data(), b.data(), z.data(), w.data()));
                const double rounding = 1e-13 / factor.rcond();
                EXPECT_LT((z - expected).norm(), rounding * expected.norm());
                const Eigen::VectorXd residual = A * z - b;
                EXPECT_LT(residual(freeRows).norm(), 1e-12 * A.norm() * z.norm());
                EXPECT_LT((w - residual).norm(), 1e-11 * A.norm() * z.norm());
            }
            if (joints.size() > 400) { // large enough to pay
                EXPECT_GT(borders, 20);
            }
        }
}

// Any number of threads gives the same bits, in the factor, in solutions and in columns.
TEST(SparseMatrixTest, ThreadsDoNotChangeBits) {
    constexpr unsigned kSeed = 38;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    auto hubs = net(18, 3);
    for (int i = 1; i < 60; ++i)
        hubs.push_back({5 * i, 0, 3});
    for (const auto& joints : {net(18, 3), hubs, RandomPartition::anyGraph(random, 120, 200)}) {
        RandomPartition p(random, 18 * 18, joints);
        const int n = p.size();
        const Eigen::VectorXd b = randomVector(random, n);
        std::vector<int> rows, index;
        for (int i = 0; i < n; ++i)
            index.push_back(i % 5 == 0 ? 2 : 0);
        for (int i = 0; i < n; i += 1 + n / 30)
            rows.push_back(i);
        const auto solve = [&](KitThreadPool* pool) {
            bvbCholRRT m;
            m.thread_pool = pool;
            m.allocate(n);
            m.calcJinvMJT(p.rows);
            EXPECT_GT(m.pendingFactorFlops(), 2e6) << "too little to be split";
            std::vector<double> results(b.begin(), b.end());
            m.solve(results.data(), 1);
            m.prepareColumns(rows);
            for (const int row : rows) {
                const double* column = m.inverseColumn(row);
                results.insert(results.end(), column, column + n);
            }
            std::vector<double> z(static_cast<std::size_t>(n), 1), w(z.size());
            for (const int flip : {0, 1, 7}) {
                index[static_cast<std::size_t>(flip)] = 2 - index[static_cast<std::size_t>(flip)];
                m.solveFreeRows(index.data(), b.data(), z.data(), w.data());
                results.insert(results.end(), z.begin(), z.end());
                index[static_cast<std::size_t>(flip)] = 2 - index[static_cast<std::size_t>(flip)];
            }
            return results;
        };
        const std::vector<double> alone = solve(nullptr);
        for (const unsigned threads : {1U, 2U, 5U}) {
            KitThreadPool pool(threads);
            EXPECT_EQ(solve(&pool), alone) << threads;
        }
    }
}

// Both roads of a pass, over the tight rows and over the free ones, end at the same point.
TEST(SparseMatrixTest, LcpOnBothMatricesIsTheSame) {
    constexpr unsigned kSeed = 34;
    SCOPED_TRACE(kSeed);
    std::mt19937_64 random(kSeed);
    std::vector<char> memory(1 << 24);
    KitMemoryPool pool;
    pool.init(memory.data(), memory.size());
    for (const Graph& graph : graphs(random)) {
        SCOPED_TRACE(graph.name);
        RandomPartition p(random, graph.bodies, graph.joints);
        const int n = p.size();
        const BoxedLcp lcp = p.lcp(random);
        Eigen::VectorXd result[2];
        int passes[2];
        vbChol skyline;
        bvbCholRRT sparse;
        LCPMatrix* matrices[2] = {&skyline, &sparse};
        for (int k = 0; k < 2; ++k) {
            matrices[k]->allocate(n);
            matrices[k]->calcJinvMJT(p.rows);
            matrices[k]->factorize();
            result[k] = Eigen::VectorXd::Zero(n);
            std::vector<int> index(static_cast<std::size_t>(n), 0);
            DynsLCPSolverParameters parameters;
            parameters.tolerance = 1e-7;
            parameters.max_iterations = 300;
            BoxedLcp data = lcp;
            DynsLCPStatus status;
            passes[k] = cycle_detect_lcp_solver(matrices[k], result[k].data(), data.b.data(),
                                                data.lower.data(), data.upper.data(), index.data(),
                                                &parameters, &pool, &status);
            ASSERT_TRUE(status.converged);
            EXPECT_LT(lcp.residual(result[k]), 1e-6);
        }
        EXPECT_EQ(passes[0], passes[1]);
        EXPECT_LT((result[0] - result[1]).norm(), 1e-7 * (1 + result[0].norm()));
    }
}

TEST(SparseMatrixTest, ElementsSetOneByOne) {
    for (const bool sparse : {false, true}) {
        vbChol a;
        bvbCholRRT b;
        LCPMatrix& m = sparse ? static_cast<LCPMatrix&>(b) : a;
        m.allocate(30);
        EXPECT_EQ(m.ild, 48);
        for (int i = 0; i < 30; ++i)
            m.setElement(i, i, 4);
        EXPECT_EQ(m.setElement(20, 3, 1), 1);
        EXPECT_EQ(m.getElement(3, 20), 1);
        EXPECT_EQ(m.getElement(20, 5), 0); // the gap reads as zero
        m.factorize();
        EXPECT_EQ(m.getElementFactor(20, 1), 0);
        EXPECT_NEAR(m.getElementFactor(20, 3), 0.5, 1e-13);
        EXPECT_NEAR(m.getDiagInv(20), 1 / std::sqrt(3.75), 1e-13);
        std::vector<double> x(64, 1);
        m.solve(x.data(), 1);
        EXPECT_NEAR(x[20], (1 - 0.25) / 3.75, 1e-13);
    }
}

// Neither matrix fails on a matrix without pivots; each has its own rule.
TEST(SparseMatrixTest, BadPivots) {
    vbChol replaced;
    replaced.allocate(2);
    replaced.setElement(0, 0, 0);
    replaced.factorize();
    EXPECT_DOUBLE_EQ(replaced.getElementFactor(0, 0), std::sqrt(static_cast<double>(1e-12F)));

    bvbCholRRT size;
    size.allocate(2);
    size.setElement(0, 0, -4);
    size.setElement(1, 1, 1);
    size.factorize();
    EXPECT_DOUBLE_EQ(size.getElementFactor(0, 0), 2);
}

} // namespace
