#include <Kit/KitQuaternion.h>
#include <Kit/KitEpsilon.h>
#include <Kit/KitMathFn.h>
#include <Kit/KitVector.h>
#include <algorithm>
#include <cmath>

namespace {
/// From 1 - cos of the angle on, KitQuaternionSlerp uses spherical weights.
constexpr KitReal kSlerpThreshold = 0.05;

/// A unit axis perpendicular to v; (0, 1, 0) for a zero v.
void perpendicularAxis(KitReal* axis, const KitReal* v) {
    KitVector3 n;
    KitVector3Copy(n, v);
    if (KitVector3Normalize(n) == 0)
        KitVector3Set(axis, 0, 1, 0);
    else if (n[2] >= 0.5)
        KitVector3Set(axis, -n[2], 0, n[0]);
    else
        KitVector3Set(axis, -n[1], n[0], 0);
}

/// From 4 x y, 4 x z and so on: the largest component is above 1/2, so nothing cancels.
void fromLargestComponent(KitReal* q, const KitMatrix4 m, KitReal scale) {
    constexpr int kNext[3] = {1, 2, 0};
    int i = 0;
    if (m[1][1] > m[0][0])
        i = 1;
    if (m[2][2] > m[i][i])
        i = 2;
    const int j = kNext[i], k = kNext[j];
    // The largest element of a diagonal whose sum is at most 0: the root is at least 1.
    const KitReal r = std::sqrt(1 + scale * (m[i][i] - m[j][j] - m[k][k]));
    const KitReal u = scale / (2 * r);
    q[0] = (m[j][k] - m[k][j]) * u;
    q[1 + i] = r / 2;
    q[1 + j] = (m[i][j] + m[j][i]) * u;
    q[1 + k] = (m[i][k] + m[k][i]) * u;
}

void velocityFromDifference(KitReal* w, const KitReal* at, const KitReal* from, const KitReal* to) {
    KitReal E[3][4], d[4];
    KitQuaternionGetEMatrix(E, at);
    for (int i = 0; i < 4; ++i)
        d[i] = to[i] - from[i];
    for (int i = 0; i < 3; ++i)
        w[i] = 2 * KitQuaternionDot(E[i], d);
}
} // namespace

void KitQuaternionFromTM(KitVector4 q, const KitMatrix4 tm) noexcept {
    const KitReal sum =
        KitVector3SquareNorm(tm[0]) + KitVector3SquareNorm(tm[1]) + KitVector3SquareNorm(tm[2]);
    if (!std::isnormal(sum)) {
        KitQuaternionSetIdentity(q);
        return;
    }
    const KitReal scale = std::sqrt(3 / sum); // takes out a uniform scale
    const KitReal trace = tm[0][0] + tm[1][1] + tm[2][2];
    if (!(trace > 0)) {
        fromLargestComponent(q, tm, scale);
        return;
    }
    const KitReal r = std::sqrt(1 + scale * trace);
    const KitReal u = scale / (2 * r);
    q[0] = r / 2;
    q[1] = (tm[1][2] - tm[2][1]) * u;
    q[2] = (tm[2][0] - tm[0][2]) * u;
    q[3] = (tm[0][1] - tm[1][0]) * u;
}

void KitQuaternionFiniteRotation(KitVector4 q, const KitVector3 w, KitReal h) noexcept {
    const KitReal rate = KitVector3Norm(w);
    const KitReal half = rate * h / 2;
    if (!std::isfinite(half))
        return;
    const KitReal s = std::sin(half) / (rate + kKitEpsilon);
    const KitVector4 turn = {std::cos(half), s * w[0], s * w[1], s * w[2]};
    KitQuaternionMultiply(q, turn, q);
}

void KitQuaternionSlerp(KitVector4 q, const KitVector4 from, const KitVector4 to,
                        KitReal howFar) noexcept {
    KitQuaternionSlerpWithThreshold(q, from, to, howFar, kSlerpThreshold);
}

void KitQuaternionSlerpWithThreshold(KitVector4 q, const KitVector4 from, const KitVector4 to,
                                     KitReal howFar, KitReal threshold) noexcept {
    const KitReal dot = KitQuaternionDot(from, to);
    const KitReal sign = dot < 0 ? -1 : 1; // q and -q are one orientation: take the nearer
    const KitReal cosine = sign * dot;
    KitReal weightFrom = 1 - howFar, weightTo = howFar;
    if (1 - cosine > threshold) {
        const KitReal phi = KitAcosFn(cosine);
        weightFrom = std::sin((1 - howFar) * phi) / std::sin(phi);
        weightTo = std::sin(howFar * phi) / std::sin(phi);
    }
    for (int i = 0; i < 4; ++i)
        q[i] = weightFrom * from[i] + sign * weightTo * to[i];
}

void KitQuaternionForRotation(KitVector4 q, const KitVector3 v1, const KitVector3 v2) noexcept {
    const KitReal c = KitVector3Dot(v1, v2);
    if (!std::isfinite(c)) {
        KitQuaternionSetIdentity(q);
        return;
    }
    const KitReal cosine = std::clamp(c, -1.0, 1.0);
    const KitReal squareSin = 0.5 - 0.5 * cosine, squareCos = 0.5 + 0.5 * cosine; // half angles
    const bool parallel = std::abs(c - 1) < kKitEpsilon || std::abs(c + 1) < kKitEpsilon;
    KitVector3 axis;
    if (parallel || KitVector3SquareNorm(v1) == 0)
        perpendicularAxis(axis, v1);
    else
        KitVector3Cross(axis, v1, v2);
    if (KitVector3Normalize(axis) == 0)
        KitVector3Set(axis, 1, 0, 0);
    q[0] = std::sqrt(squareCos);
    KitVector3Scale(q + 1, axis, std::sqrt(squareSin));
}

void KitQuaternionGetEMatrix(KitReal E[3][4], const KitVector4 q) noexcept {
    const KitReal w = q[0], x = q[1], y = q[2], z = q[3];
    const KitReal rows[3][4] = {{-x, w, -z, y}, {-y, z, w, -x}, {-z, -y, x, w}};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 4; ++j)
            E[i][j] = rows[i][j];
}

void KitQuaternionGetForwardVelocity(KitVector3 w, const KitVector4 from,
                                     const KitVector4 to) noexcept {
    velocityFromDifference(w, from, from, to);
}

void KitQuaternionGetBackwardsVelocity(KitVector3 w, const KitVector4 from,
                                       const KitVector4 to) noexcept {
    velocityFromDifference(w, to, from, to);
}
