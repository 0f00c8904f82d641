#include "sparse_system.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/LCPMatrix.h>

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

/// Rows on a body from which it may be a hub: below it costs as much beside its rows as within them.
constexpr int kHubRows = 36;
/// Part of the work that the bodies with many rows must make, before an order with hubs is tried.
constexpr double kHubShare = 0.25;
/// Work of a body's rows from which hubs are tried first: some 100 contacts.
constexpr double kLargeHubWork = 1e7;
/// An order with hubs must save so much, as each of its solutions is solved twice and more.
constexpr double kHubGain = 2;

/// Most corrections of a solution; where more are needed the hubs are given up.
constexpr int kMaxCorrections = 3;
/// A correction below this part of the solution was the last: the next would be rounding.
constexpr KitReal kSmallCorrection = 1e-8;

/// A residual below this part of the right-hand side needs no correction.
constexpr KitReal kSmallResidual = 1e-13;

KitReal norm(const KitAlignedVector<KitReal>& a) {
    KitReal sum = 0;
    for (const KitReal value : a)
        sum += value * value;
    return std::sqrt(sum);
}

} // namespace

void DynsSparseSystem::setUp(const DynsConstraints& c, KitThreadPool* pool) {
    mRows = &c;
    mPool = pool;
    mAllStands = false;
    mUses = 0; // each step takes the bases in the same turn, so that their buffers settle
    for (Base& base : mBases) {
        base.factor.forget();
        base.lastUse = 0;
    }
    if (mPlain.graph.update(c)) {
        chooseOrder();
        forgetStructure();
    } else if (mUsesHubs != mHubsPay) {
        mUsesHubs = mHubsPay; // what a step has given up, the next one tries: no step knows another
        forgetStructure();
    }
}

void DynsSparseSystem::forgetStructure() {
    mAllStands = mAllPlanned = false;
    for (Base& base : mBases)
        base.factor.forgetStructure();
}

void DynsSparseSystem::giveUpHubs() {
    mUsesHubs = false;
    if (!mPlainStands)
        buildPlain();
    forgetStructure();
}

void DynsSparseSystem::buildPlain() {
    mPlain.tree.build(mPlain.graph);
    mPlain.cost = DynsFactorPlan::cost(mPlain.tree, mPlain.graph.rows);
    mPlainStands = true;
}

void DynsSparseSystem::buildWithHubs() {
    mWithHubs.graph.augment(mPlain.graph, mHubs);
    mWithHubs.tree.build(mWithHubs.graph);
    mWithHubs.cost = DynsFactorPlan::cost(mWithHubs.tree, mWithHubs.graph.rows);
}

/// Lists the bodies that may be hubs; answers the rows of the largest and the work of all.
DynsSparseSystem::HubWork DynsSparseSystem::listHubs() {
    const DynsConstraintGraph& graph = mPlain.graph;
    mBodyRows.assign(static_cast<std::size_t>(graph.bodyCount), 0);
    for (int v = 0; v < graph.size(); ++v)
        for (int i = graph.bodyStart[static_cast<std::size_t>(v)];
             i < graph.bodyStart[static_cast<std::size_t>(v) + 1]; ++i)
            mBodyRows[static_cast<std::size_t>(graph.bodies[static_cast<std::size_t>(i)])] +=
                graph.rows[static_cast<std::size_t>(v)];
    mHubs.clear();
    HubWork work;
    for (std::size_t body = 0; body < mBodyRows.size(); ++body)
        if (const double rows = mBodyRows[body]; rows >= kHubRows) {
            mHubs.push_back(static_cast<int>(body));
            work.all += rows * rows * rows / 3;
            work.largest = std::max(work.largest, rows * rows * rows / 3);
        }
    return work;
}

void DynsSparseSystem::chooseOrder() {
    mPlainStands = mUsesHubs = mHubsPay = false;
    const HubWork work = listHubs();
    // Without hubs the fronts of a large one would take quadratic memory for their structure alone.
    const bool large = work.largest >= kLargeHubWork;
    if (large)
        buildWithHubs();
    mHubsPay = large && kHubGain * mWithHubs.cost.flops < work.largest;
    if (!mHubsPay) {
        buildPlain();
        if (!mHubs.empty() && work.all >= kHubShare * mPlain.cost.flops) {
            if (!large)
                buildWithHubs();
            mHubsPay = kHubGain * mWithHubs.cost.flops < mPlain.cost.flops;
        }
    }
    mUsesHubs = mHubsPay;
}

void DynsSparseSystem::factorAll() {
    if (!mAllStands)
        mAll.factor(*mRows, order().graph, order().tree, nullptr, mAllPlanned, mPool);
    mAllStands = mAllPlanned = true;
}

// Iterative refinement of a first solution x of A x = b over the free rows. False if it does not
// converge: some rows were too near to dependent without their hubs, or in the base of a border.
template <typename Solve>
bool DynsSparseSystem::refine(const int* index_set, const KitReal* b, KitReal* x, Solve solve) {
    const auto isFree = [index_set](std::size_t i) {
        return index_set == nullptr || index_set[i] == kDynsIndexFree;
    };
    const auto n = static_cast<std::size_t>(mRows->n_constraint_rows);
    for (int k = 0; k < kMaxCorrections; ++k) {
        mCorrection.resize(n);
        mProduct.multiply(*mRows, x, mCorrection.data());
        KitReal right = 0;
        for (std::size_t i = 0; i < n; ++i) {
            mCorrection[i] = isFree(i) ? b[i] - mCorrection[i] : 0;
            right += isFree(i) ? b[i] * b[i] : 0;
        }
        if (norm(mCorrection) <= kSmallResidual * std::sqrt(right))
            return true;
        solve(mCorrection.data());
        KitReal size = 0;
        for (std::size_t i = 0; i < n; ++i) {
            x[i] += mCorrection[i];
            size += x[i] * x[i];
        }
        if (norm(mCorrection) <= kSmallCorrection * std::sqrt(size))
            return true;
    }
    return false;
}

void DynsSparseSystem::solve(KitReal* x) {
    factorAll();
    if (!mUsesHubs) {
        mAll.solve(x, mPool);
        return;
    }
    mRight.assign(x, x + mRows->n_constraint_rows);
    mAll.solve(x, mPool);
    if (refine(nullptr, mRight.data(), x, [this](KitReal* y) { mAll.solve(y, mPool); }))
        return;
    giveUpHubs();
    std::copy(mRight.begin(), mRight.end(), x);
    solve(x);
}

void DynsSparseSystem::solveUnits(std::span<const int> rows, std::span<KitReal* const> columns) {
    const int n = mRows->n_constraint_rows;
    for (std::size_t k = 0; k < rows.size(); ++k) {
        std::fill(columns[k], columns[k] + n, 0.0);
        columns[k][rows[k]] = 1;
    }
    if (mUsesHubs) {
        for (KitReal* column : columns)
            solve(column);
        return;
    }
    factorAll();
    mAll.solveMany(columns, mPool);
}

/// Turns the free rows of x into A_ff^-1 x on a base that has been bordered for them.
void DynsSparseSystem::solveFree(Base& base, const int* index_set, KitReal* x) {
    const int n = mRows->n_constraint_rows;
    const auto solve = [&](KitReal* y) { base.factor.solve(y, mPool); };
    if (!mUsesHubs && !base.factor.hasBorder()) {
        solve(x);
        return;
    }
    mRight.assign(x, x + n);
    // The tight rows stand in x at their values: they are no part of this system.
    mSolution.assign(x, x + n);
    for (int i = 0; i < n; ++i)
        if (index_set[i] != kDynsIndexFree)
            mSolution[static_cast<std::size_t>(i)] = 0;
    solve(mSolution.data());
    if (refine(index_set, mRight.data(), mSolution.data(), solve)) {
        for (int i = 0; i < n; ++i)
            if (index_set[i] == kDynsIndexFree)
                x[i] = mSolution[static_cast<std::size_t>(i)];
        return;
    }
    if (!base.factor.hasBorder())
        giveUpHubs();
    base.factor.factor(*mRows, order().graph, order().tree, index_set, mPool);
    solveFree(base, index_set, x);
}

void DynsSparseSystem::solveFreeRows(const int* index_set, const KitReal* b, KitReal* z,
                                     KitReal* w) {
    const Choice choice = choose(index_set);
    Base& base = mBases[choice.base];
    if (choice.refactor)
        base.factor.factor(*mRows, order().graph, order().tree, index_set, mPool);
    base.factor.border(*mRows, index_set, mPool);
    base.lastUse = ++mUses;
    mProduct.solveFreeRows(*mRows, index_set, b, z, w,
                           [&](KitReal* x) { solveFree(base, index_set, x); });
}

void DynsSparseSystem::multiply(const KitReal* x, KitReal* y) {
    mProduct.multiply(*mRows, x, y);
}

/// Operations of a factorisation that take the time of one solution.
double DynsSparseSystem::solveTime(double entries) const {
    constexpr double kSolutions = 2; // with hubs, one of them to correct the other
    return LCPMatrix::kSolveWeight * 4 * entries * (mUsesHubs ? kSolutions : 1);
}

double DynsSparseSystem::solveFlops() const {
    return (mUsesHubs ? 8 : 4) * order().cost.entries;
}

double DynsSparseSystem::pendingFlops() const {
    return mAllStands ? 0 : order().cost.flops;
}

DynsFactorCost DynsSparseSystem::cost(const int* index_set) const {
    const DynsConstraintGraph& graph = order().graph;
    mCounts.assign(graph.rows.begin(), graph.rows.end());
    for (int k = 0; k < mRows->n_constraints; ++k) {
        const int* first = index_set + mRows->g_block_first_row[mRows->constraint_first_block[k]];
        int& count = mCounts[static_cast<std::size_t>(k)];
        count =
            static_cast<int>(std::count(first, first + count, static_cast<int>(kDynsIndexFree)));
    }
    return DynsFactorPlan::cost(order().tree, mCounts);
}

DynsSparseSystem::Choice DynsSparseSystem::choose(const int* index_set) const {
    const DynsFactorCost anew = cost(index_set);
    const std::size_t older = mBases[0].lastUse <= mBases[1].lastUse ? 0 : 1;
    const double solve = solveTime(anew.entries);
    Choice best{older, true, anew.flops + solve};
    for (std::size_t k = 0; k < std::size(mBases); ++k)
        if (const double flops = mBases[k].factor.flops(index_set, solve); flops < best.flops)
            best = {k, false, flops};
    return best;
}

double DynsSparseSystem::freeRowsFlops(const int* index_set) const {
    return choose(index_set).flops;
}
