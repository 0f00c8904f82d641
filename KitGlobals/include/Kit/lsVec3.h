#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/KitVector.h>
#include <cmath>

/// Numbers of the collision and constraint geometry.
using lsReal = KitReal;

/// A vector laid out as a KitVector3: cast() and constCast() view one as the other.
struct HY_API __attribute__((may_alias)) lsVec3 {
    lsReal v[3]; ///< x, y, z

    /// The zero vector.
    constexpr lsVec3() noexcept : v{0, 0, 0} {}
    constexpr lsVec3(lsReal x, lsReal y, lsReal z) noexcept : v{x, y, z} {}

    /// Views an array as a vector, without a copy.
    static lsVec3& cast(KitReal* xyz) noexcept { return *reinterpret_cast<lsVec3*>(xyz); }
    static const lsVec3& constCast(const KitReal* xyz) noexcept {
        return *reinterpret_cast<const lsVec3*>(xyz);
    }

    constexpr lsReal& operator[](int i) noexcept { return v[i]; }
    constexpr const lsReal& operator[](int i) const noexcept { return v[i]; }

    constexpr lsVec3& operator+=(const lsVec3& o) noexcept { return addMultiple(1, o); }
    constexpr lsVec3& operator-=(const lsVec3& o) noexcept { return substractMultiple(1, o); }
    constexpr lsVec3& operator*=(lsReal s) noexcept {
        return *this = lsVec3(v[0] * s, v[1] * s, v[2] * s);
    }
    constexpr lsVec3& operator/=(lsReal s) noexcept {
        return *this = lsVec3(v[0] / s, v[1] / s, v[2] / s);
    }
    friend constexpr lsVec3 operator+(lsVec3 a, const lsVec3& b) noexcept { return a += b; }
    friend constexpr lsVec3 operator-(lsVec3 a, const lsVec3& b) noexcept { return a -= b; }
    friend constexpr lsVec3 operator-(const lsVec3& a) noexcept {
        return {-a.v[0], -a.v[1], -a.v[2]};
    }
    friend constexpr lsVec3 operator*(lsVec3 a, lsReal s) noexcept { return a *= s; }
    friend constexpr lsVec3 operator*(lsReal s, lsVec3 a) noexcept { return a *= s; }
    friend constexpr lsVec3 operator/(lsVec3 a, lsReal s) noexcept { return a /= s; }
    /// Exact comparison of the components.
    friend constexpr bool operator==(const lsVec3& a, const lsVec3& b) noexcept {
        return a.v[0] == b.v[0] && a.v[1] == b.v[1] && a.v[2] == b.v[2];
    }

    /// this := this + s o.
    constexpr lsVec3& addMultiple(lsReal s, const lsVec3& o) noexcept {
        return *this = lsVec3(v[0] + s * o.v[0], v[1] + s * o.v[1], v[2] + s * o.v[2]);
    }
    /// this := this - s o.
    constexpr lsVec3& substractMultiple(lsReal s, const lsVec3& o) noexcept {
        return *this = lsVec3(v[0] - s * o.v[0], v[1] - s * o.v[1], v[2] - s * o.v[2]);
    }
    [[nodiscard]] constexpr lsReal dot(const lsVec3& o) const noexcept {
        return v[0] * o.v[0] + v[1] * o.v[1] + v[2] * o.v[2];
    }
    /// this x o.
    [[nodiscard]] constexpr lsVec3 cross(const lsVec3& o) const noexcept {
        return {v[1] * o.v[2] - v[2] * o.v[1], v[2] * o.v[0] - v[0] * o.v[2],
                v[0] * o.v[1] - v[1] * o.v[0]};
    }
    [[nodiscard]] constexpr lsReal square_norm() const noexcept { return dot(*this); }
    [[nodiscard]] lsReal norm() const noexcept { return std::sqrt(square_norm()); }
    /// Scales to unit length and answers the length before; a zero or not finite vector stays, and
    /// the answer is 0.
    lsReal normalize() noexcept { return KitVector3Normalize(v); }
    /// Index of the component of largest magnitude, the first of equal ones.
    [[nodiscard]] int iLargest() const noexcept {
        const int i = std::abs(v[1]) > std::abs(v[0]) ? 1 : 0;
        return std::abs(v[2]) > std::abs(v[i]) ? 2 : i;
    }
    /// Scales the component of largest magnitude to 1 or -1, so that products neither overflow nor
    /// vanish, and answers that magnitude before; a zero or not finite vector stays.
    lsReal reduce() noexcept {
        const lsReal largest = std::abs(v[iLargest()]);
        if (largest > 0 && KitVector3IsFinite(v))
            *this /= largest;
        return largest;
    }
    /// Whether no pair of components differs by more than the tolerance.
    [[nodiscard]] bool checkAlmostEqual(const lsVec3& o, lsReal tolerance) const noexcept {
        return std::abs(v[0] - o.v[0]) <= tolerance && std::abs(v[1] - o.v[1]) <= tolerance &&
               std::abs(v[2] - o.v[2]) <= tolerance;
    }
};

static_assert(sizeof(lsVec3) == sizeof(KitVector3) && alignof(lsVec3) == alignof(KitReal));
