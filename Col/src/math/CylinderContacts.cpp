#include "CylinderContacts.h"

#include <Col/ColContact.h>

#include "Segments.h"

#include <cmath>

namespace {

/// Share by which a cylinder grows before lines are clipped to it, so that
/// equal radii meet.
constexpr KitReal kRadialSlack = 1e-6;
/// Sine between normal and axis below which an end lies flat: it has no lowest
/// point, and its points turn with the cylinder rather than with the rounding.
constexpr KitReal kFlatSine = 1e-4;

/// The six wires that stand for a cylinder: a diameter each way on both ends
/// and four side lines.
struct CylinderWires {
    CylinderWires(const CylinderShape& c, const lsVec3& perp, const lsVec3& para) noexcept {
        const lsVec3 up = c.halfHeight * c.axis, u = c.radius * perp, v = c.radius * para;
        lines[0] = {c.centre + u, up};
        lines[1] = {c.centre - u, up};
        lines[2] = {c.centre + v, up};
        lines[3] = {c.centre - v, up};
        lines[4] = {c.centre + up, u};
        lines[5] = {c.centre + up, v};
        lines[6] = {c.centre - up, u};
        lines[7] = {c.centre - up, v};
    }
    Segment lines[8];
};

void addClipped(CandidateList* list, const Segment& segment, KitReal t0, KitReal t1,
                int surface) noexcept {
    list->add(segment.at(t0), surface);
    if (t1 > t0)
        list->add(segment.at(t1), surface);
}

/// A line in the frame in which a cylinder stands along z about the origin.
Segment inFrameOf(const CylinderShape& c, const Segment& segment) noexcept {
    const lsVec3 y = c.axis.cross(c.xAxis), offset = segment.centre - c.centre;
    return {lsVec3(offset.dot(c.xAxis), offset.dot(y), offset.dot(c.axis)),
            lsVec3(segment.half.dot(c.xAxis), segment.half.dot(y), segment.half.dot(c.axis))};
}

/// Adds the ends of a line clipped to a cylinder.
void addInCylinder(CandidateList* list, const Segment& segment, const CylinderShape& cylinder,
                   int surface) noexcept {
    KitReal t0 = -1, t1 = 1;
    if (SegmentCylinderIntersectWithOutput(inFrameOf(cylinder, segment),
                                           cylinder.radius * (1 + kRadialSlack),
                                           cylinder.halfHeight * (1 + kRadialSlack), &t0, &t1))
        addClipped(list, segment, t0, t1, surface);
}

void AddBoxCylClippedPoints(CandidateList* list, const lsVec3& radii,
                            const CylinderShape& cylinder) noexcept {
    for (int axis = 0; axis < 3; ++axis) {
        const int u = (axis + 1) % 3, v = (axis + 2) % 3;
        Segment edge;
        edge.half[axis] = radii[axis];
        for (int i = 0; i < 4; ++i) {
            edge.centre[u] = i & 1 ? radii[u] : -radii[u];
            edge.centre[v] = i & 2 ? radii[v] : -radii[v];
            addInCylinder(list, edge, cylinder, kColSurfaceModel1);
        }
    }
}

/// Adds the points where the rim of an end crosses the planes of a box's sides
/// within the box.
/// @param p,q half diameters of the end, square to each other
void addRimOnSides(CandidateList* list, const lsVec3& slack, const lsVec3& centre, const lsVec3& p,
                   const lsVec3& q) noexcept {
    for (int axis = 0; axis < 3; ++axis) {
        const KitReal amplitude = std::hypot(p[axis], q[axis]);
        const KitReal phase = std::atan2(q[axis], p[axis]);
        for (const KitReal side : {-1.0, 1.0}) {
            // centre + cos a p + sin a q reaches the plane where amplitude cos(a -
            // phase) does.
            const KitReal cosine = (side * slack[axis] - centre[axis]) / amplitude;
            if (!(std::abs(cosine) < 1))
                continue;
            const KitReal turn = std::acos(cosine);
            for (const KitReal angle : {phase - turn, phase + turn}) {
                const lsVec3 point = centre + std::cos(angle) * p + std::sin(angle) * q;
                const int u = (axis + 1) % 3, v = (axis + 2) % 3;
                if (std::abs(point[u]) <= slack[u] && std::abs(point[v]) <= slack[v])
                    list->add(point, kColSurfaceModel2);
            }
        }
    }
}

/// Adds the points where the rims of two ends cross, seen along the first axis,
/// on the second rim.
void addRimCrossings(CandidateList* list, const CylinderShape& first, const CylinderShape& second,
                     const lsVec3& end2) noexcept {
    lsVec3 across = end2 - first.centre;
    across.substractMultiple(across.dot(first.axis), first.axis);
    const KitReal distance = across.normalize();
    if (!(distance > kMinDirectionLength))
        return;
    const KitReal r1 = first.radius, r2 = second.radius;
    const KitReal along = (distance * distance + r1 * r1 - r2 * r2) / (2 * distance);
    const KitReal square = r1 * r1 - along * along;
    if (!(square > 0))
        return;
    const lsVec3 side = first.axis.cross(across);
    for (const KitReal sign : {-1.0, 1.0}) {
        lsVec3 spoke = (along - distance) * across + sign * std::sqrt(square) * side;
        // Onto the plane of the second end, which leans a little.
        spoke.substractMultiple(spoke.dot(second.axis) / first.axis.dot(second.axis), first.axis);
        list->add(end2 + spoke, kColSurfaceModel2);
    }
}

} // namespace

void CylPerpAndPara(lsVec3* perp, lsVec3* para, const CylinderShape& cylinder, const lsVec3& n,
                    const lsVec3& disp) noexcept {
    const lsVec3& axis = cylinder.axis;
    *perp = n - n.dot(axis) * axis;
    if (!(perp->normalize() > kFlatSine)) {
        *perp = disp - disp.dot(axis) * axis;
        if (!(perp->normalize() > kMinDirectionLength))
            *perp = cylinder.xAxis;
    }
    *para = axis.cross(*perp);
}

void BoxCylIntersect(CandidateList* list, const lsVec3& radii, const CylinderShape& cylinder,
                     const lsVec3& towardsBox) noexcept {
    lsVec3 perp, para;
    CylPerpAndPara(&perp, &para, cylinder, towardsBox, lsVec3());
    const lsVec3 slack = radii * (1 + kClipSlack);
    for (const Segment& wire : CylinderWires(cylinder, perp, para).lines) {
        KitReal t0 = -1, t1 = 1;
        if (ClipSegmentToBox(wire.centre, wire.half, slack, &t0, &t1))
            addClipped(list, wire, t0, t1, kColSurfaceModel2);
    }
    const KitReal end = towardsBox.dot(cylinder.axis) < 0 ? -1 : 1;
    addRimOnSides(list, slack, cylinder.centre + end * cylinder.halfHeight * cylinder.axis,
                  cylinder.radius * perp, cylinder.radius * para);
    AddBoxCylClippedPoints(list, radii, cylinder);
}

void CylCylIntersect(CandidateList* list, const CylinderShape& first, const CylinderShape& second,
                     const lsVec3& n) noexcept {
    constexpr KitReal kNearlyParallel = 0.99;
    lsVec3 perp1, para1, perp2, para2;
    const lsVec3 disp = second.centre - first.centre;
    CylPerpAndPara(&perp1, &para1, first, -n, disp);
    CylPerpAndPara(&perp2, &para2, second, n, -disp);
    for (const Segment& wire : CylinderWires(second, perp2, para2).lines)
        addInCylinder(list, wire, first, kColSurfaceModel2);
    for (const Segment& wire : CylinderWires(first, perp1, para1).lines)
        addInCylinder(list, wire, second, kColSurfaceModel1);
    if (std::abs(first.axis.dot(second.axis)) > kNearlyParallel &&
        std::abs(n.dot(first.axis)) > kNearlyParallel) {
        const KitReal end = n.dot(second.axis) < 0 ? -1 : 1;
        addRimCrossings(list, first, second, second.centre + end * second.halfHeight * second.axis);
    }
}
