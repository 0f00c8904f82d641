#pragma once
#include <Kit/KitTypes.h>

#include <cstddef>

constexpr int kDynsPanelRows = 8;
constexpr int kDynsTileColumns = 4;

/// C -= A B^T on a tile of kDynsPanelRows rows and up to kDynsTileColumns columns, all but B
/// column-major: the entry of B in row j and column p is B[p * ldb + j], or B[j * ldb + p] where the
/// tile is one of a transposed B.
using DynsTile = void (*)(KitReal* C, std::size_t ldc, const KitReal* A, std::size_t lda,
                          const KitReal* B, std::size_t ldb, int k, int columns);

/// The innermost loops of the factorisation and of the solves, in one instruction set. They work on
/// whole groups of kDynsPanelRows rows: entries behind the last row of a column are read and written.
/// L is column-major, lower triangular in its first rows, and inverse holds 1/L_jj.
struct DynsKernelVariant {
    const char* name; ///< "portable", "avx2" or "avx512"
    DynsTile tile, tileTransposed;
    /// X L^T = C in place on the given rows, a multiple of kDynsPanelRows; up to kDynsPanelRows
    /// columns.
    void (*solveRows)(KitReal* C, std::size_t ldc, int rows, const KitReal* L, std::size_t ldl,
                      const KitReal* inverse, int columns);
    /// Takes the pivots' part of a panel out of one right-hand side: L x = y for the pivots, and
    /// y -= L x for the rows behind them.
    void (*forward)(const KitReal* L, std::size_t ld, int rows, int pivots, const KitReal* inverse,
                    KitReal* y);
    /// L^T x = y for the pivots, given x of the rows behind them. Behind the last row y is 0 up to
    /// the end of the group.
    void (*backward)(const KitReal* L, std::size_t ld, int rows, int pivots, const KitReal* inverse,
                     KitReal* y);
};

extern const DynsKernelVariant kDynsPortableKernels;
#if defined(__x86_64__)
extern const DynsKernelVariant kDynsAvx2Kernels, kDynsAvx512Kernels;
#endif
