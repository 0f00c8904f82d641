#include "factor_plan.h"

#include "dense_kernels.h"

#include <Dyns/DynsConstraints.h>

#include <algorithm>

namespace {

/// Operations from which a factor is split into tasks.
constexpr double kSplitWork = 1e6;
/// A subtree is cut into its children until it has this part of all work,
constexpr double kTaskShare = 1.0 / 32;
/// or until so many supernodes stand above the subtrees.
constexpr int kMaxAbove = 64;

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

/// Entries of a matrix, with those behind it that whole groups of rows may touch.
std::size_t matrixSize(int ld, int columns) {
    return columns == 0 ? 0 : at(ld) * at(columns) + kDynsPanelRows;
}

double frontFlops(double pivots, double rest) {
    return pivots * pivots * pivots / 3 + pivots * pivots * rest + pivots * rest * rest;
}

} // namespace

DynsFactorCost DynsFactorPlan::cost(const DynsEliminationTree& tree, std::span<const int> rows) {
    DynsFactorCost sum;
    for (const DynsSupernode& node : tree.supernodes()) {
        const std::span<const int> front = tree.front(node);
        double pivots = 0, rest = 0;
        for (int k = 0; k < node.frontCount; ++k)
            (k < node.pivots ? pivots : rest) += rows[at(front[at(k)])];
        sum.flops += frontFlops(pivots, rest);
        sum.entries += pivots * (pivots / 2 + rest);
    }
    return sum;
}

void DynsFactorPlan::build(const DynsConstraints& c, const DynsConstraintGraph& graph,
                           const DynsEliminationTree& tree, const int* index_set) {
    listRows(c, graph, index_set);
    layOutPanels(graph, tree);
    mapToParents(tree);
    splitWork(tree);
    placeUpdates(tree);
}

void DynsFactorPlan::listRows(const DynsConstraints& c, const DynsConstraintGraph& graph,
                              const int* index_set) {
    mRowStart.resize(at(graph.size()) + 1);
    mRowList.clear();
    for (int v = 0; v < graph.size(); ++v) {
        mRowStart[at(v)] = static_cast<int>(mRowList.size());
        const bool hub = v >= c.n_constraints;
        const int first = hub ? c.n_constraint_rows + 6 * (v - c.n_constraints)
                              : c.g_block_first_row[c.constraint_first_block[v]];
        for (int row = first; row < first + graph.rows[at(v)]; ++row)
            if (hub || index_set == nullptr || index_set[row] == kDynsIndexFree)
                mRowList.push_back(row);
    }
    mRowStart[at(graph.size())] = static_cast<int>(mRowList.size());
}

void DynsFactorPlan::layOutPanels(const DynsConstraintGraph& graph,
                                  const DynsEliminationTree& tree) {
    mPanels.clear();
    mRows.clear();
    mOffsets.resize(tree.frontEntries());
    mEntries = mSideRows = 0;
    int pivotStart = 0;
    for (const DynsSupernode& node : tree.supernodes()) {
        DynsPanel panel;
        panel.start = mEntries;
        panel.sideStart = mSideRows;
        panel.rowStart = static_cast<int>(mRows.size());
        panel.pivotStart = pivotStart;
        const std::span<const int> front = tree.front(node);
        for (int k = 0; k < node.frontCount; ++k) {
            const std::span<const int> rows = rowsOfVertex(front[at(k)]);
            const int count = static_cast<int>(rows.size());
            mOffsets[at(node.frontStart + k)] = panel.rows;
            mRows.insert(mRows.end(), rows.begin(), rows.end());
            panel.rows += count;
            if (k >= node.pivots)
                continue;
            const DynsVertex kind = graph.kind(front[at(k)]);
            panel.pivots += count;
            panel.before += kind == DynsVertex::kConstraint ? count : 0;
            panel.hubs += kind == DynsVertex::kHub ? count : 0;
        }
        panel.ld = DynsPaddedRows(panel.rows);
        mEntries += matrixSize(panel.ld, panel.pivots);
        mSideRows += at(panel.ld);
        pivotStart += panel.pivots;
        mPanels.push_back(panel);
    }
}

void DynsFactorPlan::mapToParents(const DynsEliminationTree& tree) {
    mRuns.clear();
    for (std::size_t s = 0; s < mPanels.size(); ++s) {
        const DynsSupernode& node = tree.supernodes()[s];
        DynsPanel& panel = mPanels[s];
        panel.runStart = static_cast<int>(mRuns.size());
        if (node.parent < 0)
            continue;
        const std::span<const int> map = tree.toParent(node);
        const int* places = offsets(tree.supernodes()[at(node.parent)]);
        const int* own = offsets(node);
        for (int k = node.pivots; k < node.frontCount; ++k) {
            const int end = k + 1 < node.frontCount ? own[k + 1] : panel.rows;
            const DynsRun run{own[k] - panel.pivots, places[map[at(k - node.pivots)]],
                              end - own[k]};
            if (run.count == 0)
                continue;
            const bool first = at(panel.runStart) == mRuns.size();
            if (!first && mRuns.back().to + mRuns.back().count == run.to)
                mRuns.back().count += run.count;
            else
                mRuns.push_back(run);
        }
        panel.runs = static_cast<int>(mRuns.size()) - panel.runStart;
    }
}

void DynsFactorPlan::splitWork(const DynsEliminationTree& tree) {
    const int nodes = static_cast<int>(mPanels.size());
    mWork.assign(at(nodes), 0.0);
    double total = 0;
    for (int s = 0; s < nodes; ++s) {
        const double own = frontFlops(mPanels[at(s)].pivots, mPanels[at(s)].rest());
        mWork[at(s)] += own;
        total += own;
        if (const int parent = tree.supernodes()[at(s)].parent; parent >= 0)
            mWork[at(parent)] += mWork[at(s)];
    }
    mRanges.clear();
    mTasks.assign(1, 0);
    mRounds.assign(1, 0);
    mRoundFlops.clear();
    mWidth = 1;
    mAbove.assign(at(nodes), 0);
    if (total < kSplitWork) {
        mRanges.push_back({0, nodes});
        mTasks.push_back(1);
        mRounds.push_back(1);
        mRoundFlops.push_back(total);
        return;
    }
    cutSubtrees(tree, total);
    packSubtrees(kTaskShare * total);
    stackRounds(tree);
}

/// Marks the supernodes above the subtrees, and lists the subtrees in ascending order.
void DynsFactorPlan::cutSubtrees(const DynsEliminationTree& tree, double total) {
    const auto less = [this](int a, int b) {
        return mWork[at(a)] != mWork[at(b)] ? mWork[at(a)] < mWork[at(b)] : a < b;
    };
    const auto push = [&](int s) {
        mHeap.push_back(s);
        std::push_heap(mHeap.begin(), mHeap.end(), less);
    };
    const std::span<const DynsSupernode> nodes = tree.supernodes();
    mHeap.clear();
    for (int root = static_cast<int>(nodes.size()) - 1; root >= 0; root = nodes[at(root)].first - 1)
        push(root);
    for (int cuts = 0; cuts < kMaxAbove && !mHeap.empty(); ++cuts) {
        const int largest = mHeap.front();
        if (mWork[at(largest)] <= kTaskShare * total)
            break;
        std::pop_heap(mHeap.begin(), mHeap.end(), less);
        mHeap.pop_back();
        mAbove[at(largest)] = 1;
        for (int child = largest - 1; child >= nodes[at(largest)].first;
             child = nodes[at(child)].first - 1)
            push(child);
    }
    std::sort(mHeap.begin(), mHeap.end());
    for (const int root : mHeap)
        mRanges.push_back({nodes[at(root)].first, root + 1});
}

/// The first round: tasks of subtrees, small ones together.
void DynsFactorPlan::packSubtrees(double share) {
    double sum = 0, total = 0;
    for (std::size_t i = 0; i < mRanges.size(); ++i) {
        const double work = mWork[at(mRanges[i].end - 1)];
        if (sum > 0 && sum + work > share) {
            mTasks.push_back(static_cast<int>(i));
            sum = 0;
        }
        sum += work;
        total += work;
    }
    mTasks.push_back(static_cast<int>(mRanges.size()));
    mRounds.push_back(static_cast<int>(mTasks.size()) - 1);
    mRoundFlops.push_back(total);
    mWidth = mRounds.back();
}

/// The other rounds: a supernode comes one round after the last of its children.
void DynsFactorPlan::stackRounds(const DynsEliminationTree& tree) {
    const std::span<const DynsSupernode> nodes = tree.supernodes();
    KitAlignedVector<int>& above = mHeap;
    above.clear();
    for (std::size_t s = 0; s < nodes.size(); ++s)
        if (mAbove[s] != 0)
            above.push_back(static_cast<int>(s));
    mRound.assign(nodes.size(), 1);
    for (const int s : above)
        if (const int parent = nodes[at(s)].parent; parent >= 0)
            mRound[at(parent)] = std::max(mRound[at(parent)], mRound[at(s)] + 1);
    int done = 0;
    for (int round = 1; done < static_cast<int>(above.size()); ++round) {
        double flops = 0;
        const int before = done;
        for (const int s : above)
            if (mRound[at(s)] == round) {
                mRanges.push_back({s, s + 1});
                mTasks.push_back(static_cast<int>(mRanges.size()));
                flops += frontFlops(mPanels[at(s)].pivots, mPanels[at(s)].rest());
                ++done;
            }
        mWidth = std::max(mWidth, done - before);
        mRounds.push_back(static_cast<int>(mTasks.size()) - 1);
        mRoundFlops.push_back(flops);
    }
}

std::size_t DynsFactorPlan::updateSize(int node) const {
    const int rest = mPanels[at(node)].rest();
    return matrixSize(DynsPaddedRows(rest), rest);
}

/// What leaves a task has a place of its own. Inside a task the updates of supernodes of even and of
/// odd depth make a stack each: a supernode takes its children's from one and puts its own on the
/// other.
void DynsFactorPlan::placeUpdates(const DynsEliminationTree& tree) {
    const std::span<const DynsSupernode> nodes = tree.supernodes();
    mUpdateEntries = 0;
    mDepth.resize(nodes.size());
    for (int task = 0; task + 1 < static_cast<int>(mTasks.size()); ++task) {
        std::size_t largest[2] = {};
        for (const DynsNodeRange& range : this->task(task)) {
            std::size_t top[2] = {};
            for (int s = range.end - 1; s >= range.begin; --s) {
                const int parent = nodes[at(s)].parent;
                const bool leaves = parent < 0 || parent >= range.end;
                mDepth[at(s)] = leaves ? 0 : mDepth[at(parent)] + 1;
            }
            for (int s = range.begin; s < range.end; ++s) {
                for (int child = s - 1; child >= std::max(nodes[at(s)].first, range.begin);
                     child = nodes[at(child)].first - 1)
                    top[mDepth[at(child)] % 2] -= updateSize(child);
                if (mDepth[at(s)] == 0)
                    continue;
                std::size_t& own = top[mDepth[at(s)] % 2];
                mPanels[at(s)].update = own;
                own += updateSize(s);
                largest[mDepth[at(s)] % 2] = std::max(largest[mDepth[at(s)] % 2], own);
            }
        }
        for (const DynsNodeRange& range : this->task(task))
            for (int s = range.begin; s < range.end; ++s)
                if (mDepth[at(s)] > 0)
                    mPanels[at(s)].update += mUpdateEntries + (mDepth[at(s)] % 2) * largest[0];
        mUpdateEntries += largest[0] + largest[1];
        for (const DynsNodeRange& range : this->task(task))
            for (int s = range.begin; s < range.end; ++s)
                if (mDepth[at(s)] == 0) {
                    mPanels[at(s)].update = mUpdateEntries;
                    mUpdateEntries += updateSize(s);
                }
    }
}
