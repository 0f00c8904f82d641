#pragma once
#include "dense_ldl.h"
#include "sweep_block_layout.h"

#include <Dyns/smv_boxed_keller.h>

#include <algorithm>
#include <cstdint>

/// The boxed LCP of one constraint's own rows: M z - b = w, z in [lower, upper], w complementary.
struct DynsSmallBox {
    const KitReal* M;       ///< row-major
    const KitReal* inverse; ///< of M, as DynsSmallBoxInvert left it
    const KitReal *b, *lower, *upper;
    KitReal* z;             ///< result
    std::uint32_t indexSet; ///< two bits a row; tried first, result
    bool isDefinite;        ///< the inverse is good
};

/// Violation, in the unit of w, that counts as none.
constexpr KitReal kDynsSmallBoxTolerance = 1e-12;

enum DynsSmallIndex : std::uint32_t {
    kDynsSmallFree = 0,
    kDynsSmallLower = 1,
    kDynsSmallUpper = 2
};

[[nodiscard]] inline std::uint32_t DynsSmallIndexOf(std::uint32_t set, int row) noexcept {
    return set >> (2 * row) & 3U;
}

[[nodiscard]] inline std::uint32_t DynsWithSmallIndex(std::uint32_t set, int row,
                                                      std::uint32_t index) noexcept {
    return (set & ~(3U << (2 * row))) | index << (2 * row);
}

/// The inverse of a symmetric matrix of n rows. Answers false if the rows nearly depend on each other.
bool DynsSmallBoxInvert(const KitReal* M, int n, KitReal* inverse) noexcept;

/// Solves by Keller's pivoting.
void DynsSmallBoxPivot(DynsSmallBox& box, int n);

namespace dyns_small_box {

/// The free rows of three for the forces of the tight ones: in closed form.
inline void solveFreeOfThree(const DynsSmallBox& box) noexcept {
    const KitReal* M = box.M;
    KitReal* z = box.z;
    const std::uint32_t set = box.indexSet;
    if (set == 0) {
        const KitReal *I = box.inverse, *b = box.b;
        z[0] = I[0] * b[0] + I[1] * b[1] + I[2] * b[2];
        z[1] = I[3] * b[0] + I[4] * b[1] + I[5] * b[2];
        z[2] = I[6] * b[0] + I[7] * b[1] + I[8] * b[2];
        return;
    }
    int rows[2] = {}, count = 0;
    for (int i = 0; i < 3; ++i)
        if (DynsSmallIndexOf(set, i) == kDynsSmallFree)
            rows[count++] = i, z[i] = 0;
    if (count == 0)
        return;
    KitReal r[2];
    for (int k = 0; k < count; ++k) {
        const KitReal* row = M + 3 * rows[k];
        r[k] = box.b[rows[k]] - (row[0] * z[0] + row[1] * z[1] + row[2] * z[2]);
    }
    if (count == 1) {
        z[rows[0]] = r[0] / M[4 * rows[0]];
        return;
    }
    const KitReal p = M[4 * rows[0]], q = M[4 * rows[1]], s = M[3 * rows[0] + rows[1]];
    const KitReal scale = 1 / (p * q - s * s);
    z[rows[0]] = (q * r[0] - s * r[1]) * scale;
    z[rows[1]] = (p * r[1] - s * r[0]) * scale;
}

inline void solveFreeOfMany(const DynsSmallBox& box, int n) noexcept {
    if (box.indexSet == 0) {
        for (int i = 0; i < n; ++i) {
            KitReal sum = 0;
            for (int j = 0; j < n; ++j)
                sum += box.inverse[i * n + j] * box.b[j];
            box.z[i] = sum;
        }
        return;
    }
    KitReal dense[kSmvMaxRows * kSmvMaxRows], x[kSmvMaxRows];
    int rows[kSmvMaxRows] = {}, count = 0;
    for (int i = 0; i < n; ++i)
        if (DynsSmallIndexOf(box.indexSet, i) == kDynsSmallFree)
            rows[count++] = i, box.z[i] = 0;
    for (int k = 0; k < count; ++k) {
        const KitReal* row = box.M + rows[k] * n;
        x[k] = box.b[rows[k]];
        for (int j = 0; j < n; ++j)
            x[k] -= row[j] * box.z[j];
        for (int l = 0; l <= k; ++l)
            dense[k * count + l] = row[rows[l]];
    }
    DynsFactorDenseLdl(dense, count, count);
    DynsSolveDenseLdl(dense, x, count, count);
    for (int k = 0; k < count; ++k)
        box.z[rows[k]] = x[k];
}

/// Puts the tight rows at their bounds and solves for the free ones.
template <class Rows>
void solveIndexSet(const DynsSmallBox& box, Rows n) noexcept {
    for (int i = 0; i < n.rows(); ++i) {
        const std::uint32_t index = DynsSmallIndexOf(box.indexSet, i);
        if (index != kDynsSmallFree)
            box.z[i] =
                index == kDynsSmallLower ? std::min(box.lower[i], box.upper[i]) : box.upper[i];
    }
    if constexpr (requires {
                      requires Rows::rows()
                      == 3;
                  })
        solveFreeOfThree(box);
    else
        solveFreeOfMany(box, n.rows());
}

/// The index set with each row changed that violates its condition; what is not a number does.
template <class Rows>
[[nodiscard]] std::uint32_t corrected(const DynsSmallBox& box, Rows n) noexcept {
    std::uint32_t next = box.indexSet;
    for (int i = 0; i < n.rows(); ++i) {
        const std::uint32_t index = DynsSmallIndexOf(box.indexSet, i);
        if (index == kDynsSmallFree) {
            if (!(box.z[i] >= box.lower[i]))
                next = DynsWithSmallIndex(next, i, kDynsSmallLower);
            else if (!(box.z[i] <= box.upper[i]))
                next = DynsWithSmallIndex(next, i, kDynsSmallUpper);
            continue;
        }
        if (!(box.lower[i] < box.upper[i]))
            continue;
        KitReal w = -box.b[i];
        for (int j = 0; j < n.rows(); ++j)
            w += box.M[i * n.rows() + j] * box.z[j];
        const KitReal violation = index == kDynsSmallLower ? -w : w;
        if (!(violation <= kDynsSmallBoxTolerance))
            next = DynsWithSmallIndex(next, i, kDynsSmallFree);
    }
    return next;
}

/// Rows without width, also those whose bounds cross, are at the lesser bound, and others are not at a bound that is absent.
template <class Rows>
[[nodiscard]] std::uint32_t admissible(const DynsSmallBox& box, Rows n) noexcept {
    std::uint32_t set = box.indexSet;
    for (int i = 0; i < n.rows(); ++i) {
        const std::uint32_t index = DynsSmallIndexOf(set, i);
        if (!(box.lower[i] < box.upper[i]))
            set = DynsWithSmallIndex(set, i, kDynsSmallLower);
        else if ((index == kDynsSmallLower && box.lower[i] == -kKitInfinity) ||
                 (index == kDynsSmallUpper && box.upper[i] == kKitInfinity))
            set = DynsWithSmallIndex(set, i, kDynsSmallFree);
    }
    return set;
}

} // namespace dyns_small_box

/// Solves the box. From one visit to the next its index set seldom changes, so that the last one is
/// tried, and then those that come of it when all rows that violate their condition change at once;
/// where that does not settle, Keller's pivoting finds the same point.
template <class Rows>
void DynsSolveSmallBox(DynsSmallBox& box, Rows n) {
    if (box.isDefinite) {
        box.indexSet = dyns_small_box::admissible(box, n);
        for (int tries = 2 * n.rows() + 2; tries > 0; --tries) {
            dyns_small_box::solveIndexSet(box, n);
            const std::uint32_t next = dyns_small_box::corrected(box, n);
            if (next == box.indexSet)
                return;
            box.indexSet = next;
        }
    }
    DynsSmallBoxPivot(box, n.rows());
}
