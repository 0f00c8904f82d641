#include "frontal_factor.h"

#include <algorithm>

namespace {

/// Entries of a factor from which a single solution is worth the waking of threads.
constexpr std::size_t kWideSolve = 200000;

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

} // namespace

/// Solutions for Count right-hand sides, side by side in each row of each front. The fronts pass on
/// their parts from child to parent and back, so that no two of one round meet in an entry.
template <int Count>
class DynsFrontalFactor::Solution {
public:
    Solution(DynsFrontalFactor& factor, Sides& sides, std::span<KitReal* const> columns)
        : mFactor(factor), mPlan(factor.mPlan), mSides(sides), mColumns(columns) {
        const std::size_t entries = mPlan.sideRows() * Count;
        if (sides.y.size() < entries)
            sides.y.resize(entries + entries / 4);
        sides.reached.resize(std::max(sides.reached.size(), mPlan.panels().size()));
    }

    void forward(int node) {
        const DynsPanel& panel = mFactor.panelOf(node);
        KitReal* y = sideOf(panel);
        bool reached = gatherPivots(panel, y);
        const int first = mFactor.supernode(node).first;
        for (int child = node - 1; child >= first && !reached;
             child = mFactor.supernode(child).first - 1)
            reached = mSides.reached[at(child)] != 0;
        mSides.reached[at(node)] = reached ? 1 : 0;
        if (!reached)
            return;
        std::fill(y + panel.pivots * Count, y + panel.ld * Count, 0.0);
        for (int child = node - 1; child >= first; child = mFactor.supernode(child).first - 1)
            if (mSides.reached[at(child)] != 0)
                addFromChild(mFactor.panelOf(child), y);
        const KitReal* inverse = mFactor.mInverseDiagonal.data() + panel.pivotStart;
        if constexpr (Count == 1)
            DynsKernelVariants().front()->forward(mFactor.column(panel, 0), at(panel.ld),
                                                  panel.rows, panel.pivots, inverse, y);
        else
            DynsForwardMany(mFactor.column(panel, 0), panel.ld, panel.rows, panel.pivots, inverse,
                            y);
        KitReal* hubs = y + panel.before * Count;
        std::transform(hubs, hubs + panel.hubs * Count, hubs, [](KitReal a) { return -a; });
    }

    void backward(int node) {
        const DynsPanel& panel = mFactor.panelOf(node);
        KitReal* y = sideOf(panel);
        if (const int parent = mFactor.supernode(node).parent; parent >= 0)
            takeFromParent(panel, sideOf(mFactor.panelOf(parent)), y);
        std::fill(y + panel.rows * Count, y + panel.ld * Count, 0.0);
        const KitReal* inverse = mFactor.mInverseDiagonal.data() + panel.pivotStart;
        if constexpr (Count == 1)
            DynsKernelVariants().front()->backward(mFactor.column(panel, 0), at(panel.ld),
                                                   panel.rows, panel.pivots, inverse, y);
        else
            DynsBackwardMany(mFactor.column(panel, 0), panel.ld, panel.rows, panel.pivots, inverse,
                             y);
        scatterPivots(panel, y);
    }

private:
    [[nodiscard]] KitReal* sideOf(const DynsPanel& panel) const {
        return mSides.y.data() + panel.sideStart * Count;
    }

    /// Answers whether some entry is not zero. Hubs' entries are zero, unused sides too.
    bool gatherPivots(const DynsPanel& panel, KitReal* y) {
        const int* rows = mPlan.rowsOf(panel);
        const int hubs = panel.before, behind = panel.before + panel.hubs;
        std::fill(y, y + panel.pivots * Count, 0.0);
        bool reached = false;
        const auto take = [&](int begin, int end) {
            for (int i = begin; i < end; ++i)
                for (std::size_t r = 0; r < mColumns.size(); ++r) {
                    const KitReal value = mColumns[r][rows[i]];
                    y[at(i) * Count + r] = value;
                    reached = reached || value != 0;
                }
        };
        take(0, hubs);
        take(behind, panel.pivots);
        return reached;
    }

    void scatterPivots(const DynsPanel& panel, const KitReal* y) {
        const int* rows = mPlan.rowsOf(panel);
        const int hubs = panel.before, behind = panel.before + panel.hubs;
        const auto give = [&](int begin, int end) {
            for (int i = begin; i < end; ++i)
                for (std::size_t r = 0; r < mColumns.size(); ++r)
                    mColumns[r][rows[i]] = y[at(i) * Count + r];
        };
        give(0, hubs);
        give(behind, panel.pivots);
    }

    void addFromChild(const DynsPanel& child, KitReal* y) {
        const KitReal* rest = sideOf(child) + child.pivots * Count;
        for (const DynsRun& run : mPlan.toParent(child))
            for (int i = 0; i < run.count * Count; ++i)
                y[run.to * Count + i] += rest[run.from * Count + i];
    }

    void takeFromParent(const DynsPanel& panel, const KitReal* parent, KitReal* y) {
        KitReal* rest = y + panel.pivots * Count;
        for (const DynsRun& run : mPlan.toParent(panel))
            std::copy_n(parent + run.to * Count, run.count * Count, rest + run.from * Count);
    }

    DynsFrontalFactor& mFactor;
    const DynsFactorPlan& mPlan;
    Sides& mSides;
    std::span<KitReal* const> mColumns;
};

void DynsFrontalFactor::solve(KitReal* x, KitThreadPool* pool) {
    if (mSides.empty())
        mSides.resize(1);
    KitReal* const columns[] = {x};
    Solution<1> solution(*this, mSides.front(), columns);
    KitThreadPool* used = mPlan.entries() >= kWideSolve ? pool : nullptr;
    for (int round = 0; round < mPlan.rounds(); ++round)
        forTasks(round, used, [&](int task, int) {
            for (const DynsNodeRange& range : mPlan.task(task))
                for (int node = range.begin; node < range.end; ++node)
                    solution.forward(node);
        });
    for (int round = mPlan.rounds() - 1; round >= 0; --round)
        forTasks(round, used, [&](int task, int) {
            for (std::size_t k = mPlan.task(task).size(); k-- > 0;)
                for (int node = mPlan.task(task)[k].end - 1; node >= mPlan.task(task)[k].begin;
                     --node)
                    solution.backward(node);
        });
}

void DynsFrontalFactor::solveMany(std::span<KitReal* const> columns, KitThreadPool* pool) {
    const int groups = static_cast<int>((columns.size() + kDynsManySides - 1) / kDynsManySides);
    const int slots =
        pool == nullptr ? 1 : std::min(groups, static_cast<int>(pool->getThreadCount()));
    if (mSides.size() < at(slots))
        mSides.resize(at(slots));
    const int nodes = static_cast<int>(mPlan.panels().size());
    mTasks.run(pool, slots, [&](int slot) {
        for (int group = slot; group < groups; group += slots) {
            const std::size_t first = at(group) * kDynsManySides;
            Solution<kDynsManySides> solution(
                *this, mSides[at(slot)],
                columns.subspan(first,
                                std::min<std::size_t>(kDynsManySides, columns.size() - first)));
            for (int node = 0; node < nodes; ++node)
                solution.forward(node);
            for (int node = nodes - 1; node >= 0; --node)
                solution.backward(node);
        }
    });
}
