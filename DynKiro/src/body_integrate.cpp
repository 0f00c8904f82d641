#include <Dyns/DynsBody.h>

#include <Kit/KitMatrix4.h>

#include <span>

// Semi-implicit Euler. Both velocities are rebuilt from the momenta p, L at the start of the step
// through the effective inverse that the solver used, so that damping d acts implicitly:
//   v' = p / (m + h d) + h a,   ω' = A L + h α,   x' = x + h v'

namespace {

void updateVelocity(DynsBody& body, KitReal h) {
    const auto& A = body.inverse_massmatrix;
    const KitReal inverseMass = A[0][3];
    const KitVector4& L = body.angularMomentum;
    for (int i = 0; i < 3; ++i) {
        body.vel[i] = inverseMass * body.linearMomentum[i] + h * body.accel[i];
        body.velrot[i] = A[i][0] * L[0] + A[i][1] * L[1] + A[i][2] * L[2] + h * body.accelrot[i];
    }
}

void updatePosition(DynsBody& body, KitReal h) {
    for (int i = 0; i < 3; ++i)
        body.tm[3][i] += h * body.vel[i];
    body.tm[3][3] = 1;
}

std::span<DynsBody* const> asSpan(DynsBody* const* bodies, int n) {
    return {bodies, n > 0 ? static_cast<std::size_t>(n) : 0};
}

} // namespace

void body_integrate(DynsBody* body, KitReal h) {
    constexpr int kFiniteRotation = 2;
    updateVelocity(*body, h);
    updatePosition(*body, h);
    body_update_quaternion(&body, 1, h, kFiniteRotation);
    KitMatrix4TMSetRotationFromQuaternion(body->tm, body->qrot);
}

void DynsBodyIntegrate(DynsBody* body, KitReal h) {
    body_integrate(body, h);
}

void body_update_velocity(DynsBody* const* bodies, int n, KitReal h) {
    for (DynsBody* body : asSpan(bodies, n))
        updateVelocity(*body, h);
}

void body_update_position(DynsBody* const* bodies, int n, KitReal h) {
    for (DynsBody* body : asSpan(bodies, n))
        updatePosition(*body, h);
}

void body_update_rotation(DynsBody* const* bodies, int n) {
    for (DynsBody* body : asSpan(bodies, n))
        KitMatrix4TMSetRotationFromQuaternion(body->tm, body->qrot);
}
