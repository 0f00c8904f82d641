#include "support/HeapCounter.h"
#include "RandomPartition.h"
#include "SpherePile.h"

#include <Dyns/bvbCholRRT.h>
#include <Dyns/itr_constraint_solver.h>
#include <Dyns/lcp.h>
#include <Dyns/std_constraint_solver.h>
#include <Dyns/vbChol.h>
#include <Kit/KitThreadPool.h>

namespace {

// Once it has seen the largest of its partitions a solve takes nothing from the heap, whether the
// graph of the constraints stands or changes from step to step.
TEST(SolverMemoryTest, SteadyStateAllocatesNothing) {
    std::mt19937_64 random(60);
    FrameParameters frame(0.01, 1 << 24);
    bvbCholRRT sparse;
    vbChol skyline;
    std_constraint_solver direct;
    itr_constraint_solver iterative;
    KitThreadPool threads(3);
    RandomPartition tree(random, 60, RandomPartition::binaryTree(60, 5));
    RandomPartition loops(random, 20, RandomPartition::anyHypergraph(random, 20, 30));
    SpherePile pile(random, 3, 3, 0.9); // falls back to sweeps
    std::vector<double> vectors(3 * 4096);
    std::vector<int> index(4096);
    const auto step = [&](DynsConstraints* c, int bodies) {
        for (LCPMatrix* m : {static_cast<LCPMatrix*>(&sparse), static_cast<LCPMatrix*>(&skyline)}) {
            frame.p.lcp_parameters.warm_start = 0;
            direct.setup(c->n_constraint_rows, m, c, &frame.p, cycle_detect_lcp_solver, nullptr,
                         bodies, nullptr);
            (void)direct.solve();
            (void)m->inverseColumn(0);
            for (int i = 0; i < m->n; ++i)
                index[static_cast<std::size_t>(i)] = i % 3 == 0 ? 2 : 0;
            m->solveFreeRows(index.data(), c->rhs, vectors.data(), vectors.data() + 4096);
            m->multiply(vectors.data(), vectors.data() + 2 * 4096);
        }
        for (const int threshold : {0, 1}) { // above 0: by colours, with threads
            frame.p.iterative_rows_threshold = threshold;
            frame.p.thread_pool = threshold > 0 ? &threads : nullptr;
            iterative.setup(c->n_constraint_rows, nullptr, c, &frame.p, nullptr, nullptr, bodies,
                            nullptr);
            (void)iterative.solve();
            iterative.cleanup();
        }
        frame.p.memory_pool_handler->cleanup();
    };
    const auto round = [&] {
        for (int k = 0; k < 2; ++k) {
            step(tree.rows, 60);
            step(tree.rows, 60);
            step(loops.rows, 20);
            step(&pile.record.c, static_cast<int>(pile.bodies.size()));
        }
    };
    HeapCounter::watchMemoryTable(true);
    const long first = HeapCounter::calls();
    round();
    const long settled = HeapCounter::calls();
    EXPECT_GT(settled, first) << "the counters count";
    round();
    EXPECT_EQ(HeapCounter::calls(), settled);
    HeapCounter::watchMemoryTable(false);
}

} // namespace
