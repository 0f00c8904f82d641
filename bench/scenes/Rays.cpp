#include "Rays.h"

#include <algorithm>
#include <array>
#include <limits>

namespace bench {
namespace {

constexpr int kBodies = 2000, kSegments = 10000;
constexpr double kNone = std::numeric_limits<double>::infinity();

Vec3 place(Random& random) {
    const double x = random(-50, 50), y = random(-50, 50), z = random(0, 20);
    return {x, y, z};
}

/// Smaller parameter at which start + t d, |d| = 1, meets a sphere about c; infinite for none ahead.
double hitSphere(const Vec3& start, const Vec3& d, const Vec3& c, double r) {
    const Vec3 o = start - c;
    const double b = dot(o, d), rest = b * b - dot(o, o) + r * r;
    const double t = rest < 0 ? -1 : -b - std::sqrt(rest);
    return t >= 0 ? t : kNone;
}

double hitBox(const Vec3& start, const Vec3& d, const Vec3& half) {
    const std::array<double, 3> o{start.x, start.y, start.z}, u{d.x, d.y, d.z};
    const std::array<double, 3> h{half.x, half.y, half.z};
    double enter = -kNone, leave = kNone;
    for (std::size_t i = 0; i < 3; ++i) {
        if (u[i] == 0 && std::abs(o[i]) > h[i])
            return kNone;
        if (u[i] == 0)
            continue;
        const double t1 = (-h[i] - o[i]) / u[i], t2 = (h[i] - o[i]) / u[i];
        enter = std::max(enter, std::min(t1, t2));
        leave = std::min(leave, std::max(t1, t2));
    }
    return enter >= 0 && enter <= leave ? enter : kNone;
}

/// The side between the caps' centres, or a cap's sphere, whichever comes first.
double hitCapsule(const Vec3& start, const Vec3& d, double r, double h) {
    double best = std::min(hitSphere(start, d, {0, 0, h}, r), hitSphere(start, d, {0, 0, -h}, r));
    const double a = d.x * d.x + d.y * d.y, b = start.x * d.x + start.y * d.y;
    const double rest = b * b - a * (start.x * start.x + start.y * start.y - r * r);
    if (a > 0 && rest >= 0) {
        const double t = (-b - std::sqrt(rest)) / a;
        if (t >= 0 && std::abs(start.z + t * d.z) <= h)
            best = std::min(best, t);
    }
    return best;
}

} // namespace

bool isInside(const Shape& shape, const Motion& motion, const Vec3& point) {
    const Vec3 p = unrotate(motion.q, point - motion.p);
    if (shape.kind == ShapeKind::kBox)
        return std::abs(p.x) <= shape.half.x && std::abs(p.y) <= shape.half.y &&
               std::abs(p.z) <= shape.half.z;
    const double h = shape.halfLength; // 0 for a sphere
    return norm(p - Vec3{0, 0, std::clamp(p.z, -h, h)}) <= shape.radius;
}

double hitDistance(const Shape& shape, const Motion& motion, const Segment& segment) {
    const Vec3 whole = segment.end - segment.start;
    const double length = norm(whole);
    const Vec3 start = unrotate(motion.q, segment.start - motion.p);
    const Vec3 d = unrotate(motion.q, whole) / length;
    double t = kNone;
    switch (shape.kind) {
    case ShapeKind::kBox:
        t = hitBox(start, d, shape.half);
        break;
    case ShapeKind::kCapsule:
        t = hitCapsule(start, d, shape.radius, shape.halfLength);
        break;
    case ShapeKind::kSphere:
        t = hitSphere(start, d, {}, shape.radius);
        break;
    case ShapeKind::kCylinder: // not among the bodies
        break;
    }
    return t <= length ? t : -1;
}

double nearestHit(const Scene& scene, const Segment& segment) {
    double nearest = -1;
    for (const Body& body : scene.bodies) {
        const double t = hitDistance(body.shape, body.start, segment);
        if (t >= 0 && (nearest < 0 || t < nearest))
            nearest = t;
    }
    return nearest;
}

std::vector<Segment> raySegments(const Scene& scene) {
    Random random(999);
    const auto isTaken = [&](const Vec3& p) {
        return std::any_of(scene.bodies.begin(), scene.bodies.end(),
                           [&](const Body& body) { return isInside(body.shape, body.start, p); });
    };
    std::vector<Segment> segments;
    for (int i = 0; i < kSegments; ++i) {
        Vec3 start = place(random);
        while (isTaken(start))
            start = place(random);
        segments.push_back({start, place(random)});
    }
    return segments;
}

void makeRays(Scene& scene, int) {
    scene.pairs = true;
    scene.gravity = {};
    scene.steps = 10; // rounds
    Random random;
    for (int i = 0; i < kBodies; ++i) {
        const Vec3 p = place(random);
        const Quat q = turnZ(normed(random.vector(-1, 1)));
        if (i % 3 == 0) {
            const Vec3 half = random.vector(0.3, 1);
            scene.add(Shape::box(half.x, half.y, half.z), 1, p, q);
        } else if (i % 3 == 1) {
            scene.add(Shape::sphere(random(0.3, 1)), 1, p, q);
        } else {
            const double r = random(0.2, 0.5);
            scene.add(Shape::capsule(r, random(0.3, 1)), 1, p, q);
        }
    }
}

} // namespace bench
