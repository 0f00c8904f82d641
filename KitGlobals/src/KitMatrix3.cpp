#include <Kit/KitMatrix3.h>
#include <Kit/KitMathFn.h>
#include <Kit/KitVector.h>
#include <algorithm>
#include <cmath>
#include <utility>

namespace {
/// Below this |cos y| the angles x and z of a rotation are not told apart.
constexpr KitReal kMinCosine = 0.005;

void setRows(KitMatrix3 m, const KitReal* row0, const KitReal* row1, const KitReal* row2) {
    KitVector3Copy(m[0], row0);
    KitVector3Copy(m[1], row1);
    KitVector3Copy(m[2], row2);
}

/// Inverse by cofactors; false, with nothing stored, if it does not exist.
bool invert(const KitMatrix3 a, KitReal* row0, KitReal* row1, KitReal* row2) {
    KitVector3 column[3]; // of the adjugate
    KitVector3Cross(column[0], a[1], a[2]);
    KitVector3Cross(column[1], a[2], a[0]);
    KitVector3Cross(column[2], a[0], a[1]);
    const KitReal determinant = KitVector3Dot(a[0], column[0]);
    const KitReal inverse = 1 / determinant;
    if (!std::isfinite(determinant) || !std::isfinite(inverse)) // infinite for 0
        return false;
    KitReal* const rows[3] = {row0, row1, row2};
    for (int i = 0; i < 3; ++i)
        KitVector3Set(rows[i], column[0][i] * inverse, column[1][i] * inverse,
                      column[2][i] * inverse);
    return true;
}
} // namespace

KitBool KitMatrix3SymmetricInvert(KitMatrix3 a) noexcept {
    if (a[0][1] != a[1][0] || a[0][2] != a[2][0] || a[1][2] != a[2][1])
        return 0;
    if (!invert(a, a[0], a[1], a[2]))
        return 0;
    // Cofactors of mirrored elements round alike, but keep the result symmetric by construction.
    a[1][0] = a[0][1];
    a[2][0] = a[0][2];
    a[2][1] = a[1][2];
    return 1;
}

KitBool KitMatrix3Invert(KitMatrix3 inverse, const KitMatrix3 a) noexcept {
    return invert(a, inverse[0], inverse[1], inverse[2]);
}

KitBool KitMatrix3InvertTo3x4(const KitMatrix3 a, KitReal* inv1, KitReal* inv2,
                              KitReal* inv3) noexcept {
    return invert(a, inv1, inv2, inv3);
}

KitReal KitMatrix3Determinant(const KitMatrix3 a) noexcept {
    KitVector3 cross;
    KitVector3Cross(cross, a[1], a[2]);
    return KitVector3Dot(a[0], cross);
}

KitReal KitMatrix3Trace(const KitMatrix3 a) noexcept {
    return a[0][0] + a[1][1] + a[2][2];
}

bool KitRealIsNear(KitReal element, KitReal reference, KitReal tolerance) noexcept {
    if (std::abs(element) < tolerance)
        return std::abs(reference) < tolerance;
    return std::abs((reference - element) / element) < tolerance;
}

KitBool KitMatrix3IsIdentity(const KitMatrix3 a, KitReal tolerance) noexcept {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            if (!KitRealIsNear(a[i][j], i == j ? 1 : 0, tolerance))
                return 0;
    return 1;
}

KitBool KitMatrix3IsValidOrientationMatrix(const KitMatrix3 rot, KitReal tolerance) noexcept {
    KitMatrix3 product; // rot rot^T
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            product[i][j] = KitVector3Dot(rot[i], rot[j]);
    return KitMatrix3IsIdentity(product, tolerance) &&
           std::abs(KitMatrix3Determinant(rot) - 1) < tolerance;
}

void KitMatrix3MakeRotationX(KitMatrix3 m, KitReal a) noexcept {
    const KitReal c = std::cos(a), s = std::sin(a);
    const KitMatrix3 rows = {{1, 0, 0}, {0, c, -s}, {0, s, c}};
    setRows(m, rows[0], rows[1], rows[2]);
}

void KitMatrix3MakeRotationY(KitMatrix3 m, KitReal a) noexcept {
    const KitReal c = std::cos(a), s = std::sin(a);
    const KitMatrix3 rows = {{c, 0, -s}, {0, 1, 0}, {s, 0, c}};
    setRows(m, rows[0], rows[1], rows[2]);
}

void KitMatrix3MakeRotationZ(KitMatrix3 m, KitReal a) noexcept {
    const KitReal c = std::cos(a), s = std::sin(a);
    const KitMatrix3 rows = {{c, -s, 0}, {s, c, 0}, {0, 0, 1}};
    setRows(m, rows[0], rows[1], rows[2]);
}

void KitMatrix3FromEulerAngles(KitMatrix3 m, KitReal xangle, KitReal yangle,
                               KitReal zangle) noexcept {
    const KitReal cx = std::cos(xangle), sx = std::sin(xangle);
    const KitReal cy = std::cos(yangle), sy = std::sin(yangle);
    const KitReal cz = std::cos(zangle), sz = std::sin(zangle);
    const KitMatrix3 rows = {{cy * cz, -cy * sz, -sy},
                             {cx * sz - sx * sy * cz, cx * cz + sx * sy * sz, -sx * cy},
                             {sx * sz + cx * sy * cz, sx * cz - cx * sy * sz, cx * cy}};
    setRows(m, rows[0], rows[1], rows[2]);
}

void KitMatrix3GetEulerAngles(const KitMatrix3 rot, KitVector3 euler) noexcept {
    const KitReal y = -KitAsinFn(rot[0][2]);
    const KitReal cosine = std::cos(y);
    KitReal x = 0, z;
    if (std::abs(cosine) > kMinCosine) {
        x = std::atan2(-rot[1][2] / cosine, rot[2][2] / cosine);
        z = std::atan2(-rot[0][1] / cosine, rot[0][0] / cosine);
    } else {
        z = std::atan2(rot[1][0], rot[1][1]);
    }
    KitVector3Set(euler, x, y, z);
}

void KitMatrix3SwapColumns(KitMatrix3 a, int col1, int col2) noexcept {
    if (col1 < 0 || col1 > 2 || col2 < 0 || col2 > 2)
        return;
    for (int i = 0; i < 3; ++i)
        std::swap(a[i][col1], a[i][col2]);
}

KitBool KitMatrix3LUDecompose(KitMatrix3 L, KitMatrix3 U, const KitMatrix3 a, int SwappedRow[3],
                              KitVector3 scale) noexcept {
    KitMatrix3 work, lower = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    KitVector3 weight; // moves with the rows, while scale keeps the order of a
    for (int i = 0; i < 3; ++i) {
        KitVector3Copy(work[i], a[i]);
        const KitReal largest = std::max({std::abs(a[i][0]), std::abs(a[i][1]), std::abs(a[i][2])});
        weight[i] = scale[i] = largest > 0 ? 1 / largest : 0;
        SwappedRow[i] = i;
    }
    bool regular = true;
    for (int k = 0; k < 3 && regular; ++k) {
        int pivot = k;
        for (int i = k + 1; i < 3; ++i)
            if (std::abs(work[i][k]) * weight[i] > std::abs(work[pivot][k]) * weight[pivot])
                pivot = i;
        SwappedRow[k] = pivot;
        KitVector3Swap(work[k], work[pivot]);
        std::swap(weight[k], weight[pivot]);
        for (int j = 0; j < k; ++j)
            std::swap(lower[k][j], lower[pivot][j]);
        regular = std::abs(work[k][k]) > 0;
        for (int i = k + 1; i < 3 && regular; ++i) {
            lower[i][k] = work[i][k] / work[k][k];
            work[i][k] = 0;
            for (int j = k + 1; j < 3; ++j)
                work[i][j] -= lower[i][k] * work[k][j];
        }
    }
    setRows(L, lower[0], lower[1], lower[2]);
    setRows(U, work[0], work[1], work[2]);
    return regular;
}
