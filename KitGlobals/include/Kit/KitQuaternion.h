#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

// Quaternions w, x, y, z with the Hamilton product. The rate of a quaternion belongs to an angular
// velocity in world axes: dq/dt = 1/2 (0, w) q. Results may be one of the operands.

/// q = (1, 0, 0, 0).
inline void KitQuaternionSetIdentity(KitReal* q) noexcept {
    q[0] = 1;
    q[1] = q[2] = q[3] = 0;
}

[[nodiscard]] inline KitReal KitQuaternionDot(const KitReal* a, const KitReal* b) noexcept {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}

/// r = a b, which turns by b first and then by a.
inline void KitQuaternionMultiply(KitReal* r, const KitReal* a, const KitReal* b) noexcept {
    const KitReal w = a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3];
    const KitReal x = a[0] * b[1] + b[0] * a[1] + (a[2] * b[3] - a[3] * b[2]);
    const KitReal y = a[0] * b[2] + b[0] * a[2] + (a[3] * b[1] - a[1] * b[3]);
    const KitReal z = a[0] * b[3] + b[0] * a[3] + (a[1] * b[2] - a[2] * b[1]);
    r[0] = w;
    r[1] = x;
    r[2] = y;
    r[3] = z;
}

/// Orientation of a transform. A uniform scale of the rotation is removed first; a zero or not
/// finite rotation gives the identity.
HY_API void KitQuaternionFromTM(KitVector4 q, const KitMatrix4 tm) noexcept;

/// Turns q by the angle |w| h about w, given in world axes (rad/s and s). A turn that is not finite
/// is left out.
HY_API void KitQuaternionFiniteRotation(KitVector4 q, const KitVector3 w, KitReal h) noexcept;

/// Goes the shorter way from one orientation to the other: spherical weights where
/// 1 - |from . to| > 0.05, linear ones else. The result is not normalised.
/// @param howFar 0 gives `from`, 1 gives `to` up to its sign
HY_API void KitQuaternionSlerp(KitVector4 q, const KitVector4 from, const KitVector4 to,
                               KitReal howFar) noexcept;

/// The same with the threshold given by the caller in place of 0.05.
HY_API void KitQuaternionSlerpWithThreshold(KitVector4 q, const KitVector4 from,
                                            const KitVector4 to, KitReal howFar,
                                            KitReal threshold) noexcept;

/// The shortest rotation that takes the unit vector v1 to the unit vector v2; for opposite vectors
/// a half-turn about an axis perpendicular to v1. Vectors that are not finite give the identity.
HY_API void KitQuaternionForRotation(KitVector4 q, const KitVector3 v1,
                                     const KitVector3 v2) noexcept;

/// The matrix with w = 2 E dq/dt, w in world axes.
HY_API void KitQuaternionGetEMatrix(KitReal E[3][4], const KitVector4 q) noexcept;

/// Angular velocity times time that leads from one orientation to the other, to first order, taken
/// at the first: 2 E(from) (to - from).
HY_API void KitQuaternionGetForwardVelocity(KitVector3 w, const KitVector4 from,
                                            const KitVector4 to) noexcept;
/// The same, taken at the second: 2 E(to) (to - from).
HY_API void KitQuaternionGetBackwardsVelocity(KitVector3 w, const KitVector4 from,
                                              const KitVector4 to) noexcept;
