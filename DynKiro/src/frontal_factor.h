#pragma once
#include "dense_kernels.h"
#include "factor_plan.h"
#include "parallel_for.h"
#include "raw_buffer.h"

#include <Kit/KitAlignedVector.h>
#include <Kit/KitTypes.h>

#include <cstddef>
#include <span>
#include <vector>

struct DynsConstraints;

/// Multifrontal Cholesky factor of A, or of A restricted to some rows (Duff, Reid, "The multifrontal
/// solution of indefinite sparse symmetric linear equations", 1983). Each supernode assembles its
/// rows of A and its children's updates in a dense front, eliminates its pivots, and leaves an update
/// matrix to its parent. Buffers keep their capacity from one factorisation to the next. Tasks of the
/// plan and parts of large fronts may run on the threads of a pool, with the same bits for any number
/// of threads.
///
/// With hubs in the graph it is the factor L D L^T, D = +-1, of the quasi-definite
///   [ A'   W   ]   A' = A without the hubs' parts, W = J M^-1 of the hubs,
///   [ W^T -M^-1]   which gives x from (b, 0), as A = A' + W M W^T
/// (Vanderbei, "Symmetric quasidefinite matrices", SIAM J. Optim. 5, 1995): no hub couples all of its
/// constraints. It loses digits where A' is nearer to singular than A.
class DynsFrontalFactor {
public:
    /// Factors A over the rows of an index set. Hubs take M^-1 from their bodies.
    /// @param index_set rows with another value than 0 are left out; null takes all
    /// @param samePlan the graph and the index set are those of the last call
    /// @param pool null works on the calling thread
    void factor(const DynsConstraints& c, const DynsConstraintGraph& graph,
                const DynsEliminationTree& tree, const int* index_set, bool samePlan,
                KitThreadPool* pool);
    /// x = A^-1 x over the rows of the factor; other entries are neither read nor changed.
    void solve(KitReal* x, KitThreadPool* pool);
    /// The same for many right-hand sides: cheaper for each, and faster where they are sparse.
    void solveMany(std::span<KitReal* const> columns, KitThreadPool* pool);

private:
    /// What one task needs for itself.
    struct Scratch {
        KitAlignedVector<int> place;       ///< constraint: place in the present front
        KitAlignedVector<KitReal> negated; ///< columns of hubs
    };
    /// Vectors of a solve, in the rows of all fronts.
    struct Sides {
        KitAlignedVector<KitReal> y;
        KitAlignedVector<unsigned char> reached; ///< supernode: some entry below is not zero
    };
    template <int Count>
    class Solution;

    void gatherBlocks(const DynsConstraints& c);
    void addProduct(KitReal* out, int ld, int block, const KitReal* gm, int columns,
                    int rows) const;
    void assembleRows(const DynsConstraints& c, int node, const Scratch& scratch);
    void assembleHub(const DynsConstraints& c, int hub, int column, int node,
                     const Scratch& scratch);
    void addUpdate(int child, int parent);
    void factorNode(const DynsConstraints& c, int node, Scratch& scratch, KitThreadPool* pool);
    void eliminate(const DynsPanel& panel, Scratch& scratch, KitThreadPool* pool);
    void factorSection(const DynsPanel& panel, int first, int end, KitThreadPool* pool);
    void subtractSection(const DynsPanel& panel, int first, int end, const KitReal* A,
                         KitThreadPool* pool);
    template <typename Body>
    void forStrips(int begin, int end, double flops, KitThreadPool* pool, Body body);
    /// Calls body(task, slot) for the tasks of a round; tasks that run at once have different slots.
    template <typename Body>
    void forTasks(int round, KitThreadPool* pool, Body body) {
        const int first = mPlan.firstTask(round), count = mPlan.firstTask(round + 1) - first;
        mTasks.run(mPlan.isWide(round) ? pool : nullptr, count,
                   [&](int slot) { body(first + slot, slot); });
    }

    [[nodiscard]] KitReal* column(const DynsPanel& panel, int j) {
        return mL.data() + panel.start +
               static_cast<std::size_t>(panel.ld) * static_cast<std::size_t>(j);
    }
    [[nodiscard]] const DynsPanel& panelOf(int node) const {
        return mPlan.panels()[static_cast<std::size_t>(node)];
    }
    [[nodiscard]] const DynsSupernode& supernode(int node) const {
        return mTree->supernodes()[static_cast<std::size_t>(node)];
    }

    const DynsConstraintGraph* mGraph = nullptr;
    const DynsEliminationTree* mTree = nullptr;
    DynsFactorPlan mPlan;
    DynsRawBuffer mL, mUpdates;
    KitAlignedVector<KitReal> mInverseDiagonal;
    KitAlignedVector<int> mConstraintOf; ///< block: its constraint
    KitAlignedVector<KitReal> mBlocks;   ///< see gatherBlocks()
    KitAlignedVector<std::size_t> mBlockStart;
    std::vector<Scratch> mScratch; ///< slot of a round
    std::vector<Sides> mSides;     ///< group of right-hand sides
    DynsParallelFor mTasks, mStrips;
};
