#include "BoxBoxIntersect.h"

#include <cmath>

namespace {

/// Components of an edge's half vector up to this are parallel to the slab, m.
constexpr KitReal kParallelComponent = 1e-6;
/// Cosine above which the incident face alone lies under the reference face; the box's other faces
/// then stand at 53 degrees or more.
constexpr KitReal kIncidentCosine = 0.8;

/// A corner while a face is clipped: u and v along the reference face, height over it.
struct FacePoint {
    KitReal u, v, height;
};

/// Keeps what lies on the inner side of sign c <= limit, c the coordinate. A convex polygon gains at
/// most one corner.
template <KitReal FacePoint::*kCoordinate>
int clipToSide(const FacePoint* in, int count, FacePoint* out, KitReal sign,
               KitReal limit) noexcept {
    if (count == 0)
        return 0;
    int kept = 0;
    const KitReal first = sign * in[0].*kCoordinate - limit;
    KitReal da = first, db = 0;
    for (int i = 0; i < count; ++i, da = db) {
        const bool isLast = i + 1 == count;
        const FacePoint &a = in[i], &b = in[isLast ? 0 : i + 1];
        db = isLast ? first : sign * b.*kCoordinate - limit;
        if (da <= 0)
            out[kept++] = a;
        if ((da < 0 && db > 0) || (da > 0 && db < 0)) {
            const KitReal s = da / (da - db);
            out[kept++] = {a.u + s * (b.u - a.u), a.v + s * (b.v - a.v),
                           a.height + s * (b.height - a.height)};
        }
    }
    return kept;
}

/// Keeps what lies within the limit on both sides; mostly that is all.
/// @param spare room for 8
template <KitReal FacePoint::*kCoordinate>
int clipToBothSides(FacePoint* points, int count, FacePoint* spare, KitReal limit) noexcept {
    bool isWithin = true;
    for (int i = 0; i < count; ++i)
        isWithin &= std::abs(points[i].*kCoordinate) <= limit;
    if (isWithin)
        return count;
    count = clipToSide<kCoordinate>(points, count, spare, 1, limit);
    return clipToSide<kCoordinate>(spare, count, points, -1, limit);
}

} // namespace

bool ClipSegmentToBox(const lsVec3& centre, const lsVec3& half, const lsVec3& radii, KitReal* t0,
                      KitReal* t1) noexcept {
    for (int i = 0; i < 3; ++i) {
        if (std::abs(half[i]) <= kParallelComponent) {
            if (!(std::abs(centre[i]) <= radii[i]))
                return false;
            continue;
        }
        const KitReal inverse = 1 / half[i];
        const KitReal middle = -centre[i] * inverse, reach = std::abs(radii[i] * inverse);
        *t0 = std::fmax(*t0, middle - reach);
        *t1 = std::fmin(*t1, middle + reach);
    }
    return *t0 <= *t1;
}

void BoxEdgeBoxIntersect(CandidateList* list, const lsVec3& edgeRadii, const lsTransform& edgeBox,
                         const lsVec3& radii, int vertexSurface) noexcept {
    const lsVec3 slack = radii * (1 + kClipSlack);
    for (int axis = 0; axis < 3; ++axis) {
        const lsVec3 half = edgeRadii[axis] * edgeBox.axis(axis);
        const lsVec3 side1 = edgeRadii[(axis + 1) % 3] * edgeBox.axis((axis + 1) % 3);
        const lsVec3 side2 = edgeRadii[(axis + 2) % 3] * edgeBox.axis((axis + 2) % 3);
        for (int edge = 0; edge < 4; ++edge) {
            lsVec3 centre = edgeBox.t();
            centre.addMultiple(edge & 1 ? 1 : -1, side1).addMultiple(edge & 2 ? 1 : -1, side2);
            KitReal t0 = -1, t1 = 1;
            if (!ClipSegmentToBox(centre, half, slack, &t0, &t1))
                continue;
            // Each corner ends an edge of the last axis, which alone names it.
            const bool names = axis == 2;
            list->add(centre + t0 * half, names && t0 == -1 ? vertexSurface : -1);
            list->add(centre + t1 * half, names && t1 == 1 ? vertexSurface : -1);
        }
    }
}

void BoxBoxIntersect(CandidateList* list, const lsTransform& t12, const lsVec3& r1,
                     const lsVec3& r2) noexcept {
    BoxEdgeBoxIntersect(list, r2, t12, r1, 1);
    const int first = list->count;
    BoxEdgeBoxIntersect(list, r1, lsTransform::inverseOf(t12), r2, 0);
    for (int i = first; i < list->count; ++i)
        list->points[i] = t12.transform(list->points[i]);
}

int ClipIncidentFace(FaceClipPoint* out, const lsVec3& referenceRadii, int axis, KitReal sign,
                     const lsVec3& incidentRadii, const lsTransform& incident) noexcept {
    const int iu = (axis + 1) % 3, iv = (axis + 2) % 3;
    int k = 0;
    for (int i = 1; i < 3; ++i)
        if (std::abs(incident.row[i][axis]) > std::abs(incident.row[k][axis]))
            k = i;
    if (std::abs(incident.row[k][axis]) < kIncidentCosine)
        return -1;
    const KitReal facing = sign * incident.row[k][axis] > 0 ? -1 : 1;
    const lsVec3 centre = incident.t() + facing * incidentRadii[k] * incident.axis(k);
    const int k1 = (k + 1) % 3, k2 = (k + 2) % 3;
    const lsVec3 side1 = incidentRadii[k1] * incident.axis(k1);
    const lsVec3 side2 = incidentRadii[k2] * incident.axis(k2);

    FacePoint a[8], b[8];
    for (int i = 0; i < 4; ++i) {
        const KitReal s1 = i == 0 || i == 3 ? -1 : 1, s2 = i < 2 ? -1 : 1;
        lsVec3 corner = centre;
        corner.addMultiple(s1, side1).addMultiple(s2, side2);
        a[i] = {corner[iu], corner[iv], sign * corner[axis] - referenceRadii[axis]};
    }
    int count = clipToBothSides<&FacePoint::u>(a, 4, b, referenceRadii[iu] * (1 + kClipSlack));
    count = clipToBothSides<&FacePoint::v>(a, count, b, referenceRadii[iv] * (1 + kClipSlack));
    for (int i = 0; i < count; ++i) {
        out[i].position[iu] = a[i].u;
        out[i].position[iv] = a[i].v;
        out[i].position[axis] = sign * (a[i].height + referenceRadii[axis]);
        out[i].separation = a[i].height;
    }
    return count;
}
