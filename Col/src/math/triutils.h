#pragma once
#include <Col/ColIntersectResult.h>
#include <Col/CxTriangleNE.h>
#include <Kit/KitTypes.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

#include "Segments.h"

// Kernels of one triangle and one solid. The triangle is given in the frame of the solid, which lies
// about its origin (cylinders and capsules along z); normals point from the triangle to the solid,
// which is model1. A direction is a contact's normal only where the surface around the triangle lets
// it be: along the face, or at an edge between the normals of the two faces there.

/// Contacts that one triangle can give at most.
constexpr int kMaxContactsOfTriangle = 32;

/// Where the kernels of one pair write.
struct TriangleContacts {
    TriangleContacts(ColIntersectResult* target, const lsTransform& frame) noexcept
        : result(target), solid(frame) {}

    /// Drops a contact beyond the room.
    /// @param position on the solid
    void add(const CxTriangleNE& triangle, const lsVec3& position, const lsVec3& normal,
             KitReal separation, int dims) noexcept;
    /// Drops the doubtful contacts that no other confirms. Comes before the contacts are reduced.
    void settle() noexcept;

    ColIntersectResult* result; ///< its normal sums those of the contacts
    lsTransform solid;          ///< frame of the solid, world
    /// What is added now is doubtful: the triangle is met much less deep in a direction that only its
    /// neighbours can have as normal. It counts if another triangle of its plane is met for certain.
    bool isDoubtful = false;
    bool hasDoubtful = false;

    /// Tells that a triangle is met on its face for certain.
    void confirm(const CxTriangleNE& triangle) noexcept;

private:
    struct Plane {
        lsVec3 normal;
        KitReal offset;
        [[nodiscard]] bool isPlaneOf(const lsVec3& n, KitReal height) const noexcept;
    };
    static constexpr int kMaxPlanes = 16;
    Plane mPlanes[kMaxPlanes]; ///< of triangles met for certain, the latest; frame of the solid
    int mPlaneCount = 0;
};

/// Dims of a contact: the solid's feature in the low byte, the triangle's in the high.
constexpr int TriangleDims(int solidFeature, int triangleFeature) noexcept {
    return triangleFeature << 8 | solidFeature;
}

// Edges of a triangle as bits, by which features are named: none for the face, edge i is bit i, and a
// vertex the bits of the two edges that meet there.

constexpr unsigned TriangleVertexEdges(int vertex) noexcept {
    return 1U << vertex | 1U << (vertex + 2) % 3;
}
/// Dimension of a feature: 2 face, 1 edge, 0 vertex.
constexpr int TriangleFeatureDimension(unsigned edges) noexcept {
    return edges == 0 ? 2 : (edges & (edges - 1)) == 0 ? 1 : 0;
}

/// Number of the edge of a feature that is one.
constexpr int TriangleEdgeOf(unsigned edges) noexcept {
    return edges == 1 ? 0 : edges == 2 ? 1 : 2;
}

/// Whether a unit direction can be the normal of a contact at a feature: it leads out of the surface
/// and at no edge of the feature beyond the neighbour's normal. The border of an open surface is met
/// from all sides.
[[nodiscard]] bool TriangleAdmitsNormal(const CxTriangleNE& triangle, const lsVec3& direction,
                                        unsigned edges) noexcept;
/// Whether the neighbour across an edge continues the triangle's plane: the edge is a seam, and what
/// it cuts off continues there.
[[nodiscard]] bool TriangleEdgeIsSeam(const CxTriangleNE& triangle, int edge) noexcept;
/// Height of a point over the triangle's plane, m.
[[nodiscard]] inline KitReal TriangleHeight(const CxTriangleNE& t, const lsVec3& point) noexcept {
    return t.mNormal.dot(point - t.mVertex[0]);
}
/// Whether a triangle lies clear of a box.
[[nodiscard]] bool QuickDisjointAABBTri(const CxTriangleNE& triangle, const lsVec3& minCorner,
                                        const lsVec3& maxCorner) noexcept;

/// Point of a triangle nearest to another point.
struct TrianglePoint {
    lsVec3 position;
    unsigned edges = 0; ///< feature on which it lies
};
[[nodiscard]] TrianglePoint ClosestPointOnTriangle(const CxTriangleNE& triangle,
                                                   const lsVec3& point) noexcept;

/// Nearest points of a triangle and a segment.
struct TriangleSegmentPoints {
    KitReal distance = kKitInfinity; ///< m, 0 where the segment pierces the triangle
    KitReal t = 0;                   ///< parameter on the segment
    TrianglePoint onTriangle;
};
[[nodiscard]] TriangleSegmentPoints ClosestPointsOfTriangle(const CxTriangleNE& triangle,
                                                            const Segment& segment) noexcept;

/// Corner of a polygon that is clipped.
struct ClipCorner {
    lsVec3 position;
    bool isOnSeam = false; ///< made by a clip at a seam between triangles of one plane
};
/// Which half space bounds a polygon: normal . p <= limit.
struct ClipPlane {
    lsVec3 normal;
    KitReal limit = 0;
    bool isSeam = false;
};
/// Clips a convex polygon by a plane; a clip adds at most one corner.
/// @param out room for count + 1
/// @return corners left
int ClipPolygon(const ClipCorner* in, int count, ClipCorner* out, const ClipPlane& plane) noexcept;
/// Part of a segment between the planes through a triangle's edges along its normal.
struct TrianglePrismRange {
    KitReal low = -1, high = 1;
    int lowEdge = -1, highEdge = -1; ///< edges that clip the ends, -1 for an end of the segment
    [[nodiscard]] bool isEmpty() const noexcept { return !(low <= high); }
};

/// What lies over and under a triangle, grown a little: between the planes through its edges.
class TrianglePrism {
public:
    explicit TrianglePrism(const CxTriangleNE& triangle) noexcept;
    /// Whether all edges are seams: what the edges cut off then continues in the neighbours.
    [[nodiscard]] bool isInner() const noexcept { return mIsInner; }
    /// Whether an edge, or -1 for none, is a seam.
    [[nodiscard]] bool isSeam(int edge) const noexcept { return edge >= 0 && mPlanes[edge].isSeam; }
    [[nodiscard]] bool contains(const lsVec3& point) const noexcept {
        for (const ClipPlane& plane : mPlanes)
            if (!(plane.normal.dot(point) <= plane.limit))
                return false;
        return true;
    }
    [[nodiscard]] TrianglePrismRange clip(const Segment& segment) const noexcept;
    /// Clips a convex polygon; answers the corners left.
    /// @param corners room for count + 3
    int clip(ClipCorner* corners, int count) const noexcept;

private:
    ClipPlane mPlanes[3]; ///< normals outward, as long as the edges
    KitReal mParallel[3]; ///< slopes up to which a segment runs along a plane
    bool mIsInner = true;
};

/// Separation up to which points over a face are contacts, from that of the deepest.
[[nodiscard]] KitReal TriangleKeepLimit(KitReal separation, KitReal eps) noexcept;

/// Axis of greatest separation of a solid that is symmetric about the origin and a triangle.
///
/// Directions that the surface does not admit as normals are kept apart: they tell that the shapes
/// are disjoint, and how small the overlap really is where only neighbours can tell its normal.
struct TriangleAxisSearch {
    TriangleAxisSearch(const CxTriangleNE& t, KitReal tolerance) noexcept
        : triangle(t), eps(tolerance) {}

    /// Whether an edge is no ridge and no border: its neighbours tell all normals there.
    [[nodiscard]] bool isHidden(int edge) const noexcept;
    /// The triangle's plane; the solid must reach it and come from above.
    /// @param extent half width of the solid along the triangle's normal
    bool offerFace(KitReal extent) noexcept;
    /// A unit direction of either sense.
    /// @param slack separation beyond which the direction makes the shapes disjoint, m
    /// @param advantage by which it must beat what was offered before, m
    /// @return false if it makes them disjoint
    bool offer(const lsVec3& direction, KitReal extent, int code, KitReal slack,
               KitReal advantage = 0) noexcept;
    /// Whether a much smaller overlap along a direction that is not admitted makes the axis doubtful.
    [[nodiscard]] bool isDoubtful() const noexcept;
    /// Separation up to which points are contacts: on the face as on a plane, else all that touch.
    [[nodiscard]] KitReal keepLimit() const noexcept {
        return code == kFaceCode ? TriangleKeepLimit(separation, eps) : eps;
    }

    static constexpr int kFaceCode = -1;
    const CxTriangleNE& triangle;
    KitReal eps;
    KitReal separation = -kKitInfinity; ///< along the normal, m
    lsVec3 normal;                      ///< unit, from the triangle to the solid
    int code = kFaceCode;               ///< of the direction
    unsigned edges = 0;                 ///< the triangle's feature along the normal
    KitReal anySeparation = -kKitInfinity;
};

/// The end of a search that found no direction in which solid and triangle are apart: write() adds the
/// contacts, unless `out` is null.
template <typename Write>
int TriangleWriteContacts(TriangleContacts* out, const TriangleAxisSearch& search, Write write) {
    if (!out)
        return 1;
    const CxTriangleNE& t = search.triangle;
    if (t.mNormal.dot(t.mVertex[0]) > 0) // from below
        return 0;
    out->isDoubtful = search.isDoubtful();
    if (!out->isDoubtful && search.code == TriangleAxisSearch::kFaceCode)
        out->confirm(t);
    const int before = out->result->contactCount;
    write();
    out->isDoubtful = false;
    return out->result->contactCount > before ? 1 : 0;
}

// Each answers whether solid and triangle touch within eps and writes the contacts, unless `out` is
// null: then it only answers.

int SphereCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& triangle, KitReal radius,
                                KitReal eps) noexcept;
int CapsuleCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& triangle,
                                 KitReal radius, KitReal halfHeight, KitReal eps) noexcept;
int BoxCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& triangle,
                             const lsVec3& radii, KitReal eps) noexcept;
int CylinderCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& triangle,
                                  KitReal radius, KitReal halfHeight, KitReal eps) noexcept;
/// A plane, solid below z = 0 in its frame: it meets the triangle's corners.
int PlaneCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& triangle,
                               KitReal eps) noexcept;
