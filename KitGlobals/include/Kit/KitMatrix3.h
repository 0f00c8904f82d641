#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

// Matrices of three rows. Results may be one of the operands.

/// Inverts an exactly symmetric matrix in place. Answers 0, and changes nothing, if it is not
/// exactly symmetric, its determinant is exactly 0, or its inverse is not finite.
HY_API KitBool KitMatrix3SymmetricInvert(KitMatrix3 a) noexcept;

/// Answers 0, and changes nothing, if the determinant is exactly 0 or the inverse is not finite.
HY_API KitBool KitMatrix3Invert(KitMatrix3 inverse, const KitMatrix3 a) noexcept;

/// KitMatrix3Invert() into three rows that lie anywhere.
HY_API KitBool KitMatrix3InvertTo3x4(const KitMatrix3 a, KitReal* inv1, KitReal* inv2,
                                     KitReal* inv3) noexcept;

[[nodiscard]] HY_API KitReal KitMatrix3Determinant(const KitMatrix3 a) noexcept;
[[nodiscard]] HY_API KitReal KitMatrix3Trace(const KitMatrix3 a) noexcept;

/// Whether an element equals its reference: both below the tolerance in magnitude, or differing by
/// less than the tolerance relative to the element.
[[nodiscard]] HY_API bool KitRealIsNear(KitReal element, KitReal reference,
                                        KitReal tolerance) noexcept;

/// Compares each element by KitRealIsNear().
[[nodiscard]] HY_API KitBool KitMatrix3IsIdentity(const KitMatrix3 a, KitReal tolerance) noexcept;

/// Whether the rows are orthonormal and right-handed.
[[nodiscard]] HY_API KitBool KitMatrix3IsValidOrientationMatrix(const KitMatrix3 rot,
                                                                KitReal tolerance) noexcept;

/// Elementary rotations by the angle a in rad, as rows of memory: x is [1 0 0; 0 c -s; 0 s c], y is
/// [c 0 -s; 0 1 0; s 0 c], z is [c -s 0; s c 0; 0 0 1].
HY_API void KitMatrix3MakeRotationX(KitMatrix3 m, KitReal a) noexcept;
HY_API void KitMatrix3MakeRotationY(KitMatrix3 m, KitReal a) noexcept;
HY_API void KitMatrix3MakeRotationZ(KitMatrix3 m, KitReal a) noexcept;

/// Rotation from three angles in rad. As stored rows it is X(x) Y(y) Z(z) of the elementary
/// rotations above: as images of axes these turn clockwise about x and z, unlike HyEulerAngles.
HY_API void KitMatrix3FromEulerAngles(KitMatrix3 m, KitReal xangle, KitReal yangle,
                                      KitReal zangle) noexcept;

/// The angles x, y, z of KitMatrix3FromEulerAngles(), y within +-pi/2. Where |cos y| <= 0.005, x
/// and z turn about one axis; x is 0 then.
HY_API void KitMatrix3GetEulerAngles(const KitMatrix3 rot, KitVector3 euler) noexcept;

/// Exchanges two columns; indices out of range change nothing.
HY_API void KitMatrix3SwapColumns(KitMatrix3 a, int col1, int col2) noexcept;

/// Factors P a = L U by scaled partial pivoting, L with ones on its diagonal.
/// @param SwappedRow the row that changed places with row k at step k
/// @param scale inverse of the largest magnitude of each row of a, 0 for a zero row
/// @return 0 if a pivot is exactly 0 or not a number; L and U hold the part done before it
HY_API KitBool KitMatrix3LUDecompose(KitMatrix3 L, KitMatrix3 U, const KitMatrix3 a,
                                     int SwappedRow[3], KitVector3 scale) noexcept;
