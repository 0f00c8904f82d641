#include <Dyns/DynsBody.h>

namespace {

// world = Rᵀ M R for a symmetric body tensor M, R the rows of tm; symmetric to the bit.
void rotateTensor(KitReal world[3][4], const KitReal M[3][4], const KitMatrix4 tm) {
    KitReal MR[3][3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            MR[i][j] = M[i][0] * tm[0][j] + M[i][1] * tm[1][j] + M[i][2] * tm[2][j];
    for (int i = 0; i < 3; ++i)
        for (int j = i; j < 3; ++j)
            world[i][j] = world[j][i] =
                tm[0][i] * MR[0][j] + tm[1][i] * MR[1][j] + tm[2][i] * MR[2][j];
}

void setDiagonal(KitReal m[3][4], KitReal value) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            m[i][j] = i == j ? value : 0;
}

// out = M x over the 3 × 3 block
void multiply(KitVector3 out, const KitReal M[3][4], const KitVector4 x) {
    for (int i = 0; i < 3; ++i)
        out[i] = M[i][0] * x[0] + M[i][1] * x[1] + M[i][2] * x[2];
}

} // namespace

void body_update_inertia_tensor(DynsBody* const* bodies, int n, bool spherical) {
    for (int i = 0; i < n; ++i) {
        DynsBody& body = *bodies[i];
        if (spherical || (body.flags & kDynsBodySphericalInertia)) {
            const KitReal mean = (body._i0[0][0] + body._i0[1][1] + body._i0[2][2]) / 3;
            setDiagonal(body._I, mean);
            setDiagonal(body._invI, 1 / mean);
        } else {
            rotateTensor(body._I, body._i0, body.tm);
            rotateTensor(body._invI, body._i0 + 3, body.tm);
        }
        body._I[0][3] = body._i0[3][3];
        body._invI[0][3] = body.invmass;
    }
}

void body_update_momentum(DynsBody* const* bodies, int n) {
    for (int i = 0; i < n; ++i) {
        DynsBody& body = *bodies[i];
        const KitReal mass = body._i0[3][3];
        for (int j = 0; j < 3; ++j)
            body.linearMomentum[j] = mass * body.vel[j];
        multiply(body.angularMomentum, body._I, body.velrot);
    }
}

// L × ω is the torque of the turning frame: I ω̇ = τ + L × ω. With this sign the free top keeps its
// momentum through (I − h²S I⁻¹S)⁻¹ = (I − hS)⁻¹ I (I + hS)⁻¹, S the skew matrix of L: the implicit
// step (I − hS) ω' = L is then solved by adding h L × ω = h S ω to L.
void add_non_inertial_forces(DynsBody* const* bodies, int n, KitReal scale) {
    for (int i = 0; i < n; ++i) {
        DynsBody& body = *bodies[i];
        const KitVector4 &L = body.angularMomentum, &w = body.velrot;
        body.torque[0] += scale * (L[1] * w[2] - L[2] * w[1]);
        body.torque[1] += scale * (L[2] * w[0] - L[0] * w[2]);
        body.torque[2] += scale * (L[0] * w[1] - L[1] * w[0]);
    }
}

void body_update_accelerations(DynsBody* const* bodies, int n) {
    for (int i = 0; i < n; ++i) {
        DynsBody& body = *bodies[i];
        const KitReal inverseMass = body.inverse_massmatrix[0][3];
        KitVector3 applied, constrained;
        multiply(applied, body.inverse_massmatrix, body.torque);
        multiply(constrained, body.inverse_massmatrix, body.ct);
        for (int j = 0; j < 3; ++j) {
            body.accel[j] = inverseMass * (body.force[j] + body.cf[j]);
            body.accelrot[j] = applied[j] + constrained[j];
        }
    }
}
