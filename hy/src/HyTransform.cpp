#include <Hy/HyTransform.h>
#include <Kit/KitQuaternion.h>
#include <algorithm>
#include <cmath>

namespace Hy {

constinit const HyTransform HyTransform::kIdentity;

namespace {
/// Tolerance of isValid().
constexpr HyReal kValidTolerance = 1e-7;
/// A cross product not longer than this tells of parallel rows.
constexpr HyReal kParallelRows = 0.01F;
/// Above this cosine between view and up, up is pushed aside by kUpNudge.
constexpr HyReal kParallelUp = 0.9999999F;
constexpr HyReal kUpNudge = 0.1;

/// The component of `up` that is not its largest.
int nudgedComponent(const HyVector3& up) {
    const HyReal x = std::abs(up[0]), y = std::abs(up[1]), z = std::abs(up[2]);
    if (x > y && x > z)
        return 1;
    return y > x && y > z ? 2 : 0;
}
} // namespace

bool operator==(const HyTransform& a, const HyTransform& b) noexcept {
    return std::equal(&a.m[0][0], &a.m[0][0] + 16, &b.m[0][0]);
}

void HyTransform::makeOrthonormal(int reference) noexcept {
    if (reference < 0 || reference > 2)
        return;
    const int j = (reference + 1) % 3, k = (reference + 2) % 3;
    if (axis(0).isZero() && axis(1).isZero() && axis(2).isZero()) {
        setRotation(HyQuaternion());
        return;
    }
    axis(reference).normalize();
    const HyVector3 keptK = axis(k);
    axis(k) = axis(reference).cross(axis(j));
    if (axis(k).norm() > kParallelRows) {
        axis(k).normalize();
    } else { // j says nothing of the plane: ask the old row k
        axis(j) = keptK;
        axis(k) = axis(reference).cross(axis(j));
        axis(k).normalize();
    }
    axis(j) = axis(k).cross(axis(reference));
    axis(j).normalize();
}

bool HyTransform::makeRotation(const HyVector3& v, HyReal tolerance) noexcept {
    HyVector3 direction = v, present = axis(1);
    if (!(direction.norm() > tolerance) || !(present.norm() > tolerance))
        return false;
    if (direction.normalize() == 0 || present.normalize() == 0)
        return false;
    if (!(1 - std::abs(present.dot(direction)) >= tolerance))
        return false;

    const auto [x, y, z] = direction.v;
    axis(0) = direction;
    if (std::abs(x) > std::abs(y))
        axis(1) = HyVector3(z, 0, -x) / std::sqrt(x * x + z * z);
    else
        axis(1) = HyVector3(0, -z, y) / std::sqrt(y * y + z * z);
    axis(2) = axis(0).cross(axis(1));
    return true;
}

void HyTransform::makeFromRotatedVector(const HyVector3& v1, const HyVector3& v2) noexcept {
    HyQuaternion q;
    KitQuaternionForRotation(q.mQuat, v1.v, v2.v);
    *this = HyTransform(q);
}

HyTransform HyTransform::createLookAt(const HyVector3& from, const HyVector3& to,
                                      const HyVector3& up) noexcept {
    HyVector3 view = to - from;
    if (view.normalize() == 0)
        view.set(0, 0, -1);
    HyVector3 upward = up;
    if (std::abs(view.dot(up)) > kParallelUp)
        upward[nudgedComponent(up)] += kUpNudge;
    HyVector3 right = view.cross(upward);
    if (right.normalize() == 0)
        right = view.getOrthogonal();

    HyTransform frame(from);
    frame.axis(0) = right;
    frame.axis(1) = right.cross(view).normalized();
    frame.axis(2) = -view;
    return frame;
}

void HyTransform::rotateSelf(const HyVector3& w, HyReal h) noexcept {
    HyQuaternion q(*this);
    KitQuaternionFiniteRotation(q.mQuat, w.v, h);
    setRotation(q);
}

void HyTransform::interpolateRotation(const HyTransform& a, const HyTransform& b,
                                      HyReal t) noexcept {
    HyQuaternion q;
    KitQuaternionSlerp(q.mQuat, HyQuaternion(a).mQuat, HyQuaternion(b).mQuat, t);
    setRotation(q);
}

void HyTransform::interpolate(const HyTransform& a, const HyTransform& b, HyReal t) noexcept {
    HyVector3 position;
    position.setLinear(1 - t, a.t(), t, b.t());
    interpolateRotation(a, b, t);
    this->t() = position;
}

void HyTransform::computeLinearVelocity(const HyTransform& a, const HyTransform& b, HyReal h,
                                        HyVector3& velocity) noexcept {
    velocity = (b.t() - a.t()) / h;
}

void HyTransform::computeAngularVelocity(const HyTransform& a, const HyTransform& b, HyReal h,
                                         HyVector3& velocity) noexcept {
    const HyQuaternion from(a);
    HyQuaternion to(b);
    if (from.dot(to) < 0) // q and -q are one orientation: take the nearer
        to.set(-to.w(), -to.x(), -to.y(), -to.z());
    KitQuaternionGetForwardVelocity(velocity.v, from.mQuat, to.mQuat);
    velocity /= h;
}

bool HyTransform::isValid() const noexcept {
    return KitMatrix4IsTM(m, kValidTolerance) != 0;
}

bool HyTransform::isIdentity(HyReal tolerance) const noexcept {
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 3; ++j)
            if (!(std::abs(m[i][j] - kIdentity.m[i][j]) <= tolerance))
                return false;
    return true;
}

bool HyTransform::isFinite() const noexcept {
    return std::all_of(&m[0][0], &m[0][0] + 16, [](HyReal e) { return std::isfinite(e); });
}
} // namespace Hy
