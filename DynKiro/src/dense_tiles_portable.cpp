#include "dense_tiles.h"

#include <type_traits>

namespace {

using Vector = KitReal;
constexpr int kLanes = 1;
constexpr int kColumnsAtOnce = 1;

inline Vector load(const KitReal* from) {
    return *from;
}
inline void store(KitReal* to, Vector a) {
    *to = a;
}
inline Vector spread(KitReal a) {
    return a;
}
inline Vector add(Vector a, Vector b) {
    return a + b;
}
inline Vector subtract(Vector a, Vector b) {
    return a - b;
}
inline Vector multiply(Vector a, Vector b) {
    return a * b;
}
inline Vector multiplyAdd(Vector a, Vector b, Vector c) {
    return a * b + c;
}
inline Vector subtractProduct(Vector a, Vector b, Vector c) {
    return c - a * b;
}

} // namespace

#include "dense_tiles.inl"

const DynsKernelVariant kDynsPortableKernels = variantNamed("portable");
