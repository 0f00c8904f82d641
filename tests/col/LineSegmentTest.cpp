#include "MessageLog.h"
#include "PairFixture.h"

#include <Col/ColComposite.h>
#include <Col/ColCompositeModel.h>
#include <Col/ColLineSeg.h>
#include <Col/ColSpace.h>
#include <Col/ColTriangleList.h>
#include <Col/CxSpace.h>

namespace {

struct Solid {
    const char* name;
    ColGeometry* (*make)();
};
const Solid kSolids[] = {
    {"sphere", [] { return static_cast<ColGeometry*>(ColSphereCreate(0.7)); }},
    {"box", [] { return static_cast<ColGeometry*>(ColBoxCreate(1, 0.6, 1.6)); }},
    {"capsule", [] { return static_cast<ColGeometry*>(ColCapsuleCreate(0.4, 1.2)); }},
    {"ball capsule", [] { return static_cast<ColGeometry*>(ColCapsuleCreate(0.6, 0)); }},
    {"cylinder", [] { return static_cast<ColGeometry*>(ColCylinderCreate(0.5, 1.1)); }},
    {"cone", [] { return static_cast<ColGeometry*>(ColConeCreatePointed(0.8, 1.2)); }},
    {"frustum", [] { return static_cast<ColGeometry*>(ColConeCreate(0.3, 0.7, 0.9)); }},
};

class LineSegmentTest : public PairTest {
protected:
    static int shoot(Body& body, const lsVec3& start, const lsVec3& end,
                     ColLineSegIntersectResult* hit) {
        return ColLineSegIntersect(&body.model, start, end, hit, nullptr);
    }
    lsVec3 randomPoint(KitReal reach) {
        return {uniform(-reach, reach), uniform(-reach, reach), uniform(-reach, reach)};
    }
};

bool holds(const Body& body, const lsVec3& p) {
    return ColGeometryGetPointInVolume(body.geometry, &body.frame, p);
}

// Where a segment first crosses a surface, found by marching and bisection; -1 if it never does.
KitReal marchToCrossing(const Body& body, const lsVec3& start, const lsVec3& end) {
    constexpr int kSteps = 400;
    const bool inside = holds(body, start);
    for (int i = 1; i <= kSteps; ++i) {
        KitReal low = (i - 1.0) / kSteps, high = static_cast<KitReal>(i) / kSteps;
        if (holds(body, start + high * (end - start)) == inside)
            continue;
        for (int k = 0; k < 45; ++k) {
            const KitReal middle = 0.5 * (low + high);
            (holds(body, start + middle * (end - start)) == inside ? low : high) = middle;
        }
        return low * (end - start).norm();
    }
    return -1;
}

TEST_F(LineSegmentTest, SolidsAreHitWhereMarchingCrossesTheirSurface) {
    std::printf("seed 20261\n");
    for (const Solid& solid : kSolids) {
        int hits = 0, grazes = 0, fromInside = 0;
        for (int round = 0; round < 1000; ++round) {
            Body body(solid.make(), randomRotation());
            body.geometry->mSkin = 0;
            body.frame.t() = randomPoint(5);
            const KitReal reach = round % 4 == 0 ? 0.3 : 2;
            const lsVec3 start = body.frame.t() + randomPoint(reach);
            const lsVec3 end = body.frame.t() + randomPoint(2);
            SCOPED_TRACE(std::string(solid.name) + " round " + std::to_string(round));
            ColLineSegIntersectResult hit;
            const bool found = shoot(body, start, end, &hit) != 0;
            const KitReal distance = marchToCrossing(body, start, end);
            if (distance < 0) { // marching steps over a graze
                grazes += found;
                continue;
            }
            ASSERT_TRUE(found);
            ++hits;
            fromInside += holds(body, start);
            if (hit.distance < distance - 1e-9) { // or over a graze before another crossing
                ++grazes;
                continue;
            }
            EXPECT_NEAR(hit.distance, distance, 1e-9);
            EXPECT_NEAR((hit.position - start).norm(), hit.distance, 1e-9);
            EXPECT_NEAR(hit.normal.norm(), 1, 1e-12);
            EXPECT_TRUE(holds(body, hit.position - 1e-6 * hit.normal));
            EXPECT_FALSE(holds(body, hit.position + 1e-6 * hit.normal));
            EXPECT_EQ(hit.model, &body.model);
            EXPECT_EQ(hit.index, -1);
        }
        EXPECT_GT(hits, 100) << solid.name;
        EXPECT_GT(fromInside, 20) << solid.name;
        EXPECT_LT(grazes, 10) << solid.name;
    }
}

// Rays through what two surfaces share, and along what they have in common.
TEST_F(LineSegmentTest, SeamsAndAxesDoNotLeak) {
    struct Case {
        const char* name;
        ColGeometry* geometry;
        lsVec3 start, end;
        KitReal distance; ///< negative for none
    };
    const Case cases[] = {
        {"edge of a box", ColBoxCreate(2, 2, 2), {3, 3, 0.1}, {0, 0, 0.1}, std::sqrt(8)},
        {"corner of a box", ColBoxCreate(2, 2, 2), {3, 3, 3}, {-1, -1, -1}, std::sqrt(12)},
        {"along a face", ColBoxCreate(2, 2, 2), {-3, 0, 1}, {3, 0, 1}, 2},
        {"short of a box", ColBoxCreate(2, 2, 2), {3, 0, 0}, {1.001, 0, 0}, -1},
        {"rim of a cylinder", ColCylinderCreate(1, 2), {3, 0, 3}, {0, 0, 0}, std::sqrt(8)},
        {"axis of a cylinder", ColCylinderCreate(1, 2), {0, 0, 5}, {0, 0, -5}, 4},
        {"side line of a cylinder", ColCylinderCreate(1, 2), {1, 0, 5}, {1, 0, -5}, 4},
        {"beside a cylinder", ColCylinderCreate(1, 2), {1.001, 0, 5}, {1.001, 0, -5}, -1},
        {"tip of a cone", ColConeCreatePointed(1, 2), {0, 0, 5}, {0, 0, -5}, 4},
        {"below a cone", ColConeCreatePointed(1, 2), {0, 0, -5}, {0, 0, 5}, 4},
        {"over a cone's tip", ColConeCreatePointed(1, 2), {-5, 0, 1.5}, {5, 0, 1.5}, -1},
        {"seam of a capsule", ColCapsuleCreate(1, 2), {3, 0, 1}, {0, 0, 1}, 2},
        {"axis of a capsule", ColCapsuleCreate(1, 2), {0, 0, 5}, {0, 0, -5}, 3},
        {"out of a capsule's cap", ColCapsuleCreate(1, 2), {0, 0, 1.5}, {0, 0, -5}, 3.5},
        {"out of a sphere", ColSphereCreate(1), {0, 0, 0}, {0, 3, 0}, 1},
        {"away from a sphere", ColSphereCreate(1), {0, 2, 0}, {0, 3, 0}, -1},
        {"a point", ColSphereCreate(1), {0, 1, 0}, {0, 1, 0}, -1},
    };
    for (const Case& c : cases) {
        Body body(c.geometry);
        ColLineSegIntersectResult hit;
        const bool found = shoot(body, c.start, c.end, &hit) != 0;
        EXPECT_EQ(found, c.distance >= 0) << c.name;
        if (found) {
            EXPECT_NEAR(hit.distance, c.distance, 1e-12) << c.name;
        }
    }
    Body plane(ColPlaneCreate(), placed(0, 0, {0, 0, 1}));
    ColLineSegIntersectResult hit;
    ASSERT_EQ(shoot(plane, {0, 0, 3}, {3, 0, -1}, &hit), 1);
    EXPECT_NEAR(hit.distance, 2.5, 1e-12);
    ASSERT_EQ(shoot(plane, {3, 0, -1}, {0, 0, 3}, &hit), 1);
    EXPECT_NEAR(hit.distance, -2.5, 1e-12) << "from below";
    EXPECT_EQ(hit.normal, lsVec3(0, 0, 1));
    EXPECT_EQ(shoot(plane, {0, 0, 1}, {5, 0, 1}, &hit), 0) << "in the plane";
    const MessageLog log;
    EXPECT_EQ(shoot(plane, {0, 0, std::nan("")}, {5, 0, 1}, &hit), 0);
    EXPECT_EQ(MessageLog::take().size(), 1U);
}

int hitForever(ColModel*, const lsVec3& start, const lsVec3&, ColLineSegIntersectResult* result,
               Hy::HyLineSegIntersectSub*) {
    result->position = start;
    result->distance = 0;
    return 1;
}

TEST_F(LineSegmentTest, ListHoldsAllHitsFromTheNearestOn) {
    Body box(ColBoxCreate(2, 2, 2), placed(0, 0, {10, 0, 0}));
    ColLineSegIntersectResultList list;
    ASSERT_EQ(ColLineSegIntersectList(&box.model, {0, 0, 0}, {20, 0, 0}, &list, nullptr), 2);
    EXPECT_NEAR(list[0].distance, 9, 1e-12);
    EXPECT_NEAR(list[1].distance, 11, 1e-12);
    EXPECT_TRUE(list.mSorted);
    ColLineSegIntersectResult first;
    first.distance = 1;
    list.push_back(first);
    EXPECT_FALSE(list.mSorted);
    list.sort();
    EXPECT_EQ(list[0].distance, 1);
    list.mList[0].distance = 50;
    list.sort();
    EXPECT_EQ(list[0].distance, 50) << "is sorted already";
    const MessageLog log;
    (void)list[3];
    EXPECT_EQ(MessageLog::fatalCount(), 1);
    EXPECT_EQ(MessageLog::take().size(), 1U);

    ColLineSegRegisterInteraction(kColBox, hitForever);
    ColLineSegIntersectResultList endless;
    EXPECT_EQ(ColLineSegIntersectList(&box.model, {0, 0, 0}, {1, 0, 0}, &endless, nullptr), 100);
    EXPECT_EQ(MessageLog::take().size(), 1U);
    ColBoxLineSegmentRegisterInteraction();
}

// Triangles around a common point cover a disc: whatever goes through their edges hits one of them.
TEST_F(LineSegmentTest, NothingPassesBetweenTriangles) {
    ColTriangleList* list = ColTriangleListCreate(16);
    std::vector<lsVec3> rim;
    for (int i = 0; i < 16; ++i) {
        const KitReal angle = 2 * std::numbers::pi * i / 16;
        rim.emplace_back(std::cos(angle), std::sin(angle), 0.3 * uniform(-1, 1));
    }
    for (std::size_t i = 0; i < 16; ++i)
        ColTriangleListAddTriangle(list, {}, rim[i], rim[(i + 1) % 16], static_cast<int>(i));
    ColTriangleListBuild(list);
    Body body(list, randomRotation());
    body.frame.t() = randomPoint(100);
    for (int round = 0; round < 20000; ++round) {
        const lsVec3 target = body.frame.transform(uniform(0, 0.99) * rim[std::size_t(round) % 16]);
        lsVec3 away = randomUnit();
        if (std::abs(away.dot(body.frame.axis(2))) < 0.5)
            away = body.frame.axis(2);
        ColLineSegIntersectResult hit;
        ASSERT_EQ(shoot(body, target + uniform(1, 50) * away, target - away, &hit), 1) << round;
        EXPECT_GE(hit.index, 0);
    }
    ColLineSegIntersectResult hit;
    EXPECT_EQ(shoot(body, body.frame.transform({2, 0, 1}), body.frame.transform({2, 0, -1}), &hit),
              0);
}

// The nearest hit in a space of all sorts of models is that of asking each of them.
TEST_F(LineSegmentTest, SpaceGivesTheNearestOfAllHits) {
    ColCompositeRegisterType();
    ColCompositeLineSegmentRegisterInteraction();
    CxSpace* space = ColSpaceAxisSortCreate(ColAllAxes, 8, 8, false);
    std::vector<std::unique_ptr<Body>> bodies;
    const auto add = [&](ColGeometry* geometry, const lsTransform& tm) {
        bodies.push_back(std::make_unique<Body>(geometry, tm));
        ColSpaceInsertModel(space, &bodies.back()->model);
    };
    for (int i = 0; i < 300; ++i) {
        lsTransform tm = randomRotation();
        tm.t() = randomPoint(15);
        add(kSolids[static_cast<std::size_t>(i) % std::size(kSolids)].make(), tm);
    }
    add(ColPlaneCreate(), placed(0, 0.1, {0, 0, -12}));
    add(ColBoxCreate(5e4, 5e4, 1), placed(1, 0.05, {0, 0, 13}));
    bodies[5]->model.mTemporaryDisabledStatus = kTemporaryDisabledShortTerm;
    ColSpaceParkModel(&bodies[6]->model, true);
    const auto check = [&](int rounds, const char* when) {
        int hits = 0;
        for (int round = 0; round < rounds; ++round) {
            const lsVec3 start = randomPoint(20), end = randomPoint(20);
            ColLineSegIntersectResult nearest, found;
            for (std::size_t i = 0; i < bodies.size(); ++i) {
                ColLineSegIntersectResult hit;
                if (i != 5 && i != 6 && shoot(*bodies[i], start, end, &hit) != 0 &&
                    (!nearest.model || std::abs(hit.distance) < std::abs(nearest.distance)))
                    nearest = hit;
            }
            ColSpaceLineSegIntersect(space, start, end, &found, nullptr);
            ASSERT_EQ(found.model, nearest.model) << when << " round " << round;
            if (!found.model)
                continue;
            ++hits;
            EXPECT_EQ(found.distance, nearest.distance);
            found.anyHit = true;
            EXPECT_EQ(ColSpaceLineSegIntersect(space, start, end, &found, nullptr), 1);
            const lsVec3 axis(static_cast<KitReal>(round % 3 == 0), round % 3 == 1, round % 3 == 2);
            ColLineSegIntersectResult along; // no slope at all along two axes
            ColSpaceLineSegIntersect(space, start, start + 40 * axis, &along, nullptr);
            for (const auto& body : bodies) {
                ColLineSegIntersectResult hit;
                if (body != bodies[5] && body != bodies[6] &&
                    shoot(*body, start, start + 40 * axis, &hit) != 0) {
                    ASSERT_NE(along.model, nullptr);
                    EXPECT_LE(std::abs(along.distance), std::abs(hit.distance));
                }
            }
        }
        EXPECT_GT(hits, rounds / 4);
    };
    check(300, "before the interval ends");
    ColSpaceEndChanges(space);
    check(300, "in the trees");
    for (std::size_t i = 0; i < bodies.size(); i += 2)
        ColSpaceFreezeModel(&bodies[i]->model);
    for (std::size_t i = 1; i < 300; i += 2)
        bodies[i]->frame.t() = randomPoint(15);
    ColSpaceBeginChanges(space);
    ColSpaceUpdateAll(space);
    check(300, "moved, before the interval ends");
    ColSpaceEndChanges(space);
    check(300, "moved");
    const MessageLog log;
    ColLineSegIntersectResult hit;
    EXPECT_EQ(ColSpaceLineSegIntersect(nullptr, {}, {1, 0, 0}, &hit, nullptr), 0);
    EXPECT_EQ(ColSpaceLineSegIntersect(space, {std::nan(""), 0, 0}, {}, &hit, nullptr), 0);
    EXPECT_EQ(MessageLog::take().size(), 2U);
    for (auto& body : bodies)
        ColSpaceRemoveModel(&body->model);
    ColSpaceDestroy(space);
}

} // namespace
