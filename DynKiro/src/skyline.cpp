#include "skyline.h"

#include "constraint_block.h"

#include <Dyns/DynsConstraints.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr KitReal kReplacedPivot = 1e-12F;
/// Keeps a pivot of rounding size from giving an infinite factor, in the unit of L.
constexpr KitReal kSmallestDiagonal = 1e-14;

} // namespace

void DynsSkyline::layOut() {
    mStart.resize(mMinColumn.size());
    std::ptrdiff_t count = 0;
    for (int i = 0; i < size(); ++i) {
        mStart[index(i)] = count;
        count += i - mMinColumn[index(i)] + 1;
    }
    mEntries.assign(static_cast<std::size_t>(count), 0.0);
    mInverse.assign(mMinColumn.size(), 0.0);
    mProduct.resize(mMinColumn.size());
}

void DynsSkyline::reset(int n) {
    mMinColumn.resize(index(n));
    for (int i = 0; i < n; ++i)
        mMinColumn[index(i)] = i;
    layOut();
}

// Two constraints are coupled if they share a body; the first partner of a row gives its start.
void DynsSkyline::build(const DynsConstraints& c) {
    const int n = c.n_constraint_rows;
    mMinColumn.resize(index(n));
    for (int i = 0; i < n; ++i)
        mMinColumn[index(i)] = i;
    for (int b = 0; b < c.n_g_blocks; ++b) {
        const int partner = c.g_block_first_row[c.g_blocks_heads[c.g_bodies_idx[b]]];
        const int first = c.g_block_first_row[b];
        for (int r = first; r < first + c.g_block_size[b]; ++r)
            mMinColumn[index(r)] = std::min(mMinColumn[index(r)], partner);
    }
    layOut();
    for (int i = 0; i < n; ++i)
        row(i)[i] = c.xepsilon[i];
    for (int k = 0; k < c.n_constraints; ++k) {
        const int firstBlock = c.constraint_first_block[k];
        const int first = DynsConstraintFirstRow(c, k), rows = DynsConstraintRows(c, k);
        KitReal product[kDynsMaxConstraintRows * kDynsMaxConstraintRows] = {};
        DynsAddOwnProducts(c, k, product, rows);
        addLower(product, first, rows, first, rows);
        for (int b = firstBlock; b < firstBlock + c.constraint_n_blocks[k]; ++b)
            for (int j = c.g_blocks_heads[c.g_bodies_idx[b]]; j < firstBlock;
                 j = c.g_blocks_next[j]) {
                const int columns = c.g_block_size[j];
                std::fill(product, product + rows * columns, 0.0);
                DynsAddBlockProduct(c, b, j, product, columns);
                addLower(product, first, rows, c.g_block_first_row[j], columns);
            }
    }
}

/// Adds what is not right of the diagonal of a row-major block at (firstRow, firstColumn).
void DynsSkyline::addLower(const KitReal* block, int firstRow, int rows, int firstColumn,
                           int columns) {
    for (int i = firstRow; i < firstRow + rows; ++i, block += columns)
        for (int e = 0; e < columns && firstColumn + e <= i; ++e)
            row(i)[firstColumn + e] += block[e];
}

void DynsSkyline::fixRows(const int* index_set) {
    for (int i = 0; i < size(); ++i) {
        for (int k = mMinColumn[index(i)]; k < i; ++k)
            if (index_set[i] != kDynsIndexFree || index_set[k] != kDynsIndexFree)
                row(i)[k] = 0;
        if (index_set[i] != kDynsIndexFree)
            row(i)[i] = 1;
    }
}

KitReal DynsSkyline::get(int i, int j) const {
    const int r = std::max(i, j), column = std::min(i, j);
    return column < mMinColumn[index(r)] ? 0 : row(r)[column];
}

void DynsSkyline::set(int i, int j, KitReal value) {
    const int r = std::max(i, j), column = std::min(i, j);
    const int gap = mMinColumn[index(r)] - column;
    if (gap > 0) {
        mEntries.insert(mEntries.begin() + mStart[index(r)], static_cast<std::size_t>(gap), 0.0);
        mMinColumn[index(r)] = column;
        for (int k = r + 1; k < size(); ++k)
            mStart[index(k)] += gap;
    }
    row(r)[column] = value;
}

void DynsSkyline::factor(DynsBadPivot badPivot) {
    for (int i = 0; i < size(); ++i) {
        KitReal* L = row(i);
        const int first = mMinColumn[index(i)];
        for (int j = first; j <= i; ++j) {
            const KitReal* other = row(j);
            KitReal sum = L[j];
            for (int k = std::max(first, mMinColumn[index(j)]); k < j; ++k)
                sum -= L[k] * other[k];
            if (j < i) {
                L[j] = sum * mInverse[index(j)];
                continue;
            }
            if (badPivot == DynsBadPivot::kReplace) {
                L[i] = std::sqrt(sum > 0 ? sum : kReplacedPivot);
                mInverse[index(i)] = 1 / L[i];
            } else {
                L[i] = std::sqrt(std::abs(sum));
                mInverse[index(i)] = 1 / (L[i] + kSmallestDiagonal);
            }
        }
    }
}

void DynsSkyline::solve(KitReal* x) const {
    for (int i = 0; i < size(); ++i) {
        const KitReal* L = row(i);
        KitReal sum = x[i];
        for (int k = mMinColumn[index(i)]; k < i; ++k)
            sum -= L[k] * x[k];
        x[i] = sum * mInverse[index(i)];
    }
    for (int i = size() - 1; i >= 0; --i) {
        const KitReal* L = row(i);
        x[i] *= mInverse[index(i)];
        for (int k = mMinColumn[index(i)]; k < i; ++k)
            x[k] -= L[k] * x[i];
    }
}

void DynsSkyline::multiply(const KitReal* x, KitReal* y) const {
    std::fill(mProduct.begin(), mProduct.end(), 0.0);
    for (int i = 0; i < size(); ++i)
        for (int k = mMinColumn[index(i)]; k <= i; ++k)
            mProduct[index(k)] += row(i)[k] * x[i];
    for (int i = 0; i < size(); ++i) {
        KitReal sum = 0;
        for (int k = mMinColumn[index(i)]; k <= i; ++k)
            sum += row(i)[k] * mProduct[index(k)];
        y[i] = sum;
    }
}
