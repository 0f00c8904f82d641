#include "triutils.h"

#include <Col/ColContact.h>

#include "BoxBoxIntersect.h"

#include <algorithm>
#include <cmath>

namespace {

/// Angle by which a normal may pass the limits of the surface, rad: rounding of stored angles.
constexpr KitReal kAdmittedTilt = 1e-4;
/// Sine up to which neighbours lie in one plane.
constexpr KitReal kFlatMateSine = 1e-4;
/// Angle by which an edge may lean from the plane that touches it, rad: a ridge under a face that is
/// not quite level is met along its length, not at a corner.
constexpr KitReal kFeatureTilt = 0.02;
/// How many times deeper than along any direction an overlap is doubted.
constexpr KitReal kDoubtfulRatio = 4;
/// Distance, m, and squared difference of normals within which triangles are of one plane.
constexpr KitReal kSamePlane = 1e-6, kSameNormalSquare = 1e-8;
/// Share of the deepest separation from which points are kept.
constexpr KitReal kKeptShare = 0.01;

/// Closest point on edge i to a point.
lsVec3 closestOnEdge(const CxTriangleNE& t, int i, const lsVec3& point, unsigned* edges) noexcept {
    const KitReal along = t.mEdge[i].dot(point - t.mVertex[i]);
    const KitReal square = t.mEdge[i].square_norm();
    if (!(along > 0)) {
        *edges = TriangleVertexEdges(i);
        return t.mVertex[i];
    }
    if (along >= square) {
        *edges = TriangleVertexEdges((i + 1) % 3);
        return t.mVertex[(i + 1) % 3];
    }
    *edges = 1U << i;
    return t.mVertex[i] + along / square * t.mEdge[i];
}

/// Whether a feature is one of an open surface's border alone.
bool isOnBorder(const CxTriangleNE& t, unsigned edges) noexcept {
    for (int i = 0; i < 3; ++i)
        if ((edges & 1U << i) != 0 && t.mMateNormalCos[i] != kCxNoMate)
            return false;
    return edges != 0;
}

/// The edge or corner of the triangle that a plane square to a direction touches first; the face it
/// touches only along the normal.
unsigned featureTowards(const CxTriangleNE& t, const lsVec3& direction) noexcept {
    int top = 0;
    for (int k = 1; k < 3; ++k)
        if (direction.dot(t.mVertex[k] - t.mVertex[top]) > 0)
            top = k;
    const int last = (top + 2) % 3;
    const KitReal leanNext = std::abs(direction.dot(t.mEdge[top])) / t.mEdge[top].norm();
    const KitReal leanLast = std::abs(direction.dot(t.mEdge[last])) / t.mEdge[last].norm();
    if (std::fmin(leanNext, leanLast) > kFeatureTilt)
        return TriangleVertexEdges(top);
    return 1U << (leanNext <= leanLast ? top : last);
}

/// Whether a feature that leans by up to kFeatureTilt admits a direction other than the face's normal:
/// an edge that is no ridge does not.
bool admitsLeaning(const CxTriangleNE& t, const lsVec3& direction, unsigned edges) noexcept {
    if ((direction - t.mNormal).square_norm() <= kAdmittedTilt * kAdmittedTilt ||
        !TriangleAdmitsNormal(t, direction, edges))
        return false;
    const int i = TriangleEdgeOf(edges);
    return TriangleFeatureDimension(edges) == 0 || t.mMateNormalCos[i] == kCxNoMate ||
           t.mMateNormalSin[i] > kFlatMateSine;
}

} // namespace

void TriangleContacts::add(const CxTriangleNE& triangle, const lsVec3& position,
                           const lsVec3& normal, KitReal separation, int dims) noexcept {
    if (result->contactCount >= result->contactMaxCount)
        return;
    ColContact& contact = result->contacts[result->contactCount++];
    contact = ColContact{};
    contact.position = solid.transform(position);
    contact.normal = solid.transformWithoutTranslate(normal);
    contact.separation = separation;
    contact.dims = static_cast<std::int16_t>(dims);
    contact.surfaceIndex = kColSurfaceModel1;
    contact.indexElement2 = triangle.mIndex;
    result->normal += contact.normal;
    contact.internalData = isDoubtful ? this : nullptr;
    hasDoubtful = hasDoubtful || isDoubtful;
}

bool TriangleContacts::Plane::isPlaneOf(const lsVec3& n, KitReal height) const noexcept {
    return std::abs(offset - height) < kSamePlane && (normal - n).square_norm() < kSameNormalSquare;
}

void TriangleContacts::confirm(const CxTriangleNE& triangle) noexcept {
    const lsVec3& n = triangle.mNormal;
    const KitReal offset = n.dot(triangle.mVertex[0]);
    const int latest = mPlaneCount - 1;
    if (latest >= 0 && mPlanes[latest % kMaxPlanes].isPlaneOf(n, offset))
        return;
    mPlanes[mPlaneCount++ % kMaxPlanes] = {n, offset};
}

void TriangleContacts::settle() noexcept {
    if (!hasDoubtful)
        return;
    hasDoubtful = false;
    const Plane* const planes = mPlanes;
    const Plane* const end = planes + std::min(mPlaneCount, kMaxPlanes);
    int kept = 0;
    for (int i = 0; i < result->contactCount; ++i) {
        ColContact& c = result->contacts[i];
        if (c.internalData != nullptr) {
            const lsVec3 n = solid.inverseTransformWithoutTranslate(c.normal);
            const KitReal offset = n.dot(solid.inverseTransform(c.position)) - c.separation;
            if (std::none_of(planes, end, [&](const Plane& p) { return p.isPlaneOf(n, offset); })) {
                result->normal -= c.normal;
                continue;
            }
            c.internalData = nullptr;
        }
        if (kept != i)
            result->contacts[kept] = c;
        ++kept;
    }
    result->contactCount = kept;
}

bool TriangleEdgeIsSeam(const CxTriangleNE& t, int edge) noexcept {
    return std::abs(t.mMateNormalSin[edge]) < kFlatMateSine && t.mMateNormalCos[edge] > 0;
}

bool TriangleAdmitsNormal(const CxTriangleNE& t, const lsVec3& direction, unsigned edges) noexcept {
    const KitReal rise = direction.dot(t.mNormal);
    if (!(rise >= -kAdmittedTilt) && !isOnBorder(t, edges))
        return false;
    for (int i = 0; i < 3; ++i) {
        if ((edges & 1U << i) == 0 || t.mMateNormalCos[i] == kCxNoMate)
            continue;
        lsVec3 outward = t.mEdge[i].cross(t.mNormal);
        const KitReal lean = direction.dot(outward) / t.mEdge[i].norm();
        if (lean <= kAdmittedTilt)
            continue;
        // Sine of the angle by which the direction passes the neighbour's normal, seen along the edge.
        const KitReal beyond = lean * t.mMateNormalCos[i] - rise * t.mMateNormalSin[i];
        if (!(t.mMateNormalSin[i] > 0) || beyond > kAdmittedTilt)
            return false;
    }
    return true;
}

bool QuickDisjointAABBTri(const CxTriangleNE& t, const lsVec3& minCorner,
                          const lsVec3& maxCorner) noexcept {
    for (int i = 0; i < 3; ++i) {
        const KitReal a = t.mVertex[0][i], b = t.mVertex[1][i], c = t.mVertex[2][i];
        if (!(std::min({a, b, c}) <= maxCorner[i] && std::max({a, b, c}) >= minCorner[i]))
            return true;
    }
    return false;
}

// The nearest point lies on the face where the point is on the inner side of all edges, else on one of
// the edges on whose outer side it is.
TrianglePoint ClosestPointOnTriangle(const CxTriangleNE& t, const lsVec3& point) noexcept {
    TrianglePoint nearest;
    KitReal least = kKitInfinity;
    for (int i = 0; i < 3; ++i) {
        const lsVec3 outward = t.mEdge[i].cross(t.mNormal);
        if (!(outward.dot(point - t.mVertex[i]) > 0))
            continue;
        unsigned edges = 0;
        const lsVec3 position = closestOnEdge(t, i, point, &edges);
        const KitReal square = (point - position).square_norm();
        if (square < least) {
            least = square;
            nearest = {position, edges};
        }
    }
    if (least == kKitInfinity)
        nearest.position = point - TriangleHeight(t, point) * t.mNormal;
    return nearest;
}

TriangleSegmentPoints ClosestPointsOfTriangle(const CxTriangleNE& t,
                                              const Segment& segment) noexcept {
    TriangleSegmentPoints best;
    const KitReal height = TriangleHeight(t, segment.centre), climb = t.mNormal.dot(segment.half);
    if (std::abs(height) <= std::abs(climb) && climb != 0) {
        const KitReal crossing = -height / climb;
        const TrianglePoint at = ClosestPointOnTriangle(t, segment.at(crossing));
        if (at.edges == 0)
            return {0, crossing, at};
    }
    const auto offer = [&](KitReal parameter, const TrianglePoint& point) {
        const KitReal distance = (segment.at(parameter) - point.position).norm();
        if (distance < best.distance)
            best = {distance, parameter, point};
    };
    for (const KitReal end : {-1.0, 1.0})
        offer(end, ClosestPointOnTriangle(t, segment.at(end)));
    for (int i = 0; i < 3; ++i) {
        const Segment edge{t.mVertex[i] + 0.5 * t.mEdge[i], 0.5 * t.mEdge[i]};
        KitReal s = 0, along = 0;
        ClosestPointsOnSegments(segment, edge, &s, &along);
        TrianglePoint point{edge.at(along), 1U << i};
        if (along == -1 || along == 1)
            point.edges = TriangleVertexEdges(along < 0 ? i : (i + 1) % 3);
        offer(s, point);
    }
    return best;
}

int ClipPolygon(const ClipCorner* in, int count, ClipCorner* out, const ClipPlane& plane) noexcept {
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        const ClipCorner &a = in[i], &b = in[i + 1 < count ? i + 1 : 0];
        const KitReal da = plane.normal.dot(a.position) - plane.limit;
        const KitReal db = plane.normal.dot(b.position) - plane.limit;
        if (da <= 0)
            out[kept++] = a;
        if ((da < 0 && db > 0) || (da > 0 && db < 0))
            out[kept++] = {a.position + da / (da - db) * (b.position - a.position), plane.isSeam};
    }
    return kept;
}

TrianglePrism::TrianglePrism(const CxTriangleNE& t) noexcept {
    for (int i = 0; i < 3; ++i) {
        mPlanes[i].normal = t.mEdge[i].cross(t.mNormal);
        mParallel[i] = kClipSlack * t.mEdge[i].square_norm();
        mPlanes[i].limit = mPlanes[i].normal.dot(t.mVertex[i]) + mParallel[i];
        mPlanes[i].isSeam = TriangleEdgeIsSeam(t, i);
        mIsInner = mIsInner && mPlanes[i].isSeam;
    }
}

TrianglePrismRange TrianglePrism::clip(const Segment& segment) const noexcept {
    TrianglePrismRange range;
    for (int i = 0; i < 3; ++i) {
        const KitReal room = mPlanes[i].limit - mPlanes[i].normal.dot(segment.centre);
        const KitReal slope = mPlanes[i].normal.dot(segment.half);
        if (std::abs(slope) <= mParallel[i]) {
            if (room < 0)
                range.high = -kKitInfinity;
        } else if (slope > 0 && room < range.high * slope) {
            range.high = room / slope;
            range.highEdge = i;
        } else if (slope < 0 && room < range.low * slope) {
            range.low = room / slope;
            range.lowEdge = i;
        }
    }
    return range;
}

// Seams first: where a border meets a seam the corner is the border's.
int TrianglePrism::clip(ClipCorner* corners, int count) const noexcept {
    if (mIsInner)
        return static_cast<int>(std::remove_if(corners, corners + count,
                                               [this](const ClipCorner& corner) {
                                                   return !contains(corner.position);
                                               }) -
                                corners);
    ClipCorner clipped[12];
    for (const bool seams : {true, false})
        for (const ClipPlane& plane : mPlanes) {
            if (plane.isSeam != seams)
                continue;
            count = ClipPolygon(corners, count, clipped, plane);
            std::copy_n(clipped, count, corners);
        }
    return count;
}

bool TriangleAxisSearch::isHidden(int edge) const noexcept {
    return triangle.mMateNormalCos[edge] != kCxNoMate &&
           !(triangle.mMateNormalSin[edge] > kFlatMateSine);
}

bool TriangleAxisSearch::offerFace(KitReal extent) noexcept {
    const KitReal height = -triangle.mNormal.dot(triangle.mVertex[0]);
    if (!(height <= extent + eps && height >= -extent - eps))
        return false;
    separation = anySeparation = height - extent;
    normal = triangle.mNormal;
    return true;
}

bool TriangleAxisSearch::offer(const lsVec3& direction, KitReal extent, int directionCode,
                               KitReal slack, KitReal advantage) noexcept {
    KitReal w[3];
    for (int k = 0; k < 3; ++k)
        w[k] = direction.dot(triangle.mVertex[k]);
    const KitReal low = std::min({w[0], w[1], w[2]}), high = std::max({w[0], w[1], w[2]});
    // The solid lies on the side of the triangle on which they overlap less.
    const bool isBelow = low > -high;
    const KitReal found = (isBelow ? low : -high) - extent;
    if (found > slack)
        return false;
    anySeparation = std::fmax(anySeparation, found);
    if (!(found > separation + advantage))
        return true;
    const lsVec3 outward = isBelow ? -direction : direction;
    const unsigned feature = featureTowards(triangle, outward);
    if (!admitsLeaning(triangle, outward, feature))
        return true;
    separation = found;
    normal = outward;
    code = directionCode;
    edges = feature;
    return true;
}

bool TriangleAxisSearch::isDoubtful() const noexcept {
    return separation < kDoubtfulRatio * std::fmin(anySeparation, 0.0) - eps;
}

KitReal TriangleKeepLimit(KitReal separation, KitReal eps) noexcept {
    return separation < 0 ? kKeptShare * separation : eps;
}
