#include "GjkSupDisjoint.h"

#include <Col/ColGeometry.h>
#include <Kit/lsVec3.h>

#include <cmath>

namespace {

/// Up to four points of the difference of two shapes, the newest last.
struct Simplex {
    lsVec3 points[4];
    int count = 0;

    void keep(int a) noexcept {
        points[0] = points[a];
        count = 1;
    }
    void keep(int a, int b) noexcept {
        const lsVec3 pa = points[a], pb = points[b];
        points[0] = pa;
        points[1] = pb;
        count = 2;
    }
    void keep(int a, int b, int c) noexcept {
        const lsVec3 pa = points[a], pb = points[b], pc = points[c];
        points[0] = pa;
        points[1] = pb;
        points[2] = pc;
        count = 3;
    }
};

/// Each function reduces the simplex to the part nearest to the origin and
/// answers the nearest point.
lsVec3 nearestOnLine(Simplex* s, int a, int b) noexcept {
    const lsVec3 pa = s->points[a], pb = s->points[b], ab = pb - pa;
    const KitReal square = ab.square_norm(), t = -pa.dot(ab);
    if (!(t > 0)) {
        s->keep(a);
        return pa;
    }
    if (t >= square) {
        s->keep(b);
        return pb;
    }
    s->keep(a, b);
    return pa + (t / square) * ab;
}

// Ericson, "Real-Time Collision Detection", 2005, section 5.1.5.
lsVec3 nearestOnTriangle(Simplex* s, int ia, int ib, int ic) noexcept {
    const lsVec3 a = s->points[ia], b = s->points[ib], c = s->points[ic];
    const lsVec3 ab = b - a, ac = c - a;
    const KitReal d1 = -ab.dot(a), d2 = -ac.dot(a), d3 = -ab.dot(b), d4 = -ac.dot(b);
    const KitReal d5 = -ab.dot(c), d6 = -ac.dot(c);
    if (d1 <= 0 && d2 <= 0)
        return s->keep(ia), a;
    if (d3 >= 0 && d4 <= d3)
        return s->keep(ib), b;
    if (d6 >= 0 && d5 <= d6)
        return s->keep(ic), c;
    const KitReal wc = d1 * d4 - d3 * d2, wb = d5 * d2 - d1 * d6, wa = d3 * d6 - d5 * d4;
    if (wc <= 0 && d1 >= 0 && d3 <= 0)
        return nearestOnLine(s, ia, ib);
    if (wb <= 0 && d2 >= 0 && d6 <= 0)
        return nearestOnLine(s, ia, ic);
    if (wa <= 0 && d4 - d3 >= 0 && d5 - d6 >= 0)
        return nearestOnLine(s, ib, ic);
    s->keep(ia, ib, ic);
    const KitReal sum = wa + wb + wc;
    return a + (wb / sum) * ab + (wc / sum) * ac;
}

/// @return false if the tetrahedron holds the origin
bool nearestOnTetrahedron(Simplex* s, lsVec3* nearest) noexcept {
    constexpr int kFaces[4][4] = {{0, 1, 2, 3}, {0, 1, 3, 2}, {0, 2, 3, 1}, {1, 2, 3, 0}};
    const Simplex whole = *s;
    KitReal best = kKitInfinity;
    bool outside = false;
    for (const auto& f : kFaces) {
        const lsVec3& a = whole.points[f[0]];
        const lsVec3 normal = (whole.points[f[1]] - a).cross(whole.points[f[2]] - a);
        const KitReal towardsOrigin = -normal.dot(a);
        const KitReal towardsFourth = normal.dot(whole.points[f[3]] - a);
        if (towardsOrigin * towardsFourth > 0)
            continue; // the origin is on the inner side of this face
        outside = true;
        Simplex face = whole;
        const lsVec3 point = nearestOnTriangle(&face, f[0], f[1], f[2]);
        if (point.square_norm() < best) {
            best = point.square_norm();
            *nearest = point;
            *s = face;
        }
    }
    return outside;
}

bool reduce(Simplex* s, lsVec3* nearest) noexcept {
    if (s->count == 1)
        *nearest = s->points[0];
    else if (s->count == 2)
        *nearest = nearestOnLine(s, 0, 1);
    else if (s->count == 3)
        *nearest = nearestOnTriangle(s, 0, 1, 2);
    else
        return nearestOnTetrahedron(s, nearest);
    return true;
}

lsVec3 supportOfDifference(const ColModel& model1, const ColModel& model2, const lsVec3& d) {
    lsVec3 p1, p2;
    ColGeometryMaximumPoint(model1.mGeometry, model1.mGlobalTM, d, &p1);
    ColGeometryMaximumPoint(model2.mGeometry, model2.mGlobalTM, -d, &p2);
    return p1 - p2;
}

} // namespace

bool GjkSupDisjoint(const ColModel& model1, const ColModel& model2) {
    constexpr int kMaxSteps = 64;
    // Share of the least distance so far by which a step must still come nearer.
    constexpr KitReal kProgress = 1e-12;
    Simplex simplex;
    lsVec3 nearest = supportOfDifference(model1, model2, lsVec3(1, 0, 0));
    simplex.points[simplex.count++] = nearest;
    for (int step = 0; step < kMaxSteps; ++step) {
        const KitReal before = nearest.square_norm();
        if (!(before > 0))
            return false;
        const lsVec3 support = supportOfDifference(model1, model2, -nearest);
        if (support.dot(nearest) > 0)
            return true;
        simplex.points[simplex.count++] = support;
        if (!reduce(&simplex, &nearest) || !(nearest.square_norm() < before * (1 - kProgress)))
            return false;
    }
    return false;
}
