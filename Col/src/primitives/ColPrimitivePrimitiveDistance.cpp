#include <Col/ColPrimitivePrimitiveDistance.h>

#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCylinder.h>
#include <Col/ColSphere.h>
#include <Kit/KitMessage.h>

#include "../math/OverlapBall.h"
#include "../math/OverlapCapsule.h"
#include "IxPair.h"

namespace {

/// Closest points of a pair, frame of model1.
struct Closest {
    KitReal distance = kKitInfinity; ///< m, not above 0 if the models overlap
    lsVec3 point1, point2;
};

/// The pair with model2 as a segment grown by a radius; a sphere is a segment
/// without length.
struct RoundedSegment {
    RoundedSegment(const IxPairFrame& frame, const ColModel& model) noexcept {
        const bool isSphere = model.mGeometry->mID == kColSphere;
        segment.centre = frame.tm1.inverseTransform(frame.tm2.t());
        radius =
            isSphere ? IxGeometry<ColSphere>(&model).radius : IxGeometry<ColCapsule>(&model).radius;
        if (!isSphere)
            segment.half = frame.tm1.inverseTransformWithoutTranslate(
                IxGeometry<ColCapsule>(&model).halfHeight * frame.tm2.axis(2));
    }
    Segment segment;
    KitReal radius;
};

Closest fromOverlap(const CapsuleOverlap& overlap, const RoundedSegment& rounded) noexcept {
    const lsVec3 point2 = rounded.segment.at(overlap.nearest) + rounded.radius * overlap.normal;
    return {overlap.separation, point2 + overlap.separation * overlap.normal, point2};
}

Closest capsuleCapsuleDist(KitReal radius1, KitReal halfHeight1,
                           const RoundedSegment& rounded) noexcept {
    CapsuleOverlap overlap;
    OverlapCapCap(&overlap, 0, radius1, halfHeight1, rounded.segment, rounded.radius);
    return fromOverlap(overlap, rounded);
}

Closest boxCapsuleDist(const lsVec3& radii, const RoundedSegment& rounded) noexcept {
    CapsuleOverlap overlap;
    OverlapOBBCap(&overlap, 0, radii, rounded.segment, rounded.radius);
    return fromOverlap(overlap, rounded);
}

Closest cylinderCapsuleDist(const ColCylinder& cylinder, const RoundedSegment& rounded) noexcept {
    CapsuleOverlap overlap;
    OverlapCylCap(&overlap, 0, cylinder.radius, cylinder.halfHeight, rounded.segment,
                  rounded.radius);
    return fromOverlap(overlap, rounded);
}

/// Improves the closest points by the edges of one box against the other box
/// about the origin.
/// @param edgeBox the box with the edges, in the frame of the other
void edgesToBox(const lsVec3& edgeRadii, const lsTransform& edgeBox, const lsVec3& radii,
                Closest* best, lsVec3* onEdge, lsVec3* onBox) noexcept {
    for (int axis = 0; axis < 3; ++axis)
        for (int i = 0; i < 4; ++i) {
            const int u = (axis + 1) % 3, v = (axis + 2) % 3;
            Segment edge{edgeBox.t(), edgeRadii[axis] * edgeBox.axis(axis)};
            edge.centre.addMultiple(i & 1 ? edgeRadii[u] : -edgeRadii[u], edgeBox.axis(u));
            edge.centre.addMultiple(i & 2 ? edgeRadii[v] : -edgeRadii[v], edgeBox.axis(v));
            const lsVec3 point = edge.at(ClosestPointToBox(edge, radii));
            const SurfacePoint surface = boxSurfacePointDist(radii, point);
            if (surface.distance < best->distance) {
                best->distance = surface.distance;
                *onEdge = point;
                *onBox = surface.position;
            }
        }
}

/// Of two boxes apart, the closest features always have an edge on one side.
Closest boxBoxDist(const lsVec3& r1, const lsVec3& r2, const lsTransform& t12) noexcept {
    Closest best;
    edgesToBox(r2, t12, r1, &best, &best.point2, &best.point1);
    Closest other;
    other.distance = best.distance;
    edgesToBox(r1, lsTransform::inverseOf(t12), r2, &other, &other.point1, &other.point2);
    if (other.distance < best.distance)
        best = {other.distance, t12.transform(other.point1), t12.transform(other.point2)};
    return best;
}

/// Of boxes one of which may hold the other whole, edges alone do not tell that
/// they overlap.
Closest boxBoxOrInside(const lsVec3& r1, const lsVec3& r2, const lsTransform& t12) noexcept {
    OverlapAxis overlap;
    if (overlapOBBs(&overlap, 0, r1, r2, t12) && overlap.separation < 0)
        return {0, lsVec3(), lsVec3()};
    return boxBoxDist(r1, r2, t12);
}

bool closestOf(const ColModelPair& pair, const IxPairFrame& frame, Closest* out) noexcept {
    const int id1 = pair.model1->mGeometry->mID, id2 = pair.model2->mGeometry->mID;
    if (id1 == kColBox && id2 == kColBox) {
        *out = boxBoxOrInside(IxGeometry<ColBox>(pair.model1).mR,
                              IxGeometry<ColBox>(pair.model2).mR, IxRelative(frame.tm2, frame.tm1));
        return true;
    }
    if (id2 != kColSphere && id2 != kColCapsule)
        return false;
    const RoundedSegment rounded(frame, *pair.model2);
    switch (id1) {
    case kColBox:
        *out = boxCapsuleDist(IxGeometry<ColBox>(pair.model1).mR, rounded);
        return true;
    case kColCylinder:
        *out = cylinderCapsuleDist(IxGeometry<ColCylinder>(pair.model1), rounded);
        return true;
    case kColSphere:
        *out = capsuleCapsuleDist(IxGeometry<ColSphere>(pair.model1).radius, 0, rounded);
        return true;
    case kColCapsule: {
        const auto& capsule = IxGeometry<ColCapsule>(pair.model1);
        *out = capsuleCapsuleDist(capsule.radius, capsule.halfHeight, rounded);
        return true;
    }
    default:
        return false;
    }
}

int approximateDistance(ColModelPair* pair, const ColDistanceRequest*, ColDistanceResult* result) {
    return ColPrimitivePrimitiveDistance(pair, result);
}

/// The pairs in the order of their functions.
constexpr int kPairs[][2] = {{kColSphere, kColSphere},   {kColBox, kColSphere},
                             {kColBox, kColBox},         {kColBox, kColCapsule},
                             {kColCapsule, kColSphere},  {kColCapsule, kColCapsule},
                             {kColCylinder, kColSphere}, {kColCylinder, kColCapsule}};

} // namespace

int ColPrimitivePrimitiveDistance(ColModelPair* pair, ColDistanceResult* result) {
    const IxPairFrame frame(*pair);
    Closest closest;
    result->pair = pair;
    result->element1 = result->element2 = 0;
    const bool served = closestOf(*pair, frame, &closest);
    result->distanceLB = result->distanceUB = std::max(closest.distance, 0.0);
    if (!served)
        return 0;
    result->point1 = frame.tm1.transform(closest.point1);
    result->point2 = frame.tm1.transform(closest.point2);
    return 1;
}

void ColPrimitivePrimitiveRegisterDistance() {
    for (const auto& ids : kPairs)
        ColInteractionTableRegisterDistanceFn(ids[0], ids[1], ColPrimitivePrimitiveDistance);
}

void ColPrimitivePrimitiveRegisterApproximateDistance() {
    for (const auto& ids : kPairs)
        ColInteractionTableRegisterApproximateDistanceFn(ids[0], ids[1], approximateDistance);
}

int ColPointSurfaceDistance(const ColModel* model, const lsVec3& point, KitReal* distance,
                            lsVec3* normal) {
    const lsTransform& frame = ColTransformOrIdentity(model->mGlobalTM);
    const lsVec3 local = frame.inverseTransform(point);
    SurfacePoint surface;
    switch (model->mGeometry->mID) {
    case kColBox:
        surface = boxSurfacePointDist(IxGeometry<ColBox>(model).mR, local);
        break;
    case kColSphere:
        surface = sphereSurfacePointDist(IxGeometry<ColSphere>(model).radius, local);
        break;
    case kColCylinder:
        surface = cylinderSurfacePointDist(IxGeometry<ColCylinder>(model).radius,
                                           IxGeometry<ColCylinder>(model).halfHeight, local);
        break;
    case kColCapsule:
        surface = capsuleSurfacePointDist(IxGeometry<ColCapsule>(model).radius,
                                          IxGeometry<ColCapsule>(model).halfHeight, local);
        break;
    default:
        KitWarning(12, "ColPointSurfaceDistance: not implemented for this geometry type.\n");
        return 0;
    }
    *distance = surface.distance;
    *normal = frame.transformWithoutTranslate(surface.outward);
    return 1;
}
