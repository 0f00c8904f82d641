#include "sparse_system.h"

#include <Dyns/DynsConstraints.h>

#include <algorithm>
#include <cmath>

namespace {

/// Rows on a body from which it may be a hub: below it costs as much beside its rows as within them.
constexpr int kHubRows = 36;
/// Part of the work that the bodies with many rows must make, before an order with hubs is tried.
constexpr double kHubShare = 0.25;
/// An order with hubs must save so much, as each of its solutions is solved twice and more.
constexpr double kHubGain = 2;

/// Most corrections of a solution; where more are needed the hubs are given up.
constexpr int kMaxCorrections = 3;
/// A correction below this part of the solution was the last: the next would be rounding.
constexpr KitReal kSmallCorrection = 1e-8;

KitReal norm(const KitAlignedVector<KitReal>& a) {
    KitReal sum = 0;
    for (const KitReal value : a)
        sum += value * value;
    return std::sqrt(sum);
}

} // namespace

void DynsSparseSystem::setUp(const DynsConstraints& c) {
    mRows = &c;
    mAllStands = false;
    if (!mPlain.graph.update(c))
        return;
    mPlain.tree.build(mPlain.graph);
    mPlain.cost = DynsFrontalFactor::cost(mPlain.graph, mPlain.tree, c, nullptr);
    chooseHubs();
}

void DynsSparseSystem::chooseHubs() {
    mUsesHubs = false;
    const DynsConstraintGraph& graph = mPlain.graph;
    mBodyRows.assign(static_cast<std::size_t>(graph.bodyCount), 0);
    for (int v = 0; v < graph.size(); ++v)
        for (int i = graph.bodyStart[static_cast<std::size_t>(v)];
             i < graph.bodyStart[static_cast<std::size_t>(v) + 1]; ++i)
            mBodyRows[static_cast<std::size_t>(graph.bodies[static_cast<std::size_t>(i)])] +=
                graph.rows[static_cast<std::size_t>(v)];
    mHubs.clear();
    double work = 0;
    for (std::size_t body = 0; body < mBodyRows.size(); ++body)
        if (const double rows = mBodyRows[body]; rows >= kHubRows) {
            mHubs.push_back(static_cast<int>(body));
            work += rows * rows * rows / 3;
        }
    if (mHubs.empty() || work < kHubShare * mPlain.cost.flops)
        return;
    mWithHubs.graph.augment(graph, mHubs);
    mWithHubs.tree.build(mWithHubs.graph);
    mWithHubs.cost = DynsFrontalFactor::cost(mWithHubs.graph, mWithHubs.tree, *mRows, nullptr);
    mUsesHubs = kHubGain * mWithHubs.cost.flops < mPlain.cost.flops;
}

void DynsSparseSystem::factor(DynsFrontalFactor& factor, const int* index_set) {
    factor.factor(*mRows, order().graph, order().tree, index_set);
}

void DynsSparseSystem::factorAll() {
    if (!mAllStands)
        factor(mAll, nullptr);
    mAllStands = true;
}

// Iterative refinement of a first solution x of A x = b over the free rows. False if it does not
// converge: without their hubs some rows were too near to dependent.
bool DynsSparseSystem::refine(DynsFrontalFactor& factor, const int* index_set, const KitReal* b,
                              KitReal* x) {
    const auto isFree = [index_set](std::size_t i) {
        return index_set == nullptr || index_set[i] == kDynsIndexFree;
    };
    const auto n = static_cast<std::size_t>(mRows->n_constraint_rows);
    for (int k = 0; k < kMaxCorrections; ++k) {
        mCorrection.resize(n);
        mProduct.multiply(*mRows, x, mCorrection.data());
        for (std::size_t i = 0; i < n; ++i)
            mCorrection[i] = isFree(i) ? b[i] - mCorrection[i] : 0;
        factor.solve(mCorrection.data());
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
        mAll.solve(x);
        return;
    }
    mRight.assign(x, x + mRows->n_constraint_rows);
    mAll.solve(x);
    if (refine(mAll, nullptr, mRight.data(), x))
        return;
    mUsesHubs = mAllStands = false;
    std::copy(mRight.begin(), mRight.end(), x);
    solve(x);
}

void DynsSparseSystem::solveUnit(KitReal* column, int row) {
    factorAll();
    mAll.solveUnit(column, row);
    if (!mUsesHubs)
        return;
    mRight.assign(static_cast<std::size_t>(mRows->n_constraint_rows), 0.0);
    mRight[static_cast<std::size_t>(row)] = 1;
    if (refine(mAll, nullptr, mRight.data(), column))
        return;
    mUsesHubs = mAllStands = false;
    solveUnit(column, row);
}

void DynsSparseSystem::solveFreeRows(const int* index_set, const KitReal* b, KitReal* z,
                                     KitReal* w) {
    factor(mFree, index_set);
    mProduct.solveFreeRows(*mRows, index_set, b, z, w, [&](KitReal* x) {
        if (!mUsesHubs) {
            mFree.solve(x);
            return;
        }
        // The tight rows stand in x at their values: they are no part of this system.
        const int n = mRows->n_constraint_rows;
        mRight.assign(x, x + n);
        mSolution.assign(x, x + n);
        for (int i = 0; i < n; ++i)
            if (index_set[i] != kDynsIndexFree)
                mSolution[static_cast<std::size_t>(i)] = 0;
        mFree.solve(mSolution.data());
        if (!refine(mFree, index_set, mRight.data(), mSolution.data())) {
            mUsesHubs = mAllStands = false;
            factor(mFree, index_set);
            std::copy(mRight.begin(), mRight.end(), mSolution.begin());
            mFree.solve(mSolution.data());
        }
        for (int i = 0; i < n; ++i)
            if (index_set[i] == kDynsIndexFree)
                x[i] = mSolution[static_cast<std::size_t>(i)];
    });
}

void DynsSparseSystem::multiply(const KitReal* x, KitReal* y) {
    mProduct.multiply(*mRows, x, y);
}

double DynsSparseSystem::solveFlops() const {
    return (mUsesHubs ? 8 : 4) * order().cost.entries;
}

double DynsSparseSystem::pendingFlops() const {
    return mAllStands ? 0 : order().cost.flops;
}

double DynsSparseSystem::freeRowsFlops(const int* index_set) const {
    const DynsFrontalFactor::Cost cost =
        DynsFrontalFactor::cost(order().graph, order().tree, *mRows, index_set);
    return cost.flops + (mUsesHubs ? 8 : 4) * cost.entries;
}
