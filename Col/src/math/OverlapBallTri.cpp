#include "triutils.h"

#include <algorithm>
#include <cmath>

namespace {

/// Squared cosines between normal and axis from which a capsule stands or lies.
constexpr KitReal kStandingSquare = 0.999999, kLyingSquare = 1e-6;
/// Sine of the angle up to which a capsule runs along an edge.
constexpr KitReal kBesideSine = 0.05;
/// Feature of a sphere, and of a capsule's side.
constexpr int kCurved = 3;

/// Share of the radius by which a border must be nearer than the face.
constexpr KitReal kBorderAdvantage = 1e-9;

bool isOnBorder(const CxTriangleNE& t, unsigned edges) noexcept {
    for (int i = 0; i < 3; ++i)
        if ((edges & 1U << i) != 0 && t.mMateNormalCos[i] != kCxNoMate)
            return false;
    return true;
}

/// How a ball meets a triangle.
struct BallOnTriangle {
    KitReal separation = 0;
    lsVec3 normal;
    unsigned edges = 0;
};

/// A ball about the origin. Below the plane it is met while its surface reaches the face.
bool OverlapSphereTri(BallOnTriangle* out, const CxTriangleNE& t, KitReal radius,
                      KitReal eps) noexcept {
    const KitReal height = -t.mNormal.dot(t.mVertex[0]);
    if (!(height <= radius + eps && height >= -radius))
        return false;
    const TrianglePoint nearest = ClosestPointOnTriangle(t, lsVec3());
    out->edges = nearest.edges;
    out->normal = -nearest.position;
    const KitReal distance = out->normal.norm();
    if (nearest.edges == 0 || !(distance > kMinDirectionLength)) {
        out->normal = t.mNormal;
        out->separation = height - radius;
        return true;
    }
    out->normal /= distance;
    out->separation = distance - radius;
    return out->separation <= eps && height >= 0 &&
           TriangleAdmitsNormal(t, out->normal, nearest.edges);
}

/// A capsule about the origin, along z, and a triangle.
struct CapsuleTriangleTest {
    CapsuleTriangleTest(const CxTriangleNE& t, KitReal r, KitReal halfHeight,
                        KitReal tolerance) noexcept
        : triangle(t), radius(r), eps(tolerance), segment{lsVec3(), lsVec3(0, 0, halfHeight)} {}

    /// Finds how they meet; false if they do not.
    bool run() noexcept;
    void write(TriangleContacts* out) const noexcept;

private:
    void offerFace() noexcept;
    void offerEdges() noexcept;
    void offerNearest(const TriangleSegmentPoints& nearest) noexcept;
    void addAt(TriangleContacts* out, KitReal t, KitReal separation) const noexcept;
    [[nodiscard]] KitReal heightAt(KitReal t) const noexcept {
        return TriangleHeight(triangle, segment.at(t));
    }

    const CxTriangleNE& triangle;
    KitReal radius, eps;
    Segment segment;
    KitReal separation = -kKitInfinity; ///< of the capsule
    lsVec3 normal;
    unsigned edges = 0;
    KitReal nearestT = 0; ///< where an edge or corner is met
    TrianglePrismRange range;
};

bool CapsuleTriangleTest::run() noexcept {
    const KitReal lift = std::abs(triangle.mNormal.dot(segment.half)), height = heightAt(0);
    if (!(height - lift <= radius + eps && height >= -radius))
        return false;
    const TriangleSegmentPoints nearest = ClosestPointsOfTriangle(triangle, segment);
    if (!(nearest.distance <= radius + eps))
        return false;
    range = ClipSegmentToPrism(triangle, segment);
    if (!range.isEmpty())
        offerFace();
    if (nearest.distance > kMinDirectionLength)
        offerNearest(nearest);
    else
        offerEdges();
    return separation > -kKitInfinity && separation <= eps;
}

void CapsuleTriangleTest::offerFace() noexcept {
    separation = std::min(heightAt(range.low), heightAt(range.high)) - radius;
    normal = triangle.mNormal;
}

/// Of a segment clear of the triangle: the way from its nearest point, if that is an edge's or corner's.
void CapsuleTriangleTest::offerNearest(const TriangleSegmentPoints& nearest) noexcept {
    if (nearest.onTriangle.edges == 0)
        return;
    const lsVec3 way = (segment.at(nearest.t) - nearest.onTriangle.position) / nearest.distance;
    // A face that runs along the segment is as near as its own border. The border of an open surface
    // is met from all sides.
    if (!(nearest.distance - radius > separation + kBorderAdvantage * radius) ||
        !(isOnBorder(triangle, nearest.onTriangle.edges) ||
          TriangleAdmitsNormal(triangle, way, nearest.onTriangle.edges)))
        return;
    separation = nearest.distance - radius;
    normal = way;
    edges = nearest.onTriangle.edges;
    nearestT = nearest.t;
}

/// Of a segment that pierces the triangle: sideways over one of the edges, if that is less deep.
void CapsuleTriangleTest::offerEdges() noexcept {
    for (int i = 0; i < 3; ++i) {
        lsVec3 axis = triangle.mEdge[i].cross(segment.half);
        if (!(axis.normalize() > kMinDirectionLength))
            continue;
        const KitReal rise = axis.dot(triangle.mVertex[i]);
        if (axis.dot(triangle.mVertex[(i + 2) % 3]) > rise)
            axis *= -1;
        const KitReal found = -axis.dot(triangle.mVertex[i]) - radius;
        if (!(found > separation) || !TriangleAdmitsNormal(triangle, axis, 1U << i))
            continue;
        const Segment edge{triangle.mVertex[i] + 0.5 * triangle.mEdge[i], 0.5 * triangle.mEdge[i]};
        KitReal along = 0;
        ClosestPointsOnSegments(segment, edge, &nearestT, &along);
        separation = found;
        normal = axis;
        edges = 1U << i;
    }
}

void CapsuleTriangleTest::addAt(TriangleContacts* out, KitReal t, KitReal found) const noexcept {
    const KitReal length = segment.half[2];
    const KitReal cosine = length > 0 ? normal[2] : 0, square = cosine * cosine;
    const int feature = square > kStandingSquare ? 2 : square < kLyingSquare ? kCurved : 1;
    out->add(triangle, segment.at(t) - radius * normal, normal, found,
             TriangleDims(feature, TriangleFeatureDimension(edges)));
}

// On a face a capsule bears on the ends of what lies over it. An end that a seam cuts off is none:
// the neighbour has the capsule's own.
void CapsuleTriangleTest::write(TriangleContacts* out) const noexcept {
    if (edges == 0) {
        const KitReal limit = TriangleKeepLimit(separation, eps);
        const auto addEnd = [&](KitReal t, int edge) {
            const KitReal found = heightAt(t) - radius;
            if (found <= limit && !(edge >= 0 && TriangleEdgeIsSeam(triangle, edge)))
                addAt(out, t, found);
        };
        addEnd(range.low, range.lowEdge);
        if (range.high > range.low)
            addEnd(range.high, range.highEdge);
        return;
    }
    if (TriangleFeatureDimension(edges) == 1) {
        const int i = TriangleEdgeOf(edges);
        lsVec3 along = triangle.mEdge[i];
        along.normalize();
        if (std::hypot(along[0], along[1]) < kBesideSine && segment.half[2] > 0) {
            // Side by side: the ends of what lies along the edge, each at its own depth.
            const KitReal start = triangle.mVertex[i][2] / segment.half[2];
            const KitReal end = (triangle.mVertex[i] + triangle.mEdge[i])[2] / segment.half[2];
            const KitReal low = std::clamp(std::min(start, end), -1.0, 1.0);
            const KitReal high = std::clamp(std::max(start, end), -1.0, 1.0);
            const KitReal climb = normal[2] * segment.half[2];
            addAt(out, low, separation + (low - nearestT) * climb);
            if (high > low)
                addAt(out, high, separation + (high - nearestT) * climb);
            return;
        }
    }
    addAt(out, nearestT, separation);
}

} // namespace

int SphereCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& t, KitReal radius,
                                KitReal eps) noexcept {
    BallOnTriangle ball;
    if (!OverlapSphereTri(&ball, t, radius, eps))
        return 0;
    if (out)
        out->add(t, -radius * ball.normal, ball.normal, ball.separation,
                 TriangleDims(kCurved, TriangleFeatureDimension(ball.edges)));
    return 1;
}

int CapsuleCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& t, KitReal radius,
                                 KitReal halfHeight, KitReal eps) noexcept {
    CapsuleTriangleTest test(t, radius, halfHeight, eps);
    if (!test.run())
        return 0;
    if (out)
        test.write(out);
    return 1;
}
