#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <cmath>
#include <utility>

// Vectors as plain arrays, for the layers that keep their state in records. The result comes first
// and may be one of the operands. A KitVector4 serves wherever three components are asked for.

/// r = (x, y, z).
inline void KitVector3Set(KitReal* r, KitReal x, KitReal y, KitReal z) noexcept {
    r[0] = x;
    r[1] = y;
    r[2] = z;
}

/// r = 0.
inline void KitVector3Zero(KitReal* r) noexcept {
    KitVector3Set(r, 0, 0, 0);
}

/// r = a.
inline void KitVector3Copy(KitReal* r, const KitReal* a) noexcept {
    KitVector3Set(r, a[0], a[1], a[2]);
}

/// Copies all four components.
inline void KitVector4Copy(KitReal* r, const KitReal* a) noexcept {
    KitVector3Copy(r, a);
    r[3] = a[3];
}

/// r = a + b.
inline void KitVector3Add(KitReal* r, const KitReal* a, const KitReal* b) noexcept {
    KitVector3Set(r, a[0] + b[0], a[1] + b[1], a[2] + b[2]);
}

/// r = a - b.
inline void KitVector3Subtract(KitReal* r, const KitReal* a, const KitReal* b) noexcept {
    KitVector3Set(r, a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

/// r = s a.
inline void KitVector3Scale(KitReal* r, const KitReal* a, KitReal s) noexcept {
    KitVector3Set(r, a[0] * s, a[1] * s, a[2] * s);
}

/// r = a + s b.
inline void KitVector3AddScaled(KitReal* r, const KitReal* a, KitReal s,
                                const KitReal* b) noexcept {
    KitVector3Set(r, a[0] + s * b[0], a[1] + s * b[1], a[2] + s * b[2]);
}

[[nodiscard]] inline KitReal KitVector3Dot(const KitReal* a, const KitReal* b) noexcept {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

/// r = a x b.
inline void KitVector3Cross(KitReal* r, const KitReal* a, const KitReal* b) noexcept {
    KitVector3Set(r, a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                  a[0] * b[1] - a[1] * b[0]);
}

[[nodiscard]] inline KitReal KitVector3SquareNorm(const KitReal* a) noexcept {
    return KitVector3Dot(a, a);
}

[[nodiscard]] inline KitReal KitVector3Norm(const KitReal* a) noexcept {
    return std::sqrt(KitVector3Dot(a, a));
}

/// Scales a to unit length and answers the length that it had. A vector whose squared length is
/// not above 0, or not finite, stays as it is, and the answer is 0.
inline KitReal KitVector3Normalize(KitReal* a) noexcept {
    const KitReal squareNorm = KitVector3SquareNorm(a);
    if (!(squareNorm > 0) || !std::isfinite(squareNorm))
        return 0;
    const KitReal norm = std::sqrt(squareNorm);
    KitVector3Scale(a, a, 1 / norm);
    return norm;
}

/// Whether every pair of components differs by less than epsilon.
[[nodiscard]] inline bool KitVector3Equals(const KitReal* a, const KitReal* b,
                                           KitReal epsilon) noexcept {
    return std::abs(a[0] - b[0]) < epsilon && std::abs(a[1] - b[1]) < epsilon &&
           std::abs(a[2] - b[2]) < epsilon;
}

/// Whether no component is infinite or not a number.
[[nodiscard]] inline bool KitVector3IsFinite(const KitReal* a) noexcept {
    return std::isfinite(a[0]) && std::isfinite(a[1]) && std::isfinite(a[2]);
}

/// Exchanges the contents of two vectors.
inline void KitVector3Swap(KitReal* a, KitReal* b) noexcept {
    for (int i = 0; i < 3; ++i)
        std::swap(a[i], b[i]);
}

/// Area of the triangle spanned by two edges.
[[nodiscard]] HY_API KitReal KitVector3AreaOfTriangle(const KitVector3 v1,
                                                      const KitVector3 v2) noexcept;
