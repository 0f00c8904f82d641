#include "dense_tiles.h"

#if defined(__x86_64__)
#include <immintrin.h>
#include <type_traits>

#if defined(__clang__)
#pragma clang attribute push(__attribute__((target("avx512f"))), apply_to = function)
#else
#pragma GCC target("avx512f")
#endif

namespace {

using Vector = __m512d;
constexpr int kLanes = 8;
constexpr int kColumnsAtOnce = kDynsTileColumns;

inline Vector load(const KitReal* from) {
    return _mm512_loadu_pd(from);
}
inline void store(KitReal* to, Vector a) {
    _mm512_storeu_pd(to, a);
}
inline Vector spread(KitReal a) {
    return _mm512_set1_pd(a);
}
inline Vector add(Vector a, Vector b) {
    return _mm512_add_pd(a, b);
}
inline Vector subtract(Vector a, Vector b) {
    return _mm512_sub_pd(a, b);
}
inline Vector multiply(Vector a, Vector b) {
    return _mm512_mul_pd(a, b);
}
inline Vector multiplyAdd(Vector a, Vector b, Vector c) {
    return _mm512_fmadd_pd(a, b, c);
}
inline Vector subtractProduct(Vector a, Vector b, Vector c) {
    return _mm512_fnmadd_pd(a, b, c);
}

} // namespace

#include "dense_tiles.inl"

// Constant data: no code of this file runs before the processor has been asked.
const DynsKernelVariant kDynsAvx512Kernels = variantNamed("avx512");

#if defined(__clang__)
#pragma clang attribute pop
#endif
#endif
