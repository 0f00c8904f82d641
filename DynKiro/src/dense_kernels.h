#pragma once
#include <Kit/KitTypes.h>

#include <cstddef>
#include <span>

/// Dense kernels of the factorisation. Matrices are column-major with leading dimensions that are
/// multiples of kDynsPanelRows, and have that many entries of slack behind their last column: kernels
/// work on whole groups of rows. The variant is chosen once per process by what the processor has.

constexpr int kDynsPanelRows = 8;
constexpr int kDynsTileColumns = 4;

[[nodiscard]] constexpr int DynsPaddedRows(int rows) noexcept {
    return (rows + kDynsPanelRows - 1) / kDynsPanelRows * kDynsPanelRows;
}

/// C -= A B^T on m rows and n columns, A m by k, B n by k. Up to seven rows behind the m-th of each
/// column of C change too.
void DynsSubtractProduct(KitReal* C, int ldc, int m, int n, const KitReal* A, int lda,
                         const KitReal* B, int ldb, int k) noexcept;

/// Subtracts the part that A L^T has in `count` columns of a panel behind `first`, from the row
/// `first` down. A and L are `rows` by k with the panel's leading dimension.
void DynsSubtractFromColumns(KitReal* panel, int ld, int rows, int first, int count,
                             const KitReal* A, const KitReal* L, int k) noexcept;

/// Partial Cholesky factorisation of a front of `rows` rows: `count` columns of its panel behind
/// `first` carry what the columns before them subtract and become columns of L; inverseDiagonal,
/// by column of the panel, takes their 1/L_ii. A pivot that is not positive is replaced by its size.
void DynsFactorColumns(KitReal* panel, int ld, int rows, int first, int count,
                       KitReal* inverseDiagonal) noexcept;

/// Subtracts A B^T, which must be symmetric, from the lower triangle of an n by n update matrix; A and
/// B are n by k with leading dimension ld.
void DynsSubtractLower(KitReal* update, int ldu, int n, const KitReal* A, const KitReal* B, int ld,
                       int k) noexcept;

/// C -= A B^T on a tile of kDynsPanelRows rows and up to kDynsTileColumns columns.
using DynsTile = void (*)(KitReal* C, std::size_t ldc, const KitReal* A, std::size_t lda,
                          const KitReal* B, std::size_t ldb, int k, int columns);

struct DynsKernelVariant {
    DynsTile tile;
    const char* name; ///< "portable", "avx2" or "avx512"
};

/// The variants that this processor runs, the fastest first, which is the one in use.
[[nodiscard]] std::span<const DynsKernelVariant> DynsKernelVariants() noexcept;
