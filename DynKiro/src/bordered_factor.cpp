#include "bordered_factor.h"

#include "dense_ldl.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/LCPMatrix.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

/// Rows of a border beyond the square root of all rows, up to which it is kept.
constexpr double kSmallBorder = 8;
/// Most columns that are kept: they are dense.
constexpr int kMaxColumns = 256;
/// Some solutions on a border are solved a second time, to correct the first.
constexpr double kSolutions = 1.5;
/// A column of many right-hand sides takes this part of a solve's time.
constexpr double kColumnShare = 0.35;

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

} // namespace

void DynsBorderedFactor::factor(const DynsConstraints& c, const DynsConstraintGraph& graph,
                                const DynsEliminationTree& tree, const int* index_set,
                                KitThreadPool* pool) {
    const std::size_t n = at(c.n_constraint_rows);
    bool samePlan = mPlanStands && mInBase.size() == n;
    mInBase.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
        const unsigned char free = index_set[i] == kDynsIndexFree;
        samePlan = samePlan && mInBase[i] == free;
        mInBase[i] = free;
    }
    mFactor.factor(c, graph, tree, index_set, samePlan, pool);
    mStands = mPlanStands = true;
    mColumns.reset(c.n_constraint_rows, n);
    mColumnCount = 0;
    mBorder.clear();
    mEntered = 0;
}

double DynsBorderedFactor::flops(const int* index_set, double solveFlops) const {
    constexpr double kNone = std::numeric_limits<double>::infinity();
    if (!mStands)
        return kNone;
    const double limit = kSmallBorder + std::sqrt(static_cast<double>(mInBase.size()));
    double border = 0, missing = 0;
    for (std::size_t i = 0; i < mInBase.size(); ++i)
        if ((index_set[i] == kDynsIndexFree) != (mInBase[i] != 0)) {
            ++border;
            missing += mColumns.find(static_cast<int>(i)) == nullptr;
            if (border > limit)
                return kNone;
        }
    if (border == 0)
        return solveFlops;
    if (mColumnCount + missing > kMaxColumns)
        return kNone;
    const double n = static_cast<double>(mInBase.size());
    const double solves = kSolutions + kColumnShare * missing;
    return solves * solveFlops +
           LCPMatrix::kSolveWeight * (border * border * border / 3 + 4 * border * n);
}

void DynsBorderedFactor::border(const DynsConstraints& c, const int* index_set,
                                KitThreadPool* pool) {
    mBorder.clear();
    const auto list = [&](bool inBase) {
        for (int i = 0; i < c.n_constraint_rows; ++i)
            if ((mInBase[at(i)] != 0) == inBase && (index_set[i] == kDynsIndexFree) != inBase)
                mBorder.push_back(i);
    };
    list(false);
    mEntered = static_cast<int>(mBorder.size());
    list(true);
    if (mBorder.empty())
        return;
    mConstraintOfRow.resize(at(c.n_constraint_rows));
    for (int k = 0; k < c.n_constraints; ++k) {
        const int block = c.constraint_first_block[k];
        std::fill_n(mConstraintOfRow.begin() + c.g_block_first_row[block], c.g_block_size[block],
                    k);
    }
    mElements.clear();
    mElementStart.assign(1, 0);
    for (int k = 0; k < mEntered; ++k)
        listElements(c, mBorder[at(k)]);
    makeColumns(pool);
    makeComplement();
}

/// The entries of A in one row.
void DynsBorderedFactor::listElements(const DynsConstraints& c, int row) {
    const int constraint = mConstraintOfRow[at(row)];
    const int first = c.constraint_first_block[constraint];
    const int inside = row - c.g_block_first_row[first];
    mElements.push_back({row, c.xepsilon[row]});
    for (int b = first; b < first + c.constraint_n_blocks[constraint]; ++b)
        for (int j = c.g_blocks_heads[c.g_bodies_idx[b]]; j != -1; j = c.g_blocks_next[j])
            for (int r = 0; r < c.g_block_size[j]; ++r) {
                KitReal sum = 0;
                for (int k = 0; k < 6; ++k)
                    sum += c.GM[b][inside][k] * c.G[j][r][k];
                mElements.push_back({c.g_block_first_row[j] + r, sum});
            }
    mElementStart.push_back(static_cast<int>(mElements.size()));
}

void DynsBorderedFactor::makeColumns(KitThreadPool* pool) {
    mMissing.clear();
    for (int k = 0; k < static_cast<int>(mBorder.size()); ++k) {
        const int row = mBorder[at(k)];
        if (mColumns.find(row) != nullptr)
            continue;
        KitReal* column = mColumns.add(row);
        std::fill(column, column + mInBase.size(), 0.0);
        if (k >= mEntered)
            column[row] = 1;
        else
            for (int e = mElementStart[at(k)]; e < mElementStart[at(k) + 1]; ++e)
                if (mInBase[at(mElements[at(e)].row)] != 0)
                    column[mElements[at(e)].row] += mElements[at(e)].value;
        mMissing.push_back(column);
    }
    mColumnCount += static_cast<int>(mMissing.size());
    mFactor.solveMany(mMissing, pool);
}

/// A_eB x of the k-th row that entered, for an x that is zero outside of the base.
KitReal DynsBorderedFactor::productWithElements(int k, const KitReal* x) const {
    KitReal sum = 0;
    for (int e = mElementStart[at(k)]; e < mElementStart[at(k) + 1]; ++e)
        sum += mElements[at(e)].value * x[mElements[at(e)].row];
    return sum;
}

void DynsBorderedFactor::makeComplement() {
    const int n = static_cast<int>(mBorder.size());
    mComplement.resize(at(n) * at(n));
    for (int i = 0; i < n; ++i) {
        KitReal* out = mComplement.data() + at(i) * at(n);
        for (int j = 0; j <= i; ++j) {
            const KitReal* column = mColumns.find(mBorder[at(j)]);
            if (i < mEntered)
                out[j] = -productWithElements(i, column);
            else
                out[j] = j < mEntered ? column[mBorder[at(i)]] : -column[mBorder[at(i)]];
        }
        if (i >= mEntered)
            continue;
        for (int e = mElementStart[at(i)]; e < mElementStart[at(i) + 1]; ++e)
            for (int j = 0; j <= i; ++j)
                if (mElements[at(e)].row == mBorder[at(j)])
                    out[j] += mElements[at(e)].value;
    }
    DynsFactorDenseLdl(mComplement.data(), n, n, mEntered);
}

void DynsBorderedFactor::solve(KitReal* x, KitThreadPool* pool) {
    if (mBorder.empty()) {
        mFactor.solve(x, pool);
        return;
    }
    const int n = static_cast<int>(mBorder.size());
    mSolution.resize(mInBase.size());
    for (std::size_t i = 0; i < mInBase.size(); ++i)
        mSolution[i] = mInBase[i] != 0 ? x[i] : 0;
    for (int k = mEntered; k < n; ++k)
        mSolution[at(mBorder[at(k)])] = 0;
    mFactor.solve(mSolution.data(), pool);
    mForces.resize(at(n));
    for (int k = 0; k < n; ++k) {
        const int row = mBorder[at(k)];
        mForces[at(k)] =
            k < mEntered ? x[row] - productWithElements(k, mSolution.data()) : mSolution[at(row)];
    }
    DynsSolveDenseLdl(mComplement.data(), mForces.data(), n, n);
    for (int k = 0; k < n; ++k) {
        const KitReal* column = mColumns.find(mBorder[at(k)]);
        const KitReal force = k < mEntered ? -mForces[at(k)] : mForces[at(k)];
        for (std::size_t i = 0; i < mSolution.size(); ++i)
            mSolution[i] += force * column[i];
    }
    for (int k = mEntered; k < n; ++k) // rows that left are none of this system
        mSolution[at(mBorder[at(k)])] = x[mBorder[at(k)]];
    for (std::size_t i = 0; i < mSolution.size(); ++i)
        if (mInBase[i] != 0)
            x[i] = mSolution[i];
    for (int k = 0; k < mEntered; ++k)
        x[mBorder[at(k)]] = mForces[at(k)];
}
