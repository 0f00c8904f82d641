#include "Overlap.h"

#include <algorithm>
#include <limits>

namespace bench {
namespace {

/// Cross products shorter than this are of edges so nearly parallel that a face axis tells the same.
constexpr double kParallel = 1e-6;

struct Axes {
    Vec3 axis[3];
    explicit Axes(const Quat& q)
        : axis{rotate(q, {1, 0, 0}), rotate(q, {0, 1, 0}), rotate(q, {0, 0, 1})} {}
};

double reachAlong(const Axes& axes, const Vec3& half, const Vec3& d) {
    return half.x * std::abs(dot(axes.axis[0], d)) + half.y * std::abs(dot(axes.axis[1], d)) +
           half.z * std::abs(dot(axes.axis[2], d));
}

double clampedToOne(double s) {
    return std::clamp(s, -1.0, 1.0);
}

Vec3 coreOf(const Shape& shape, const Motion& m) {
    return shape.kind == ShapeKind::kCapsule ? rotate(m.q, {0, 0, shape.halfLength}) : Vec3{};
}

} // namespace

double depthInGround(const Shape& shape, const Motion& m) {
    const Vec3 down = unrotate(m.q, {0, 0, -1});
    double reach = shape.radius;
    switch (shape.kind) {
    case ShapeKind::kBox:
        reach = std::abs(down.x) * shape.half.x + std::abs(down.y) * shape.half.y +
                std::abs(down.z) * shape.half.z;
        break;
    case ShapeKind::kCapsule:
        reach += std::abs(down.z) * shape.halfLength;
        break;
    case ShapeKind::kCylinder:
        reach = std::abs(down.z) * shape.halfLength + std::hypot(down.x, down.y) * shape.radius;
        break;
    case ShapeKind::kSphere:
        break;
    }
    return reach - m.p.z;
}

double depthOfBoxes(const Vec3& half1, const Motion& m1, const Vec3& half2, const Motion& m2) {
    const Axes a(m1.q), b(m2.q);
    const Vec3 between = m2.p - m1.p;
    double depth = std::numeric_limits<double>::infinity();
    const auto test = [&](const Vec3& d) {
        depth = std::min(depth, reachAlong(a, half1, d) + reachAlong(b, half2, d) -
                                    std::abs(dot(between, d)));
    };
    for (const Vec3& axis : a.axis)
        test(axis);
    for (const Vec3& axis : b.axis)
        test(axis);
    for (int i = 0; i < 3 && depth > 0; ++i)
        for (const Vec3& other : b.axis) {
            const Vec3 d = cross(a.axis[i], other);
            if (const double length = norm(d); length > kParallel)
                test(d / length);
        }
    return depth;
}

// The nearest points lie inside both segments, or one of them at an end: Ericson, "Real-Time Collision
// Detection", 2005, section 5.1.9.
double segmentDistance(const Vec3& c1, const Vec3& h1, const Vec3& c2, const Vec3& h2) {
    const Vec3 r = c1 - c2;
    const double a = dot(h1, h1), e = dot(h2, h2), b = dot(h1, h2);
    const double c = dot(h1, r), f = dot(h2, r), determinant = a * e - b * b;
    double s = 0, t = 0;
    if (a > 0 && determinant > 1e-12 * a * e)
        s = clampedToOne((b * f - c * e) / determinant);
    if (e > 0)
        t = clampedToOne((b * s + f) / e);
    if (a > 0)
        s = clampedToOne((b * t - c) / a);
    return norm(r + s * h1 - t * h2);
}

double depthOfPair(const Shape& shape1, const Motion& m1, const Shape& shape2, const Motion& m2) {
    if (shape1.kind == ShapeKind::kBox && shape2.kind == ShapeKind::kBox)
        return depthOfBoxes(shape1.half, m1, shape2.half, m2);
    return shape1.radius + shape2.radius -
           segmentDistance(m1.p, coreOf(shape1, m1), m2.p, coreOf(shape2, m2));
}

DeepestOverlap::DeepestOverlap(const Scene& scene) : mScene(scene) {
    for (const Joint& joint : scene.joints)
        if (joint.b != Joint::kWorld)
            mJoined.emplace_back(std::min(joint.a, joint.b), std::max(joint.a, joint.b));
    std::sort(mJoined.begin(), mJoined.end());
    for (int i = 0; i < static_cast<int>(scene.bodies.size()); ++i)
        mByX.push_back(i);
}

bool DeepestOverlap::isJoined(int i, int j) const {
    return std::binary_search(mJoined.begin(), mJoined.end(),
                              std::pair(std::min(i, j), std::max(i, j)));
}

double DeepestOverlap::operator()(const std::vector<Motion>& motions) {
    double deepest = 0;
    if (mScene.ground)
        for (std::size_t i = 0; i < motions.size(); ++i)
            deepest = std::max(deepest, depthInGround(mScene.bodies[i].shape, motions[i]));
    return mScene.pairs ? std::max(deepest, ofPairs(motions)) : deepest;
}

// A sweep along x over the bodies' spheres.
double DeepestOverlap::ofPairs(const std::vector<Motion>& motions) {
    const auto at = [&](int i) -> const Motion& { return motions[static_cast<std::size_t>(i)]; };
    const auto shape = [&](int i) -> const Shape& {
        return mScene.bodies[static_cast<std::size_t>(i)].shape;
    };
    const auto left = [&](int i) { return at(i).p.x - shape(i).reach(); };
    std::sort(mByX.begin(), mByX.end(), [&](int i, int j) { return left(i) < left(j); });
    double deepest = 0;
    for (std::size_t n = 0; n < mByX.size(); ++n) {
        const int i = mByX[n];
        const double reach = shape(i).reach(), right = at(i).p.x + reach;
        for (std::size_t k = n + 1; k < mByX.size() && left(mByX[k]) < right; ++k) {
            const int j = mByX[k];
            const Vec3 between = at(i).p - at(j).p;
            const double sum = reach + shape(j).reach();
            if (dot(between, between) < sum * sum && !isJoined(i, j))
                deepest = std::max(deepest, depthOfPair(shape(i), at(i), shape(j), at(j)));
        }
    }
    return deepest;
}

} // namespace bench
