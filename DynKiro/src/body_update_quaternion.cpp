#include <Dyns/DynsBody.h>

#include <Kit/KitMath.h>
#include <Kit/KitMessage.h>

#include <cmath>

// Orientation q from the world angular velocity ω, q̇ = ½ (0, ω) ⊗ q, over a step h.

namespace {

enum Method : int { kExplicit = 1, kFiniteRotation = 2, kRational = 3 };

// q ← normalise(a q + b (0, w) ⊗ q)
void stepAlongRate(KitVector4 q, const KitVector3 w, KitReal a, KitReal b) {
    const KitVector4 rotor = {a, b * w[0], b * w[1], b * w[2]};
    KitQuaternionMultiply(q, rotor, q);
    const KitReal norm = std::sqrt(KitQuaternionDot(q, q));
    for (int i = 0; i < 4; ++i)
        q[i] /= norm;
}

// Turns q about the body's fast axis by the share of w along it, and leaves the rest in w.
void takeOutFastSpin(DynsBody& body, KitVector3 w, KitReal h) {
    KitVector3 axis;
    KitMatrix4TMRotate(axis, body.fastSpinAxis, body.tm);
    if (!(KitVector3Normalize(axis) > 0))
        KitVector3Set(axis, 1, 0, 0);
    const KitReal spin = KitVector3Dot(w, axis);
    KitQuaternionFiniteRotation(body.qrot, axis, h * spin);
    KitVector3AddScaled(w, w, -spin, axis);
}

void updateQuaternion(DynsBody& body, KitReal h, Method method) {
    KitVector3 w;
    KitVector3Copy(w, body.velrot);
    if (body.flags & kDynsBodyFastSpinAxis)
        takeOutFastSpin(body, w, h);
    switch (method) {
    case kExplicit:
        stepAlongRate(body.qrot, w, 1, h / 2);
        break;
    case kFiniteRotation:
        KitQuaternionFiniteRotation(body.qrot, w, h);
        break;
    case kRational: {
        // The Cayley form of the half step: tan(θ/4) ≈ |w| h / 4.
        const KitReal quarter2 = KitVector3SquareNorm(w) * (h * h / 16);
        const KitReal c = 1 / (1 + quarter2);
        stepAlongRate(body.qrot, w, 2 * c - 1, c * h / 2);
        break;
    }
    }
}

} // namespace

void body_update_quaternion(DynsBody* const* bodies, int n, KitReal timeStep, int method) {
    if (method < kExplicit || method > kRational) {
        KitFatalError(12, "\n ++ Dyns:: body_update_quaternion:: No such method : %d \n++", method);
        return;
    }
    for (int i = 0; i < n; ++i)
        updateQuaternion(*bodies[i], timeStep, static_cast<Method>(method));
}
