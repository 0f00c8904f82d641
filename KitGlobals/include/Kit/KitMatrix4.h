#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/KitVector.h>

// Transforms for row vectors: rows 0 to 2 are the images of the local axes in the parent frame, row
// 3 is the translation, column 3 is (0, 0, 0, 1). Inverses are those of a rigid body: the rotation
// transposed, the translation turned back and negated. Results may be one of the operands.

/// The image of a local vector in the parent frame.
inline void KitMatrix4TMRotate(KitReal* r, const KitReal* v, const KitMatrix4 tm) noexcept {
    KitVector3Set(r, v[0] * tm[0][0] + v[1] * tm[1][0] + v[2] * tm[2][0],
                  v[0] * tm[0][1] + v[1] * tm[1][1] + v[2] * tm[2][1],
                  v[0] * tm[0][2] + v[1] * tm[1][2] + v[2] * tm[2][2]);
}

/// A vector of the parent frame in local axes.
inline void KitMatrix4TMInverseRotate(KitReal* r, const KitReal* v, const KitMatrix4 tm) noexcept {
    KitVector3Set(r, KitVector3Dot(v, tm[0]), KitVector3Dot(v, tm[1]), KitVector3Dot(v, tm[2]));
}

/// The image of a local point in the parent frame.
inline void KitMatrix4TMTransform(KitReal* r, const KitReal* p, const KitMatrix4 tm) noexcept {
    KitMatrix4TMRotate(r, p, tm);
    KitVector3Add(r, r, tm[3]);
}

/// A point of the parent frame in local coordinates.
inline void KitMatrix4TMInverseTransform(KitReal* r, const KitReal* p,
                                         const KitMatrix4 tm) noexcept {
    KitVector3 d;
    KitVector3Subtract(d, p, tm[3]);
    KitMatrix4TMInverseRotate(r, d, tm);
}

/// tm = a, all sixteen elements.
HY_API void KitMatrix4Copy(KitMatrix4 tm, const KitMatrix4 a) noexcept;
/// tm = the identity.
HY_API void KitMatrix4SetIdentity(KitMatrix4 tm) noexcept;

/// tm = b c: b is applied first, then c.
HY_API void KitMatrix4TMCompound(KitMatrix4 tm, const KitMatrix4 b, const KitMatrix4 c) noexcept;
/// tm = b c^-1.
HY_API void KitMatrix4TMCompoundInverseSecond(KitMatrix4 tm, const KitMatrix4 b,
                                              const KitMatrix4 c) noexcept;
/// tm = b^-1 c.
HY_API void KitMatrix4TMCompoundInverseFirst(KitMatrix4 tm, const KitMatrix4 b,
                                             const KitMatrix4 c) noexcept;
/// Rotation of tm = b c; translation and column 3 of tm stay.
HY_API void KitMatrix4TMCompoundRotation(KitMatrix4 tm, const KitMatrix4 b,
                                         const KitMatrix4 c) noexcept;
/// Rotation of tm = b c^-1; translation and column 3 of tm stay.
HY_API void KitMatrix4TMCompoundRotationInverseSecond(KitMatrix4 tm, const KitMatrix4 b,
                                                      const KitMatrix4 c) noexcept;
/// tm = tm^-1.
HY_API void KitMatrix4TMInvert(KitMatrix4 tm) noexcept;

/// Compares each element by KitRealIsNear().
[[nodiscard]] HY_API KitBool KitMatrix4IsIdentity(const KitMatrix4 a, KitReal tolerance) noexcept;
/// Whether column 3 is (0, 0, 0, 1) and the rotation is orthonormal and right-handed.
[[nodiscard]] HY_API KitBool KitMatrix4IsTM(const KitMatrix4 tm, KitReal tolerance) noexcept;

/// Writes the rotation of a quaternion, whatever its length; the rest of tm stays. A zero or not
/// finite quaternion gives the identity.
HY_API void KitMatrix4TMSetRotationFromQuaternion(KitMatrix4 tm, const KitVector4 q) noexcept;

/// KitMatrix3FromEulerAngles() into the rotation; the rest of tm stays.
HY_API void KitMatrix4TMSetRotationFromEulerAngles(KitMatrix4 tm, KitReal xangle, KitReal yangle,
                                                   KitReal zangle) noexcept;
/// KitMatrix3GetEulerAngles() of the rotation.
HY_API void KitMatrix4TMGetEulerAngles(const KitMatrix4 tm, KitVector3 euler) noexcept;

/// Moves a transform by the velocity of its origin and a finite rotation.
/// @param aEpsilon without effect on this operation
/// @param aTimeStep s
/// @param aVelocity,aAngularVelocity m/s and rad/s, world axes
/// @param quat orientation of aTransform if it is known, else null
HY_API void KitMatrix4TMUpdateFromVelocities(KitMatrix4 aTransformReturn, KitReal aEpsilon,
                                             KitReal aTimeStep, const KitVector3 aVelocity,
                                             const KitVector3 aAngularVelocity,
                                             const KitMatrix4 aTransform,
                                             const KitReal* quat) noexcept;

/// Moves a transform by constant accelerations. The angular rates are in the transform's own axes.
/// @param aEpsilon below it in time step, s, or in |w| + h |alpha|, rad/s, nothing is turned
/// @param aVelocity,aAcceleration of the origin, world axes, m/s and m/s^2
/// @param aAngularVelocity,aAngularAcceleration own axes, rad/s and rad/s^2
HY_API void KitMatrix4TMUpdateFromVelocitiesAndAcceler(
    KitMatrix4 aTransformReturn, KitReal aEpsilon, KitReal aTimeStep, const KitVector3 aVelocity,
    const KitVector3 aAcceleration, const KitVector3 aAngularVelocity,
    const KitVector3 aAngularAcceleration, const KitMatrix4 aTransform) noexcept;

/// KitMatrix4TMUpdateFromVelocities() where the velocity is that of a point fixed in the frame.
/// @param aCOM the point, local coordinates, m; it moves by aTimeStep aVelocity alone
HY_API void KitMatrix4TMUpdateFromVelocitiesAroundCOM(KitMatrix4 aTransformReturn, KitReal aEpsilon,
                                                      KitReal aTimeStep, const KitVector3 aVelocity,
                                                      const KitVector3 aAngularVelocity,
                                                      const KitVector3 aCOM,
                                                      const KitMatrix4 aTransform,
                                                      const KitReal* quat) noexcept;

/// The same with a constant acceleration of the point: it moves by h v + 1/2 h^2 a.
HY_API void KitMatrix4TMUpdateFromVelocitiesAndLinearAccelAroundCOM(
    KitMatrix4 aTransformReturn, KitReal aEpsilon, KitReal aTimeStep, const KitVector3 aVelocity,
    const KitVector3 aAcceleration, const KitVector3 aAngularVelocity, const KitVector3 aCOM,
    const KitMatrix4 aTransform, const KitReal* quat) noexcept;
