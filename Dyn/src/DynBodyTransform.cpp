#include "DynBodyConstraints.h"
#include "DynChecks.h"

#include <Dyn/DynBody.h>
#include <Kit/KitMath.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>

// With C the centre-of-mass frame seen from the body frame: tm = C · bodyTM. comToBodyTM holds C⁻¹.

namespace {

/// A squared norm this near to 0 or 1 leaves a quaternion as it is.
constexpr KitReal kQuaternionTolerance = 1e-7;

// Copies axes and position; column 3 keeps its (0, 0, 0, 1).
void copyRows(KitMatrix4 to, const KitMatrix4 from) {
    for (int row = 0; row < 4; ++row)
        KitVector3Copy(to[row], from[row]);
}

bool isSame(const KitMatrix4 a, const KitMatrix4 b) {
    return std::equal(a[0], a[0] + 16, b[0]);
}

void placeCenterOfMass(DynBody* body) {
    if (body->useBodyOffset)
        KitMatrix4TMCompoundInverseFirst(body->kiroBody.tm, body->comToBodyTM, body->bodyTM);
    else
        KitMatrix4Copy(body->kiroBody.tm, body->bodyTM);
}

// Takes what is fixed in the material from the axes of the old centre-of-mass frame to the new ones.
// @param change old frame seen from the new one
void turnMaterialAxes(DynBody* body, const KitMatrix4 change) {
    KitMatrix3 tensor, turned;
    DynsBody& solver = body->kiroBody;
    for (int block = 0; block < 6; block += 3) {
        for (int i = 0; i < 3; ++i) // tensor · change, then changeᵀ · that: rows are images of axes
            KitMatrix4TMRotate(tensor[i], solver._i0[block + i], change);
        for (int i = 0; i < 3; ++i)
            for (int j = i; j < 3; ++j)
                turned[i][j] = turned[j][i] = change[0][i] * tensor[0][j] +
                                              change[1][i] * tensor[1][j] +
                                              change[2][i] * tensor[2][j];
        for (int i = 0; i < 3; ++i)
            KitVector3Copy(solver._i0[block + i], turned[i]);
    }
    KitMatrix4TMRotate(solver.fastSpinAxis, solver.fastSpinAxis, change);
}

bool isPureShift(const KitMatrix4 tm) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            if (tm[i][j] != (i == j ? 1 : 0))
                return false;
    return true;
}

} // namespace

void UpdateCOMTransform(DynBody* body) {
    placeCenterOfMass(body);
    KitQuaternionFromTM(body->kiroBody.qrot, body->kiroBody.tm);
}

void UpdateBodyTransform(DynBody* body) {
    if (body->useBodyOffset)
        KitMatrix4TMCompound(body->bodyTM, body->comToBodyTM, body->kiroBody.tm);
    else
        KitMatrix4Copy(body->bodyTM, body->kiroBody.tm);
}

void DynBodySetTransform(DynBody* body, const KitMatrix4 tm) {
    if (!DynCheckTransform(tm, "DynBodySetTransform"))
        return;
    copyRows(body->bodyTM, tm);
    UpdateCOMTransform(body);
}

void DynBodySetTransformAndUpdateConstraintAttachments(DynBody* body, const KitMatrix4 tm) {
    if (!DynCheckTransform(tm, "DynBodySetTransformAndUpdateConstraintAttachments"))
        return;
    KitMatrix4 oldTM;
    KitMatrix4Copy(oldTM, body->kiroBody.tm);
    DynBodySetTransform(body, tm);
    DynBodyHoldAttachments(body, oldTM);
}

void DynBodyGetTransform(const DynBody* body, KitMatrix4 tm) {
    KitMatrix4Copy(tm, body->bodyTM);
}

void DynBodySetPosition(DynBody* body, const KitVector3 position) {
    if (!DynCheckVector(position, "DynBodySetPosition"))
        return;
    KitVector3Copy(body->bodyTM[3], position);
    placeCenterOfMass(body); // the orientation stays to the bit
}

void DynBodySetOrientation(DynBody* body, const KitMatrix3 rotation) {
    for (int i = 0; i < 3; ++i)
        if (!DynCheckVector(rotation[i], "DynBodySetOrientation"))
            return;
    for (int i = 0; i < 3; ++i)
        KitVector3Copy(body->bodyTM[i], rotation[i]);
    UpdateCOMTransform(body);
}

void DynBodySetQuaternion(DynBody* body, const KitVector4 q) {
    const KitReal squareNorm = KitQuaternionDot(q, q);
    if (!std::isfinite(squareNorm) || !(squareNorm > 0)) {
        KitWarning(12, "DynBodySetQuaternion: the quaternion must be finite and not zero.\n");
        return;
    }
    KitVector4 unit;
    KitVector4Copy(unit, q);
    if (squareNorm > kQuaternionTolerance && std::abs(squareNorm - 1) > kQuaternionTolerance)
        for (KitReal& component : unit)
            component /= std::sqrt(squareNorm);
    KitMatrix4TMSetRotationFromQuaternion(body->bodyTM, unit);
    UpdateCOMTransform(body);
}

void DynBodyGetPosition(const DynBody* body, KitVector3 position) {
    KitVector3Copy(position, body->bodyTM[3]);
}

void DynBodyGetOrientation(const DynBody* body, KitMatrix3 rotation) {
    for (int i = 0; i < 3; ++i)
        KitVector3Copy(rotation[i], body->bodyTM[i]);
}

void DynBodyGetQuaternion(const DynBody* body, KitVector4 q) {
    if (body->useBodyOffset)
        KitQuaternionFromTM(q, body->bodyTM);
    else
        KitVector4Copy(q, body->kiroBody.qrot);
}

void DynBodyGetPose(const DynBody* body, DynBodyPose* pose) {
    KitMatrix4Copy(pose->bodyTM, body->bodyTM);
    KitMatrix4Copy(pose->comToBodyTM, body->comToBodyTM);
    KitMatrix4Copy(pose->tm, body->kiroBody.tm);
    KitVector4Copy(pose->qrot, body->kiroBody.qrot);
}

void DynBodySetPose(DynBody* body, const DynBodyPose& pose) {
    if (!DynCheckTransform(pose.bodyTM, "DynBodySetPose") ||
        !DynCheckTransform(pose.tm, "DynBodySetPose") ||
        !DynCheckNumber(KitQuaternionDot(pose.qrot, pose.qrot), "DynBodySetPose"))
        return;
    copyRows(body->bodyTM, pose.bodyTM);
    if (!isSame(body->comToBodyTM, pose.comToBodyTM)) {
        UpdateCOMTransform(body);
        return;
    }
    copyRows(body->kiroBody.tm, pose.tm);
    KitVector4Copy(body->kiroBody.qrot, pose.qrot);
}

void DynBodyMoveTo(DynBody* body, const KitMatrix4 tm, KitReal dt) {
    if (DynBodyIsFrozen(body)) {
        KitWarning(12, "DynBodyMoveTo: Can't move a frozen body. Unfreeze the body first.\n");
        return;
    }
    if (!DynCheckTransform(tm, "DynBodyMoveTo"))
        return;
    KitReal inverseStep = 0;
    if (dt > 0)
        inverseStep = 1 / dt;
    else
        KitWarning(12, "DynBodyMoveTo: time step must be larger than 0.\n");

    DynsBody& solver = body->kiroBody;
    KitVector3 oldPosition, shift, turn;
    KitVector4 oldQuaternion, quaternion;
    KitVector3Copy(oldPosition, solver.tm[3]);
    KitVector4Copy(oldQuaternion, solver.qrot);
    DynBodySetTransform(body, tm);

    KitVector3Subtract(shift, solver.tm[3], oldPosition);
    const KitReal nearer = KitQuaternionDot(oldQuaternion, solver.qrot) < 0 ? -1 : 1;
    for (int i = 0; i < 4; ++i)
        quaternion[i] = nearer * solver.qrot[i];
    KitQuaternionGetForwardVelocity(turn, oldQuaternion, quaternion);
    KitVector3Scale(solver.vel, shift, inverseStep);
    KitVector3Scale(solver.velrot, turn, inverseStep);
    if (KitVector3SquareNorm(solver.vel) > 0 || KitVector3SquareNorm(solver.velrot) > 0)
        DynBodyEnableConnectedBodies(body);
}

void DynBodySetCenterOfMassRelativeTransform(DynBody* body, const KitMatrix4 tm) {
    if (!DynCheckTransform(tm, "DynBodySetCenterOfMassRelativeTransform"))
        return;
    KitMatrix4 relative, change; // change = old frame · new frame⁻¹
    KitMatrix4SetIdentity(relative);
    copyRows(relative, tm);
    KitMatrix4TMInvert(relative);
    if (isSame(relative, body->comToBodyTM))
        return;
    KitMatrix4TMCompoundInverseFirst(change, body->comToBodyTM, relative);

    DynsBody& solver = body->kiroBody;
    KitVector3 oldCenter, shift, extra;
    KitVector3Copy(oldCenter, solver.tm[3]);
    if (!KitMatrix4IsIdentity(change, kKitEpsilon))
        DynBodyAdaptAttachments(body, change);
    if (!isPureShift(change))
        turnMaterialAxes(body, change);
    KitMatrix4Copy(body->comToBodyTM, relative);
    KitMatrix4 identity;
    KitMatrix4SetIdentity(identity);
    body->useBodyOffset = !isSame(relative, identity);
    UpdateCOMTransform(body);

    KitVector3Subtract(shift, solver.tm[3], oldCenter);
    KitVector3Cross(extra, solver.velrot, shift);
    KitVector3Add(solver.vel, solver.vel, extra);
}

void DynBodyGetCenterOfMassRelativeTransform(const DynBody* body, KitMatrix4 tm) {
    KitMatrix4Copy(tm, body->comToBodyTM);
    KitMatrix4TMInvert(tm);
}

void DynBodyGetCenterOfMassPosition(const DynBody* body, KitVector3 position) {
    KitVector3Copy(position, body->kiroBody.tm[3]);
}

const KitMatrix4* DynBodyGetCenterOfMassTransformPtr(const DynBody* body) {
    return &body->kiroBody.tm;
}
