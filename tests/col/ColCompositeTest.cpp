#include "BallGeometry.h"
#include "MessageLog.h"

#include <Col/Col.h>
#include <Col/ColCompositeGeometry.h>
#include <Col/ColCompositeModel.h>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>

namespace {
// Balls stand for solids, and for the holes of a type of their own.
constexpr int kSolid = kColSphere;
constexpr int kHole = kColSphereHole;
constexpr KitReal kRounding = 1e-12;

/// A ball against the inside of a round hole: one contact on the hole's wall.
int intersectHole(ColModelPair* pair, ColIntersectResult* result) {
    const KitReal hole = ballOf(pair->model1->mGeometry).radius;
    const KitReal ball = ballOf(pair->model2->mGeometry).radius;
    lsVec3 out = pair->model2->mGlobalTM->t() - pair->model1->mGlobalTM->t();
    const KitReal distance = out.normalize();
    const KitReal separation = hole - distance - ball;
    if (separation > 0.01 || distance >= hole || result->contactMaxCount == 0)
        return 0;
    ColContact c;
    c.normal = out; // from the ball towards the wall
    c.separation = separation;
    c.surfaceIndex = kColSurfaceModel1;
    c.position = pair->model1->mGlobalTM->t() + out * hole;
    result->contacts[result->contactCount++] = c;
    result->normal = c.normal;
    return 1;
}

/// A composite that owns its children and stands at a transform.
struct Composite {
    std::vector<std::unique_ptr<BallModel>> children;
    std::vector<std::unique_ptr<lsTransform>> places;
    lsTransform transform;
    ColModel* model = ColCompositeModelCreate();

    Composite() { ColModelSetTransformPtr(model, &transform); }
    ~Composite() { ColModelDestroy(model); }
    Composite(const Composite&) = delete;
    Composite& operator=(const Composite&) = delete;

    ColModel* add(int type, KitReal radius, const lsVec3& at) {
        children.push_back(std::make_unique<BallModel>(type, radius, lsVec3()));
        places.push_back(std::make_unique<lsTransform>());
        places.back()->t() = at;
        ColModel* child = children.back()->model;
        const auto add =
            type == kHole ? ColCompositeModelAddElementHole : ColCompositeModelAddElement;
        EXPECT_EQ(add(model, child, places.back().get()), 1);
        ColCompositeModelBuild(model);
        return child;
    }
    ColCompositeGeometry* geometry() const {
        return static_cast<ColCompositeGeometry*>(model->mGeometry);
    }
    void update() const {
        lsVec3 low, high;
        ColModelGetAABB(model, &low, &high);
    }
};

struct ColCompositeTest : testing::Test {
    ColContact contacts[64];
    ColIntersectResult result;
    ColModelPair pair;
    ColRequest request;

    ColCompositeTest() {
        ColInit(20, 4);
        ColGeometryRegisterType(kSolid, "Solid", ballFunctions());
        ColGeometryRegisterType(kHole, "Hole", ballFunctions());
        ColCompositeRegisterType();
        ColCompositeGenericRegisterInteractions();
        ColInteractionTableSetElement(kSolid, kSolid, {.intersectFn = intersectBalls}, nullptr);
        ColInteractionTableSetElement(kHole, kSolid, {.intersectFn = intersectHole}, nullptr);
        ColSetContactDegeneracyThreshold(0.001, 0.99F);
        result.contacts = contacts;
        result.contactMaxCount = 64;
    }
    ~ColCompositeTest() override { ColTerm(); }

    int intersect(ColModel* a, ColModel* b) {
        ColModelPairReset(&pair, a, b);
        ColHelloWithRequest(&pair, &request);
        ColIntersect(&pair, &result);
        ColGoodbye(&pair);
        return result.touch;
    }
};

TEST_F(ColCompositeTest, ContactsAreThoseOfTheChildren) {
    Composite dumbbell;
    ColModel* left = dumbbell.add(kSolid, 1, {-2, 0, 0});
    ColModel* right = dumbbell.add(kSolid, 1, {2, 0, 0});
    KitMatrix4TMSetRotationFromEulerAngles(dumbbell.transform.matrix(), 0, 0, 1.5707963267948966);
    dumbbell.transform.t() = lsVec3(0, 0, 10);
    dumbbell.update();
    const lsVec3 leftEnd = left->mGlobalTM->t();
    EXPECT_NEAR(std::abs(leftEnd[1]), 2, kRounding);

    BallModel ball(kSolid, 1, leftEnd + lsVec3(0, 0, 1.9));
    for (const bool ballFirst : {false, true}) {
        ASSERT_EQ(ballFirst ? intersect(ball.model, dumbbell.model)
                            : intersect(dumbbell.model, ball.model),
                  1);
        ASSERT_EQ(result.contactCount, 1);
        EXPECT_EQ(pair.model1, dumbbell.model) << "the composite leads";
        EXPECT_EQ(contacts[0].model1, left);
        EXPECT_EQ(contacts[0].model2, ball.model);
        EXPECT_NEAR(contacts[0].separation, -0.1, kRounding);
        EXPECT_NEAR(contacts[0].normal[2], -1, kRounding) << "from the ball towards the child";
        EXPECT_NEAR(result.normal[2], -1, kRounding);
    }
    ball.transform.t() = dumbbell.transform.t() + lsVec3(0, 0, 1);
    EXPECT_EQ(intersect(dumbbell.model, ball.model), 0) << "between the weights";

    ball.transform.t() = right->mGlobalTM->t();
    EXPECT_EQ(intersect(dumbbell.model, ball.model), 1);
    ColModelSetTemporaryDisabledStatus(right, kTemporaryDisabledShortTerm);
    EXPECT_EQ(intersect(dumbbell.model, ball.model), 0) << "a disabled child is not there";
    ColModelSetTemporaryDisabledStatus(right, kNotTemporaryDisabled);
    ColModelSetTemporaryDisabledStatus(ball.model, kTemporaryDisabledLongTerm);
    EXPECT_EQ(intersect(dumbbell.model, ball.model), 0);
    ColModelSetTemporaryDisabledStatus(ball.model, kNotTemporaryDisabled);
    request.contactMaxCount = 0;
    EXPECT_EQ(intersect(dumbbell.model, ball.model), 1);
    EXPECT_EQ(result.contactCount, 0);
}

// Nothing shared moves: the children keep their transforms whatever time is asked for.
TEST_F(ColCompositeTest, ChildrenAreIntersectedWhereTheCompositeWillBe) {
    Composite outer;
    Composite inner;
    ColModel* tip = inner.add(kSolid, 1, {3, 0, 0});
    lsTransform place;
    place.t() = lsVec3(1, 0, 0);
    ASSERT_EQ(ColCompositeModelAddElement(outer.model, inner.model, &place), 1);
    ColCompositeModelBuild(outer.model);
    outer.update();
    EXPECT_EQ(tip->mGlobalTM->t(), lsVec3(4, 0, 0));
    EXPECT_EQ(tip->mBounds[1], 5);
    EXPECT_EQ(outer.model->mBounds[1], 5);
    EXPECT_EQ(outer.geometry()->mCentre, lsVec3(4, 0, 0));

    const KitVector3 v = {0, 2, 0}, none = {0, 0, 0};
    ColModelSetVelocityPtr(outer.model, v, none, nullptr);
    BallModel ball(kSolid, 1, {4, 5.5, 0});
    ColModelPairReset(&pair, outer.model, ball.model);
    ColHelloWithRequest(&pair, &request);
    EXPECT_EQ(ColIntersect(&pair, &result), 1);
    EXPECT_EQ(result.touch, 0);
    EXPECT_EQ(ColIntersectAt(&pair, &result, 2), 1);
    ASSERT_EQ(result.contactCount, 1);
    EXPECT_NEAR(contacts[0].separation, -0.5, kRounding);
    EXPECT_EQ(contacts[0].model1, tip);
    EXPECT_EQ(tip->mGlobalTM->t(), lsVec3(4, 0, 0));
    EXPECT_EQ(tip->mBounds[1], 5);

    // Moved without an update of the children: still where the composite is.
    outer.transform.t() = lsVec3(0, 5, 0);
    EXPECT_EQ(ColIntersect(&pair, &result), 1);
    EXPECT_EQ(result.contactCount, 1);
    EXPECT_EQ(ColCompositeModelRemoveElement(outer.model, inner.model), 1);
    EXPECT_EQ(ColModelGetParent(inner.model), nullptr);
    EXPECT_EQ(inner.model->linearVelocity, ColDefault0Velocity);
}

TEST_F(ColCompositeTest, HolesTakeContactsAwayAndAddTheirWalls) {
    Composite shell;
    shell.add(kSolid, 10, {0, 0, 0});
    ColModel* cavity = shell.add(kHole, 5, {0, 0, 0});
    shell.update();
    BallModel ball(kSolid, 1, {3, 0, 0});
    EXPECT_EQ(intersect(shell.model, ball.model), 0) << "free inside";
    ball.transform.t() = lsVec3(4.2, 0, 0);
    ASSERT_EQ(intersect(shell.model, ball.model), 1);
    for (int i = 0; i < result.contactCount; ++i)
        if (contacts[i].model1 == cavity) {
            EXPECT_NEAR(contacts[i].separation, -0.2, kRounding);
            EXPECT_NEAR(contacts[i].normal[0], 1, kRounding) << "towards the wall";
        } else {
            EXPECT_GT(contacts[i].position.norm(), 5) << "a contact of the solid is outside";
        }
    ball.transform.t() = lsVec3(3, 0, 0);
    ColModelSetTemporaryDisabledStatus(cavity, kTemporaryDisabledLongTerm);
    EXPECT_EQ(intersect(shell.model, ball.model), 1) << "no hole, all solid";
    ColModelSetTemporaryDisabledStatus(cavity, kNotTemporaryDisabled);

    // A second hole around the wall contact opens the wall there.
    ball.transform.t() = lsVec3(4.2, 0, 0);
    shell.add(kHole, 2.5, {6, 0, 0});
    shell.update();
    intersect(shell.model, ball.model);
    for (int i = 0; i < result.contactCount; ++i)
        EXPECT_NE(contacts[i].model1, cavity);
    EXPECT_TRUE(ColCompositeGeometryGetPointInHole(shell.geometry(), shell.transform, {8, 0, 0}));
    EXPECT_FALSE(ColCompositeGeometryGetPointInHole(shell.geometry(), shell.transform, {9, 0, 0}));
    EXPECT_TRUE(ColGeometryGetPointInVolume(shell.geometry(), &shell.transform, {9, 0, 0}));
}

// Between a composite with holes and one without, the latter is walked; the answer is the same.
TEST_F(ColCompositeTest, TwoCompositesKeepTheirOrder) {
    Composite shell, bar;
    ColModel* solid = shell.add(kSolid, 10, {0, 0, 0});
    shell.add(kHole, 5, {0, 0, 0});
    ColModel* end = bar.add(kSolid, 1, {0, 0, 0});
    bar.add(kSolid, 1, {3, 0, 0});
    bar.transform.t() = lsVec3(10.9, 0, 0);
    shell.update();
    bar.update();
    for (const bool shellFirst : {true, false}) {
        ColModel* first = shellFirst ? shell.model : bar.model;
        ASSERT_EQ(intersect(first, shellFirst ? bar.model : shell.model), 1);
        EXPECT_EQ(pair.model1, first) << "no order by size";
        ASSERT_EQ(result.contactCount, 1);
        EXPECT_EQ(contacts[0].model1, shellFirst ? solid : end);
        EXPECT_EQ(contacts[0].model2, shellFirst ? end : solid);
        EXPECT_NEAR(contacts[0].normal[0], shellFirst ? -1 : 1, kRounding);
        EXPECT_NEAR(result.normal[0], shellFirst ? -1 : 1, kRounding);
        EXPECT_NEAR(contacts[0].separation, -0.1, kRounding);
    }
    bar.transform.t() = lsVec3(-1, 0, 0); // both weights in the cavity
    bar.update();
    EXPECT_EQ(intersect(shell.model, bar.model), 0);
}

TEST_F(ColCompositeTest, BuffersTooSmallAreReportedOrGrow) {
    Composite cluster;
    for (int i = 0; i < 200; ++i)
        cluster.add(kSolid, 0.5, {std::cos(0.5 * i), std::sin(0.5 * i), 0.05 * i});
    cluster.update();
    BallModel ball(kSolid, 6, {0, 0, 0});
    request.contactMaxCount = 60;
    request.groupMaxCount = 1;
    EXPECT_EQ(intersect(cluster.model, ball.model), 1);
    EXPECT_EQ(result.contactCount, 60);

    KitPool pool;
    KitPoolInit(&pool, 2, 16 * static_cast<int>(sizeof(ColContact)), 0);
    result.contactPool = &pool;
    EXPECT_EQ(intersect(cluster.model, ball.model), 1);
    EXPECT_EQ(pool.needResize, 1);
    EXPECT_EQ(KitPoolGetUsed(&pool), 0);
    request.contactMaxCount = 4; // few enough to reduce the buffer on the way
    pool.needResize = 0;
    EXPECT_EQ(intersect(cluster.model, ball.model), 1);
    EXPECT_EQ(pool.needResize, 0);
    EXPECT_EQ(result.contactCount, 4);
    KitPoolTerm(&pool);
}

TEST_F(ColCompositeTest, SphereAndMassFollowTheChildren) {
    std::printf("seed 5\n");
    std::mt19937 random(5);
    std::uniform_real_distribution<KitReal> uniform(-3, 3);
    Composite c;
    lsVec3 moment;
    KitReal mass = 0;
    for (int i = 0; i < 6; ++i) {
        const lsVec3 at(uniform(random), uniform(random), uniform(random));
        const KitReal radius = 0.5 + 0.1 * i;
        ColModel* child = c.add(kSolid, radius, at);
        ColModelSetDensity(child, i + 1);
        ColMassProperties p;
        ASSERT_TRUE(ColModelGetMassProperties(child, &p));
        mass += p.mass;
        moment.addMultiple(p.mass, at);
        for (const auto& place : c.places)
            EXPECT_LE(
                (place->t() - c.geometry()->mCentre).norm() +
                    c.children[static_cast<std::size_t>(&place - c.places.data())]->ball.radius,
                c.geometry()->mRadius + kRounding);
    }
    ColMassProperties p;
    ASSERT_TRUE(ColModelGetMassProperties(c.model, &p));
    EXPECT_NEAR(p.mass, mass, kRounding * mass);
    EXPECT_TRUE(p.centre.checkAlmostEqual(moment / mass, kRounding));
    // About any axis u the moment of inertia is that of the balls, each about the common centre.
    const lsVec3 u(0.6, 0, 0.8);
    KitReal expected = 0, actual = 0;
    for (std::size_t i = 0; i < c.children.size(); ++i) {
        ColMassProperties part;
        ASSERT_TRUE(ColModelGetMassProperties(c.children[i]->model, &part));
        expected +=
            part.inertia[0][0] + part.mass * (c.places[i]->t() - p.centre).cross(u).square_norm();
    }
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            actual += u[i] * p.inertia[i][j] * u[j];
    EXPECT_NEAR(actual, expected, 1e-10 * expected);

    lsTransform com;
    KitMatrix3 unit;
    KitReal volume = 0, listMass = 0;
    ASSERT_TRUE(
        ColGetMassPropertiesAndMassFromModelList(&c.model, 1, &com, unit, &volume, &listMass));
    EXPECT_NEAR(unit[0][1] * listMass, p.inertia[0][1], 1e-10 * expected);
    EXPECT_LT(volume, listMass);
    EXPECT_FALSE(
        ColGetMassPropertiesAndMassFromModelList(nullptr, 0, &com, unit, &volume, &listMass));
    EXPECT_EQ(volume, 0);

    lsVec3 far;
    c.transform.t() = lsVec3(1, 1, 1);
    ColGeometryMaximumPoint(c.geometry(), &c.transform, u, &far);
    c.update();
    for (const auto& child : c.children)
        EXPECT_GE(far.dot(u), child->transform.t().dot(u) + child->ball.radius - kRounding);
}

TEST_F(ColCompositeTest, DistanceAndRayTakeTheNearestChild) {
    ColInteractionTableRegisterApproximateDistanceFn(
        kSolid, kSolid, [](ColModelPair* p, const ColDistanceRequest*, ColDistanceResult* r) {
            r->point1 = p->model1->mGlobalTM->t();
            r->point2 = p->model2->mGlobalTM->t();
            r->distanceLB = r->distanceUB = (r->point1 - r->point2).norm();
            return 1;
        });
    ColCompositeGenericRegisterDistance();
    Composite c;
    c.add(kSolid, 1, {0, 0, 0});
    ColModel* near = c.add(kSolid, 1, {0, 7, 0});
    c.update();
    BallModel ball(kSolid, 2, {0, 10, 0}); // larger and smaller than a child in turn
    for (const KitReal radius : {2.0, 0.5})
        for (const bool ballFirst : {true, false}) {
            ball.ball.radius = radius;
            ColModelPairReset(&pair, ballFirst ? ball.model : c.model,
                              ballFirst ? c.model : ball.model);
            ColDistanceResult d;
            EXPECT_EQ(ColDistance(&pair, &d), 1);
            EXPECT_EQ(d.distanceLB, 3);
            EXPECT_EQ((ballFirst ? d.point2 : d.point1)[1], 7);
            EXPECT_EQ((ballFirst ? d.point1 : d.point2)[1], 10);
        }

    ColLineSegRegisterInteraction(kSolid,
                                  [](ColModel* m, const lsVec3& start, const lsVec3&,
                                     ColLineSegIntersectResult* r, Hy::HyLineSegIntersectSub*) {
                                      r->distance = (m->mGlobalTM->t() - start).norm();
                                      return 1;
                                  });
    ColCompositeLineSegmentRegisterInteraction();
    ColLineSegIntersectResult hit;
    const auto shoot = ColLineSegGetIntersectFnPtr(kColComposite);
    EXPECT_EQ(shoot(c.model, {0, 20, 0}, {0, -20, 0}, &hit, nullptr), 1);
    EXPECT_EQ(hit.subModel, near);
    EXPECT_EQ(hit.distance, 13);
    ColModelSetTemporaryDisabledStatus(near, kTemporaryDisabledShortTerm);
    EXPECT_EQ(shoot(c.model, {0, 20, 0}, {0, -20, 0}, &hit, nullptr), 1);
    EXPECT_EQ(hit.distance, 20);
}

TEST_F(ColCompositeTest, BadChildrenAreRefused) {
    Composite a, b;
    BallModel ball(kSolid, 1, {});
    const MessageLog log;
    EXPECT_EQ(ColCompositeModelAddElement(a.model, nullptr, nullptr), 0);
    EXPECT_EQ(ColCompositeModelAddElement(ball.model, a.model, nullptr), 0);
    EXPECT_EQ(ColCompositeModelAddElement(a.model, a.model, nullptr), 0);
    EXPECT_EQ(ColCompositeModelAddElement(a.model, b.model, nullptr), 1);
    EXPECT_EQ(ColCompositeModelAddElement(b.model, a.model, nullptr), 0);
    EXPECT_EQ(ColCompositeModelAddElement(b.model, ball.model, nullptr), 1);
    EXPECT_EQ(ColCompositeModelAddElement(a.model, ball.model, nullptr), 0);
    EXPECT_EQ(MessageLog::take().size(), 5U);
    EXPECT_EQ(ColCompositeModelRemoveElementHole(b.model, ball.model), 0) << "a solid";
    EXPECT_EQ(ColCompositeModelGetElement(b.model, 1), nullptr);

    // A child that dies leaves its composite, a composite that dies its children.
    ColModel* dying = ColModelCreate(&ball.ball);
    lsTransform transform;
    ColModelSetTransformPtr(dying, &transform);
    EXPECT_EQ(ColCompositeModelAddElementHole(b.model, dying, nullptr), 1);
    ColModelDestroy(dying);
    EXPECT_EQ(ColCompositeModelGetElementHoleCount(b.model), 0);
    ColModel* third = ColCompositeModelCreate();
    ColModelSetTransformPtr(third, &transform);
    EXPECT_EQ(ColCompositeModelRemoveElement(b.model, ball.model), 1);
    EXPECT_EQ(ColCompositeModelAddElement(third, ball.model, nullptr), 1);
    ColModelDestroy(third);
    EXPECT_EQ(ColModelGetParent(ball.model), nullptr);
}
} // namespace
