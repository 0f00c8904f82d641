#include "ColPrimitivePairs.h"

#include <Col/ColCone.h>
#include <Col/ColSphere.h>

#include "../math/GjkSupDisjoint.h"
#include "../math/OverlapBall.h"
#include "../math/Segments.h"
#include "IxPair.h"

#include <numbers>
#include <span>

namespace {

/// Sine between normal and axis below which an end lies flat.
constexpr KitReal kFlatSine = 0.001;

/// Nearest point of the profile of a cone, the half plane of distance from the
/// axis and height. Points and directions are (radial, 0, axial).
struct ProfilePoint {
    KitReal distance = kKitInfinity;
    lsVec3 position, outward;
};

/// Keeps the point of a line of the profile if it is nearer than the one
/// before. The outward side of the line is `normal`.
void LineSegToPoint(ProfilePoint* best, const lsVec3& start, const lsVec3& end,
                    const lsVec3& normal, const lsVec3& point) noexcept {
    const Segment line{0.5 * (start + end), 0.5 * (end - start)};
    const lsVec3 position = line.at(ClosestPointOnSegment(line, point));
    const KitReal distance = (point - position).norm();
    if (distance >= best->distance)
        return;
    best->distance = distance;
    best->position = position;
    best->outward = distance > kMinDirectionLength ? (point - position) / distance : normal;
}

SurfacePoint coneSurfacePointDist(const ColCone& cone, const lsVec3& point) noexcept {
    const KitReal h = cone.halfHeight, offset = std::hypot(point[0], point[1]);
    const lsVec3 radial = offset > kMinDirectionLength
                              ? lsVec3(point[0] / offset, point[1] / offset, 0)
                              : lsVec3(1, 0, 0);
    const lsVec3 flat(offset, 0, point[2]);
    const lsVec3 lower(cone.radiusLower, 0, -h), upper(cone.radiusUpper, 0, h);
    lsVec3 slant(2 * h, 0, cone.radiusLower - cone.radiusUpper);
    slant.normalize();
    ProfilePoint nearest;
    LineSegToPoint(&nearest, lsVec3(0, 0, -h), lower, lsVec3(0, 0, -1), flat);
    LineSegToPoint(&nearest, lsVec3(0, 0, h), upper, lsVec3(0, 0, 1), flat);
    LineSegToPoint(&nearest, lower, upper, slant, flat);

    const bool inside = std::abs(point[2]) <= h && offset <= ColConeRadiusAtZ(&cone, point[2]);
    SurfacePoint surface;
    surface.distance = inside ? -nearest.distance : nearest.distance;
    if (inside && nearest.distance > kMinDirectionLength)
        nearest.outward *= -1;
    surface.position = nearest.position[0] * radial + lsVec3(0, 0, nearest.position[2]);
    surface.outward = nearest.outward[0] * radial + lsVec3(0, 0, nearest.outward[2]);
    surface.dims = 3;
    return surface;
}

} // namespace

int ColConePlaneIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const auto& cone = IxGeometry<ColCone>(pair->model1);
    const lsVec3& normal = frame.tm2.axis(2);
    const lsVec3 down = -frame.tm1.inverseTransformWithoutTranslate(normal);
    const KitReal centre = normal.dot(frame.tm1.t() - frame.tm2.t());
    const KitReal sine = std::hypot(down[0], down[1]), cosine = down[2];
    const KitReal separation =
        centre - std::max(cosine * cone.halfHeight + sine * cone.radiusUpper,
                          -cosine * cone.halfHeight + sine * cone.radiusLower);
    if (!(separation <= frame.eps))
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);

    const KitReal limit = separation < 0 ? kIxKeptShare * separation : frame.eps;
    IxContacts<6> contacts;
    const auto add = [&](const lsVec3& local) {
        const lsVec3 point = frame.tm1.transform(local);
        const KitReal height = normal.dot(point - frame.tm2.t());
        if (height <= limit)
            contacts.add(point, normal, height, 0x200 | (sine < kFlatSine ? 2 : 3),
                         kColSurfaceModel1);
    };
    // A flat end rests on three points that turn with it, a slanting one on its
    // lowest.
    const KitReal rise = std::numbers::sqrt3 / 2;
    const lsVec3 flat[] = {lsVec3(1, 0, 0), lsVec3(-0.5, rise, 0), lsVec3(-0.5, -rise, 0)};
    const lsVec3 lowest[] = {ColRadialDirection(down)};
    for (const KitReal side : {-1.0, 1.0}) {
        const KitReal radius = side < 0 ? cone.radiusLower : cone.radiusUpper;
        const bool three = sine < kFlatSine && radius > 0;
        for (const lsVec3& spoke : three ? std::span<const lsVec3>(flat) : std::span(lowest))
            add(radius * spoke + lsVec3(0, 0, side * cone.halfHeight));
    }
    return contacts.simplifyInto(result, normal);
}

void ColConePlaneRegisterInteraction() {
    ColInteractionTableSetElement(
        kColCone, kColPlane,
        {.intersectFn = ColConePlaneIntersect, .pathIntersectFn = ColGenericPathIntersect},
        nullptr);
}

int ColConeSphereIntersect(ColModelPair* pair, ColIntersectResult* result) {
    const IxPairFrame frame(*pair);
    const KitReal radius = IxGeometry<ColSphere>(pair->model2).radius;
    OverlapAxis overlap;
    lsVec3 point;
    const SurfacePoint surface = coneSurfacePointDist(IxGeometry<ColCone>(pair->model1),
                                                      frame.tm1.inverseTransform(frame.tm2.t()));
    if (!OverlapFromSurfacePoint(&overlap, &point, frame.eps, surface, radius))
        return IxNoContact(result);
    if (IxMaxContacts(*pair, *result) == 0)
        return IxTouchOnly(result);
    return IxWriteSingleContact(*pair, result, frame.tm1.transform(point),
                                frame.tm1.transformWithoutTranslate(overlap.normal),
                                overlap.separation, overlap.dims, radius, frame.eps);
}

void ColConeSphereRegisterInteraction() {
    ColInteractionTableSetElement(
        kColCone, kColSphere,
        {.intersectFn = ColConeSphereIntersect, .pathIntersectFn = ColGenericPathIntersect},
        nullptr);
}

int ColConeDisjointIntersect(ColModelPair* pair, ColIntersectResult* result) {
    result->contactCount = result->groupCount = 0;
    return GjkSupDisjoint(*pair->model1, *pair->model2) ? 0 : 1;
}

void ColConeBoxRegisterInteraction() {
    ColInteractionTableSetElement(
        kColCone, kColBox,
        {.intersectFn = ColConeDisjointIntersect, .pathIntersectFn = ColGenericPathIntersect},
        nullptr);
}

void ColConeConeRegisterInteraction() {
    ColInteractionTableSetElement(
        kColCone, kColCone,
        {.intersectFn = ColConeDisjointIntersect, .pathIntersectFn = ColGenericPathIntersect},
        nullptr);
}

void ColConeCylinderRegisterInteraction() {
    ColInteractionTableSetElement(
        kColCone, kColCylinder,
        {.intersectFn = ColConeDisjointIntersect, .pathIntersectFn = ColGenericPathIntersect},
        nullptr);
}
