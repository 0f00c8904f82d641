#include <Hy/HyQuaternion.h>
#include <Hy/HySmallReal.h>
#include <Hy/HyTransform.h>
#include <Kit/KitMathFn.h>

namespace Hy {
namespace {
/// From 1 - cos of the angle on, slerp() uses spherical weights: below it, the linear ones differ by
/// less than 1e-8.
constexpr HyReal kSlerpThreshold = 1e-7;
} // namespace

void HyQuaternion::normalize() noexcept {
    const HyReal norm2 = squareNorm();
    if (norm2 == 1)
        return;
    if (!(norm2 > HY_SMALL_REAL<double>::epsilon) || !std::isfinite(norm2)) {
        setIdentity();
        return;
    }
    const HyReal scale = 1 / std::sqrt(norm2);
    for (HyReal& component : mQuat)
        component *= scale;
}

HyQuaternion HyQuaternion::slerp(const HyQuaternion& other, HyReal t) const noexcept {
    HyQuaternion result;
    KitQuaternionSlerpWithThreshold(result.mQuat, mQuat, other.mQuat, t, kSlerpThreshold);
    return result;
}

void HyQuaternion::fromTransform(const HyTransform& transform) noexcept {
    KitQuaternionFromTM(mQuat, transform.m);
}

HyTransform HyQuaternion::toTransform() const noexcept {
    return HyTransform(*this);
}

void HyQuaternion::fromEulerXYZ(HyReal x, HyReal y, HyReal z) noexcept {
    const HyReal cx = std::cos(x / 2), sx = std::sin(x / 2);
    const HyReal cy = std::cos(y / 2), sy = std::sin(y / 2);
    const HyReal cz = std::cos(z / 2), sz = std::sin(z / 2);
    set(cx * cy * cz + sx * sy * sz, sx * cy * cz - cx * sy * sz, cx * sy * cz + sx * cy * sz,
        cx * cy * sz - sx * sy * cz);
}

void HyQuaternion::toEulerXYZ(HyReal& x, HyReal& y, HyReal& z) const noexcept {
    const auto [qw, qx, qy, qz] = mQuat;
    z = std::atan2(2 * (qw * qz + qx * qy), qw * qw + qx * qx - qy * qy - qz * qz);
    x = std::atan2(2 * (qw * qx + qy * qz), qw * qw - qx * qx - qy * qy + qz * qz);
    y = KitAsinFn(2 * (qy * qw - qx * qz));
}

void HyQuaternion::fromAxisAngle(const HyVector3& axis, HyReal angle) noexcept {
    const HyReal s = std::sin(angle / 2);
    set(std::cos(angle / 2), s * axis[0], s * axis[1], s * axis[2]);
}

void HyQuaternion::toAxisAngle(HyVector3& axis, HyReal& angle) const noexcept {
    const HyVector3 u = vector();
    const HyReal length = u.norm();
    if (!(length > HY_SMALL_REAL<double>::epsilon) || w() > 1) {
        axis.set(1, 0, 0);
        angle = 0;
        return;
    }
    axis = u / length;
    angle = 2 * KitAcosFn(w());
}
} // namespace Hy
