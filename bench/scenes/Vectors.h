#pragma once
#include <cmath>

/// Vectors and turns of the scenes, which know no engine's.
namespace bench {

struct Vec3 {
    double x = 0, y = 0, z = 0;

    Vec3& operator+=(const Vec3& o) {
        x += o.x;
        y += o.y;
        z += o.z;
        return *this;
    }
    Vec3& operator-=(const Vec3& o) { return *this += Vec3{-o.x, -o.y, -o.z}; }
    Vec3& operator*=(double s) {
        x *= s;
        y *= s;
        z *= s;
        return *this;
    }
    friend Vec3 operator+(Vec3 a, const Vec3& b) { return a += b; }
    friend Vec3 operator-(Vec3 a, const Vec3& b) { return a -= b; }
    friend Vec3 operator-(const Vec3& a) { return {-a.x, -a.y, -a.z}; }
    friend Vec3 operator*(double s, Vec3 a) { return a *= s; }
    friend Vec3 operator*(Vec3 a, double s) { return a *= s; }
    friend Vec3 operator/(Vec3 a, double s) { return a *= 1 / s; }
};

inline double dot(const Vec3& a, const Vec3& b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double norm(const Vec3& a) {
    return std::sqrt(dot(a, a));
}
inline Vec3 normed(const Vec3& a) {
    return a / norm(a);
}

/// A unit quaternion, local to world.
struct Quat {
    double w = 1, x = 0, y = 0, z = 0;

    [[nodiscard]] Vec3 vector() const { return {x, y, z}; }
    [[nodiscard]] Quat conjugate() const { return {w, -x, -y, -z}; }
    friend Quat operator*(const Quat& a, const Quat& b) {
        const Vec3 u = a.vector(), v = b.vector(), s = a.w * v + b.w * u + cross(u, v);
        return {a.w * b.w - dot(u, v), s.x, s.y, s.z};
    }
};

inline Vec3 rotate(const Quat& q, const Vec3& v) {
    const Vec3 t = 2 * cross(q.vector(), v);
    return v + q.w * t + cross(q.vector(), t);
}
inline Vec3 unrotate(const Quat& q, const Vec3& v) {
    return rotate(q.conjugate(), v);
}

/// Rotation by an angle in rad about a unit axis.
inline Quat turn(const Vec3& axis, double angle) {
    const Vec3 s = std::sin(angle / 2) * axis;
    return {std::cos(angle / 2), s.x, s.y, s.z};
}

/// The shortest rotation that takes +z to a unit direction.
inline Quat turnZ(const Vec3& d) {
    if (d.z < -1 + 1e-12)
        return {0, 1, 0, 0};
    const double w = std::sqrt((1 + d.z) / 2);
    return {w, -d.y / (2 * w), d.x / (2 * w), 0};
}

/// Angle of a rotation, 0 to pi.
inline double angleOf(const Quat& q) {
    return 2 * std::atan2(norm(q.vector()), std::abs(q.w));
}

/// Angle about a unit axis of a rotation about it, -pi to pi.
inline double angleAbout(const Quat& q, const Vec3& axis) {
    const double half = std::atan2(dot(q.vector(), axis), q.w);
    return 2 * std::remainder(half, M_PI);
}

} // namespace bench
