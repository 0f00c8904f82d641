#include "CylinderContacts.h"
#include "triutils.h"

#include <cmath>

namespace {

/// Codes of directions.
enum Code : int { kEnd, kSide, kRim };
/// Share of the cylinder's size by which a curved feature must beat a flat one: rounding never turns an
/// end that lies flat into a rim.
constexpr KitReal kCurvedAdvantage = 1e-7;
/// Sine under which directions are parallel.
constexpr KitReal kParallelSine = 1e-7;
/// Cosine from which an edge runs along the side.
constexpr KitReal kBesideCosine = 0.99;
/// Share by which a cylinder grows before lines are clipped to it.
constexpr KitReal kRadialSlack = 1e-6;
/// Squared cosines between normal and axis from which a cylinder stands or lies.
constexpr KitReal kStandingSquare = 0.999999, kLyingSquare = 1e-6;

/// A cylinder about the origin, along z.
struct CylinderTriangleTest {
    /// Separating-axis test: the face, the ends, the side against edges and corners, the rims against
    /// ridges and corners. For contacts, hidden edges are left out, which give no normals.
    bool OverlapCylTri(TriangleAxisSearch* search) const noexcept;
    bool testSide(TriangleAxisSearch* search) const noexcept;
    bool testRims(TriangleAxisSearch* search) const noexcept;
    bool offer(TriangleAxisSearch* search, const lsVec3& direction, int code) const noexcept {
        return search->offer(direction, cylinder.extent(direction), code, search->eps,
                             kCurvedAdvantage * (cylinder.radius + cylinder.halfHeight));
    }

    [[nodiscard]] bool isAsked(const TriangleAxisSearch& search, int edge) const noexcept {
        return !(forContacts && search.isHidden(edge));
    }
    [[nodiscard]] bool isCornerAsked(const TriangleAxisSearch& search, int corner) const noexcept {
        return isAsked(search, corner) || isAsked(search, (corner + 2) % 3);
    }

    const CylinderShape& cylinder;
    bool forContacts;
};

bool CylinderTriangleTest::OverlapCylTri(TriangleAxisSearch* search) const noexcept {
    return search->offerFace(cylinder.extent(search->triangle.mNormal)) &&
           search->offer(cylinder.axis, cylinder.halfHeight, kEnd, search->eps) &&
           testSide(search) && testRims(search);
}

bool CylinderTriangleTest::testSide(TriangleAxisSearch* search) const noexcept {
    const CxTriangleNE& t = search->triangle;
    for (int i = 0; i < 3; ++i) {
        lsVec3 cross = t.mEdge[i].cross(cylinder.axis);
        if (isAsked(*search, i) && cross.normalize() > kParallelSine * t.mEdge[i].norm() &&
            !offer(search, cross, kSide))
            return false;
        lsVec3 radial(t.mVertex[i][0], t.mVertex[i][1], 0);
        if (isCornerAsked(*search, i) && radial.normalize() > kMinDirectionLength &&
            !offer(search, radial, kSide))
            return false;
    }
    return true;
}

bool CylinderTriangleTest::testRims(TriangleAxisSearch* search) const noexcept {
    const CxTriangleNE& t = search->triangle;
    for (int i = 0; i < 3; ++i) {
        lsVec3 radial(t.mVertex[i][0], t.mVertex[i][1], 0), view = t.mEdge[i];
        const bool corner = isCornerAsked(*search, i) && radial.normalize() > kMinDirectionLength;
        view.normalize();
        for (const KitReal end : {-1.0, 1.0}) {
            const lsVec3 rim = end * cylinder.halfHeight * cylinder.axis;
            lsVec3 direction = t.mVertex[i] - rim - cylinder.radius * radial;
            if (corner && direction.normalize() > kMinDirectionLength &&
                !offer(search, direction, kRim))
                return false;
            if (isAsked(*search, i) &&
                RimNormalSeenAlong(view, rim, cylinder, t.mVertex[i], &direction) &&
                !offer(search, direction, kRim))
                return false;
        }
    }
    return true;
}

/// Writes the contacts of a cylinder and a triangle.
struct CylinderTriangleWriter {
    void writeOnFace() const noexcept;
    void writeUnderEnd() const noexcept;
    void writeAtSide(int edge) const noexcept;
    void writeAtPoint(const lsVec3& onCylinder) const noexcept;
    void writeCorner() const noexcept;
    void write() const noexcept;

    void add(const lsVec3& onCylinder, KitReal separation) const noexcept {
        const KitReal square = search.normal[2] * search.normal[2];
        const int feature = square > kStandingSquare ? 2 : square < kLyingSquare ? 3 : 1;
        if (separation <= search.keepLimit())
            out->add(search.triangle, onCylinder, search.normal, separation,
                     TriangleDims(feature, TriangleFeatureDimension(search.edges)));
    }
    /// The ends of an edge clipped to the cylinder.
    template <class Add>
    void AddTriCylSegmentPoints(int edge, Add&& addPoint) const noexcept {
        const CxTriangleNE& t = search.triangle;
        const Segment line{t.mVertex[edge] + 0.5 * t.mEdge[edge], 0.5 * t.mEdge[edge]};
        KitReal t0 = -1, t1 = 1;
        if (!SegmentCylinderIntersectWithOutput(line, cylinder.radius * (1 + kRadialSlack),
                                                cylinder.halfHeight * (1 + kRadialSlack), &t0, &t1))
            return;
        addPoint(line.at(t0));
        if (t1 > t0)
            addPoint(line.at(t1));
    }

    TriangleContacts* out;
    const TriangleAxisSearch& search;
    const CylinderShape& cylinder;
};

// The lowest side line and the lower end's diameters, so far as they lie over the triangle, and where
// ridges and borders enter the cylinder.
void CylinderTriangleWriter::writeOnFace() const noexcept {
    const TrianglePrism prism(search.triangle);
    lsVec3 perp, para;
    CylPerpAndPara(&perp, &para, cylinder, -search.normal, lsVec3());
    const lsVec3 up = cylinder.halfHeight * cylinder.axis;
    const lsVec3 end = search.normal[2] > 0 ? -up : up;
    const lsVec3 u = cylinder.radius * perp, v = cylinder.radius * para;
    for (const Segment& wire : {Segment{end, u}, Segment{end, v}, Segment{u, up}}) {
        const TrianglePrismRange range = prism.clip(wire);
        if (range.isEmpty())
            continue;
        const auto addEnd = [&](KitReal t, int clip) {
            if (!prism.isSeam(clip))
                add(wire.at(t), TriangleHeight(search.triangle, wire.at(t)));
        };
        addEnd(range.low, range.lowEdge);
        addEnd(range.high, range.highEdge);
    }
    for (int i = 0; i < 3; ++i) {
        if (prism.isSeam(i))
            continue;
        AddTriCylSegmentPoints(i, [this](const lsVec3& point) {
            KitReal above = -kKitInfinity, below = 0;
            if (SegmentCylinderIntersectWithOutput(
                    {point, search.normal}, cylinder.radius * (1 + 2 * kRadialSlack),
                    cylinder.halfHeight * (1 + 2 * kRadialSlack), &above, &below))
                add(point + above * search.normal, above);
        });
    }
}

void CylinderTriangleWriter::writeUnderEnd() const noexcept {
    for (int i = 0; i < 3; ++i)
        AddTriCylSegmentPoints(i, [this](const lsVec3& point) {
            const KitReal separation = -cylinder.halfHeight - search.normal.dot(point);
            add(point + separation * search.normal, separation);
        });
}

void CylinderTriangleWriter::writeAtSide(int edge) const noexcept {
    const CxTriangleNE& t = search.triangle;
    lsVec3 along = t.mEdge[edge];
    along.normalize();
    const Segment side{-cylinder.radius * search.normal, cylinder.halfHeight * cylinder.axis};
    const Segment line{t.mVertex[edge] + 0.5 * t.mEdge[edge], 0.5 * t.mEdge[edge]};
    if (std::abs(along[2]) < kBesideCosine) {
        KitReal s = 0, r = 0;
        ClosestPointsOnSegments(side, line, &s, &r);
        add(side.at(s), search.separation);
        return;
    }
    KitReal t0 = -1, t1 = 1;
    if (!SegmentCylinderIntersectWithOutput(line, 1e6 * (cylinder.radius + cylinder.halfHeight),
                                            cylinder.halfHeight, &t0, &t1))
        return;
    for (const KitReal end : {t0, t1}) {
        const lsVec3 point = line.at(end);
        const KitReal separation = -cylinder.radius - search.normal.dot(point);
        add(point + separation * search.normal, separation);
    }
}

/// The triangle's point under the deepest point of a rim.
void CylinderTriangleWriter::writeAtPoint(const lsVec3& onCylinder) const noexcept {
    const TrianglePoint under = ClosestPointOnTriangle(search.triangle, onCylinder);
    add(under.position + search.separation * search.normal, search.separation);
}

/// The triangle's corner that lies highest along the normal.
void CylinderTriangleWriter::writeCorner() const noexcept {
    const CxTriangleNE& t = search.triangle;
    int top = 0;
    for (int k = 1; k < 3; ++k)
        if (search.normal.dot(t.mVertex[k] - t.mVertex[top]) > 0)
            top = k;
    add(t.mVertex[top] + search.separation * search.normal, search.separation);
}

void CylinderTriangleWriter::write() const noexcept {
    const bool isEdge = TriangleFeatureDimension(search.edges) == 1;
    switch (search.code) {
    case TriangleAxisSearch::kFaceCode:
        return writeOnFace();
    case kEnd:
        return writeUnderEnd();
    case kRim:
        return writeAtPoint(cylinder.farthest(-search.normal));
    default:
        return isEdge ? writeAtSide(TriangleEdgeOf(search.edges)) : writeCorner();
    }
}

} // namespace

int CylinderCxTriangleNEIntersect(TriangleContacts* out, const CxTriangleNE& t, KitReal radius,
                                  KitReal halfHeight, KitReal eps) noexcept {
    const CylinderShape cylinder{.centre = lsVec3(),
                                 .axis = lsVec3(0, 0, 1),
                                 .xAxis = lsVec3(1, 0, 0),
                                 .radius = radius,
                                 .halfHeight = halfHeight};
    TriangleAxisSearch search(t, eps);
    if (!CylinderTriangleTest{cylinder, out != nullptr}.OverlapCylTri(&search))
        return 0;
    return TriangleWriteContacts(out, search, [&] {
        CylinderTriangleWriter{.out = out, .search = search, .cylinder = cylinder}.write();
    });
}
