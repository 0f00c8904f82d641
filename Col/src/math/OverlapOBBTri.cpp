#include "BoxBoxIntersect.h"
#include "triutils.h"

#include <cmath>

namespace {

/// Codes of directions: an axis of the box, or 3 + 3 (axis of the box) + edge of the triangle.
constexpr int kFirstCross = 3;
/// Squared sine below which two edges count as parallel.
constexpr KitReal kParallelSquareSine = 4e-5;
/// Cosine below which an axis of the box lies in a plane.
constexpr KitReal kInPlaneCosine = 0.0001;
/// Cosine above which one face of the box alone looks at the triangle.
constexpr KitReal kIncidentCosine = 0.8;

KitReal boxExtent(const lsVec3& radii, const lsVec3& n) noexcept {
    return std::abs(n[0]) * radii[0] + std::abs(n[1]) * radii[1] + std::abs(n[2]) * radii[2];
}

/// Separating-axis test of a box about the origin and a triangle: the triangle's face, the faces of
/// the box, the crossed edges; of equal separations the first stays (Akenine-Moeller, "Fast 3D
/// Triangle-Box Overlap Testing", 2001).
/// @param forContacts leaves out hidden edges, which give no normals: then shapes that only they tell
/// apart may pass, and get no contacts
bool OverlapOBBTri(TriangleAxisSearch* search, const lsVec3& radii, bool forContacts) noexcept {
    const CxTriangleNE& t = search->triangle;
    if (!search->offerFace(boxExtent(radii, t.mNormal)))
        return false;
    for (int i = 0; i < 3; ++i) {
        lsVec3 axis;
        axis[i] = 1;
        if (!search->offer(axis, radii[i], i, search->eps))
            return false;
    }
    const KitReal slack = std::sqrt(10.0) * search->eps;
    for (int j = 0; j < 3; ++j) {
        if (forContacts && search->isHidden(j))
            continue;
        for (int i = 0; i < 3; ++i) {
            const int u = (i + 1) % 3, v = (i + 2) % 3;
            lsVec3 axis;
            axis[u] = -t.mEdge[j][v];
            axis[v] = t.mEdge[j][u];
            const KitReal square = axis.square_norm();
            if (!(square > kParallelSquareSine * t.mEdge[j].square_norm()))
                continue;
            axis /= std::sqrt(square);
            if (!search->offer(axis, boxExtent(radii, axis), kFirstCross + 3 * i + j, slack))
                return false;
        }
    }
    return true;
}

/// Writes the contacts of a box and a triangle.
struct BoxTriangleWriter {
    /// A face of the box over the triangle's face: what lies over it of the box's face, or of all its
    /// edges where none stands for the box.
    void writeOnFace() const noexcept;
    /// A face of the box over an edge or corner of the triangle: what lies under it of the triangle.
    void writeUnderBoxFace(int axis) const noexcept;
    /// Two edges that cross.
    void writeCross(int axis, int edge) const noexcept;

private:
    void add(const lsVec3& onBox, KitReal separation, int boxFeature) const noexcept {
        if (separation <= search.keepLimit())
            out->add(search.triangle, onBox, search.normal, separation,
                     TriangleDims(boxFeature, TriangleFeatureDimension(search.edges)));
    }
    void addFace(int axis, const TrianglePrism& prism) const noexcept;
    void addEdges(const TrianglePrism& prism) const noexcept;
    void addTriangleEdges() const noexcept;

public:
    TriangleContacts* out;
    const TriangleAxisSearch& search;
    const lsVec3& radii;
    int flatAxes = 0; ///< axes of the box in the triangle's plane
};

void BoxTriangleWriter::writeOnFace() const noexcept {
    const lsVec3& n = search.normal;
    const int k = n.iLargest();
    const TrianglePrism prism(search.triangle);
    if (std::abs(n[k]) >= kIncidentCosine) {
        addFace(k, prism);
    } else {
        addEdges(prism);
        addTriangleEdges();
    }
}

void BoxTriangleWriter::addFace(int axis, const TrianglePrism& prism) const noexcept {
    const int u = (axis + 1) % 3, v = (axis + 2) % 3;
    ClipCorner corners[8];
    for (int i = 0; i < 4; ++i) {
        corners[i].position[axis] = search.normal[axis] > 0 ? -radii[axis] : radii[axis];
        corners[i].position[u] = i == 0 || i == 3 ? -radii[u] : radii[u];
        corners[i].position[v] = i < 2 ? -radii[v] : radii[v];
    }
    const int count = prism.clip(corners, 4);
    for (int i = 0; i < count; ++i)
        if (!corners[i].isOnSeam)
            add(corners[i].position, TriangleHeight(search.triangle, corners[i].position),
                flatAxes);
}

void BoxTriangleWriter::addEdges(const TrianglePrism& prism) const noexcept {
    for (int axis = 0; axis < 3; ++axis) {
        const int u = (axis + 1) % 3, v = (axis + 2) % 3;
        for (int i = 0; i < 4; ++i) {
            Segment edge;
            edge.half[axis] = radii[axis];
            edge.centre[u] = i & 1 ? radii[u] : -radii[u];
            edge.centre[v] = i & 2 ? radii[v] : -radii[v];
            const TrianglePrismRange range = prism.clip(edge);
            if (range.isEmpty())
                continue;
            // Each corner ends three edges: the last axis alone names it.
            const auto addEnd = [&](KitReal end, int clip) {
                if (clip < 0 ? axis == 2 : !prism.isSeam(clip))
                    add(edge.at(end), TriangleHeight(search.triangle, edge.at(end)), flatAxes);
            };
            addEnd(range.low, range.lowEdge);
            addEnd(range.high, range.highEdge);
        }
    }
}

/// Ridges and borders inside the box: each point's depth is that of the box under it.
void BoxTriangleWriter::addTriangleEdges() const noexcept {
    const CxTriangleNE& t = search.triangle;
    const lsVec3 slack = radii * (1 + kClipSlack);
    for (int i = 0; i < 3; ++i) {
        if (TriangleEdgeIsSeam(t, i))
            continue;
        const lsVec3 half = 0.5 * t.mEdge[i], centre = t.mVertex[i] + half;
        KitReal ends[2] = {-1, 1};
        if (!ClipSegmentToBox(centre, half, slack, &ends[0], &ends[1]))
            continue;
        for (const KitReal end : ends) {
            const lsVec3 point = centre + end * half;
            KitReal above = -kKitInfinity, below = 0;
            if (ClipSegmentToBox(point, search.normal, slack, &above, &below))
                add(point + above * search.normal, above, flatAxes);
        }
    }
}

void BoxTriangleWriter::writeUnderBoxFace(int axis) const noexcept {
    ClipCorner a[8], b[8];
    for (int i = 0; i < 3; ++i)
        a[i].position = search.triangle.mVertex[i];
    int count = 3;
    for (int side = 1; side < 3; ++side) {
        const int i = (axis + side) % 3;
        ClipPlane plane;
        plane.limit = radii[i] * (1 + kClipSlack);
        plane.normal[i] = 1;
        count = ClipPolygon(a, count, b, plane);
        plane.normal[i] = -1;
        count = ClipPolygon(b, count, a, plane);
    }
    for (int i = 0; i < count; ++i) {
        const KitReal separation = -radii[axis] - search.normal.dot(a[i].position);
        add(a[i].position + separation * search.normal, separation, 2);
    }
}

void BoxTriangleWriter::writeCross(int axis, int edge) const noexcept {
    const CxTriangleNE& t = search.triangle;
    Segment boxEdge;
    for (int i = 0; i < 3; ++i)
        (i == axis ? boxEdge.half : boxEdge.centre)[i] =
            i != axis && search.normal[i] > 0 ? -radii[i] : radii[i];
    const Segment triangleEdge{t.mVertex[edge] + 0.5 * t.mEdge[edge], 0.5 * t.mEdge[edge]};
    KitReal s = 0, along = 0;
    ClosestPointsOnSegments(boxEdge, triangleEdge, &s, &along);
    add(boxEdge.at(s), search.separation, 1);
}

/// Contacts at the axis that the test found.
void BoxTriIntersect(TriangleContacts* out, const TriangleAxisSearch& search,
                     const lsVec3& radii) noexcept {
    BoxTriangleWriter writer{.out = out, .search = search, .radii = radii};
    for (int i = 0; i < 3; ++i)
        writer.flatAxes += std::abs(search.normal[i]) < kInPlaneCosine;
    if (search.code == TriangleAxisSearch::kFaceCode)
        writer.writeOnFace();
    else if (search.code < kFirstCross)
        writer.writeUnderBoxFace(search.code);
    else
        writer.writeCross((search.code - kFirstCross) / 3, (search.code - kFirstCross) % 3);
}

} // namespace

int BoxCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& t, const lsVec3& radii,
                             KitReal eps) noexcept {
    TriangleAxisSearch search(t, eps);
    if (!OverlapOBBTri(&search, radii, out != nullptr))
        return 0;
    return TriangleWriteContacts(out, search, [&] { BoxTriIntersect(out, search, radii); });
}
