#include <Kit/KitMatrix4.h>
#include <Kit/KitMatrix3.h>
#include <Kit/KitQuaternion.h>
#include <cmath>

namespace {
constexpr KitMatrix4 kIdentity = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

void setRotation(KitMatrix4 tm, const KitReal (*rows)[3]) {
    for (int i = 0; i < 3; ++i)
        KitVector3Copy(tm[i], rows[i]);
}

void getRotation(KitMatrix3 rot, const KitMatrix4 tm) {
    for (int i = 0; i < 3; ++i)
        KitVector3Copy(rot[i], tm[i]);
}

/// A local copy, so that the result may be an operand of the operation.
struct Local {
    KitMatrix4 m;
    Local() { KitMatrix4Copy(m, kIdentity); }
};

/// The rotation turned by a time step, the translation copied.
void turn(KitMatrix4 result, KitReal h, const KitReal* angularVelocity, const KitMatrix4 tm,
          const KitReal* quat) {
    KitVector4 q;
    if (quat)
        KitVector4Copy(q, quat);
    else
        KitQuaternionFromTM(q, tm);
    KitQuaternionFiniteRotation(q, angularVelocity, h);
    KitMatrix4TMSetRotationFromQuaternion(result, q);
    KitVector3Copy(result[3], tm[3]);
}

/// Rotation by theta = rho h about the axes of the body itself, as stored rows.
void rotationFromRates(KitMatrix3 Q, const KitReal* u, KitReal rho, KitReal h) {
    const KitReal theta = rho * h;
    const KitReal A = (1 - std::cos(theta)) / (rho * rho), B = std::sin(theta) / rho;
    const KitReal square = KitVector3SquareNorm(u);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            Q[i][j] = i == j ? 1 - A * (square - u[i] * u[i]) : A * u[i] * u[j];
    Q[0][1] += B * u[2];
    Q[1][0] -= B * u[2];
    Q[0][2] -= B * u[1];
    Q[2][0] += B * u[1];
    Q[1][2] += B * u[0];
    Q[2][1] -= B * u[0];
}
} // namespace

void KitMatrix4Copy(KitMatrix4 tm, const KitMatrix4 a) noexcept {
    for (int i = 0; i < 4; ++i)
        KitVector4Copy(tm[i], a[i]);
}

void KitMatrix4SetIdentity(KitMatrix4 tm) noexcept {
    KitMatrix4Copy(tm, kIdentity);
}

void KitMatrix4TMCompound(KitMatrix4 tm, const KitMatrix4 b, const KitMatrix4 c) noexcept {
    Local r;
    for (int i = 0; i < 3; ++i)
        KitMatrix4TMRotate(r.m[i], b[i], c);
    KitMatrix4TMTransform(r.m[3], b[3], c);
    KitMatrix4Copy(tm, r.m);
}

void KitMatrix4TMCompoundInverseSecond(KitMatrix4 tm, const KitMatrix4 b,
                                       const KitMatrix4 c) noexcept {
    Local r;
    for (int i = 0; i < 3; ++i)
        KitMatrix4TMInverseRotate(r.m[i], b[i], c);
    KitMatrix4TMInverseTransform(r.m[3], b[3], c);
    KitMatrix4Copy(tm, r.m);
}

void KitMatrix4TMCompoundInverseFirst(KitMatrix4 tm, const KitMatrix4 b,
                                      const KitMatrix4 c) noexcept {
    Local inverse;
    KitMatrix4Copy(inverse.m, b);
    KitMatrix4TMInvert(inverse.m);
    KitMatrix4TMCompound(tm, inverse.m, c);
}

void KitMatrix4TMCompoundRotation(KitMatrix4 tm, const KitMatrix4 b, const KitMatrix4 c) noexcept {
    KitMatrix3 r;
    for (int i = 0; i < 3; ++i)
        KitMatrix4TMRotate(r[i], b[i], c);
    setRotation(tm, r);
}

void KitMatrix4TMCompoundRotationInverseSecond(KitMatrix4 tm, const KitMatrix4 b,
                                               const KitMatrix4 c) noexcept {
    KitMatrix3 r;
    for (int i = 0; i < 3; ++i)
        KitMatrix4TMInverseRotate(r[i], b[i], c);
    setRotation(tm, r);
}

void KitMatrix4TMInvert(KitMatrix4 tm) noexcept {
    Local r;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            r.m[i][j] = tm[j][i];
    KitMatrix4TMRotate(r.m[3], tm[3], r.m);
    KitVector3Scale(r.m[3], r.m[3], -1);
    KitMatrix4Copy(tm, r.m);
}

KitBool KitMatrix4IsIdentity(const KitMatrix4 a, KitReal tolerance) noexcept {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            if (!KitRealIsNear(a[i][j], kIdentity[i][j], tolerance))
                return 0;
    return 1;
}

KitBool KitMatrix4IsTM(const KitMatrix4 tm, KitReal tolerance) noexcept {
    if (!KitRealIsNear(tm[3][3], 1, tolerance))
        return 0;
    for (int i = 0; i < 3; ++i)
        if (!(std::abs(tm[i][3]) < tolerance))
            return 0;
    KitMatrix3 rot;
    getRotation(rot, tm);
    return KitMatrix3IsValidOrientationMatrix(rot, tolerance);
}

void KitMatrix4TMSetRotationFromQuaternion(KitMatrix4 tm, const KitVector4 q) noexcept {
    const KitReal w = q[0], x = q[1], y = q[2], z = q[3];
    const KitReal norm = KitQuaternionDot(q, q);
    if (!std::isnormal(norm)) {
        for (int i = 0; i < 3; ++i)
            KitVector3Copy(tm[i], kIdentity[i]);
        return;
    }
    const KitReal s = 1 / norm, s2 = 2 * s; // a quaternion that has drifted still gives a rotation
    const KitReal ww = w * w, xx = x * x, yy = y * y, zz = z * z;
    KitVector3Set(tm[0], s * (ww + xx - yy - zz), s2 * (x * y + w * z), s2 * (x * z - w * y));
    KitVector3Set(tm[1], s2 * (x * y - w * z), s * (ww - xx + yy - zz), s2 * (y * z + w * x));
    KitVector3Set(tm[2], s2 * (x * z + w * y), s2 * (y * z - w * x), s * (ww - xx - yy + zz));
}

void KitMatrix4TMSetRotationFromEulerAngles(KitMatrix4 tm, KitReal xangle, KitReal yangle,
                                            KitReal zangle) noexcept {
    KitMatrix3 rot;
    KitMatrix3FromEulerAngles(rot, xangle, yangle, zangle);
    setRotation(tm, rot);
}

void KitMatrix4TMGetEulerAngles(const KitMatrix4 tm, KitVector3 euler) noexcept {
    KitMatrix3 rot;
    getRotation(rot, tm);
    KitMatrix3GetEulerAngles(rot, euler);
}

void KitMatrix4TMUpdateFromVelocities(KitMatrix4 aTransformReturn, KitReal /*aEpsilon*/,
                                      KitReal aTimeStep, const KitVector3 aVelocity,
                                      const KitVector3 aAngularVelocity,
                                      const KitMatrix4 aTransform, const KitReal* quat) noexcept {
    Local r;
    turn(r.m, aTimeStep, aAngularVelocity, aTransform, quat);
    KitVector3AddScaled(r.m[3], r.m[3], aTimeStep, aVelocity);
    KitMatrix4Copy(aTransformReturn, r.m);
}

void KitMatrix4TMUpdateFromVelocitiesAndAcceler(KitMatrix4 aTransformReturn, KitReal aEpsilon,
                                                KitReal aTimeStep, const KitVector3 aVelocity,
                                                const KitVector3 aAcceleration,
                                                const KitVector3 aAngularVelocity,
                                                const KitVector3 aAngularAcceleration,
                                                const KitMatrix4 aTransform) noexcept {
    const KitReal h = aTimeStep;
    Local r;
    KitMatrix4Copy(r.m, aTransform);
    KitVector3AddScaled(r.m[3], r.m[3], h, aVelocity);
    KitVector3AddScaled(r.m[3], r.m[3], 0.5 * h * h, aAcceleration);

    const KitReal rho = KitVector3Norm(aAngularVelocity) + h * KitVector3Norm(aAngularAcceleration);
    if (h >= aEpsilon && rho >= aEpsilon && rho > 0) {
        KitVector3 u;
        KitVector3AddScaled(u, aAngularVelocity, h, aAngularAcceleration);
        KitMatrix3 Q;
        rotationFromRates(Q, u, rho, h);
        for (int i = 0; i < 3; ++i)
            KitMatrix4TMRotate(r.m[i], Q[i], aTransform);
    }
    KitMatrix4Copy(aTransformReturn, r.m);
}

void KitMatrix4TMUpdateFromVelocitiesAroundCOM(KitMatrix4 aTransformReturn, KitReal /*aEpsilon*/,
                                               KitReal aTimeStep, const KitVector3 aVelocity,
                                               const KitVector3 aAngularVelocity,
                                               const KitVector3 aCOM, const KitMatrix4 aTransform,
                                               const KitReal* quat) noexcept {
    Local r;
    turn(r.m, aTimeStep, aAngularVelocity, aTransform, quat);
    KitVector3AddScaled(r.m[3], r.m[3], aTimeStep, aVelocity);
    KitVector3 before, after;
    KitMatrix4TMRotate(before, aCOM, aTransform);
    KitMatrix4TMRotate(after, aCOM, r.m);
    // The origin gives way, so that the point moves by its own velocity alone.
    KitVector3Add(r.m[3], r.m[3], before);
    KitVector3Subtract(r.m[3], r.m[3], after);
    KitMatrix4Copy(aTransformReturn, r.m);
}

void KitMatrix4TMUpdateFromVelocitiesAndLinearAccelAroundCOM(
    KitMatrix4 aTransformReturn, KitReal aEpsilon, KitReal aTimeStep, const KitVector3 aVelocity,
    const KitVector3 aAcceleration, const KitVector3 aAngularVelocity, const KitVector3 aCOM,
    const KitMatrix4 aTransform, const KitReal* quat) noexcept {
    KitVector3 mean; // velocity over the step
    KitVector3AddScaled(mean, aVelocity, 0.5 * aTimeStep, aAcceleration);
    KitMatrix4TMUpdateFromVelocitiesAroundCOM(aTransformReturn, aEpsilon, aTimeStep, mean,
                                              aAngularVelocity, aCOM, aTransform, quat);
}
