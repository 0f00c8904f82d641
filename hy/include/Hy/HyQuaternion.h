#pragma once
#include <Hy/HyTypes.h>
#include <Hy/HyVector3.h>
#include <Kit/KitApi.h>
#include <Kit/KitQuaternion.h>

namespace Hy {
class HyTransform;

/// An orientation as a quaternion w, x, y, z with the Hamilton product, laid out as a KitVector4.
class HY_API __attribute__((may_alias)) HyQuaternion {
public:
    HyReal mQuat[4]; ///< w, x, y, z

    /// The identity.
    constexpr HyQuaternion() noexcept : mQuat{1, 0, 0, 0} {}
    constexpr HyQuaternion(HyReal w, HyReal x, HyReal y, HyReal z) noexcept : mQuat{w, x, y, z} {}
    /// See fromTransform().
    explicit HyQuaternion(const HyTransform& transform) noexcept { fromTransform(transform); }

    /// Views an array as a quaternion, without a copy.
    static HyQuaternion& cast(KitReal* wxyz) noexcept {
        return *reinterpret_cast<HyQuaternion*>(wxyz);
    }
    static const HyQuaternion& constCast(const KitReal* wxyz) noexcept {
        return *reinterpret_cast<const HyQuaternion*>(wxyz);
    }

    constexpr HyReal& operator[](int i) noexcept { return mQuat[i]; }
    constexpr const HyReal& operator[](int i) const noexcept { return mQuat[i]; }
    [[nodiscard]] constexpr HyReal w() const noexcept { return mQuat[0]; }
    [[nodiscard]] constexpr HyReal x() const noexcept { return mQuat[1]; }
    [[nodiscard]] constexpr HyReal y() const noexcept { return mQuat[2]; }
    [[nodiscard]] constexpr HyReal z() const noexcept { return mQuat[3]; }
    /// The vector part.
    [[nodiscard]] constexpr HyVector3 vector() const noexcept {
        return {mQuat[1], mQuat[2], mQuat[3]};
    }
    constexpr void set(HyReal w, HyReal x, HyReal y, HyReal z) noexcept {
        mQuat[0] = w;
        mQuat[1] = x;
        mQuat[2] = y;
        mQuat[3] = z;
    }
    constexpr void setIdentity() noexcept { set(1, 0, 0, 0); }

    /// this := this o, which turns by o first.
    HyQuaternion& operator*=(const HyQuaternion& o) noexcept {
        KitQuaternionMultiply(mQuat, mQuat, o.mQuat);
        return *this;
    }
    friend HyQuaternion operator*(HyQuaternion a, const HyQuaternion& b) noexcept { return a *= b; }
    /// Exact comparison of the components.
    friend constexpr bool operator==(const HyQuaternion& a, const HyQuaternion& b) noexcept {
        return a.w() == b.w() && a.vector() == b.vector();
    }

    [[nodiscard]] HyReal dot(const HyQuaternion& o) const noexcept {
        return KitQuaternionDot(mQuat, o.mQuat);
    }
    [[nodiscard]] HyReal squareNorm() const noexcept { return dot(*this); }
    [[nodiscard]] HyReal norm() const noexcept { return std::sqrt(squareNorm()); }
    /// Scales to unit length; a quaternion of squared length at most HY_SMALL_REAL becomes the
    /// identity.
    void normalize() noexcept;
    /// The quaternion with its vector part negated: the inverse of one of unit length.
    [[nodiscard]] constexpr HyQuaternion conjugate() const noexcept {
        return {w(), -x(), -y(), -z()};
    }
    /// Whether no component is infinite or not a number.
    [[nodiscard]] bool isFinite() const noexcept {
        return std::isfinite(w()) && vector().isFinite();
    }

    /// Turns a vector, scaled by the squared length of the quaternion.
    [[nodiscard]] constexpr HyVector3 rotate(const HyVector3& v) const noexcept {
        const HyVector3 u = vector();
        return 2 * w() * u.cross(v) + (w() * w() - u.squareNorm()) * v + 2 * u.dot(v) * u;
    }
    /// Turns a vector back, scaled likewise.
    [[nodiscard]] constexpr HyVector3 inverseRotate(const HyVector3& v) const noexcept {
        return conjugate().rotate(v);
    }

    /// Goes the shorter way to another orientation: spherical weights where 1 - |this . other| is
    /// above 1e-7, linear ones else. The result is not normalised.
    [[nodiscard]] HyQuaternion slerp(const HyQuaternion& other, HyReal t) const noexcept;

    /// Orientation of a transform; a uniform scale is taken out first, a zero or not finite rotation
    /// gives the identity.
    void fromTransform(const HyTransform& transform) noexcept;
    /// The rotation, whatever the length of the quaternion, with no translation. A zero quaternion
    /// gives the identity.
    [[nodiscard]] HyTransform toTransform() const noexcept;

    /// Turns about x, then y, then z, axes fixed, rad: qz qy qx.
    void fromEulerXYZ(HyReal x, HyReal y, HyReal z) noexcept;
    /// The angles of fromEulerXYZ(), y within +-pi/2, rad, of a quaternion of unit length.
    void toEulerXYZ(HyReal& x, HyReal& y, HyReal& z) const noexcept;

    /// @param axis of unit length: it is not normalised
    /// @param angle rad
    void fromAxisAngle(const HyVector3& axis, HyReal angle) noexcept;
    /// Unit axis and angle within 0 to 2 pi rad of a quaternion of unit length. Where the vector part
    /// is not longer than HY_SMALL_REAL, or w > 1: the angle 0 about (1, 0, 0).
    void toAxisAngle(HyVector3& axis, HyReal& angle) const noexcept;
};

static_assert(sizeof(HyQuaternion) == sizeof(KitVector4) &&
              alignof(HyQuaternion) == alignof(KitReal));
} // namespace Hy
