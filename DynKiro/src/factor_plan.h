#pragma once
#include "elimination_tree.h"

#include <Kit/KitAlignedVector.h>

#include <cstddef>
#include <span>

struct DynsConstraints;

/// Operations and entries of a factor.
struct DynsFactorCost {
    double flops = 0;
    double entries = 0;
};

/// The front of a supernode: its rows, of which the pivots come first.
struct DynsPanel {
    std::size_t start = 0;     ///< first entry of the columns of L
    std::size_t update = 0;    ///< first entry of the update matrix that the pivots leave
    std::size_t sideStart = 0; ///< first row in a vector of all fronts' rows, padded
    int rowStart = 0;          ///< first entry in the list of row numbers
    int pivotStart = 0;        ///< pivots of all earlier fronts
    int pivots = 0, rows = 0, ld = 0;
    int before = 0, hubs = 0;   ///< of the pivots: those before the hubs', and the hubs'
    int runStart = 0, runs = 0; ///< see DynsFactorPlan::toParent()

    [[nodiscard]] int rest() const { return rows - pivots; }
};

/// Neighbouring rows of a front that are neighbours in the front of the parent too.
struct DynsRun {
    int from; ///< first row, counted behind the pivots
    int to;   ///< its place in the parent's front
    int count;
};

/// Consecutive supernodes, [begin, end).
struct DynsNodeRange {
    int begin, end;
};

/// Where the parts of a factor over some rows of a partition stand, and which of them may be computed
/// side by side.
///
/// Work that is worth it is split into a fixed graph of tasks, which does not depend on the number of
/// threads: subtrees of the elimination tree first, then the supernodes above them in rounds, each of
/// which needs what the rounds before it have made.
class DynsFactorPlan {
public:
    /// @param index_set rows with another value than 0 are left out; null takes all
    void build(const DynsConstraints& c, const DynsConstraintGraph& graph,
               const DynsEliminationTree& tree, const int* index_set);

    /// @param rows by vertex: how many of its rows the factor is over
    [[nodiscard]] static DynsFactorCost cost(const DynsEliminationTree& tree,
                                             std::span<const int> rows);

    [[nodiscard]] std::span<const DynsPanel> panels() const { return mPanels; }
    /// Numbers of the rows of a front. Behind the partition's rows come six of each hub.
    [[nodiscard]] const int* rowsOf(const DynsPanel& panel) const {
        return mRows.data() + panel.rowStart;
    }
    [[nodiscard]] std::span<const DynsRun> toParent(const DynsPanel& panel) const {
        return {mRuns.data() + panel.runStart, static_cast<std::size_t>(panel.runs)};
    }
    /// First row of each constraint of a front.
    [[nodiscard]] const int* offsets(const DynsSupernode& node) const {
        return mOffsets.data() + node.frontStart;
    }
    /// Rows of a vertex that the factor is over.
    [[nodiscard]] std::span<const int> rowsOfVertex(int vertex) const {
        const auto v = static_cast<std::size_t>(vertex);
        return {mRowList.data() + mRowStart[v],
                static_cast<std::size_t>(mRowStart[v + 1] - mRowStart[v])};
    }

    [[nodiscard]] int rounds() const { return static_cast<int>(mRounds.size()) - 1; }
    /// Tasks of a round: [firstTask(r), firstTask(r + 1)).
    [[nodiscard]] int firstTask(int round) const {
        return mRounds[static_cast<std::size_t>(round)];
    }
    /// Supernodes of a task, in ascending order.
    [[nodiscard]] std::span<const DynsNodeRange> task(int task) const {
        const auto t = static_cast<std::size_t>(task);
        return {mRanges.data() + mTasks[t], static_cast<std::size_t>(mTasks[t + 1] - mTasks[t])};
    }
    /// Most tasks of a round.
    [[nodiscard]] int width() const { return mWidth; }
    /// Whether a round is worth the waking of threads.
    [[nodiscard]] bool isWide(int round) const {
        return firstTask(round + 1) - firstTask(round) > 1 &&
               mRoundFlops[static_cast<std::size_t>(round)] >= kWideRound;
    }

    [[nodiscard]] std::size_t entries() const { return mEntries; }
    [[nodiscard]] std::size_t updateEntries() const { return mUpdateEntries; }
    [[nodiscard]] std::size_t sideRows() const { return mSideRows; }
    [[nodiscard]] std::size_t pivots() const { return mRowList.size(); }

private:
    static constexpr double kWideRound = 3e5; ///< operations

    void listRows(const DynsConstraints& c, const DynsConstraintGraph& graph, const int* index_set);
    void layOutPanels(const DynsConstraintGraph& graph, const DynsEliminationTree& tree);
    void mapToParents(const DynsEliminationTree& tree);
    void splitWork(const DynsEliminationTree& tree);
    void cutSubtrees(const DynsEliminationTree& tree, double total);
    void packSubtrees(double share);
    void stackRounds(const DynsEliminationTree& tree);
    void placeUpdates(const DynsEliminationTree& tree);
    [[nodiscard]] std::size_t updateSize(int node) const;

    KitAlignedVector<int> mRowList, mRowStart; ///< rows of the factor, by vertex
    KitAlignedVector<DynsPanel> mPanels;       ///< supernode
    KitAlignedVector<int> mRows, mOffsets;
    KitAlignedVector<DynsRun> mRuns;
    KitAlignedVector<DynsNodeRange> mRanges;
    KitAlignedVector<int> mTasks, mRounds; ///< first range of each task, first task of each round
    KitAlignedVector<double> mRoundFlops;
    int mWidth = 1;
    std::size_t mEntries = 0, mUpdateEntries = 0, mSideRows = 0;
    // Work of a build, kept for its capacity.
    KitAlignedVector<double> mWork; ///< supernode: operations of its subtree
    KitAlignedVector<int> mHeap, mRound, mDepth;
    KitAlignedVector<unsigned char> mAbove; ///< supernode: stands above the subtrees
};
