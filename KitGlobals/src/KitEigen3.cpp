#include <Kit/KitEigen3.h>
#include <Kit/KitVector.h>
#include <cmath>
#include <limits>

namespace {
/// Sum of squares above the diagonal.
KitReal squareNormAboveDiagonal(const KitMatrix3 a) {
    return a[0][1] * a[0][1] + a[0][2] * a[0][2] + a[1][2] * a[1][2];
}

/// Whether the elements above the diagonal are rounding of those on it. Magnitudes, not squares,
/// which would overflow or vanish for a tensor of extreme scale.
bool isDiagonal(const KitMatrix3 a) {
    constexpr KitReal kRounding = std::numeric_limits<KitReal>::epsilon();
    const KitReal above = std::abs(a[0][1]) + std::abs(a[0][2]) + std::abs(a[1][2]);
    const KitReal diagonal = std::abs(a[0][0]) + std::abs(a[1][1]) + std::abs(a[2][2]);
    return above <= kRounding * diagonal && std::isfinite(diagonal);
}

/// Turns in the plane of p and q so that a[p][q] vanishes; r is the third index.
void annihilate(KitMatrix3 a, KitMatrix3 axes, int p, int q, int r) {
    if (a[p][q] == 0)
        return;
    // The smaller of the two angles, from tan^2 + 2 theta tan - 1 = 0.
    const KitReal theta = (a[q][q] - a[p][p]) / (2 * a[p][q]);
    const KitReal t = std::copysign(1 / (std::abs(theta) + std::hypot(theta, 1)), theta);
    const KitReal c = 1 / std::sqrt(t * t + 1), s = t * c;
    a[p][p] -= t * a[p][q];
    a[q][q] += t * a[p][q];
    a[p][q] = a[q][p] = 0;
    const KitReal rp = a[r][p], rq = a[r][q];
    a[r][p] = a[p][r] = c * rp - s * rq;
    a[r][q] = a[q][r] = s * rp + c * rq;
    for (int i = 0; i < 3; ++i) {
        const KitReal ip = axes[i][p], iq = axes[i][q];
        axes[i][p] = c * ip - s * iq;
        axes[i][q] = s * ip + c * iq;
    }
}
} // namespace

int jacobi3x3(KitMatrix3 tensor, KitMatrix3 axes, int maxSweeps, KitReal tolerance) noexcept {
    for (int i = 0; i < 3; ++i) {
        KitVector3Zero(axes[i]);
        axes[i][i] = 1;
        for (int j = 0; j < i; ++j)
            tensor[i][j] = tensor[j][i];
    }
    int sweeps = 0;
    for (; sweeps < maxSweeps; ++sweeps) {
        if (isDiagonal(tensor) ||
            (tolerance > 0 && squareNormAboveDiagonal(tensor) <= tolerance * tolerance))
            break;
        annihilate(tensor, axes, 0, 1, 2);
        annihilate(tensor, axes, 0, 2, 1);
        annihilate(tensor, axes, 1, 2, 0);
    }
    return sweeps;
}
