#include "geometric_stiffness.h"

#include <Dyns/DynsBody.h>

#include <cmath>
#include <utility>

// A force F that acts at the arm r of a body and keeps its direction has the torque r × F. Turning
// the body by θ turns r by θ × r, so the torque changes by (θ × r) × F = [F]×[r]× θ and the stiffness
// against turning is K = −[F]×[r]× = (F·r) 1 − r Fᵀ. A joint that pulls outwards, F = T r/|r|, gives
// K = T |r| across r and 0 along it. The parts of K that are antisymmetric belong to the net torque,
// which the step balances by itself.

namespace {

// Zeroes a[p][q] by a rotation in the plane of axes p and q, and turns the columns of v with it.
void rotatePlane(KitMatrix3 a, KitMatrix3 v, int p, int q) {
    if (a[p][q] == 0)
        return;
    const KitReal theta = (a[q][q] - a[p][p]) / (2 * a[p][q]);
    const KitReal t = std::copysign(1.0, theta) / (std::abs(theta) + std::hypot(theta, 1.0));
    const KitReal c = 1 / std::sqrt(t * t + 1), s = t * c;
    const int k = 3 - p - q;
    a[p][p] -= t * a[p][q];
    a[q][q] += t * a[p][q];
    a[p][q] = a[q][p] = 0;
    const KitReal kp = a[k][p], kq = a[k][q];
    a[k][p] = a[p][k] = c * kp - s * kq;
    a[k][q] = a[q][k] = s * kp + c * kq;
    for (int i = 0; i < 3; ++i) {
        const KitReal ip = v[i][p], iq = v[i][q];
        v[i][p] = c * ip - s * iq;
        v[i][q] = s * ip + c * iq;
    }
}

// Diagonalises the symmetric matrix a by cyclic Jacobi sweeps, which converge quadratically: three
// to five reach rounding.
void diagonalize(KitMatrix3 a, KitMatrix3 v) {
    constexpr int kMaxSweeps = 10;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            v[i][j] = i == j ? 1 : 0;
    for (int sweep = 0; sweep < kMaxSweeps; ++sweep) {
        if (a[0][1] == 0 && a[0][2] == 0 && a[1][2] == 0)
            return;
        rotatePlane(a, v, 0, 1);
        rotatePlane(a, v, 0, 2);
        rotatePlane(a, v, 1, 2);
    }
}

} // namespace

void DynsBodyAddGeometricStiffness(DynsBody* body, const KitVector3 force, const KitVector3 arm) {
    KitMatrix3 K;
    const KitReal along = force[0] * arm[0] + force[1] * arm[1] + force[2] * arm[2];
    KitReal check = along;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            K[i][j] = (i == j ? along : 0) - (arm[i] * force[j] + arm[j] * force[i]) / 2;
            check += K[i][j];
        }
    if (!std::isfinite(check))
        return;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            body->geometricStiffness[i][j] += K[i][j];
}

void takePositiveGeometricStiffness(DynsBody& body, KitMatrix3 stiffness) {
    KitMatrix3 a, v;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            a[i][j] = std::exchange(body.geometricStiffness[i][j], 0);
    diagonalize(a, v);
    for (int i = 0; i < 3; ++i)
        for (int j = i; j < 3; ++j) {
            KitReal sum = 0;
            for (int k = 0; k < 3; ++k)
                if (a[k][k] > 0)
                    sum += a[k][k] * (v[i][k] * v[j][k]);
            stiffness[i][j] = stiffness[j][i] = sum;
        }
}
