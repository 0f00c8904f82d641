#pragma once
#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCone.h>
#include <Col/ColCylinder.h>
#include <Col/ColFrame.h>
#include <Col/ColIntersect.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColPlane.h>
#include <Col/ColPrimitives.h>
#include <Col/ColRequest.h>
#include <Col/ColSimplify.h>
#include <Col/ColSphere.h>
#include <Kit/lsTransform.h>

#include <cmath>
#include <gtest/gtest.h>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <vector>

/// A geometry somewhere; owns both.
struct Body {
    explicit Body(ColGeometry* g, const lsTransform& tm = lsTransform()) : geometry(g), frame(tm) {
        model.mGeometry = g;
        model.mGlobalTM = &frame;
        model.serial = ++count;
    }
    Body(const Body&) = delete;
    ~Body() { ColGeometryDestroy(geometry); }

    static inline std::uint64_t count = 0;
    ColGeometry* geometry;
    lsTransform frame;
    ColModel model;
};

/// A pair after its hello, intersected at the present frames.
struct Hit {
    Hit(Body& a, Body& b, std::uint32_t maxContacts = 8) {
        ColRequestInit(&request);
        request.contactMaxCount = maxContacts;
        pair.model1 = &a.model;
        pair.model2 = &b.model;
        ColHelloWithRequest(&pair, &request);
        result.contacts = contacts;
        result.contactMaxCount = 16;
        result.contactCount = result.groupCount = result.touch = 77; // must be written
        ColIntersect(&pair, &result);
    }
    [[nodiscard]] const ColContact& deepest() const {
        int best = 0;
        for (int i = 1; i < result.contactCount; ++i)
            if (contacts[i].separation < contacts[best].separation)
                best = i;
        return contacts[best];
    }
    [[nodiscard]] lsVec3 point(int contact, int side) const {
        lsVec3 p;
        ColContactGetPosition(&contacts[contact], side, &p);
        return p;
    }

    ColRequest request;
    ColModelPair pair;
    ColContact contacts[16];
    ColIntersectResult result;
};

class PairTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ColPrimitivesRegisterTypes();
        ColPrimitivesRegisterInteractions();
        ColCapsulePrimitiveRegisterInteraction();
        ColSetContactDegeneracyThreshold(0.001, 0.99);
    }

    lsVec3 randomUnit() {
        std::normal_distribution<KitReal> normal;
        lsVec3 d(normal(random), normal(random), normal(random));
        d.normalize();
        return d;
    }
    KitReal uniform(KitReal low, KitReal high) {
        return std::uniform_real_distribution<KitReal>(low, high)(random);
    }
    lsTransform randomRotation() {
        lsTransform tm;
        tm.axis(0) = randomUnit();
        tm.axis(1) = tm.axis(0).cross(randomUnit());
        tm.axis(1).normalize();
        tm.axis(2) = tm.axis(0).cross(tm.axis(1));
        return tm;
    }

    std::mt19937 random{20261};
};

/// Rotation by an angle about a coordinate axis, then a translation.
inline lsTransform placed(int axis, KitReal angle, const lsVec3& at) {
    lsTransform tm;
    const int u = (axis + 1) % 3, v = (axis + 2) % 3;
    tm.row[u][u] = tm.row[v][v] = std::cos(angle);
    tm.row[u][v] = std::sin(angle);
    tm.row[v][u] = -std::sin(angle);
    tm.t() = at;
    return tm;
}

/// Separation of two convex geometries along a unit direction from model2 to
/// model1, by their farthest points alone.
inline KitReal separationAlong(const lsVec3& n, const ColModel& m1, const ColModel& m2) {
    lsVec3 low, high;
    ColGeometryMaximumPoint(m1.mGeometry, m1.mGlobalTM, -n, &low);
    if (m2.mGeometry->mID == kColPlane)
        return n.dot(low - m2.mGlobalTM->t());
    ColGeometryMaximumPoint(m2.mGeometry, m2.mGlobalTM, n, &high);
    return n.dot(low - high);
}

/// Greatest separation over all directions: a thousand tried, the best eight
/// improved by a search over ever smaller turns. With a plane the direction is
/// its normal.
inline KitReal trueSeparation(const ColModel& m1, const ColModel& m2) {
    if (m2.mGeometry->mID == kColPlane)
        return separationAlong(m2.mGlobalTM->axis(2), m1, m2);
    constexpr int kDirections = 1000, kStarts = 3;
    std::vector<std::pair<KitReal, lsVec3>> starts;
    for (int i = 0; i < kDirections; ++i) {
        const KitReal z = 1 - (2 * i + 1.0) / kDirections, s = std::sqrt(1 - z * z);
        const KitReal turn = i * std::numbers::pi * (3 - std::sqrt(5.0));
        const lsVec3 n(s * std::cos(turn), s * std::sin(turn), z);
        starts.emplace_back(separationAlong(n, m1, m2), n);
    }
    std::sort(starts.begin(), starts.end(),
              [](const auto& a, const auto& b) { return a.first > b.first; });
    KitReal best = -kKitInfinity;
    for (int k = 0; k < kStarts; ++k) {
        auto [value, n] = starts[static_cast<std::size_t>(k)];
        for (KitReal step = 0.05; step > 1e-7; step *= 0.4)
            for (bool improved = true; improved;) {
                improved = false;
                const lsVec3 u =
                    std::abs(n[0]) < 0.6 ? n.cross(lsVec3(1, 0, 0)) : n.cross(lsVec3(0, 1, 0));
                const lsVec3 v = n.cross(u);
                for (int i = 0; i < 12 && !improved; ++i) {
                    const KitReal angle = i * std::numbers::pi / 6;
                    lsVec3 turned = n + step * (std::cos(angle) * u + std::sin(angle) * v);
                    turned.normalize();
                    const KitReal tried = separationAlong(turned, m1, m2);
                    if (tried > value) {
                        value = tried;
                        n = turned;
                        improved = true;
                    }
                }
            }
        best = std::max(best, value);
    }
    return best;
}
