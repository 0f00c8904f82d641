#include "OverlapOBBs.h"
#include "BoxAxes.h"

#include <cmath>

namespace {

/// Cosine below which an edge lies in a face.
constexpr KitReal kInFaceCosine = 0.0001;

int countInFace(KitReal a, KitReal b, KitReal c) noexcept {
    return (std::abs(a) < kInFaceCosine) + (std::abs(b) < kInFaceCosine) +
           (std::abs(c) < kInFaceCosine);
}

/// Fills normal, dims and planes from the code and the separation.
void describe(OverlapAxis* out, const lsVec3& r1, const lsTransform& t12) noexcept {
    const lsVec3& t = t12.t();
    if (OverlapIsFaceOf1(out->code)) {
        const int i = out->code - kOverlapFace1;
        out->normal = lsVec3();
        out->normal[i] = t[i] >= 0 ? -1 : 1;
        out->dims = countInFace(t12.row[0][i], t12.row[1][i], t12.row[2][i]) << 8 | 2;
    } else if (OverlapIsFaceOf2(out->code)) {
        const lsVec3& axis = t12.axis(out->code / 4);
        out->normal = t.dot(axis) > 0 ? -axis : axis;
        out->dims = 2 << 8 | countInFace(axis[0], axis[1], axis[2]);
    } else {
        const int i = out->code / 4;
        const lsVec3& edge = t12.axis(out->code & 3);
        lsVec3 axis;
        axis[(i + 1) % 3] = -edge[(i + 2) % 3];
        axis[(i + 2) % 3] = edge[(i + 1) % 3];
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
    static const BoxAxesKernel kernel = BoxAxesKernels().front();
    BoxAxis axis;
    const bool overlap = kernel(&axis, eps, r1, r2, t12);
    *out = OverlapAxis{};
    out->separation = axis.separation;
    out->code = axis.code;
    if (overlap)
        describe(out, r1, t12);
    return overlap;
}

// Each term as the kernels have it, so that the answer has their bits.
bool OverlapAxisSeparates(int code, KitReal eps, const lsVec3& r1, const lsVec3& r2,
                          const lsTransform& t12) noexcept {
    const auto a = [&t12](int i, int j) { return t12.row[j][i]; };
    const auto absA = [&a](int i, int j) { return std::abs(a(i, j)); };
    const lsVec3& t = t12.t();
    if (OverlapIsFaceOf1(code)) {
        const int i = code - kOverlapFace1;
        const KitReal extent2 = absA(i, 0) * r2[0] + absA(i, 1) * r2[1] + absA(i, 2) * r2[2];
        return std::abs(t[i]) - (r1[i] + extent2) > eps;
    }
    if (OverlapIsFaceOf2(code)) {
        const int j = code / 4;
        const KitReal extent1 = absA(0, j) * r1[0] + absA(1, j) * r1[1] + absA(2, j) * r1[2];
        return std::abs(t.dot(t12.axis(j))) - (r2[j] + extent1) > eps;
    }
    const int i = code / 4, i1 = (i + 1) % 3, i2 = (i + 2) % 3;
    const int j = code & 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
    const KitReal length2 = 1 - a(i, j) * a(i, j);
    const KitReal q =
        std::abs(t[i2] * a(i1, j) - t[i1] * a(i2, j)) -
        (r1[i1] * absA(i2, j) + r1[i2] * absA(i1, j) + r2[j1] * absA(i, j2) + r2[j2] * absA(i, j1));
    return length2 > kBoxParallelSquareSine && q > 0 && q * q > 10 * eps * eps * length2;
}
