#include <Hy/HyGeometryTools.h>
#include <Hy/HyVector3.h>
#include <cstdio>

namespace Hy {

HyReal HyVector3::distancePointToSegment(const HyVector3& a, const HyVector3& b) const noexcept {
    HyVector3 closest;
    return HyGeometryTools::computeDistanceToLineSegment(*this, a, b, closest);
}

HyVector3 HyVector3::getOrthogonal() const noexcept {
    // The axis of the smallest component is the one furthest from this vector.
    HyVector3 away(0, 0, 1);
    const HyReal x2 = v[0] * v[0], y2 = v[1] * v[1], z2 = v[2] * v[2];
    if (x2 <= y2 && x2 <= z2)
        away.set(1, 0, 0);
    else if (y2 <= z2)
        away.set(0, 1, 0);
    HyVector3 perpendicular = normalized().cross(away);
    if (perpendicular.normalize() == 0)
        perpendicular.set(1, 0, 0);
    return perpendicular;
}

HyVector3 HyVector3::project(const HyVector3& axis) const noexcept {
    const HyVector3 unit = axis.normalized();
    return dot(unit) * unit;
}

void HyVector3::planeSpace(HyVector3& p, HyVector3& q) const noexcept {
    const HyVector3 axis = *this; // p or q may be this vector
    p = axis.getOrthogonal();
    q = axis.cross(p);
    if (q.normalize() == 0)
        q.set(0, 1, 0);
}

void HyVector3::planeNormal(const HyVector3& a, const HyVector3& b, const HyVector3& c) noexcept {
    *this = (b - a).cross(c - a);
    if (normalize() == 0)
        set(0, 0, 0);
}

void HyVector3::makeCleanBase(HyVector3& first, HyVector3& second, HyVector3& third) noexcept {
    if (first.normalize() == 0)
        first.set(1, 0, 0);
    second.normalize();
    second.orthogonalize(first);
    // What is left of two directions along one line is rounding, and no direction.
    if (!(second.norm() > HY_SMALL_REAL<double>::epsilon))
        second = first.getOrthogonal();
    second.normalize();
    second.orthogonalize(first); // once more: the first time cancelled
    second.normalize();
    third = first.cross(second);
}

void HyVector3::print() const {
    std::printf("(%g, %g, %g)\n", v[0], v[1], v[2]);
}
} // namespace Hy
