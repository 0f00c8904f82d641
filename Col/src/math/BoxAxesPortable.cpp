#include "BoxAxes.h"

#include <Kit/KitProcessor.h>

#include <cmath>

namespace {

struct Lanes {
    KitReal v[4];
};

template <class Operation>
Lanes forLanes(Operation&& operation) noexcept {
    return {{operation(0), operation(1), operation(2), operation(3)}};
}
inline Lanes load(const KitReal* from) noexcept {
    return {{from[0], from[1], from[2], from[3]}};
}
inline Lanes loadThree(const KitReal* from) noexcept {
    return {{from[0], from[1], from[2], 0}};
}
inline void store(KitReal* to, const Lanes& a) noexcept {
    for (int i = 0; i < 4; ++i)
        to[i] = a.v[i];
}
inline Lanes spread(KitReal a) noexcept {
    return {{a, a, a, a}};
}
inline Lanes add(const Lanes& a, const Lanes& b) noexcept {
    return forLanes([&](int i) { return a.v[i] + b.v[i]; });
}
inline Lanes subtract(const Lanes& a, const Lanes& b) noexcept {
    return forLanes([&](int i) { return a.v[i] - b.v[i]; });
}
inline Lanes multiply(const Lanes& a, const Lanes& b) noexcept {
    return forLanes([&](int i) { return a.v[i] * b.v[i]; });
}
inline Lanes absolute(const Lanes& a) noexcept {
    return forLanes([&](int i) { return std::abs(a.v[i]); });
}
/// Lane j takes what lane j + 1, or j + 2, of the first three had.
inline Lanes rotate1(const Lanes& a) noexcept {
    return {{a.v[1], a.v[2], a.v[0], a.v[3]}};
}
inline Lanes rotate2(const Lanes& a) noexcept {
    return {{a.v[2], a.v[0], a.v[1], a.v[3]}};
}
inline void transpose(const Lanes (&rows)[3], Lanes (&columns)[3]) noexcept {
    for (int i = 0; i < 3; ++i)
        columns[i] = {{rows[0].v[i], rows[1].v[i], rows[2].v[i], 0}};
}
/// Mask of the lanes where it holds.
inline int above(const Lanes& a, const Lanes& b) noexcept {
    return (a.v[0] > b.v[0]) | (a.v[1] > b.v[1]) << 1 | (a.v[2] > b.v[2]) << 2;
}
inline int notBelow(const Lanes& a, const Lanes& b) noexcept {
    return (a.v[0] >= b.v[0]) | (a.v[1] >= b.v[1]) << 1 | (a.v[2] >= b.v[2]) << 2;
}

} // namespace

#include "BoxAxes.inl"

bool BoxAxesPortable(BoxAxis* out, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                     const lsTransform& t12) noexcept {
    return findBoxAxis(out, eps, r1, r2, t12);
}

std::span<const BoxAxesKernel> BoxAxesKernels() noexcept {
#if defined(__x86_64__)
    static constexpr BoxAxesKernel kKernels[] = {BoxAxesAvx2, BoxAxesPortable};
    const bool hasAvx2 = KitProcessorGetVectorSet() >= KitVectorSet::kAvx2;
    return std::span(kKernels).subspan(hasAvx2 ? 0 : 1);
#else
    static constexpr BoxAxesKernel kKernels[] = {BoxAxesPortable};
    return kKernels;
#endif
}
