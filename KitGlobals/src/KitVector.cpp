#include <Kit/KitVector.h>
#include <algorithm>

KitReal KitVector3AreaOfTriangle(const KitVector3 v1, const KitVector3 v2) noexcept {
    const KitReal dot = KitVector3Dot(v1, v2);
    // Lagrange's identity; rounding may leave a needle a little below zero.
    const KitReal square = KitVector3SquareNorm(v1) * KitVector3SquareNorm(v2) - dot * dot;
    return 0.5 * std::sqrt(std::max(square, 0.0));
}
