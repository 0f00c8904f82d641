#include "IxPrimitiveLineSegment.h"

#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCone.h>
#include <Col/ColCylinder.h>
#include <Col/ColFrame.h>
#include <Col/ColModel.h>
#include <Col/ColSphere.h>

#include "PrimitiveGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

/// Shorter segments have no direction, and directions nearer than this to an axis have it, m.
constexpr KitReal kNull = 1e-14;
/// Where two surfaces of a solid meet, each reaches this share of the size beyond the seam.
constexpr KitReal kSeam = 1e-12;
/// Slack of barycentric coordinates.
constexpr KitReal kEdgeSlack = 1e-9;

/// A segment in the frame of a shape, by the distance t from its start.
struct Ray {
    Ray(const lsTransform& tm, const lsVec3& start, const lsVec3& end) noexcept
        : origin(tm.inverseTransform(start)),
          direction(tm.inverseTransformWithoutTranslate(end - start)), length(direction.norm()) {
        if (length >= kNull)
            direction /= length;
    }
    [[nodiscard]] bool isNull() const noexcept { return !(length >= kNull); }
    [[nodiscard]] lsVec3 at(KitReal t) const noexcept { return origin + t * direction; }

    lsVec3 origin, direction; ///< direction is unit unless the ray is null
    KitReal length;
};

/// The nearest crossing so far, frame of the shape.
struct Crossing {
    explicit Crossing(KitReal length) noexcept : t(length) {}

    [[nodiscard]] bool isNearer(KitReal other) const noexcept {
        return other >= 0 && (found ? other < t : other <= t);
    }
    void set(KitReal distance, const lsVec3& outward) noexcept {
        found = true;
        t = distance;
        normal = outward;
    }

    bool found = false;
    KitReal t;
    lsVec3 normal;
};

int writeHit(const lsTransform& tm, const lsVec3& start, const lsVec3& end, const Ray& ray,
             const Crossing& hit, ColLineSegIntersectResult* result) noexcept {
    if (!hit.found)
        return 0;
    result->position = start + hit.t / ray.length * (end - start);
    result->normal = tm.transformWithoutTranslate(hit.normal);
    result->distance = hit.t;
    return 1;
}

/// Distances at which a ray meets a ball; false if it passes.
bool ballRoots(const Ray& ray, const lsVec3& centre, KitReal radius, KitReal* t) noexcept {
    const lsVec3 toCentre = centre - ray.origin;
    const KitReal nearest = toCentre.dot(ray.direction);
    const KitReal square = radius * radius - (toCentre - nearest * ray.direction).square_norm();
    if (!(square >= 0))
        return false;
    const KitReal half = std::sqrt(square);
    t[0] = nearest - half;
    t[1] = nearest + half;
    return true;
}

/// Distances at which a ray meets an endless cylinder about z; false if it passes or runs along z.
bool tubeRoots(const Ray& ray, KitReal radius, KitReal* t) noexcept {
    const lsVec3 across(ray.direction[0], ray.direction[1], 0);
    const KitReal square = across.square_norm();
    if (!(square > kNull * kNull))
        return false;
    const KitReal nearest = -ray.origin.dot(across) / square;
    const lsVec3 point = ray.at(nearest);
    const KitReal rest = radius * radius - (point[0] * point[0] + point[1] * point[1]);
    if (!(rest >= 0))
        return false;
    const KitReal half = std::sqrt(rest / square);
    t[0] = nearest - half;
    t[1] = nearest + half;
    return true;
}

/// Distances at which a ray meets the endless cone x² + y² = (middle + slope z)²; how many there are.
int coneRoots(const Ray& ray, KitReal middle, KitReal slope, KitReal* t) noexcept {
    // From the point nearest to the origin on, so that far starts lose no digits.
    const KitReal shift = -ray.origin.dot(ray.direction);
    const lsVec3 o = ray.at(shift), &d = ray.direction;
    const KitReal radius = middle + slope * o[2], dRadius = slope * d[2];
    const KitReal a = d[0] * d[0] + d[1] * d[1] - dRadius * dRadius;
    const KitReal b = o[0] * d[0] + o[1] * d[1] - radius * dRadius;
    const KitReal c = o[0] * o[0] + o[1] * o[1] - radius * radius;
    if (std::abs(a) <= kNull) { // along a side line: one crossing
        if (!(std::abs(b) > 0))
            return 0;
        t[0] = shift - 0.5 * c / b;
        return 1;
    }
    KitReal square = b * b - a * c;
    if (square < 0 && square > -kNull * (b * b + std::abs(a * c)))
        square = 0; // through the tip
    if (!(square >= 0))
        return 0;
    const KitReal q = -(b + std::copysign(std::sqrt(square), b));
    t[0] = shift + q / a;
    t[1] = q != 0 ? shift + c / q : t[0];
    return 2;
}

/// The disc at a height, if the ray meets it.
void crossDisc(const Ray& ray, KitReal z, KitReal radius, KitReal normalZ, Crossing* hit) noexcept {
    if (!(std::abs(ray.direction[2]) > kNull))
        return;
    const KitReal t = (z - ray.origin[2]) / ray.direction[2];
    const lsVec3 p = ray.at(t);
    if (hit->isNearer(t) && std::hypot(p[0], p[1]) <= radius * (1 + kSeam))
        hit->set(t, lsVec3(0, 0, normalZ));
}

int IxSphereLineSegment(ColModel* model, const lsVec3& start, const lsVec3& end,
                        ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub*) {
    return SphereLineSeg(ColTransformOrIdentity(model->mGlobalTM),
                         static_cast<const ColSphere*>(model->mGeometry)->radius, start, end,
                         result);
}

/// The one shape without an inside: a hit from below has a negative distance.
int IxPlaneLineSegment(ColModel* model, const lsVec3& start, const lsVec3& end,
                       ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub*) {
    const lsTransform& tm = ColTransformOrIdentity(model->mGlobalTM);
    const lsVec3& normal = tm.axis(2);
    const KitReal a = normal.dot(start - tm.t()), b = normal.dot(end - tm.t());
    if ((a > 0 && b > 0) || (a < 0 && b < 0) || !(std::abs(b - a) >= kNull))
        return 0;
    const KitReal parameter = -a / (b - a);
    result->position = start + parameter * (end - start);
    result->normal = normal;
    result->distance = std::copysign(parameter * (end - start).norm(), a < 0 ? -1 : 1);
    return 1;
}

int IxBoxLineSegment(ColModel* model, const lsVec3& start, const lsVec3& end,
                     ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub*) {
    const lsTransform& tm = ColTransformOrIdentity(model->mGlobalTM);
    const lsVec3& radii = static_cast<const ColBox*>(model->mGeometry)->mR;
    const Ray ray(tm, start, end);
    lsVec3 point;
    KitReal distance = 0;
    FaceId face;
    if (ray.isNull() ||
        IxRayAABBIntersect(-radii, radii, ray.origin, ray.direction, &point, &distance, &face) ==
            0 ||
        distance > ray.length)
        return 0;
    result->position = tm.transform(point);
    result->normal = face.minside ? -tm.axis(face.axis) : tm.axis(face.axis);
    result->distance = distance;
    return 1;
}

// The side between its ends and a half ball at each: where they meet both reach over the seam, and
// the nearest crossing wins.
int IxCapsuleLineSegment(ColModel* model, const lsVec3& start, const lsVec3& end,
                         ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub*) {
    const lsTransform& tm = ColTransformOrIdentity(model->mGlobalTM);
    const auto& capsule = *static_cast<const ColCapsule*>(model->mGeometry);
    const KitReal r = capsule.radius, h = capsule.halfHeight, seam = kSeam * (r + h);
    if (!(h >= kNull))
        return SphereLineSeg(tm, r, start, end, result);
    const Ray ray(tm, start, end);
    if (ray.isNull())
        return 0;
    Crossing hit(ray.length);
    KitReal t[2];
    for (const KitReal side : {KitReal{1}, KitReal{-1}})
        if (ballRoots(ray, lsVec3(0, 0, side * h), r, t))
            for (const KitReal root : t) {
                const lsVec3 p = ray.at(root);
                if (hit.isNearer(root) && side * p[2] >= h - seam)
                    hit.set(root, (p - lsVec3(0, 0, side * h)) / r);
            }
    if (tubeRoots(ray, r, t))
        for (const KitReal root : t) {
            const lsVec3 p = ray.at(root);
            if (hit.isNearer(root) && std::abs(p[2]) <= h + seam)
                hit.set(root, lsVec3(p[0] / r, p[1] / r, 0));
        }
    return writeHit(tm, start, end, ray, hit, result);
}

int IxCylinderLineSegment(ColModel* model, const lsVec3& start, const lsVec3& end,
                          ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub*) {
    const auto& cylinder = *static_cast<const ColCylinder*>(model->mGeometry);
    return CylinderLineSegment(ColTransformOrIdentity(model->mGlobalTM), cylinder.radius,
                               cylinder.halfHeight, start, end, result);
}

int IxConeLineSegment(ColModel* model, const lsVec3& start, const lsVec3& end,
                      ColLineSegIntersectResult* result, Hy::HyLineSegIntersectSub*) {
    const lsTransform& tm = ColTransformOrIdentity(model->mGlobalTM);
    const auto& cone = *static_cast<const ColCone*>(model->mGeometry);
    const Ray ray(tm, start, end);
    if (ray.isNull())
        return 0;
    const KitReal h = cone.halfHeight, middle = 0.5 * (cone.radiusLower + cone.radiusUpper);
    const KitReal slope = (cone.radiusUpper - cone.radiusLower) / (2 * h);
    const KitReal slant = std::hypot(1, slope);
    Crossing hit(ray.length);
    KitReal t[2];
    const int roots = coneRoots(ray, middle, slope, t);
    for (int i = 0; i < roots; ++i) {
        const lsVec3 p = ray.at(t[i]);
        if (!hit.isNearer(t[i]) || !(std::abs(p[2]) <= h * (1 + kSeam)))
            continue;
        const KitReal offset = std::hypot(p[0], p[1]); // 0 at a tip, whose normal is the axis
        hit.set(t[i], offset > kNull
                          ? lsVec3(p[0] / offset / slant, p[1] / offset / slant, -slope / slant)
                          : lsVec3(0, 0, std::copysign(1, -slope)));
    }
    crossDisc(ray, -h, cone.radiusLower, -1, &hit);
    crossDisc(ray, h, cone.radiusUpper, 1, &hit);
    return writeHit(tm, start, end, ray, hit, result);
}

} // namespace

// Distances are compared, not points: a ray through an edge that two faces share enters by one of
// them, whatever the rounding of the point.
int IxRayAABBIntersect(const lsVec3& min, const lsVec3& max, const lsVec3& origin,
                       const lsVec3& direction, lsVec3* outPoint, KitReal* outDistance,
                       FaceId* outFace) noexcept {
    KitReal enter = -kKitInfinity, leave = kKitInfinity, exit = kKitInfinity;
    FaceId entryFace, exitFace;
    bool inside = true;
    for (int axis = 0; axis < 3; ++axis) {
        const KitReal o = origin[axis], d = direction[axis];
        const bool within = o >= min[axis] && o <= max[axis];
        inside = inside && within;
        if (d == 0) {
            if (!within)
                return 0;
            continue;
        }
        const KitReal toMin = (min[axis] - o) / d, toMax = (max[axis] - o) / d;
        const KitReal near = std::min(toMin, toMax);
        leave = std::min(leave, std::max(toMin, toMax));
        if (!within && near > enter) {
            enter = near;
            entryFace = {axis, d > 0};
        }
        const KitReal out = toMin < 0 ? toMax : toMin; // a start on the min face is there already
        if (out < exit) {
            exit = out;
            exitFace = {axis, !(toMin < 0)};
        }
    }
    if (inside ? !(exit < kKitInfinity) : !(enter >= 0 && enter <= leave))
        return 0;
    *outDistance = inside ? exit : enter;
    *outFace = inside ? exitFace : entryFace;
    *outPoint = origin + *outDistance * direction;
    (*outPoint)[outFace->axis] = outFace->minside ? min[outFace->axis] : max[outFace->axis];
    return 1;
}

int IxRayAABBOverlap(const lsVec3& min, const lsVec3& max, const lsVec3& origin,
                     const lsVec3& direction, KitReal* outDistance) noexcept {
    bool inside = true;
    for (int axis = 0; axis < 3; ++axis)
        inside = inside && origin[axis] >= min[axis] && origin[axis] <= max[axis];
    if (inside) {
        *outDistance = 0;
        return 2;
    }
    lsVec3 point;
    FaceId face;
    return IxRayAABBIntersect(min, max, origin, direction, &point, outDistance, &face);
}

int SphereLineSeg(const lsTransform& transform, KitReal radius, const lsVec3& start,
                  const lsVec3& end, ColLineSegIntersectResult* result) noexcept {
    const Ray ray(transform, start, end);
    KitReal t[2];
    if (ray.isNull() || !ballRoots(ray, lsVec3(), radius, t))
        return 0;
    const bool inside = ray.origin.square_norm() <= radius * radius;
    Crossing hit(ray.length);
    const KitReal root = inside ? std::max(t[1], KitReal{0}) : t[0];
    if (hit.isNearer(root))
        hit.set(root, ray.at(root) / radius);
    return writeHit(transform, start, end, ray, hit, result);
}

// What lies between the end planes and what lies in the endless cylinder are stretches of the ray, and
// the solid is their common part.
int CylinderLineSegment(const lsTransform& transform, KitReal radius, KitReal halfHeight,
                        const lsVec3& start, const lsVec3& end,
                        ColLineSegIntersectResult* result) noexcept {
    const Ray ray(transform, start, end);
    if (ray.isNull() || !(halfHeight >= kNull))
        return 0;
    const lsVec3 &o = ray.origin, &d = ray.direction;
    KitReal t[2] = {-kKitInfinity, kKitInfinity};
    const bool alongAxis = !(std::hypot(d[0], d[1]) > kNull);
    if (alongAxis ? o[0] * o[0] + o[1] * o[1] > radius * radius : !tubeRoots(ray, radius, t))
        return 0;
    bool endFirst = false, endLast = false;
    if (std::abs(d[2]) > kNull) {
        const KitReal away = std::copysign(halfHeight, d[2]);
        const KitReal first = (-away - o[2]) / d[2], last = (away - o[2]) / d[2];
        endFirst = first > t[0];
        endLast = last < t[1];
        t[0] = std::max(t[0], first);
        t[1] = std::min(t[1], last);
    } else if (std::abs(o[2]) > halfHeight) {
        return 0;
    }
    if (!(t[0] <= t[1]))
        return 0;
    const bool entering = t[0] >= 0;
    const KitReal root = entering ? t[0] : t[1];
    Crossing hit(ray.length);
    if (hit.isNearer(root)) {
        const lsVec3 p = ray.at(root);
        const KitReal endNormal = entering ? -std::copysign(1, d[2]) : std::copysign(1, d[2]);
        hit.set(root, (entering ? endFirst : endLast) ? lsVec3(0, 0, endNormal)
                                                      : lsVec3(p[0] / radius, p[1] / radius, 0));
    }
    return writeHit(transform, start, end, ray, hit, result);
}

bool IxTriangleLineSegment(const lsVec3& a, const lsVec3& b, const lsVec3& c, const lsVec3& start,
                           const lsVec3& end, KitReal* t, lsVec3* normal) noexcept {
    lsVec3 n = (b - a).cross(c - a);
    if (!(n.normalize() > 0))
        return false;
    const KitReal along = n.dot(end - start);
    if (!(std::abs(along) >= kNull))
        return false;
    const KitReal parameter = n.dot(a - start) / along;
    if (!(parameter >= 0 && parameter <= 1 && parameter <= *t))
        return false;
    int dropped = 0;
    for (int axis = 1; axis < 3; ++axis)
        if (std::abs(n[axis]) > std::abs(n[dropped]))
            dropped = axis;
    const int u = (dropped + 1) % 3, v = (dropped + 2) % 3;
    const lsVec3 p = start + parameter * (end - start) - a, e1 = b - a, e2 = c - a;
    const KitReal area = e1[u] * e2[v] - e1[v] * e2[u];
    const KitReal towardsB = (p[u] * e2[v] - p[v] * e2[u]) / area;
    const KitReal towardsC = (e1[u] * p[v] - e1[v] * p[u]) / area;
    if (!(towardsB >= -kEdgeSlack && towardsC >= -kEdgeSlack &&
          towardsB + towardsC <= 1 + kEdgeSlack))
        return false;
    *t = parameter;
    *normal = n;
    return true;
}

void ColPlaneLineSegmentRegisterInteraction() {
    ColLineSegRegisterInteraction(kColPlane, IxPlaneLineSegment);
}

void ColSphereLineSegmentRegisterInteraction() {
    ColLineSegRegisterInteraction(kColSphere, IxSphereLineSegment);
}

void ColBoxLineSegmentRegisterInteraction() {
    ColLineSegRegisterInteraction(kColBox, IxBoxLineSegment);
}

void ColCapsuleLineSegmentRegisterInteraction() {
    ColLineSegRegisterInteraction(kColCapsule, IxCapsuleLineSegment);
}

void ColConeLineSegmentRegisterInteraction() {
    ColLineSegRegisterInteraction(kColCone, IxConeLineSegment);
}

void ColCylinderLineSegmentRegisterInteraction() {
    ColLineSegRegisterInteraction(kColCylinder, IxCylinderLineSegment);
}
