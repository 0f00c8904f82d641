#include "PairFixture.h"

#include <Col/ColTriangleList.h>
#include <Col/ColComposite.h>
#include <Col/ColCompositeGeometry.h>
#include <Col/ColPathIntersect.h>

namespace {

/// A body that flies; its bounds are those of the present.
struct Flyer : Body {
    Flyer(ColGeometry* g, const lsTransform& tm, const lsVec3& velocity, const lsVec3& turn = {},
          const lsVec3& pull = {})
        : Body(g, tm), v(velocity), w(turn), a(pull) {
        model.linearVelocity = v.v;
        model.angularVelocity = w.v;
        model.linearAcceleration = a.v;
        model.mFastMoving = true;
        lsVec3 low, high;
        ColModelGetAABB(&model, &low, &high);
    }
    lsVec3 v, w, a;
};

/// A pair on its path of `time`, after its hello.
struct Path {
    Path(Body& a, Body& b) {
        ColRequestInit(&request);
        pair.model1 = &a.model;
        pair.model2 = &b.model;
        ColHelloWithRequest(&pair, &request);
        result.contacts = contacts;
        result.contactMaxCount = 16;
    }
    ~Path() { ColGoodbye(&pair); }
    bool run(KitReal time) {
        ColPathIntersect(&pair, &result, time);
        return result.touch != 0;
    }
    bool touchesAt(KitReal time) {
        ColIntersectAt(&pair, &result, time);
        return result.touch != 0;
    }

    ColRequest request;
    ColModelPair pair;
    ColContact contacts[16];
    ColIntersectResult result;
};

class PathIntersectTest : public PairTest {};

constexpr KitReal kFrame = 1.0 / 60; ///< s

TEST_F(PathIntersectTest, SubStepsFollowSizeAndSpeed) {
    struct Case {
        const char* name;
        lsVec3 v, w, a;
        bool secondFast;
        KitReal time, factor;
        int steps;
    };
    // Half sizes 0.5, 1 and 2 m; the second body 1, 1, 1.
    const Case cases[] = {
        {"at rest", {}, {}, {}, false, 1, 0.1, 1},
        {"along x", {10, 0, 0}, {}, {}, false, 0.1, 0.1, 20},
        {"truncated", {10.4, 0, 0}, {}, {}, false, 0.1, 0.1, 20},
        {"the largest axis", {1, 10, 1}, {}, {}, false, 0.1, 0.1, 10},
        {"pulled", {0, 0, 0}, {}, {0, 0, 40}, false, 1, 0.1, 100},
        {"turned about z: e_y w over e_x", {}, {0, 0, 3}, {}, false, 1, 0.1, 60},
        {"no parts cancel", {}, {0, 2, 1}, {}, false, 1, 0.1, 100}, // x: (1 + 4) / 0.05
        {"half the smaller", {10, 0, 0}, {}, {}, true, 0.1, 0.1, 40},
        {"at most", {1e9, 0, 0}, {}, {}, false, 1, 0.1, 1000},
        {"not a number", {std::nan(""), 0, 0}, {}, {}, false, 1, 0.1, 1},
        {"no share", {1, 0, 0}, {}, {}, false, 1, 0, 1000},
        {"backwards", {1, 0, 0}, {}, {}, false, -1, 0.1, 1},
    };
    for (const Case& c : cases) {
        Flyer a(ColBoxCreate(1, 2, 4), {}, c.v, c.w, c.a), b(ColBoxCreate(2, 2, 2), {}, {});
        b.model.mFastMoving = c.secondFast;
        EXPECT_EQ(ColGetPathIntersectSubStep(&a.model, &b.model, c.time, c.factor), c.steps)
            << c.name;
    }
}

// The touch of a path is the first of many fine samples, to within a sub-step; the models stay.
TEST_F(PathIntersectTest, FirstTouchIsThatOfFineSteps) {
    constexpr int kFine = 4000;
    const auto solid = [](int i) -> ColGeometry* {
        switch (i) {
        case 0:
            return ColSphereCreate(0.1);
        case 1:
            return ColBoxCreate(0.4, 0.1, 0.2);
        case 2:
            return ColCapsuleCreate(0.05, 0.4);
        default:
            return ColCylinderCreate(0.1, 0.2);
        }
    };
    std::printf("seed 20261\n");
    int touches = 0, frees = 0;
    for (int round = 0; round < 120; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        lsTransform from = randomRotation(), to = randomRotation();
        from.t() = 2 * randomUnit();
        const lsVec3 aim = 0.4 * randomUnit();
        Flyer a(solid(round % 4), from, (aim - from.t()) / kFrame, uniform(0, 100) * randomUnit(),
                uniform(0, 3000) * randomUnit());
        Body wall(round % 5 == 4 ? ColPlaneCreate() : solid(round / 4 % 4), to);
        if (round % 5 == 4 && to.axis(2).dot(from.t()) < 0.5)
            continue;
        Path path(a, wall);
        const int steps = ColGetPathIntersectSubStep(path.pair.model1, path.pair.model2, 2 * kFrame,
                                                     path.request.maxPenetrationFactor);
        const bool found = path.run(2 * kFrame);
        const KitReal time = path.result.safeTime, step = 2 * kFrame / steps;
        const int contacts = path.result.contactCount;
        EXPECT_EQ(a.frame.t(), from.t());
        int first = 0;
        while (first < kFine && !path.touchesAt(2 * kFrame * first / kFine))
            ++first;
        const KitReal truth = 2 * kFrame * first / kFine;
        if (!found) {
            frees += first == kFine;
            // What was stepped over is a graze that ends within a sub-step.
            if (first < kFine) {
                EXPECT_FALSE(path.touchesAt(truth + step) && path.touchesAt(truth + 2 * step));
            }
            continue;
        }
        ++touches;
        EXPECT_GT(contacts, 0);
        EXPECT_TRUE(path.touchesAt(time));
        EXPECT_GE(time, truth - 2 * kFrame / kFine);
        EXPECT_LE(time, truth + 1.001 * step);
    }
    EXPECT_GT(touches, 30);
    EXPECT_GT(frees, 10);
}

TEST_F(PathIntersectTest, ThinAndFastTouchesOnItsWay) {
    const lsTransform at = placed(0, 0, {-4, 0, 0.3});
    Flyer bullet(ColSphereCreate(0.005), at, {500, 0, 0});
    Flyer dust(ColSphereCreate(0.0005), at, {500, 0, 0}); // would want 166,667 sub-steps
    Flyer plate(ColBoxCreate(0.01, 0.2, 0.2), at, {500, 0, 0});
    Body wall(ColBoxCreate(0.002, 4, 4));
    for (Flyer* flyer : {&bullet, &dust, &plate}) {
        Path path(*flyer, wall);
        ASSERT_TRUE(path.run(kFrame));
        EXPECT_NEAR(path.result.safeTime, 4 / 500.0, 0.012 / 500);
        ASSERT_GT(path.result.contactCount, 0);
        EXPECT_TRUE(path.contacts[0].model1 == path.pair.model1 &&
                    path.contacts[0].model2 == path.pair.model2);
        EXPECT_EQ(path.pair.request, &path.request);
    }
    // A rod through half a turn, past a pole at 80 degrees; it stands askew at first.
    Flyer rod(ColBoxCreate(2, 0.02, 0.02), placed(2, 0.7, {}), {},
              {0, 0, std::numbers::pi / kFrame});
    const KitReal angle = 0.7 + 80 * std::numbers::pi / 180;
    Body pole(ColCylinderCreate(0.01, 2),
              placed(0, 0, {0.95 * std::cos(angle), 0.95 * std::sin(angle), 0}));
    Path path(rod, pole);
    ASSERT_TRUE(path.run(kFrame));
    EXPECT_NEAR(path.result.safeTime, 80.0 / 180 * kFrame, 0.015 * kFrame);
}

// A ball over triangles may pass over what it can't reach: its answer is that of the whole path.
TEST_F(PathIntersectTest, BallOverTrianglesTouchesAsOnTheWholePath) {
    ColTriangleList* list = ColTriangleListCreate(400);
    for (int i = 0; i < 200; ++i) {
        const lsVec3 at(uniform(-4, 4), uniform(-4, 4), uniform(-0.3, 0.3));
        ColTriangleListAddTriangle(list, at, at + 0.8 * randomUnit(), at + 0.8 * randomUnit(), i);
    }
    ColTriangleListBuild(list);
    Body ground(list, placed(0, 0.4, {1, 2, 3}));
    gColSubSteppingPenetrationFactor = 0; // single sub-steps: a stride may pass over a graze
    int touches = 0, frees = 0;
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        lsTransform from;
        from.t() =
            ground.frame.transform(lsVec3(uniform(-4, 4), uniform(-4, 4), round % 2 ? 0.6 : 1.5));
        Flyer ball(ColSphereCreate(0.03), from, uniform(0, 300) * randomUnit(), {},
                   uniform(0, round % 3 * 1500) * randomUnit());
        Path quick(ball, ground), whole(ball, ground);
        const bool touch = quick.run(kFrame);
        EXPECT_EQ(touch, ColGenericPathIntersect(&whole.pair, &whole.result, kFrame) != 0);
        ++(touch ? touches : frees);
        if (!touch)
            continue;
        EXPECT_NEAR(quick.result.safeTime, whole.result.safeTime, 1e-12);
        EXPECT_EQ(quick.result.contactCount, whole.result.contactCount);
        for (int i = 0; i < quick.result.contactCount; ++i)
            EXPECT_EQ(quick.contacts[i].separation, whole.contacts[i].separation);
    }
    gColSubSteppingPenetrationFactor = 0.5;
    EXPECT_GT(touches, 50);
    EXPECT_GT(frees, 50);
}

// A fast ball against one thin child of a composite that moves itself; contacts name the child.
TEST_F(PathIntersectTest, CompositesStayWhereTheyAre) {
    ColCompositeRegisterType();
    ColCompositeGenericRegisterInteractions();
    Body far(ColBoxCreate(0.01, 1, 1)), near(ColBoxCreate(0.01, 1, 1));
    ColCompositeGeometry* composite = ColCompositeGeometryCreate();
    const lsTransform left = placed(0, 0, {0, 0, 0}), right = placed(0, 0, {1, 0, 0});
    ColCompositeGeometryAddElement(composite, &near.model, &left);
    ColCompositeGeometryAddElement(composite, &far.model, &right);
    ColCompositeGeometryBuild(composite);
    Flyer door(composite, lsTransform(), {2, 0, 0}),
        ball(ColSphereCreate(0.01), placed(0, 0, {-3, 0, 0}), {400, 0, 0});
    door.model.mFastMoving = false;
    ColCompositeGeometryUpdateTransform(composite, door.frame);
    const KitReal before = near.model.mBounds[0];
    {
        Path path(ball, door);
        ASSERT_TRUE(path.run(kFrame));
        EXPECT_NEAR(path.result.safeTime, 3.0 / 398, 0.03 / 398);
        ASSERT_GT(path.result.contactCount, 0);
        const ColContact& c = path.contacts[0];
        EXPECT_TRUE((c.model1 == &ball.model && c.model2 == &near.model) ||
                    (c.model2 == &ball.model && c.model1 == &near.model));
        EXPECT_EQ(near.model.mBounds[0], before);
    }
    ColCompositeGeometryRemoveElement(composite, &near.model);
    ColCompositeGeometryRemoveElement(composite, &far.model);
}

} // namespace
