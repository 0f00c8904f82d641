#include "OverlapOBBs.h"

#include <cmath>

namespace {

/// Squared sine below which two edges count as parallel, and their cross product as noise.
constexpr KitReal kParallelSquareSine = 4e-5;
/// Cosine below which an edge lies in a face.
constexpr KitReal kInFaceCosine = 0.0001;
/// Share by which edges must beat a face, so that rounding never makes edges of faces that lie flat.
constexpr KitReal kEdgeAdvantage = 1e-6;

int countInFace(KitReal a, KitReal b, KitReal c) noexcept {
    return (a < kInFaceCosine) + (b < kInFaceCosine) + (c < kInFaceCosine);
}

/// One test: the boxes in the form that all axes share.
struct BoxAxisTest {
    BoxAxisTest(const lsVec3& radii1, const lsVec3& radii2, const lsTransform& t12) noexcept
        : r1(radii1), r2(radii2), relative(t12), t(t12.t()) {
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                a[i][j] = t12.row[j][i];
                absA[i][j] = std::abs(a[i][j]);
            }
    }

    bool testFaces1(OverlapAxis* out, KitReal eps) const noexcept;
    bool testFaces2(OverlapAxis* out, KitReal eps) const noexcept;
    bool testEdges(OverlapAxis* out, KitReal eps) const noexcept;
    void describe(OverlapAxis* out) const noexcept;

    const lsVec3 &r1, &r2;
    const lsTransform& relative;
    const lsVec3& t;
    KitReal a[3][3]; ///< component along axis i of box 1 of axis j of box 2
    KitReal absA[3][3];
};

bool BoxAxisTest::testFaces1(OverlapAxis* out, KitReal eps) const noexcept {
    for (int i = 0; i < 3; ++i) {
        const KitReal extent2 = absA[i][0] * r2[0] + absA[i][1] * r2[1] + absA[i][2] * r2[2];
        const KitReal separation = std::abs(t[i]) - (r1[i] + extent2);
        if (separation > out->separation) {
            out->separation = separation;
            out->code = kOverlapFace1 + i;
        }
        if (separation > eps)
            return false;
    }
    return true;
}

bool BoxAxisTest::testFaces2(OverlapAxis* out, KitReal eps) const noexcept {
    for (int j = 0; j < 3; ++j) {
        const KitReal extent1 = absA[0][j] * r1[0] + absA[1][j] * r1[1] + absA[2][j] * r1[2];
        const KitReal separation = std::abs(t.dot(relative.axis(j))) - (r2[j] + extent1);
        if (separation > out->separation) {
            out->separation = separation;
            out->code = 4 * j + 3;
        }
        if (separation > eps)
            return false;
    }
    return true;
}

// Along the axis e_i x b_j of squared length 1 - a_ij^2, all lengths are scaled by its length, so
// comparisons square and the root is taken for an axis that is kept.
bool BoxAxisTest::testEdges(OverlapAxis* out, KitReal eps) const noexcept {
    const KitReal s2 = 10 * eps * eps;
    bool penetrating = out->separation < 0;
    KitReal best2 =
        out->separation * out->separation * (penetrating ? 1 - kEdgeAdvantage : 1 + kEdgeAdvantage);
    for (int i = 0; i < 3; ++i) {
        const int i1 = (i + 1) % 3, i2 = (i + 2) % 3;
        for (int j = 0; j < 3; ++j) {
            const KitReal length2 = 1 - a[i][j] * a[i][j];
            if (!(length2 > kParallelSquareSine))
                continue;
            const int j1 = (j + 1) % 3, j2 = (j + 2) % 3;
            const KitReal q = std::abs(t[i2] * a[i1][j] - t[i1] * a[i2][j]) -
                              (r1[i1] * absA[i2][j] + r1[i2] * absA[i1][j] + r2[j1] * absA[i][j2] +
                               r2[j2] * absA[i][j1]);
            const bool nearer =
                penetrating ? q >= 0 || q * q < best2 * length2 : q >= 0 && q * q > best2 * length2;
            if (nearer) {
                out->separation = q / std::sqrt(length2);
                out->code = 4 * i + j;
                best2 = out->separation * out->separation;
                penetrating = q < 0;
            }
            if (q > 0 && q * q > s2 * length2)
                return false;
        }
    }
    return true;
}

void BoxAxisTest::describe(OverlapAxis* out) const noexcept {
    const int code = out->code;
    if (OverlapIsFaceOf1(code)) {
        const int i = code - kOverlapFace1;
        out->normal = lsVec3();
        out->normal[i] = t[i] >= 0 ? -1 : 1;
        out->dims = countInFace(absA[i][0], absA[i][1], absA[i][2]) << 8 | 2;
    } else if (OverlapIsFaceOf2(code)) {
        const int j = code / 4;
        out->normal = relative.axis(j);
        if (t.dot(out->normal) > 0)
            out->normal *= -1;
        out->dims = 2 << 8 | countInFace(absA[0][j], absA[1][j], absA[2][j]);
    } else {
        const int i = code / 4, j = code & 3;
        lsVec3 axis;
        axis[(i + 1) % 3] = -relative.axis(j)[(i + 2) % 3];
        axis[(i + 2) % 3] = relative.axis(j)[(i + 1) % 3];
        axis.normalize();
        out->normal = t.dot(axis) > 0 ? -axis : axis;
        out->dims = 0x0101;
    }
    const lsVec3& n = out->normal;
    out->plane1 = -(std::abs(n[0]) * r1[0] + std::abs(n[1]) * r1[1] + std::abs(n[2]) * r1[2]);
    out->plane2 = out->plane1 - out->separation;
}

} // namespace

bool overlapOBBs(OverlapAxis* out, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                 const lsTransform& t12) noexcept {
    const BoxAxisTest test(r1, r2, t12);
    *out = OverlapAxis{};
    const bool overlap =
        test.testFaces1(out, eps) && test.testFaces2(out, eps) && test.testEdges(out, eps);
    if (out->separation == -kKitInfinity) // nothing compares with a transform that is not finite
        return false;
    test.describe(out);
    return overlap;
}
