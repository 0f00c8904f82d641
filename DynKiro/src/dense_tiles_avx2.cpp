#include "dense_tiles.h"

#if defined(__x86_64__)
#include <immintrin.h>
#include <type_traits>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx2,fma"))), apply_to = function)
#else
#pragma GCC target("avx2,fma")
#endif

namespace {

using Vector = __m256d;
constexpr int kLanes = 4;
constexpr int kColumnsAtOnce = kDynsTileColumns;

inline Vector load(const KitReal* from) {
    return _mm256_loadu_pd(from);
}
inline void store(KitReal* to, Vector a) {
    _mm256_storeu_pd(to, a);
}
inline Vector spread(KitReal a) {
    return _mm256_set1_pd(a);
}
inline Vector add(Vector a, Vector b) {
    return _mm256_add_pd(a, b);
}
inline Vector subtract(Vector a, Vector b) {
    return _mm256_sub_pd(a, b);
}
inline Vector multiply(Vector a, Vector b) {
    return _mm256_mul_pd(a, b);
}
inline Vector multiplyAdd(Vector a, Vector b, Vector c) {
    return _mm256_fmadd_pd(a, b, c);
}
inline Vector subtractProduct(Vector a, Vector b, Vector c) {
    return _mm256_fnmadd_pd(a, b, c);
}

} // namespace

#include "dense_tiles.inl"

// Constant data: no code of this file runs before the processor has been asked.
const DynsKernelVariant kDynsAvx2Kernels = variantNamed("avx2");

#if defined(__clang__)
#pragma clang attribute pop
#endif
#endif
