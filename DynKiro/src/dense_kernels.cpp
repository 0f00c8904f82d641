#include "dense_kernels.h"

#include <Kit/KitProcessor.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

/// Keeps a pivot of rounding size from giving an infinite factor, in the unit of L.
constexpr KitReal kSmallestDiagonal = 1e-14;

struct Variants {
    const DynsKernelVariant* list[3];
    std::size_t count = 0;

    Variants() noexcept {
#if defined(__x86_64__)
        const KitVectorSet set = KitProcessorGetVectorSet();
        if (set >= KitVectorSet::kAvx512)
            list[count++] = &kDynsAvx512Kernels;
        if (set >= KitVectorSet::kAvx2)
            list[count++] = &kDynsAvx2Kernels;
#endif
        list[count++] = &kDynsPortableKernels;
    }
};

const Variants kVariants;

std::size_t wide(int i) noexcept {
    return static_cast<std::size_t>(i);
}

std::size_t at(int row, int column, int ld) noexcept {
    return wide(column) * wide(ld) + wide(row);
}

/// Factors up to kDynsPanelRows neighbouring columns that already carry the updates of all columns
/// before them.
void factorBlock(KitReal* panel, int ld, int end, int first, int count,
                 KitReal* inverseDiagonal) noexcept {
    const int begin = std::min(end, DynsPaddedRows(first + count)); // of the whole groups below
    for (int j = first; j < first + count; ++j) {
        KitReal* column = panel + at(0, j, ld);
        for (int p = first; p < j; ++p) {
            const KitReal* earlier = panel + at(0, p, ld);
            const KitReal factor = earlier[j];
            for (int i = j; i < begin; ++i)
                column[i] -= factor * earlier[i];
        }
        const KitReal diagonal = std::sqrt(std::abs(column[j]));
        const KitReal inverse = 1 / (diagonal + kSmallestDiagonal);
        column[j] = diagonal;
        inverseDiagonal[j] = inverse;
        for (int i = j + 1; i < begin; ++i)
            column[i] *= inverse;
    }
    if (begin < end)
        kVariants.list[0]->solveRows(panel + at(begin, first, ld), wide(ld), end - begin,
                                     panel + at(first, first, ld), wide(ld),
                                     inverseDiagonal + first, count);
}

/// Calls f with the first column and the count of columns of each block that is factored at once.
template <typename F>
void forEachBlock(int first, int count, F f) {
    for (int j = first; j < first + count;) {
        const int block = std::min(kDynsPanelRows - j % kDynsPanelRows, first + count - j);
        f(j, block);
        j += block;
    }
}

/// Solves, for all sides, with the triangle of up to kDynsTileColumns pivots.
void forwardTriangle(const KitReal* L, int ld, int pivots, const KitReal* inverse,
                     KitReal* Y) noexcept {
    for (int k = 0; k < pivots; ++k) {
        KitReal* y = Y + wide(k) * kDynsManySides;
        for (int p = 0; p < k; ++p)
            for (int r = 0; r < kDynsManySides; ++r)
                y[r] -= L[at(k, p, ld)] * Y[p * kDynsManySides + r];
        for (int r = 0; r < kDynsManySides; ++r)
            y[r] *= inverse[k];
    }
}

void backwardTriangle(const KitReal* L, int ld, int pivots, const KitReal* inverse,
                      KitReal* Y) noexcept {
    for (int k = pivots - 1; k >= 0; --k) {
        KitReal* y = Y + wide(k) * kDynsManySides;
        for (int p = k + 1; p < pivots; ++p)
            for (int r = 0; r < kDynsManySides; ++r)
                y[r] -= L[at(p, k, ld)] * Y[p * kDynsManySides + r];
        for (int r = 0; r < kDynsManySides; ++r)
            y[r] *= inverse[k];
    }
}

} // namespace

void DynsSubtractProduct(KitReal* C, int ldc, int m, int n, const KitReal* A, int lda,
                         const KitReal* B, int ldb, int k) noexcept {
    const DynsTile tile = kVariants.list[0]->tile;
    for (int j = 0; j < n; j += kDynsTileColumns)
        for (int i = 0; i < m; i += kDynsPanelRows)
            tile(C + at(i, j, ldc), wide(ldc), A + i, wide(lda), B + j, wide(ldb), k,
                 std::min(kDynsTileColumns, n - j));
}

void DynsSubtractFromColumns(KitReal* panel, int ld, int end, int first, int count,
                             const KitReal* A, const KitReal* L, int k) noexcept {
    const int start = first / kDynsPanelRows * kDynsPanelRows; // whole groups end with the column
    DynsSubtractProduct(panel + at(start, first, ld), ld, end - start, count, A + start, ld,
                        L + first, ld, k);
}

void DynsFactorColumns(KitReal* panel, int ld, int end, int first, int count,
                       KitReal* inverseDiagonal) noexcept {
    const KitReal* L = panel + at(0, first, ld);
    forEachBlock(first, count, [&](int j, int block) {
        if (j > first)
            DynsSubtractFromColumns(panel, ld, end, j, block, L, L, j - first);
        factorBlock(panel, ld, end, j, block, inverseDiagonal);
    });
}

void DynsFactorRowsBelow(KitReal* panel, int ld, int begin, int end, int first, int count,
                         const KitReal* inverseDiagonal) noexcept {
    const KitReal* L = panel + at(0, first, ld);
    const int rows = DynsPaddedRows(end - begin);
    forEachBlock(first, count, [&](int j, int block) {
        KitReal* columns = panel + at(begin, j, ld);
        if (j > first)
            DynsSubtractProduct(columns, ld, rows, block, L + begin, ld, L + j, ld, j - first);
        kVariants.list[0]->solveRows(columns, wide(ld), rows, panel + at(j, j, ld), wide(ld),
                                     inverseDiagonal + j, block);
    });
}

void DynsSubtractLower(KitReal* update, int ldu, int n, int first, int count, const KitReal* A,
                       const KitReal* B, int ld, int k) noexcept {
    for (int j = first; j < first + count; j += kDynsTileColumns) {
        const int start = j / kDynsPanelRows * kDynsPanelRows;
        DynsSubtractProduct(update + at(start, j, ldu), ldu, n - start,
                            std::min(kDynsTileColumns, first + count - j), A + start, ld, B + j, ld,
                            k);
    }
}

// With the sides as the rows of a tile, the rows behind a block of pivots are the tile's columns, and
// a panel of L the factor B of its product.
void DynsForwardMany(const KitReal* L, int ld, int rows, int pivots, const KitReal* inverseDiagonal,
                     KitReal* Y) noexcept {
    const DynsTile tile = kVariants.list[0]->tile;
    for (int i = 0; i < rows;) {
        const int known = std::min(i, pivots);
        const int count = std::min(kDynsTileColumns, (i < pivots ? pivots : rows) - i);
        KitReal* y = Y + wide(i) * kDynsManySides;
        tile(y, kDynsManySides, Y, kDynsManySides, L + i, wide(ld), known, count);
        if (i < pivots)
            forwardTriangle(L + at(i, i, ld), ld, count, inverseDiagonal + i, y);
        i += count;
    }
}

void DynsBackwardMany(const KitReal* L, int ld, int rows, int pivots,
                      const KitReal* inverseDiagonal, KitReal* Y) noexcept {
    const DynsTile tile = kVariants.list[0]->tileTransposed;
    for (int i = (pivots - 1) / kDynsTileColumns * kDynsTileColumns; i >= 0;
         i -= kDynsTileColumns) {
        const int count = std::min(kDynsTileColumns, pivots - i), behind = i + count;
        KitReal* y = Y + wide(i) * kDynsManySides;
        tile(y, kDynsManySides, Y + wide(behind) * kDynsManySides, kDynsManySides,
             L + at(behind, i, ld), wide(ld), rows - behind, count);
        backwardTriangle(L + at(i, i, ld), ld, count, inverseDiagonal + i, y);
    }
}

std::span<const DynsKernelVariant* const> DynsKernelVariants() noexcept {
    return {kVariants.list, kVariants.count};
}
