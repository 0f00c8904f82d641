#include <Col/CxTriangleNE.h>

#include <cmath>

namespace {

/// Share of a triangle's longest edge that its height must exceed: below it the normal is rounding.
constexpr KitReal kMinHeightShare = 1e-9;

void setEdges(CxTriangleNE* triangle) noexcept {
    for (int i = 0; i < 3; ++i)
        triangle->mEdge[i] = triangle->mVertex[(i + 1) % 3] - triangle->mVertex[i];
}

} // namespace

bool CxTriangleNESet(CxTriangleNE* triangle, const lsVec3& a, const lsVec3& b, const lsVec3& c,
                     int index) {
    *triangle = CxTriangleNE{};
    triangle->mVertex[0] = a;
    triangle->mVertex[1] = b;
    triangle->mVertex[2] = c;
    triangle->mIndex = index;
    setEdges(triangle);
    KitReal longest = 0; // squared
    for (const lsVec3& edge : triangle->mEdge)
        longest = std::fmax(longest, edge.square_norm());
    lsVec3 normal = triangle->mEdge[0].cross(triangle->mEdge[1]);
    const KitReal area = normal.norm();
    if (!(area > kMinHeightShare * longest) || !std::isfinite(area))
        return false;
    triangle->mNormal = normal / area;
    return true;
}

void CxTriangleNESetMate(CxTriangleNE* triangle, int edge, const lsVec3& mateNormal) {
    lsVec3 outward = triangle->mEdge[edge].cross(triangle->mNormal);
    outward.normalize();
    triangle->mMateNormalCos[edge] = triangle->mNormal.dot(mateNormal);
    triangle->mMateNormalSin[edge] = outward.dot(mateNormal);
}

CxTriangleNE TransformCxTriangle(const CxTriangleNE& triangle, const lsTransform& tm) {
    CxTriangleNE moved = triangle;
    for (lsVec3& vertex : moved.mVertex)
        vertex = tm.transform(vertex);
    moved.mNormal = tm.transformWithoutTranslate(triangle.mNormal);
    setEdges(&moved);
    return moved;
}
