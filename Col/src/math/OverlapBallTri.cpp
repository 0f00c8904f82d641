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

/// Squared difference from the face's normal up to which a direction is that.
constexpr KitReal kAlongFaceSquare = 1e-12;

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

/// Least height of a triangle over the plane z = 0.
KitReal OverlapPlaneTri(const CxTriangleNE& t) noexcept {
    return std::min({t.mVertex[0][2], t.mVertex[1][2], t.mVertex[2][2]});
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
    void writeOnFace(TriangleContacts* out) const noexcept;
    void writeOnEdge(TriangleContacts* out) const noexcept;
    void addAt(TriangleContacts* out, KitReal t, const lsVec3& way, KitReal found,
               unsigned feature) const noexcept;
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
    range = TrianglePrism(triangle).clip(segment);
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

/// Of a segment clear of the triangle: the way from its nearest point, if that is an edge's or corner's
/// and does not lead straight out of the face.
void CapsuleTriangleTest::offerNearest(const TriangleSegmentPoints& nearest) noexcept {
    const unsigned feature = nearest.onTriangle.edges;
    const lsVec3 way = (segment.at(nearest.t) - nearest.onTriangle.position) / nearest.distance;
    const bool isFace = feature == 0 || (way - triangle.mNormal).square_norm() < kAlongFaceSquare;
    if (isFace || !TriangleAdmitsNormal(triangle, way, feature))
        return;
    separation = nearest.distance - radius;
    normal = way;
    edges = feature;
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

void CapsuleTriangleTest::addAt(TriangleContacts* out, KitReal t, const lsVec3& way, KitReal found,
                                unsigned feature) const noexcept {
    const KitReal cosine = segment.half[2] > 0 ? way[2] : 0, square = cosine * cosine;
    const int end = square > kStandingSquare ? 2 : square < kLyingSquare ? kCurved : 1;
    out->add(triangle, segment.at(t) - radius * way, way, found,
             TriangleDims(end, TriangleFeatureDimension(feature)));
}

void CapsuleTriangleTest::write(TriangleContacts* out) const noexcept {
    if (edges != 0)
        writeOnEdge(out);
    writeOnFace(out);
}

// On a face a capsule bears on the ends of what lies over it. An end that a seam cuts off is none:
// the neighbour has the capsule's own; nor is one that the edge cuts off which the capsule meets.
void CapsuleTriangleTest::writeOnFace(TriangleContacts* out) const noexcept {
    if (range.isEmpty())
        return;
    const KitReal limit = TriangleKeepLimit(separation, eps);
    const auto addEnd = [&](KitReal t, int clip) {
        const KitReal found = heightAt(t) - radius;
        const bool isMet = clip >= 0 && (edges & 1U << clip) != 0;
        if (found <= limit && !isMet && !(clip >= 0 && TriangleEdgeIsSeam(triangle, clip)))
            addAt(out, t, triangle.mNormal, found, 0);
    };
    addEnd(range.low, range.lowEdge);
    if (range.high > range.low)
        addEnd(range.high, range.highEdge);
}

void CapsuleTriangleTest::writeOnEdge(TriangleContacts* out) const noexcept {
    const int i = TriangleEdgeOf(edges);
    lsVec3 along = triangle.mEdge[i];
    along.normalize();
    const bool isBeside = TriangleFeatureDimension(edges) == 1 && segment.half[2] > 0 &&
                          std::hypot(along[0], along[1]) < kBesideSine;
    if (!isBeside)
        return addAt(out, nearestT, normal, separation, edges);
    // Side by side: the ends of what lies along the edge, each at its own depth.
    const KitReal start = triangle.mVertex[i][2] / segment.half[2];
    const KitReal end = (triangle.mVertex[i] + triangle.mEdge[i])[2] / segment.half[2];
    const KitReal low = std::clamp(std::min(start, end), -1.0, 1.0);
    const KitReal high = std::clamp(std::max(start, end), -1.0, 1.0);
    const KitReal climb = normal[2] * segment.half[2];
    addAt(out, low, normal, separation + (low - nearestT) * climb, edges);
    if (high > low)
        addAt(out, high, normal, separation + (high - nearestT) * climb, edges);
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

int PlaneCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& t, KitReal eps) noexcept {
    const KitReal separation = OverlapPlaneTri(t);
    if (!(separation <= eps))
        return 0;
    const KitReal limit = TriangleKeepLimit(separation, eps);
    for (const lsVec3& vertex : t.mVertex)
        if (out && vertex[2] <= limit)
            out->add(t, lsVec3(vertex[0], vertex[1], 0), lsVec3(0, 0, -1), vertex[2],
                     TriangleDims(2, 0));
    return 1;
}
