#pragma once
#include "dense_tiles.h"

#include <span>

/// Dense kernels of the factorisation. Matrices are column-major with leading dimensions that are
/// multiples of kDynsPanelRows, and have that many entries of slack behind their last column: kernels
/// work on whole groups of rows. The variant is chosen once per process by what the processor has.

/// Right-hand sides that a solve takes side by side.
constexpr int kDynsManySides = kDynsPanelRows;

[[nodiscard]] constexpr int DynsPaddedRows(int rows) noexcept {
    return (rows + kDynsPanelRows - 1) / kDynsPanelRows * kDynsPanelRows;
}

/// C -= A B^T on m rows and n columns, A m by k, B n by k. Up to seven rows behind the m-th of each
/// column of C change too.
void DynsSubtractProduct(KitReal* C, int ldc, int m, int n, const KitReal* A, int lda,
                         const KitReal* B, int ldb, int k) noexcept;

/// Subtracts the part that A L^T has in `count` columns of a panel behind `first`, from the row
/// `first` down to the row before `end`. A and L have k columns with the panel's rows and leading
/// dimension. Up to seven rows above `first` and behind `end` change too.
void DynsSubtractFromColumns(KitReal* panel, int ld, int end, int first, int count,
                             const KitReal* A, const KitReal* L, int k) noexcept;

/// Cholesky factor of `count` columns of a panel behind `first`, which carry what all columns before
/// `first` subtract, down to the row before `end`, which is a multiple of kDynsPanelRows or the last
/// row, and lies at or behind the last of the columns. inverseDiagonal, by column of the panel, takes
/// 1/L_ii. A pivot that is not positive is replaced by its size.
void DynsFactorColumns(KitReal* panel, int ld, int end, int first, int count,
                       KitReal* inverseDiagonal) noexcept;

/// The same columns further down, from the row `begin`, a multiple of kDynsPanelRows.
void DynsFactorRowsBelow(KitReal* panel, int ld, int begin, int end, int first, int count,
                         const KitReal* inverseDiagonal) noexcept;

/// Subtracts A B^T, which must be symmetric, from `count` columns behind `first`, a multiple of
/// kDynsTileColumns, of the lower triangle of an n by n update matrix; A and B are n by k with leading
/// dimension ld.
void DynsSubtractLower(KitReal* update, int ldu, int n, int first, int count, const KitReal* A,
                       const KitReal* B, int ld, int k) noexcept;

/// The part of one panel in the solution for kDynsManySides right-hand sides, which stand side by side
/// in each row of Y; see DynsKernelVariant.
void DynsForwardMany(const KitReal* L, int ld, int rows, int pivots, const KitReal* inverseDiagonal,
                     KitReal* Y) noexcept;
void DynsBackwardMany(const KitReal* L, int ld, int rows, int pivots,
                      const KitReal* inverseDiagonal, KitReal* Y) noexcept;

/// The variants that this processor runs, the fastest first, which is the one in use.
[[nodiscard]] std::span<const DynsKernelVariant* const> DynsKernelVariants() noexcept;
