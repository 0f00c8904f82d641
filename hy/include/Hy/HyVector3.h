#pragma once
#include <Hy/HySmallReal.h>
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>
#include <Kit/KitVector.h>
#include <algorithm>
#include <cmath>

namespace Hy {

/// A vector or a point, laid out as a KitVector3: cast() and constCast() view one as the other.
class HY_API __attribute__((may_alias)) HyVector3 {
public:
    HyReal v[3]; ///< x, y, z

    /// The zero vector.
    constexpr HyVector3() noexcept : v{0, 0, 0} {}
    constexpr HyVector3(HyReal x, HyReal y, HyReal z) noexcept : v{x, y, z} {}
    /// Copies three numbers.
    explicit constexpr HyVector3(const KitReal* xyz) noexcept : v{xyz[0], xyz[1], xyz[2]} {}

    /// Views an array as a vector, without a copy.
    static HyVector3& cast(KitReal* xyz) noexcept { return *reinterpret_cast<HyVector3*>(xyz); }
    static const HyVector3& constCast(const KitReal* xyz) noexcept {
        return *reinterpret_cast<const HyVector3*>(xyz);
    }

    constexpr HyReal& operator[](int i) noexcept { return v[i]; }
    constexpr const HyReal& operator[](int i) const noexcept { return v[i]; }
    [[nodiscard]] constexpr HyReal x() const noexcept { return v[0]; }
    [[nodiscard]] constexpr HyReal y() const noexcept { return v[1]; }
    [[nodiscard]] constexpr HyReal z() const noexcept { return v[2]; }
    constexpr void set(HyReal x, HyReal y, HyReal z) noexcept {
        v[0] = x;
        v[1] = y;
        v[2] = z;
    }

    constexpr HyVector3& operator+=(const HyVector3& o) noexcept {
        set(v[0] + o.v[0], v[1] + o.v[1], v[2] + o.v[2]);
        return *this;
    }
    constexpr HyVector3& operator-=(const HyVector3& o) noexcept {
        set(v[0] - o.v[0], v[1] - o.v[1], v[2] - o.v[2]);
        return *this;
    }
    constexpr HyVector3& operator*=(HyReal s) noexcept {
        set(v[0] * s, v[1] * s, v[2] * s);
        return *this;
    }
    constexpr HyVector3& operator/=(HyReal s) noexcept {
        set(v[0] / s, v[1] / s, v[2] / s);
        return *this;
    }
    friend constexpr HyVector3 operator+(HyVector3 a, const HyVector3& b) noexcept {
        return a += b;
    }
    friend constexpr HyVector3 operator-(HyVector3 a, const HyVector3& b) noexcept {
        return a -= b;
    }
    friend constexpr HyVector3 operator-(const HyVector3& a) noexcept {
        return {-a.v[0], -a.v[1], -a.v[2]};
    }
    friend constexpr HyVector3 operator*(HyVector3 a, HyReal s) noexcept { return a *= s; }
    friend constexpr HyVector3 operator*(HyReal s, HyVector3 a) noexcept { return a *= s; }
    friend constexpr HyVector3 operator/(HyVector3 a, HyReal s) noexcept { return a /= s; }
    /// Exact comparison of the components.
    friend constexpr bool operator==(const HyVector3& a, const HyVector3& b) noexcept {
        return a.v[0] == b.v[0] && a.v[1] == b.v[1] && a.v[2] == b.v[2];
    }

    [[nodiscard]] constexpr HyReal dot(const HyVector3& o) const noexcept {
        return v[0] * o.v[0] + v[1] * o.v[1] + v[2] * o.v[2];
    }
    /// this x o.
    [[nodiscard]] constexpr HyVector3 cross(const HyVector3& o) const noexcept {
        return {v[1] * o.v[2] - v[2] * o.v[1], v[2] * o.v[0] - v[0] * o.v[2],
                v[0] * o.v[1] - v[1] * o.v[0]};
    }
    /// this := o x this.
    constexpr void preCross(const HyVector3& o) noexcept { *this = o.cross(*this); }
    /// this := this x o.
    constexpr void postCross(const HyVector3& o) noexcept { *this = cross(o); }
    /// Multiplies component by component.
    constexpr void multComp(const HyVector3& o) noexcept {
        set(v[0] * o.v[0], v[1] * o.v[1], v[2] * o.v[2]);
    }
    /// this := a x + b y.
    constexpr void setLinear(HyReal a, const HyVector3& x, HyReal b, const HyVector3& y) noexcept {
        set(a * x.v[0] + b * y.v[0], a * x.v[1] + b * y.v[1], a * x.v[2] + b * y.v[2]);
    }
    /// Takes the smaller of each pair of components.
    constexpr void setMin(const HyVector3& o) noexcept {
        set(std::min(v[0], o.v[0]), std::min(v[1], o.v[1]), std::min(v[2], o.v[2]));
    }
    /// Takes the larger of each pair of components.
    constexpr void setMax(const HyVector3& o) noexcept {
        set(std::max(v[0], o.v[0]), std::max(v[1], o.v[1]), std::max(v[2], o.v[2]));
    }

    [[nodiscard]] constexpr HyReal squareNorm() const noexcept { return dot(*this); }
    [[nodiscard]] HyReal norm() const noexcept { return std::sqrt(squareNorm()); }
    /// Scales to unit length and answers the length before; a zero or not finite vector stays, and
    /// the answer is 0.
    HyReal normalize() noexcept { return KitVector3Normalize(v); }
    /// A copy of unit length; a zero vector gives a zero vector.
    [[nodiscard]] HyVector3 normalized() const noexcept {
        HyVector3 unit = *this;
        unit.normalize();
        return unit;
    }
    [[nodiscard]] constexpr HyReal distanceSqr(const HyVector3& o) const noexcept {
        return (*this - o).squareNorm();
    }
    [[nodiscard]] HyReal distance(const HyVector3& o) const noexcept {
        return std::sqrt(distanceSqr(o));
    }
    /// Distance of this point from the segment between a and b.
    [[nodiscard]] HyReal distancePointToSegment(const HyVector3& a,
                                                const HyVector3& b) const noexcept;

    /// Whether no component is larger in magnitude than the tolerance.
    [[nodiscard]] bool isZero(HyReal tolerance = 0) const noexcept {
        return std::abs(v[0]) <= tolerance && std::abs(v[1]) <= tolerance &&
               std::abs(v[2]) <= tolerance;
    }
    /// Whether no component is infinite or not a number.
    [[nodiscard]] bool isFinite() const noexcept { return KitVector3IsFinite(v); }
    /// Whether no pair of components differs by more than the tolerance.
    [[nodiscard]] static bool areEqualTol(const HyVector3& a, const HyVector3& b,
                                          HyReal tolerance) noexcept {
        return (a - b).isZero(tolerance);
    }
    /// Index of the component of largest magnitude, the first of equal ones.
    [[nodiscard]] int maxComponentIndex() const noexcept {
        const int i = std::abs(v[1]) > std::abs(v[0]) ? 1 : 0;
        return std::abs(v[2]) > std::abs(v[i]) ? 2 : i;
    }

    /// A unit vector perpendicular to this one; (1, 0, 0) for a zero vector.
    [[nodiscard]] HyVector3 getOrthogonal() const noexcept;
    /// this := o.getOrthogonal().
    void setOrthogonal(const HyVector3& o) noexcept { *this = o.getOrthogonal(); }
    /// The part of this vector along an axis of any length; zero for a zero axis.
    [[nodiscard]] HyVector3 project(const HyVector3& axis) const noexcept;
    /// Takes away the part along an axis of any length.
    void orthogonalize(const HyVector3& axis) noexcept { *this -= project(axis); }
    /// Two unit vectors that span the plane perpendicular to this one, p x q along it.
    void planeSpace(HyVector3& p, HyVector3& q) const noexcept;
    /// this := unit normal of the plane through three points, counterclockwise seen from its tip;
    /// zero if they lie on a line.
    void planeNormal(const HyVector3& a, const HyVector3& b, const HyVector3& c) noexcept;
    /// Makes a right-handed orthonormal base of three vectors: `first` keeps its direction, `second`
    /// its plane with the first, `third` follows. A zero first counts as the x axis, and a second
    /// along the first gives way to any perpendicular one.
    static void makeCleanBase(HyVector3& first, HyVector3& second, HyVector3& third) noexcept;

    /// Writes "(x, y, z)" and a line end to the standard output.
    void print() const;
};

static_assert(sizeof(HyVector3) == sizeof(KitVector3) && alignof(HyVector3) == alignof(KitReal));
} // namespace Hy
