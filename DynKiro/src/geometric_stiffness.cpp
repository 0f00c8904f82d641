#include "geometric_stiffness.h"

#include <Dyns/DynsBody.h>
#include <Kit/KitEigen3.h>

#include <cmath>
#include <utility>

// A force F that acts at the arm r of a body and keeps its direction has the torque r × F. Turning
// the body by θ turns r by θ × r, so the torque changes by (θ × r) × F = [F]×[r]× θ and the stiffness
// against turning is K = −[F]×[r]× = (F·r) 1 − r Fᵀ. A joint that pulls outwards, F = T r/|r|, gives
// K = T |r| across r and 0 along it. The parts of K that are antisymmetric belong to the net torque,
// which the step balances by itself.

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
    constexpr int kMaxSweeps = 20; // converges quadratically: five reach rounding
    (void)jacobi3x3(a, v, kMaxSweeps);
    for (int i = 0; i < 3; ++i)
        for (int j = i; j < 3; ++j) {
            KitReal sum = 0;
            for (int k = 0; k < 3; ++k)
                if (a[k][k] > 0)
                    sum += a[k][k] * (v[i][k] * v[j][k]);
            stiffness[i][j] = stiffness[j][i] = sum;
        }
}
