#include "dense_ldl.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

std::size_t at(int row, int column, int ld) noexcept {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(ld) +
           static_cast<std::size_t>(column);
}

/// In eight sums, side by side.
KitReal dot(const KitReal* a, const KitReal* b, int n) noexcept {
    KitReal sums[8] = {};
    int i = 0;
    for (; i + 8 <= n; i += 8)
        for (int k = 0; k < 8; ++k)
            sums[k] += a[i + k] * b[i + k];
    for (; i < n; ++i)
        sums[i % 8] += a[i] * b[i];
    return ((sums[0] + sums[4]) + (sums[1] + sums[5])) +
           ((sums[2] + sums[6]) + (sums[3] + sums[7]));
}

KitReal smallestPivot(const KitReal* M, int begin, int end, int ld) noexcept {
    KitReal largest = 0;
    for (int k = begin; k < end; ++k)
        largest = std::max(largest, std::abs(M[at(k, k, ld)]));
    return kDynsDependentPivot * largest;
}

} // namespace

void DynsFactorDenseLdl(KitReal* M, int n, int ld) noexcept {
    DynsFactorDenseLdl(M, n, ld, n);
}

// Row by row: first the row of L times D by forward substitution, then the division by D. Both
// inner loops run over contiguous rows. The column of a dependent row stays zero below its pivot,
// so that its unknown couples to nothing.
void DynsFactorDenseLdl(KitReal* M, int n, int ld, int positive) noexcept {
    const KitReal smallest = smallestPivot(M, 0, positive, ld);
    const KitReal smallestNegative = smallestPivot(M, positive, n, ld);
    for (int i = 0; i < n; ++i) {
        KitReal* row = M + at(i, 0, ld);
        for (int k = 1; k < i; ++k)
            row[k] -= dot(M + at(k, 0, ld), row, k);
        KitReal pivot = row[i];
        for (int k = 0; k < i; ++k) {
            const KitReal d = M[at(k, k, ld)];
            const KitReal scaled = d != 0 ? row[k] / d : 0;
            pivot -= scaled * row[k];
            row[k] = scaled;
        }
        // a pivot that is not a number is dependent too
        const bool stands = i < positive ? pivot > smallest : -pivot > smallestNegative;
        row[i] = stands ? pivot : 0;
    }
}

void DynsSolveDenseLdl(const KitReal* M, KitReal* b, int n, int ld) noexcept {
    for (int i = 0; i < n; ++i) {
        const KitReal* row = M + at(i, 0, ld);
        b[i] -= dot(row, b, i);
    }
    for (int i = 0; i < n; ++i) {
        const KitReal d = M[at(i, i, ld)];
        b[i] = d != 0 ? b[i] / d : 0;
    }
    for (int i = n - 1; i > 0; --i) {
        const KitReal* row = M + at(i, 0, ld);
        const KitReal value = b[i];
        for (int j = 0; j < i; ++j)
            b[j] -= row[j] * value;
    }
}
