#include "BoxAxes.h"

#if defined(__x86_64__)
#include <cmath>
#include <immintrin.h>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2"))), apply_to = function)
#else
#pragma GCC target("avx2")
#endif

namespace {

using Lanes = __m256d;

inline Lanes load(const KitReal* from) noexcept {
    return _mm256_loadu_pd(from);
}
inline Lanes loadThree(const KitReal* from) noexcept {
    return _mm256_set_pd(0, from[2], from[1], from[0]);
}
inline void store(KitReal* to, Lanes a) noexcept {
    _mm256_storeu_pd(to, a);
}
inline Lanes spread(KitReal a) noexcept {
    return _mm256_set1_pd(a);
}
inline Lanes add(Lanes a, Lanes b) noexcept {
    return _mm256_add_pd(a, b);
}
inline Lanes subtract(Lanes a, Lanes b) noexcept {
    return _mm256_sub_pd(a, b);
}
inline Lanes multiply(Lanes a, Lanes b) noexcept {
    return _mm256_mul_pd(a, b);
}
inline Lanes absolute(Lanes a) noexcept {
    return _mm256_andnot_pd(_mm256_set1_pd(-0.0), a);
}
/// Lane j takes what lane j + 1, or j + 2, of the first three had.
inline Lanes rotate1(Lanes a) noexcept {
    return _mm256_permute4x64_pd(a, 0xC9);
}
inline Lanes rotate2(Lanes a) noexcept {
    return _mm256_permute4x64_pd(a, 0xD2);
}
inline void transpose(const Lanes (&rows)[3], Lanes (&columns)[3]) noexcept {
    const Lanes even = _mm256_unpacklo_pd(rows[0], rows[1]); // 00 10 02 12
    const Lanes odd = _mm256_unpackhi_pd(rows[0], rows[1]);  // 01 11 03 13
    const Lanes last = rows[2];                              // 20 21 22 23
    columns[0] = _mm256_permute2f128_pd(even, last, 0x20);
    columns[1] = _mm256_permute2f128_pd(odd, _mm256_permute_pd(last, 0x5), 0x20);
    columns[2] = _mm256_permute2f128_pd(even, last, 0x31);
}
/// Mask of the lanes where it holds.
inline int above(Lanes a, Lanes b) noexcept {
    return _mm256_movemask_pd(_mm256_cmp_pd(a, b, _CMP_GT_OQ));
}
inline int notBelow(Lanes a, Lanes b) noexcept {
    return _mm256_movemask_pd(_mm256_cmp_pd(a, b, _CMP_GE_OQ));
}

} // namespace

#include "BoxAxes.inl"

bool BoxAxesAvx2(BoxAxis* out, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                 const lsTransform& t12) noexcept {
    return findBoxAxis(out, eps, r1, r2, t12);
}

#if defined(__clang__)
#pragma clang attribute pop
#endif
#endif
