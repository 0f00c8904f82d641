#include "dense_ldl.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

std::size_t at(int row, int column, int ld) noexcept {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(ld) +
           static_cast<std::size_t>(column);
}

} // namespace

// Row by row: first the row of L times D by forward substitution, then the division by D. Both
// inner loops run over contiguous rows. The column of a dependent row stays zero below its pivot,
// so that its unknown couples to nothing.
void DynsFactorDenseLdl(KitReal* M, int n, int ld) noexcept {
    KitReal largest = 0;
    for (int k = 0; k < n; ++k)
        largest = std::max(largest, std::abs(M[at(k, k, ld)]));
    const KitReal smallest = kDynsDependentPivot * largest;
    for (int i = 0; i < n; ++i) {
        KitReal* row = M + at(i, 0, ld);
        for (int k = 1; k < i; ++k) {
            const KitReal* other = M + at(k, 0, ld);
            KitReal sum = 0;
            for (int j = 0; j < k; ++j)
                sum += other[j] * row[j];
            row[k] -= sum;
        }
        KitReal pivot = row[i];
        for (int k = 0; k < i; ++k) {
            const KitReal d = M[at(k, k, ld)];
            const KitReal scaled = d != 0 ? row[k] / d : 0;
            pivot -= scaled * row[k];
            row[k] = scaled;
        }
        row[i] = pivot > smallest ? pivot : 0; // a pivot that is not a number is dependent too
    }
}

void DynsSolveDenseLdl(const KitReal* M, KitReal* b, int n, int ld) noexcept {
    for (int i = 0; i < n; ++i) {
        const KitReal* row = M + at(i, 0, ld);
        KitReal sum = 0;
        for (int j = 0; j < i; ++j)
            sum += row[j] * b[j];
        b[i] -= sum;
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
