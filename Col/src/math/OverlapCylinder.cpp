#include "OverlapCylinder.h"

#include "Segments.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

/// Share of the shapes' size by which a curved feature must beat a flat one: rounding never turns a
/// face that lies flat into a rim.
constexpr KitReal kCurvedAdvantage = 1e-7;
/// Sine under which axes are parallel and their cross product is left out.
constexpr KitReal kParallelSine = 1e-7;
/// Cosine between a direction of view and an axis under which a rim is seen as a line.
constexpr KitReal kEdgeOnCosine = 1e-4;

/// Keeps the axis of greatest separation; of equal ones the first.
struct AxisSearch {
    /// Tries a unit direction of either sense.
    /// @param height of shape 2's centre over that of shape 1 along the direction, m
    /// @return false if it separates the shapes beyond the tolerance
    bool offer(const lsVec3& direction, KitReal height, KitReal extent1, KitReal extent2, int code,
               KitReal advantage) noexcept {
        const KitReal separation = std::abs(height) - extent1 - extent2;
        if (separation > best->separation + advantage) {
            best->separation = separation;
            best->normal = height >= 0 ? -direction : direction;
            best->plane1 = -extent1;
            best->plane2 = best->plane1 - separation;
            best->code = code;
        }
        return !(separation > eps);
    }

    OverlapAxis* best;
    KitReal eps;
};

KitReal boxExtent(const lsVec3& radii, const lsVec3& n) noexcept {
    return std::abs(n[0]) * radii[0] + std::abs(n[1]) * radii[1] + std::abs(n[2]) * radii[2];
}

lsVec3 unitAxis(int i) noexcept {
    lsVec3 axis;
    axis[i] = 1;
    return axis;
}

/// Centre of the end of a cylinder that looks along a direction.
lsVec3 endTowards(const CylinderShape& cylinder, const lsVec3& direction) noexcept {
    const KitReal side = direction.dot(cylinder.axis) < 0 ? -1 : 1;
    return cylinder.centre + side * cylinder.halfHeight * cylinder.axis;
}

/// A test of a box and a cylinder.
struct BoxCylinderTest {
    bool testFlat(AxisSearch* search) const noexcept;
    bool testSide(AxisSearch* search) const noexcept;
    bool testRims(AxisSearch* search) const noexcept;
    bool testPiercingEdges(AxisSearch* search) const noexcept;
    bool offerCurved(AxisSearch* search, const lsVec3& direction, int code) const noexcept {
        return search->offer(direction, direction.dot(cylinder.centre), boxExtent(radii, direction),
                             cylinder.extent(direction), code, advantage);
    }
    /// Corner of the box that looks along a direction; where that is square to an axis, towards the
    /// cylinder.
    [[nodiscard]] lsVec3 cornerTowards(const lsVec3& direction) const noexcept {
        lsVec3 corner;
        for (int i = 0; i < 3; ++i) {
            const KitReal c =
                std::abs(direction[i]) > kParallelSine ? direction[i] : cylinder.centre[i];
            corner[i] = c < 0 ? -radii[i] : radii[i];
        }
        return corner;
    }

    const lsVec3& radii;
    const CylinderShape& cylinder;
    KitReal advantage;
};

bool BoxCylinderTest::testFlat(AxisSearch* search) const noexcept {
    for (int i = 0; i < 3; ++i)
        if (!search->offer(unitAxis(i), cylinder.centre[i], radii[i], cylinder.extent(unitAxis(i)),
                           kOverlapBoxFace + i, 0))
            return false;
    return search->offer(cylinder.axis, cylinder.axis.dot(cylinder.centre),
                         boxExtent(radii, cylinder.axis), cylinder.halfHeight, kOverlapEnd2,
                         advantage);
}

bool BoxCylinderTest::testSide(AxisSearch* search) const noexcept {
    for (int i = 0; i < 3; ++i) {
        lsVec3 cross = unitAxis(i).cross(cylinder.axis);
        if (cross.normalize() > kParallelSine && !offerCurved(search, cross, kOverlapSides))
            return false;
    }
    for (int corner = 0; corner < 8; ++corner) {
        const lsVec3 vertex(corner & 1 ? radii[0] : -radii[0], corner & 2 ? radii[1] : -radii[1],
                            corner & 4 ? radii[2] : -radii[2]);
        lsVec3 radial = vertex - cylinder.centre;
        radial.substractMultiple(radial.dot(cylinder.axis), cylinder.axis);
        if (radial.normalize() > kMinDirectionLength && !offerCurved(search, radial, kOverlapSides))
            return false;
    }
    return true;
}

bool BoxCylinderTest::testRims(AxisSearch* search) const noexcept {
    // The features that face each other follow from the normal, and the normal from the features.
    for (int round = 0; round < 2; ++round) {
        const lsVec3 normal = search->best->normal;
        const lsVec3 corner = cornerTowards(-normal);
        const lsVec3 towardsBox = corner - cylinder.centre;
        const bool isSquare = std::abs(normal.dot(cylinder.axis)) < kParallelSine;
        const lsVec3 rimCentre = endTowards(cylinder, isSquare ? towardsBox : normal);
        for (int i = 0; i < 3; ++i) {
            lsVec3 direction;
            if (RimNormalSeenAlong(unitAxis(i), rimCentre, cylinder, corner, &direction) &&
                !offerCurved(search, direction, kOverlapSideRim))
                return false;
        }
        lsVec3 inPlane = corner - rimCentre;
        inPlane.substractMultiple(inPlane.dot(cylinder.axis), cylinder.axis);
        if (!(inPlane.normalize() > kMinDirectionLength))
            return true;
        lsVec3 direction = corner - rimCentre - cylinder.radius * inPlane;
        if (direction.normalize() > kMinDirectionLength &&
            !offerCurved(search, direction, kOverlapRims))
            return false;
    }
    return true;
}

// The features that face each other along the best axis so far need not be those that meet: an edge
// that runs through the cylinder is tried against the rim next to it.
bool BoxCylinderTest::testPiercingEdges(AxisSearch* search) const noexcept {
    const lsVec3 y = cylinder.axis.cross(cylinder.xAxis);
    const auto inCylinder = [&](const lsVec3& d) {
        return lsVec3(d.dot(cylinder.xAxis), d.dot(y), d.dot(cylinder.axis));
    };
    for (int i = 0; i < 3; ++i) {
        const int u = (i + 1) % 3, v = (i + 2) % 3;
        const lsVec3 half = inCylinder(radii[i] * unitAxis(i));
        for (int k = 0; k < 4; ++k) {
            lsVec3 middle;
            middle[u] = k & 1 ? radii[u] : -radii[u];
            middle[v] = k & 2 ? radii[v] : -radii[v];
            const Segment edge{inCylinder(middle - cylinder.centre), half};
            KitReal t0 = -1, t1 = 1;
            if (!SegmentCylinderIntersectWithOutput(edge, cylinder.radius, cylinder.halfHeight, &t0,
                                                    &t1))
                continue;
            const KitReal side = edge.at(0.5 * (t0 + t1))[2] < 0 ? -1 : 1;
            const lsVec3 rim = cylinder.centre + side * cylinder.halfHeight * cylinder.axis;
            lsVec3 direction;
            if (RimNormalSeenAlong(unitAxis(i), rim, cylinder, middle, &direction) &&
                !offerCurved(search, direction, kOverlapSideRim))
                return false;
        }
    }
    return true;
}

/// A test of two cylinders; t is the way from the first centre to the second.
struct CylinderCylinderTest {
    bool testFlat(AxisSearch* search) const noexcept;
    bool testSides(AxisSearch* search) const noexcept;
    bool testRimSides(AxisSearch* search) const noexcept;
    bool testRims(AxisSearch* search) const noexcept;
    bool offer(AxisSearch* search, const lsVec3& direction, int code,
               KitReal needed) const noexcept {
        return search->offer(direction, direction.dot(t), first.extent(direction),
                             second.extent(direction), code, needed);
    }

    const CylinderShape &first, &second;
    lsVec3 t;
    KitReal advantage;
};

bool CylinderCylinderTest::testFlat(AxisSearch* search) const noexcept {
    return offer(search, first.axis, kOverlapEnd1, 0) &&
           offer(search, second.axis, kOverlapEnd2, advantage);
}

bool CylinderCylinderTest::testSides(AxisSearch* search) const noexcept {
    lsVec3 axis = first.axis.cross(second.axis);
    if (axis.normalize() > kParallelSine)
        return offer(search, axis, kOverlapSides, advantage);
    axis = t;
    axis.substractMultiple(t.dot(first.axis), first.axis);
    return !(axis.normalize() > kMinDirectionLength) ||
           offer(search, axis, kOverlapSides, advantage);
}

bool CylinderCylinderTest::testRimSides(AxisSearch* search) const noexcept {
    const auto testEnds = [&](const CylinderShape& side, const CylinderShape& rim, int code) {
        for (const KitReal end : {1.0, -1.0}) {
            const lsVec3 rimCentre = rim.centre + end * rim.halfHeight * rim.axis;
            lsVec3 direction;
            if (RimNormalSeenAlong(side.axis, rimCentre, rim, side.centre, &direction) &&
                !offer(search, direction, code, advantage))
                return false;
        }
        return true;
    };
    return testEnds(first, second, kOverlapSideRim) && testEnds(second, first, kOverlapRimSide);
}

/// The rims nearest to each other, as functions of the angles of a point on each. Half the square of
/// the distance of the points has its least value where the way between them is square to both rims.
class IxCylinderCylinderData {
public:
    IxCylinderCylinderData(const CylinderShape& first, const CylinderShape& second,
                           const lsVec3& end1, const lsVec3& end2) noexcept
        : mX1(first.xAxis), mY1(first.axis.cross(first.xAxis)), mX2(second.xAxis),
          mY2(second.axis.cross(second.xAxis)), mDisplacement(end2 - end1), cylR1(first.radius),
          cylR2(second.radius) {}

    /// Angles of the points that look along and against a direction.
    void start(const lsVec3& direction, KitReal* a, KitReal* b) const noexcept {
        *a = std::atan2(direction.dot(mY1), direction.dot(mX1));
        *b = std::atan2(-direction.dot(mY2), -direction.dot(mX2));
    }

    /// Newton's method on the angles from a start, kept downhill by halved steps. The answer is the
    /// way from the first rim's point to the second's.
    [[nodiscard]] lsVec3 EndCapMin(KitReal a, KitReal b) const noexcept;

private:
    [[nodiscard]] lsVec3 spoke1(KitReal a) const noexcept {
        return cylR1 * (std::cos(a) * mX1 + std::sin(a) * mY1);
    }
    [[nodiscard]] lsVec3 spoke2(KitReal b) const noexcept {
        return cylR2 * (std::cos(b) * mX2 + std::sin(b) * mY2);
    }
    [[nodiscard]] lsVec3 way(KitReal a, KitReal b) const noexcept {
        return mDisplacement + spoke2(b) - spoke1(a);
    }

    lsVec3 mX1, mY1, mX2, mY2, mDisplacement;
    KitReal cylR1, cylR2;
};

lsVec3 IxCylinderCylinderData::EndCapMin(KitReal a, KitReal b) const noexcept {
    constexpr int kMaxSteps = 30, kMaxHalvings = 20;
    constexpr KitReal kSmallTurn = 1e-12;
    constexpr KitReal quarter = 0.5 * std::numbers::pi;
    lsVec3 d = way(a, b);
    for (int step = 0; step < kMaxSteps; ++step) {
        // With p, q the spokes and p', q' their derivatives: gradient (-d.p', d.q'), second
        // derivatives p'.p' + d.p, -p'.q', q'.q' - d.q.
        const lsVec3 p = spoke1(a), dp = spoke1(a + quarter);
        const lsVec3 q = spoke2(b), dq = spoke2(b + quarter);
        const KitReal ga = -d.dot(dp), gb = d.dot(dq);
        const KitReal haa = dp.square_norm() + d.dot(p), hbb = dq.square_norm() - d.dot(q);
        const KitReal hab = -dp.dot(dq), determinant = haa * hbb - hab * hab;
        KitReal da, db;
        if (haa > 0 && determinant > 1e-12 * haa * std::abs(hbb)) {
            da = -(hbb * ga - hab * gb) / determinant;
            db = -(haa * gb - hab * ga) / determinant;
        } else {
            da = -ga / (cylR1 * cylR1 + std::abs(haa));
            db = -gb / (cylR2 * cylR2 + std::abs(hbb));
        }
        KitReal share = 1;
        const KitReal before = d.square_norm();
        int halving = 0;
        for (; halving < kMaxHalvings; ++halving, share *= 0.5)
            if (way(a + share * da, b + share * db).square_norm() < before)
                break;
        if (halving == kMaxHalvings)
            break;
        a += share * da;
        b += share * db;
        d = way(a, b);
        if (std::abs(da) + std::abs(db) < kSmallTurn)
            break;
    }
    return d;
}

bool CylinderCylinderTest::testRims(AxisSearch* search) const noexcept {
    lsVec3 end1, end2;
    KitReal nearest = kKitInfinity;
    for (const KitReal side2 : {1.0, -1.0})
        for (const KitReal side1 : {1.0, -1.0}) {
            const lsVec3 c1 = first.centre + side1 * first.halfHeight * first.axis;
            const lsVec3 c2 = second.centre + side2 * second.halfHeight * second.axis;
            if ((c2 - c1).square_norm() < nearest) {
                nearest = (c2 - c1).square_norm();
                end1 = c1;
                end2 = c2;
            }
        }
    const IxCylinderCylinderData data(first, second, end1, end2);
    lsVec3 starts[] = {-search->best->normal, end2 - end1, t};
    for (const lsVec3& start : starts) {
        KitReal a, b;
        data.start(start, &a, &b);
        lsVec3 direction = data.EndCapMin(a, b);
        if (direction.normalize() > kMinDirectionLength &&
            !offer(search, direction, kOverlapRims, advantage))
            return false;
    }
    return true;
}

/// Feature of a cylinder that a normal meets.
int cylinderFeature(const lsVec3& normal, const CylinderShape& cylinder) noexcept {
    constexpr KitReal kStandingSquare = 0.999999, kLyingSquare = 1e-6;
    const KitReal cosine = normal.dot(cylinder.axis), square = cosine * cosine;
    return square > kStandingSquare ? 2 : square < kLyingSquare ? 3 : 1;
}

} // namespace

KitReal CylinderShape::extent(const lsVec3& direction) const noexcept {
    const KitReal cosine = direction.dot(axis);
    return std::abs(cosine) * halfHeight + std::sqrt(std::fmax(1 - cosine * cosine, 0.0)) * radius;
}

lsVec3 CylinderShape::farthest(const lsVec3& direction) const noexcept {
    const KitReal cosine = direction.dot(axis);
    lsVec3 radial = direction - cosine * axis;
    if (!(radial.normalize() > kMinDirectionLength))
        radial = lsVec3();
    return centre + (cosine < 0 ? -halfHeight : halfHeight) * axis + radius * radial;
}

bool RimNormalSeenAlong(const lsVec3& view, const lsVec3& rimCentre, const CylinderShape& cylinder,
                        const lsVec3& linePoint, lsVec3* normal) noexcept {
    const KitReal cosine = std::abs(view.dot(cylinder.axis));
    lsVec3 major = view.cross(cylinder.axis);
    if (cosine < kEdgeOnCosine)
        return false;
    if (!(major.normalize() > kParallelSine))
        major = AnyPerpendicular(view);
    const lsVec3 minor = view.cross(major), offset = linePoint - rimCentre;
    const lsVec3 flat = EllipseNormalTowards(cylinder.radius, cylinder.radius * cosine,
                                             offset.dot(major), offset.dot(minor));
    *normal = flat[0] * major + flat[1] * minor;
    return normal->normalize() > 0;
}

// Eberly, "Distance from a Point to an Ellipse", 2013: the foot is (a^2 x / (t + a^2), b^2 y / (t +
// b^2)) for the root of F(t) = (a x / (t + a^2))^2 + (b y / (t + b^2))^2 - 1 beyond -b^2, b the
// shorter half axis. F falls and is convex there, so Newton's steps from its left never overshoot.
lsVec3 EllipseNormalTowards(KitReal a, KitReal b, KitReal x, KitReal y) noexcept {
    if (a < b) {
        const lsVec3 turned = EllipseNormalTowards(b, a, y, x);
        return {turned[1], turned[0], 0};
    }
    constexpr int kMaxSteps = 60;
    constexpr KitReal kTolerance = 1e-13, kOnAxis = 1e-9;
    const KitReal ax = a * std::abs(x), by = std::fmax(b * std::abs(y), kOnAxis * b * a);
    const KitReal a2 = a * a, b2 = b * b;
    KitReal t = by - b2;
    for (int i = 0; i < kMaxSteps; ++i) {
        const KitReal u = ax / (t + a2), v = by / (t + b2);
        const KitReal f = u * u + v * v - 1;
        const KitReal slope = -2 * (u * u / (t + a2) + v * v / (t + b2));
        const KitReal step = -f / slope;
        t += step;
        if (std::abs(step) <= kTolerance * (std::abs(t) + b2))
            break;
    }
    lsVec3 normal(std::abs(x) / (t + a2), std::fmax(std::abs(y), kOnAxis * a) / (t + b2), 0);
    normal.normalize();
    return {std::copysign(normal[0], x), std::copysign(normal[1], y), 0};
}

bool OverlapOBBCyl(OverlapAxis* out, KitReal eps, const lsVec3& radii,
                   const CylinderShape& cylinder) noexcept {
    *out = OverlapAxis{};
    AxisSearch search{out, eps};
    const BoxCylinderTest test{radii, cylinder,
                               kCurvedAdvantage * (cylinder.radius + cylinder.halfHeight)};
    const bool overlap = test.testFlat(&search) && test.testSide(&search) &&
                         test.testRims(&search) && test.testPiercingEdges(&search);
    int flat = 0;
    for (int i = 0; i < 3; ++i)
        flat += std::abs(out->normal[i]) < 1e-10;
    out->dims = cylinderFeature(out->normal, cylinder) << 8 | flat;
    return overlap && out->separation > -kKitInfinity;
}

bool OverlapCylCyl(OverlapAxis* out, KitReal eps, const CylinderShape& first,
                   const CylinderShape& second) noexcept {
    *out = OverlapAxis{};
    AxisSearch search{out, eps};
    const CylinderCylinderTest test{first, second, second.centre - first.centre,
                                    kCurvedAdvantage * (first.radius + first.halfHeight)};
    const bool overlap = test.testFlat(&search) && test.testSides(&search) &&
                         test.testRimSides(&search) && test.testRims(&search);
    out->dims = cylinderFeature(out->normal, second) << 8 | cylinderFeature(out->normal, first);
    return overlap && out->separation > -kKitInfinity;
}
