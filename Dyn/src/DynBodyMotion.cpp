#include "DynChecks.h"

#include <Dyn/DynBody.h>
#include <Kit/KitMath.h>
#include <Kit/KitMessage.h>

#include <cmath>

namespace {

void setDamping(KitReal& damping, KitReal value, const char* function) {
    if (!(value >= 0) || !std::isfinite(value)) {
        KitWarning(12, "%s: damping must be finite and not negative.\n", function);
        return;
    }
    damping = value;
}

// Angular velocity and momentum in the axes of the tensor, by the tensor that acts.
void getOwnMomentum(const DynBody* body, KitVector3 w, KitVector3 L) {
    const DynsBody& solver = body->kiroBody;
    KitMatrix4TMInverseRotate(w, solver.velrot, solver.tm);
    if (DynBodyIsSphericalInertiaFlagSet(body))
        KitVector3Scale(L, w, (solver._i0[0][0] + solver._i0[1][1] + solver._i0[2][2]) / 3);
    else
        KitVector3Set(L, KitVector3Dot(solver._i0[0], w), KitVector3Dot(solver._i0[1], w),
                      KitVector3Dot(solver._i0[2], w));
}

} // namespace

void DynBodySetLinearVelocity(DynBody* body, const KitVector3 v) {
    if (DynCheckVector(v, "DynBodySetLinearVelocity"))
        KitVector3Copy(body->kiroBody.vel, v);
}

void DynBodySetAngularVelocity(DynBody* body, const KitVector3 w) {
    if (DynCheckVector(w, "DynBodySetAngularVelocity"))
        KitVector3Copy(body->kiroBody.velrot, w);
}

void DynBodyGetLinearVelocity(const DynBody* body, KitVector3 v) {
    KitVector3Copy(v, body->kiroBody.vel);
}

void DynBodyGetAngularVelocity(const DynBody* body, KitVector3 w) {
    KitVector3Copy(w, body->kiroBody.velrot);
}

void DynBodyGetLinearAcceleration(const DynBody* body, KitVector3 a) {
    KitVector3Copy(a, body->kiroBody.accel);
}

void DynBodyGetAngularAcceleration(const DynBody* body, KitVector3 a) {
    KitVector3Copy(a, body->kiroBody.accelrot);
}

void DynBodySetAccelerations(DynBody* body, const KitVector3 linear, const KitVector3 angular) {
    if (!DynCheckVector(linear, "DynBodySetAccelerations") ||
        !DynCheckVector(angular, "DynBodySetAccelerations"))
        return;
    KitVector3Copy(body->kiroBody.accel, linear);
    KitVector3Copy(body->kiroBody.accelrot, angular);
}

void DynBodyResetVelocityAndAcceleration(DynBody* body) {
    for (KitReal* v :
         {body->kiroBody.vel, body->kiroBody.velrot, body->kiroBody.accel, body->kiroBody.accelrot})
        KitVector3Zero(v);
}

void DynBodySetLinearVelocityDamping(DynBody* body, KitReal damping) {
    setDamping(body->kiroBody.linear_damping, damping, "DynBodySetLinearVelocityDamping");
}

void DynBodySetAngularVelocityDamping(DynBody* body, KitReal damping) {
    setDamping(body->kiroBody.angular_damping, damping, "DynBodySetAngularVelocityDamping");
}

KitReal DynBodyGetLinearVelocityDamping(const DynBody* body) {
    return body->kiroBody.linear_damping;
}

KitReal DynBodyGetAngularVelocityDamping(const DynBody* body) {
    return body->kiroBody.angular_damping;
}

void DynBodyGetVelocityAtPoint(const DynBody* body, const KitVector3 point, KitVector3 v) {
    KitVector3 arm;
    KitVector3Subtract(arm, point, body->kiroBody.tm[3]);
    KitVector3Cross(v, body->kiroBody.velrot, arm);
    KitVector3Add(v, v, body->kiroBody.vel);
}

// a + α × r + ω × (ω × r)
void DynBodyGetAccelerationAtPoint(const DynBody* body, const KitVector3 point, KitVector3 a) {
    const DynsBody& solver = body->kiroBody;
    KitVector3 arm, turn, centripetal;
    KitVector3Subtract(arm, point, solver.tm[3]);
    KitVector3Cross(turn, solver.velrot, arm);
    KitVector3Cross(centripetal, solver.velrot, turn);
    KitVector3Cross(a, solver.accelrot, arm);
    KitVector3Add(a, a, centripetal);
    KitVector3Add(a, a, solver.accel);
}

KitReal DynBodyGetKineticEnergy(const DynBody* body) {
    KitVector3 w, L;
    getOwnMomentum(body, w, L);
    return (body->mass * KitVector3SquareNorm(body->kiroBody.vel) + KitVector3Dot(w, L)) / 2;
}

void DynBodyGetAngularMomentum(const DynBody* body, KitVector3 L) {
    KitVector3 w, own;
    getOwnMomentum(body, w, own);
    KitMatrix4TMRotate(L, own, body->kiroBody.tm);
}

void DynBodySetFastSpinAxis(DynBody* body, const KitVector3 axis) {
    KitVector3 own;
    KitMatrix4TMInverseRotate(own, axis, body->bodyTM);
    DynBodySetFastSpinAxisRel(body, own);
}

void DynBodySetFastSpinAxisRel(DynBody* body, const KitVector3 axis) {
    if (!DynCheckVector(axis, "DynBodySetFastSpinAxisRel"))
        return;
    KitVector3 own;
    KitVector3Copy(own, axis);
    if (!(KitVector3Normalize(own) > 0))
        KitVector3Set(own, 1, 0, 0);
    KitMatrix4TMRotate(body->kiroBody.fastSpinAxis, own, body->comToBodyTM);
    body->kiroBody.flags |= kDynsBodyFastSpinAxis;
}

void DynBodySetNoFastSpinAxis(DynBody* body) {
    body->kiroBody.flags &= ~kDynsBodyFastSpinAxis;
}

bool DynBodyIsFastSpinAxisSet(const DynBody* body) {
    return (body->kiroBody.flags & kDynsBodyFastSpinAxis) != 0;
}

void DynBodyGetFastSpinAxis(const DynBody* body, KitVector3 axis) {
    KitMatrix4TMInverseRotate(axis, body->kiroBody.fastSpinAxis, body->comToBodyTM);
}
