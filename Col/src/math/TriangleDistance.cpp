#include "TriangleDistance.h"

#include "OverlapBall.h"
#include "OverlapCapsule.h"
#include "OverlapCylinder.h"
#include "triutils.h"

#include <algorithm>
#include <cmath>

namespace {

void keepNearer(TriangleDistance* best, const lsVec3& onSolid, const lsVec3& onTriangle,
                KitReal distance) noexcept {
    if (distance < best->distance)
        *best = {std::fmax(distance, 0.0), onSolid, onTriangle};
}

/// From the nearest points of a triangle and the segment or centre of a rounded solid.
TriangleDistance fromCentreLine(const lsVec3& centre, const lsVec3& onTriangle,
                                KitReal radius) noexcept {
    const lsVec3 way = onTriangle - centre;
    const KitReal length = way.norm();
    if (!(length > radius))
        return {0, centre, onTriangle};
    return {length - radius, centre + radius / length * way, onTriangle};
}

Segment edgeOf(const CxTriangleNE& t, int i) noexcept {
    return {t.mVertex[i] + 0.5 * t.mEdge[i], 0.5 * t.mEdge[i]};
}

} // namespace

TriangleDistance sphereTriDist(KitReal radius, const CxTriangleNE& t) noexcept {
    return fromCentreLine(lsVec3(), ClosestPointOnTriangle(t, lsVec3()).position, radius);
}

TriangleDistance capsuleTriDist(KitReal radius, KitReal halfHeight,
                                const CxTriangleNE& t) noexcept {
    const Segment segment{lsVec3(), lsVec3(0, 0, halfHeight)};
    const TriangleSegmentPoints nearest = ClosestPointsOfTriangle(t, segment);
    return fromCentreLine(segment.at(nearest.t), nearest.onTriangle.position, radius);
}

// The nearest features are an edge of the triangle and the box, or an edge or corner of the box and the
// face.
TriangleDistance boxTriDist(const lsVec3& radii, const CxTriangleNE& t) noexcept {
    TriangleDistance best;
    for (int i = 0; i < 3; ++i) {
        const Segment edge = edgeOf(t, i);
        const lsVec3 point = edge.at(ClosestPointToBox(edge, radii));
        const SurfacePoint surface = boxSurfacePointDist(radii, point);
        keepNearer(&best, surface.position, point, surface.distance);
    }
    for (int axis = 0; axis < 3; ++axis)
        for (int i = 0; i < 4; ++i) {
            Segment edge;
            edge.half[axis] = radii[axis];
            edge.centre[(axis + 1) % 3] = i & 1 ? radii[(axis + 1) % 3] : -radii[(axis + 1) % 3];
            edge.centre[(axis + 2) % 3] = i & 2 ? radii[(axis + 2) % 3] : -radii[(axis + 2) % 3];
            const TriangleSegmentPoints nearest = ClosestPointsOfTriangle(t, edge);
            keepNearer(&best, edge.at(nearest.t), nearest.onTriangle.position, nearest.distance);
        }
    return best;
}

// As for the box; the face is met by the cylinder's farthest point towards it, or cut.
TriangleDistance cylinderTriDist(KitReal radius, KitReal halfHeight,
                                 const CxTriangleNE& t) noexcept {
    TriangleDistance best;
    for (int i = 0; i < 3; ++i) {
        const Segment edge = edgeOf(t, i);
        const lsVec3 point = edge.at(ClosestPointToCylinder(edge, radius, halfHeight));
        const SurfacePoint surface = cylinderSurfacePointDist(radius, halfHeight, point);
        keepNearer(&best, surface.position, point, surface.distance);
    }
    const CylinderShape cylinder{.centre = lsVec3(),
                                 .axis = lsVec3(0, 0, 1),
                                 .xAxis = lsVec3(1, 0, 0),
                                 .radius = radius,
                                 .halfHeight = halfHeight};
    const KitReal height = TriangleHeight(t, lsVec3());
    lsVec3 lowest = cylinder.farthest(height > 0 ? -t.mNormal : t.mNormal);
    KitReal rest = TriangleHeight(t, lowest);
    if (rest * height <= 0 && height != rest) { // the plane cuts the cylinder between both
        lowest *= height / (height - rest);
        rest = 0;
    }
    const TrianglePoint under = ClosestPointOnTriangle(t, lowest);
    if (under.edges == 0)
        keepNearer(&best, lowest, under.position, std::abs(rest));
    return best;
}
