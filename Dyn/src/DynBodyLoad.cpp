#include "DynChecks.h"

#include <Dyn/DynBody.h>
#include <Kit/KitMatrix4.h>

namespace {

// Moment about the centre of mass of a force or impulse f at the world point p.
void addMoment(const DynBody* body, KitReal* torque, const KitVector3 f, const KitVector3 p) {
    KitVector3 arm, moment;
    KitVector3Subtract(arm, p, body->kiroBody.tm[3]);
    KitVector3Cross(moment, arm, f);
    KitVector3Add(torque, torque, moment);
}

bool isZero(const KitVector4 load) {
    return load[0] == 0 && load[1] == 0 && load[2] == 0;
}

} // namespace

void DynBodyAddForce(DynBody* body, const KitVector3 f) {
    if (DynCheckVector(f, "DynBodyAddForce"))
        KitVector3Add(body->kiroBody.force, body->kiroBody.force, f);
}

void DynBodyAddTorque(DynBody* body, const KitVector3 t) {
    if (DynCheckVector(t, "DynBodyAddTorque"))
        KitVector3Add(body->kiroBody.torque, body->kiroBody.torque, t);
}

void DynBodyAddImpulse(DynBody* body, const KitVector3 impulse) {
    if (!DynCheckVector(impulse, "DynBodyAddImpulse"))
        return;
    KitVector3Add(body->impulseLinear, body->impulseLinear, impulse);
    body->impulseAdded = true;
}

void DynBodyAddForceAtPosition(DynBody* body, const KitVector3 f, const KitVector3 p) {
    if (!DynCheckVector(f, "DynBodyAddForceAtPosition") ||
        !DynCheckVector(p, "DynBodyAddForceAtPosition"))
        return;
    KitVector3Add(body->kiroBody.force, body->kiroBody.force, f);
    addMoment(body, body->kiroBody.torque, f, p);
}

void DynBodyAddForceAtLocalPosition(DynBody* body, const KitVector3 f, const KitVector3 p) {
    KitVector3 world;
    KitMatrix4TMTransform(world, p, body->bodyTM);
    DynBodyAddForceAtPosition(body, f, world);
}

void DynBodyAddImpulseAtPosition(DynBody* body, const KitVector3 impulse, const KitVector3 p) {
    if (!DynCheckVector(impulse, "DynBodyAddImpulseAtPosition") ||
        !DynCheckVector(p, "DynBodyAddImpulseAtPosition"))
        return;
    KitVector3Add(body->impulseLinear, body->impulseLinear, impulse);
    addMoment(body, body->impulseAngular, impulse, p);
    body->impulseAdded = true;
}

void DynBodyGetForce(const DynBody* body, KitVector3 f) {
    KitVector3Copy(f, body->kiroBody.force);
}

void DynBodyGetTorque(const DynBody* body, KitVector3 t) {
    KitVector3Copy(t, body->kiroBody.torque);
}

void DynBodyGetLastForce(const DynBody* body, KitVector3 f) {
    KitVector3Copy(f, body->lastForce);
}

void DynBodyGetLastTorque(const DynBody* body, KitVector3 t) {
    KitVector3Copy(t, body->lastTorque);
}

void DynBodyResetForces(DynBody* body) {
    DynsBody& solver = body->kiroBody;
    KitVector3Add(body->lastForce, solver.force, solver.cf);
    KitVector3Add(body->lastTorque, solver.torque, solver.ct);
    for (KitReal* load : {solver.force, solver.torque, solver.cf, solver.ct})
        KitVector3Zero(load);
}

void DynBodyClearUserForces(DynBody* body) {
    KitVector3Zero(body->kiroBody.force);
    KitVector3Zero(body->kiroBody.torque);
}

// Most bodies have no load of their own: theirs is neither written nor read again.
void DynBodySaveUserForces(DynBody* body) {
    const DynsBody& solver = body->kiroBody;
    body->isUserLoadSaved = !isZero(solver.force) || !isZero(solver.torque);
    if (!body->isUserLoadSaved)
        return;
    KitVector3Copy(body->savedForce, solver.force);
    KitVector3Copy(body->savedTorque, solver.torque);
}

void DynBodyRestoreUserForces(DynBody* body) {
    if (!body->isUserLoadSaved)
        return;
    KitVector3Add(body->kiroBody.force, body->kiroBody.force, body->savedForce);
    KitVector3Add(body->kiroBody.torque, body->kiroBody.torque, body->savedTorque);
}

void DynBodyRearmImpulses(DynBody* body) {
    if (!body->impulseConsumed)
        return;
    KitVector3Add(body->impulseLinear, body->impulseLinear, body->consumedImpulseLinear);
    KitVector3Add(body->impulseAngular, body->impulseAngular, body->consumedImpulseAngular);
    body->impulseAdded = true;
    body->impulseConsumed = false;
}

KitReal DynBodyGetSafeTime(const DynBody* body) {
    return body->safeTime;
}

void DynBodySetSafeTime(DynBody* body, KitReal t) {
    body->safeTime = t;
}

void DynBodySetFrictionDirectionCB(DynBody* body, DynFrictionDirectionCB cb, void* data) {
    body->frictionDirectionCB = cb;
    body->frictionDirectionCBData = data;
}
