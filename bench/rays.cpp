// Nearest hits of 10,000 segments among 2,000 bodies: time of all, and how many differ from closed
// forms (missed, false, or off by more than 5 cm).
#include <Col/Col.h>
#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColPrimitives.h>
#include <Col/ColSphere.h>
#include <Col/CxSpace.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr int kBodies = 2000, kSegments = 10000, kRounds = 10;

struct Random {
    std::uint64_t state;
    double unit() {
        std::uint64_t z = state += 0x9E3779B97F4A7C15U;
        z = (z ^ z >> 30U) * 0xBF58476D1CE4E5B9U;
        z = (z ^ z >> 27U) * 0x94D049BB133111EBU;
        z ^= z >> 31U;
        return static_cast<double>(z >> 11U) * 0x1p-53;
    }
    double in(double low, double high) { return low + (high - low) * unit(); }
    lsVec3 place() {
        const double x = in(-50, 50), y = in(-50, 50);
        return {x, y, in(0, 20)};
    }
};

struct Body {
    lsTransform frame;
    ColGeometry* geometry = nullptr;
    ColModel* model = nullptr;
};

/// The shortest turn that takes +z to a direction.
void turnZTo(lsTransform& frame, const lsVec3& d) {
    const double c = d[2], k = 1 / (1 + c);
    frame.axis(0) = lsVec3(1 - k * d[0] * d[0], -k * d[0] * d[1], -d[0]);
    frame.axis(1) = lsVec3(-k * d[0] * d[1], 1 - k * d[1] * d[1], -d[1]);
    frame.axis(2) = d;
}

std::vector<Body> makeBodies(CxSpace* space) {
    std::vector<Body> bodies(kBodies);
    Random random{12345};
    for (int i = 0; i < kBodies; ++i) {
        Body& body = bodies[static_cast<std::size_t>(i)];
        body.frame.t() = random.place();
        const double x = random.in(-1, 1), y = random.in(-1, 1);
        lsVec3 up(x, y, random.in(-1, 1));
        up.normalize();
        turnZTo(body.frame, up);
        if (i % 3 == 0) {
            const double a = random.in(.3, 1), b = random.in(.3, 1);
            body.geometry = ColBoxCreate(2 * a, 2 * b, 2 * random.in(.3, 1));
        } else if (i % 3 == 1) {
            body.geometry = ColSphereCreate(random.in(.3, 1));
        } else {
            const double r = random.in(.2, .5);
            body.geometry = ColCapsuleCreate(r, 2 * random.in(.3, 1));
        }
        body.model = ColModelCreate(body.geometry);
        ColModelSetTransformPtr(body.model, &body.frame);
        ColSpaceInsertModel(space, body.model);
    }
    ColSpaceEndChanges(space);
    return bodies;
}

// First point of a segment in a body by the distance to it, which no ray test of the library takes
// part in: steps as long as the distance never pass a surface. Negative for none.
double firstTouch(const Body& body, const lsVec3& start, const lsVec3& d, double length) {
    const lsVec3 toCentre = body.frame.t() - start;
    const double nearest = toCentre.dot(d), kReach = 2; // m, more than any body's
    if ((toCentre - std::clamp(nearest, 0.0, length) * d).norm() > kReach)
        return -1;
    const lsVec3 o = body.frame.inverseTransform(start);
    const lsVec3 u = body.frame.inverseTransformWithoutTranslate(d);
    for (double t = 0; t <= length;) {
        const lsVec3 p = o + t * u;
        double gap = 0;
        if (body.geometry->mID == kColBox) {
            const lsVec3& r = static_cast<const ColBox*>(body.geometry)->mR;
            gap = lsVec3(std::max(std::abs(p[0]) - r[0], 0.0), std::max(std::abs(p[1]) - r[1], 0.0),
                         std::max(std::abs(p[2]) - r[2], 0.0))
                      .norm();
        } else if (body.geometry->mID == kColSphere) {
            gap = p.norm() - static_cast<const ColSphere*>(body.geometry)->radius;
        } else {
            const auto& c = *static_cast<const ColCapsule*>(body.geometry);
            gap =
                (p - lsVec3(0, 0, std::clamp(p[2], -c.halfHeight, c.halfHeight))).norm() - c.radius;
        }
        if (gap < 1e-7)
            return t;
        if (t > nearest + kReach)
            return -1;
        t += gap;
    }
    return -1;
}

struct Segment {
    lsVec3 start, end;
};

std::vector<Segment> makeSegments(const std::vector<Body>& bodies) {
    std::vector<Segment> segments;
    Random random{999};
    const auto lies = [&](const lsVec3& p) {
        return std::any_of(bodies.begin(), bodies.end(), [&](const Body& body) {
            return firstTouch(body, p, lsVec3(0, 0, 1), 0) == 0;
        });
    };
    for (int i = 0; i < kSegments; ++i) {
        lsVec3 start = random.place();
        while (lies(start))
            start = random.place();
        segments.push_back({start, random.place()});
    }
    return segments;
}

} // namespace

int main() {
    ColPrimitivesRegisterTypes();
    ColPrimitivesRegisterInteractions();
    ColCapsulePrimitiveRegisterInteraction();
    CxSpace* space = ColSpaceAxisSortCreate(static_cast<int>(ColAllAxes), kBodies, 1024, false);
    std::vector<Body> bodies = makeBodies(space);
    const std::vector<Segment> segments = makeSegments(bodies);

    std::vector<double> found(segments.size());
    std::vector<double> times;
    for (int round = 0; round < kRounds; ++round) {
        const auto from = std::chrono::steady_clock::now();
        for (std::size_t i = 0; i < segments.size(); ++i) {
            ColLineSegIntersectResult hit;
            const int any =
                ColSpaceLineSegIntersect(space, segments[i].start, segments[i].end, &hit, nullptr);
            found[i] = any != 0 ? hit.distance : -1;
        }
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - from;
        times.push_back(time.count());
    }
    int wrong = 0, hits = 0;
    double worst = 0;
    for (std::size_t i = 0; i < segments.size(); ++i) {
        lsVec3 d = segments[i].end - segments[i].start;
        const double length = d.normalize();
        double nearest = -1;
        for (const Body& body : bodies) {
            const double t = firstTouch(body, segments[i].start, d, length);
            if (t >= 0 && (nearest < 0 || t < nearest))
                nearest = t;
        }
        hits += nearest >= 0;
        const bool both = nearest >= 0 && found[i] >= 0;
        const double error = both ? std::abs(found[i] - nearest) : 0;
        worst = std::max(worst, error);
        wrong += (nearest >= 0) != (found[i] >= 0) || error > 0.05;
    }
    std::sort(times.begin(), times.end());
    std::printf("rays: %d segments, %d bodies, %d hits: median %.2f ms, %.0f ns a segment; wrong "
                "%d, max_dist_err %.2g m\n",
                kSegments, kBodies, hits, times[kRounds / 2], 1e6 * times[kRounds / 2] / kSegments,
                wrong, worst);
    for (Body& body : bodies) {
        ColSpaceRemoveModel(body.model);
        ColModelDestroy(body.model);
        ColGeometryDestroy(body.geometry);
    }
    ColSpaceDestroy(space);
    return wrong == 0 ? 0 : 1;
}
