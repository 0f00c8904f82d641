#include "dense_kernels.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace {

/// Keeps a pivot of rounding size from giving an infinite factor, in the unit of L.
constexpr KitReal kSmallestDiagonal = 1e-14;

// A tile is held in registers over the whole length k.
void tilePortable(KitReal* C, std::size_t ldc, const KitReal* A, std::size_t lda, const KitReal* B,
                  std::size_t ldb, int k, int columns) {
    for (int j = 0; j < columns; ++j) {
        KitReal sum[kDynsPanelRows] = {};
        for (int p = 0; p < k; ++p) {
            const KitReal* a = A + static_cast<std::size_t>(p) * lda;
            const KitReal b = B[static_cast<std::size_t>(p) * ldb + static_cast<std::size_t>(j)];
            for (int i = 0; i < kDynsPanelRows; ++i)
                sum[i] += a[i] * b;
        }
        KitReal* c = C + static_cast<std::size_t>(j) * ldc;
        for (int i = 0; i < kDynsPanelRows; ++i)
            c[i] -= sum[i];
    }
}

#if defined(__x86_64__)
template <int Columns>
__attribute__((target("avx2,fma"))) void tileAvx2Columns(KitReal* C, std::size_t ldc,
                                                         const KitReal* A, std::size_t lda,
                                                         const KitReal* B, std::size_t ldb, int k) {
    __m256d low[Columns], high[Columns];
    for (int j = 0; j < Columns; ++j)
        low[j] = high[j] = _mm256_setzero_pd();
    for (int p = 0; p < k; ++p, A += lda, B += ldb) {
        const __m256d a0 = _mm256_loadu_pd(A), a1 = _mm256_loadu_pd(A + 4);
        for (int j = 0; j < Columns; ++j) {
            const __m256d b = _mm256_broadcast_sd(B + j);
            low[j] = _mm256_fmadd_pd(a0, b, low[j]);
            high[j] = _mm256_fmadd_pd(a1, b, high[j]);
        }
    }
    for (int j = 0; j < Columns; ++j, C += ldc) {
        _mm256_storeu_pd(C, _mm256_sub_pd(_mm256_loadu_pd(C), low[j]));
        _mm256_storeu_pd(C + 4, _mm256_sub_pd(_mm256_loadu_pd(C + 4), high[j]));
    }
}

void tileAvx2(KitReal* C, std::size_t ldc, const KitReal* A, std::size_t lda, const KitReal* B,
              std::size_t ldb, int k, int columns) {
    if (columns == 4)
        tileAvx2Columns<4>(C, ldc, A, lda, B, ldb, k);
    else if (columns == 3)
        tileAvx2Columns<3>(C, ldc, A, lda, B, ldb, k);
    else if (columns == 2)
        tileAvx2Columns<2>(C, ldc, A, lda, B, ldb, k);
    else
        tileAvx2Columns<1>(C, ldc, A, lda, B, ldb, k);
}

template <int Columns>
__attribute__((target("avx512f"))) void
tileAvx512Columns(KitReal* C, std::size_t ldc, const KitReal* A, std::size_t lda, const KitReal* B,
                  std::size_t ldb, int k) {
    // Two sums a column, over even and odd p, so that eight chains are in flight.
    __m512d even[Columns], odd[Columns];
    for (int j = 0; j < Columns; ++j)
        even[j] = odd[j] = _mm512_setzero_pd();
    int p = 0;
    for (; p + 2 <= k; p += 2, A += 2 * lda, B += 2 * ldb) {
        const __m512d a0 = _mm512_loadu_pd(A), a1 = _mm512_loadu_pd(A + lda);
        for (int j = 0; j < Columns; ++j) {
            even[j] = _mm512_fmadd_pd(a0, _mm512_set1_pd(B[j]), even[j]);
            odd[j] =
                _mm512_fmadd_pd(a1, _mm512_set1_pd(B[ldb + static_cast<std::size_t>(j)]), odd[j]);
        }
    }
    if (p < k) {
        const __m512d a0 = _mm512_loadu_pd(A);
        for (int j = 0; j < Columns; ++j)
            even[j] = _mm512_fmadd_pd(a0, _mm512_set1_pd(B[j]), even[j]);
    }
    for (int j = 0; j < Columns; ++j, C += ldc)
        _mm512_storeu_pd(C, _mm512_sub_pd(_mm512_loadu_pd(C), _mm512_add_pd(even[j], odd[j])));
}

void tileAvx512(KitReal* C, std::size_t ldc, const KitReal* A, std::size_t lda, const KitReal* B,
                std::size_t ldb, int k, int columns) {
    if (columns == 4)
        tileAvx512Columns<4>(C, ldc, A, lda, B, ldb, k);
    else if (columns == 3)
        tileAvx512Columns<3>(C, ldc, A, lda, B, ldb, k);
    else if (columns == 2)
        tileAvx512Columns<2>(C, ldc, A, lda, B, ldb, k);
    else
        tileAvx512Columns<1>(C, ldc, A, lda, B, ldb, k);
}
#endif

struct Variants {
    DynsKernelVariant list[3];
    std::size_t count = 0;

    Variants() noexcept {
#if defined(__x86_64__)
        __builtin_cpu_init();
        if (__builtin_cpu_supports("avx512f"))
            list[count++] = {tileAvx512, "avx512"};
        if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"))
            list[count++] = {tileAvx2, "avx2"};
#endif
        list[count++] = {tilePortable, "portable"};
    }
};

const Variants kVariants;

std::size_t at(int row, int column, int ld) noexcept {
    return static_cast<std::size_t>(column) * static_cast<std::size_t>(ld) +
           static_cast<std::size_t>(row);
}

/// Factors `count` neighbouring columns that already carry the updates of all columns before them.
/// Column and rows start at `first`.
void factorColumns(KitReal* panel, int ld, int rows, int first, int count,
                   KitReal* inverseDiagonal) noexcept {
    for (int j = first; j < first + count; ++j) {
        KitReal* column = panel + at(0, j, ld);
        for (int p = first; p < j; ++p) {
            const KitReal* earlier = panel + at(0, p, ld);
            const KitReal factor = earlier[j];
            for (int i = j; i < rows; ++i)
                column[i] -= factor * earlier[i];
        }
        const KitReal diagonal = std::sqrt(std::abs(column[j]));
        const KitReal inverse = 1 / (diagonal + kSmallestDiagonal);
        column[j] = diagonal;
        inverseDiagonal[j] = inverse;
        for (int i = j + 1; i < rows; ++i)
            column[i] *= inverse;
    }
}

} // namespace

void DynsSubtractProduct(KitReal* C, int ldc, int m, int n, const KitReal* A, int lda,
                         const KitReal* B, int ldb, int k) noexcept {
    const DynsTile tile = kVariants.list[0].tile;
    for (int j = 0; j < n; j += kDynsTileColumns)
        for (int i = 0; i < m; i += kDynsPanelRows)
            tile(C + at(i, j, ldc), static_cast<std::size_t>(ldc), A + i,
                 static_cast<std::size_t>(lda), B + j, static_cast<std::size_t>(ldb), k,
                 std::min(kDynsTileColumns, n - j));
}

void DynsSubtractFromColumns(KitReal* panel, int ld, int rows, int first, int count,
                             const KitReal* A, const KitReal* L, int k) noexcept {
    const int start = first / kDynsPanelRows * kDynsPanelRows; // whole groups end with the column
    DynsSubtractProduct(panel + at(start, first, ld), ld, rows - start, count, A + start, ld,
                        L + first, ld, k);
}

void DynsFactorColumns(KitReal* panel, int ld, int rows, int first, int count,
                       KitReal* inverseDiagonal) noexcept {
    constexpr int kBlock = 8;
    const KitReal* L = panel + at(0, first, ld);
    for (int j = first; j < first + count;) {
        const int block = std::min(kBlock - j % kBlock, first + count - j);
        if (j > first)
            DynsSubtractFromColumns(panel, ld, rows, j, block, L, L, j - first);
        factorColumns(panel, ld, rows, j, block, inverseDiagonal);
        j += block;
    }
}

void DynsSubtractLower(KitReal* update, int ldu, int n, const KitReal* A, const KitReal* B, int ld,
                       int k) noexcept {
    for (int j = 0; j < n; j += kDynsTileColumns) {
        const int start = j / kDynsPanelRows * kDynsPanelRows;
        DynsSubtractProduct(update + at(start, j, ldu), ldu, n - start,
                            std::min(kDynsTileColumns, n - j), A + start, ld, B + j, ld, k);
    }
}

std::span<const DynsKernelVariant> DynsKernelVariants() noexcept {
    return {kVariants.list, kVariants.count};
}
