#include "small_box.h"

#include <Dyns/DynsConstraints.h>

namespace {

/// A pivot below this part of its diagonal entry leaves too few digits to an explicit inverse.
constexpr KitReal kSmallestPivot = 1e-6;

} // namespace

bool DynsSmallBoxInvert(const KitReal* M, int n, KitReal* inverse) noexcept {
    KitReal factor[kSmvMaxRows * kSmvMaxRows], column[kSmvMaxRows];
    std::copy(M, M + n * n, factor);
    DynsFactorDenseLdl(factor, n, n);
    bool good = true;
    for (int i = 0; i < n; ++i)
        good = good && factor[i * n + i] > kSmallestPivot * M[i * n + i];
    for (int j = 0; j < n; ++j) {
        std::fill(column, column + n, 0.0);
        column[j] = 1;
        DynsSolveDenseLdl(factor, column, n, n);
        for (int i = 0; i < n; ++i)
            inverse[i * n + j] = column[i];
    }
    return good;
}

void DynsSmallBoxPivot(DynsSmallBox& box, int n) {
    int index[kSmvMaxRows] = {};
    smv_solve_boxed(box.M, n, box.z, box.b, box.lower, box.upper, index);
    box.indexSet = 0;
    for (int i = 0; i < n; ++i) {
        const std::uint32_t small = index[i] == kDynsIndexLower   ? kDynsSmallLower
                                    : index[i] == kDynsIndexUpper ? kDynsSmallUpper
                                                                  : kDynsSmallFree;
        box.indexSet = DynsWithSmallIndex(box.indexSet, i, small);
    }
}
