#include "BallGeometry.h"
#include "MessageLog.h"

#include <Col/Col.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {
constexpr int kSmallType = 3; ///< any two numbers of the table
constexpr int kLargeType = 4;
constexpr KitReal kRounding = 1e-12;

struct ColFrameTest : testing::Test {
    ColFrameTest() {
        ColInit(20, 2);
        ColGeometryRegisterType(kSmallType, "Small", ballFunctions());
        ColGeometryRegisterType(kLargeType, "Large", ballFunctions());
        const ColInteractions balls = {.intersectFn = intersectBalls};
        ColInteractionTableSetElement(kSmallType, kLargeType, balls, nullptr);
        ColInteractionTableSetElement(kSmallType, kSmallType, balls, nullptr);
        for (int i = 0; gColCoreErrorList[i].m_errNum != 42; ++i)
            gColCoreErrorList[i].m_errorCount = 5;
    }
    ~ColFrameTest() override { ColTerm(); }
};

std::vector<int> theActions;

TEST_F(ColFrameTest, ActionsRunNewestFirstWhileTypesLive) {
    theActions.clear();
    ColRegisterTermAction([] { theActions.push_back(1); });
    ColRegisterTermAction([] {
        theActions.push_back(ColGeometryTypeIdIsValid(kSmallType) ? 2 : -2);
        ColTerm(); // already under way
    });
    ColFrameRef();
    EXPECT_EQ(ColFrameGetRef(), 2);
    ColFrameUnref();
    EXPECT_TRUE(theActions.empty());
    ColFrameUnref();
    EXPECT_EQ(theActions, (std::vector<int>{2, 1}));
    EXPECT_EQ(ColFrameGetRef(), 0);
    ColTerm();
}

TEST_F(ColFrameTest, TypesByNumber) {
    EXPECT_EQ(ColGeometryGetRegisteredTypeMaxId(), 36);
    EXPECT_EQ(ColGeometryGetRegisteredTypeCount(), kLargeType + 1);
    EXPECT_STREQ(ColGeometryGetTypeNameFromId(kSmallType), "Small");
    EXPECT_STREQ(ColGeometryGetTypeNameFromId(7), "UnknownGeometryType");
    EXPECT_STREQ(ColGeometryGetTypeNameFromId(-1), "UnknownGeometryType");
    const MessageLog log;
    EXPECT_EQ(ColGeometryRegisterType(36, "TooHigh", ballFunctions()), -1);
    EXPECT_EQ(
        MessageLog::take()[0],
        "Col: Failed to register new geometry type. Ensure sufficient number of geometries in "
        "ColInit(). in ColGeometryRegisterType.\n");
    ColInteractionTableSetElement(kSmallType, 9, {}, nullptr);
    EXPECT_EQ(MessageLog::take().size(), 1U) << "not registered";
    ColInteractionTableSetElement(kSmallType, 99, {}, nullptr);
    EXPECT_EQ(MessageLog::take().size(), 1U) << "out of range";
    EXPECT_EQ(ColInteractionTableGetElementPtr(kSmallType, 99), nullptr);
    EXPECT_EQ(ColInteractionTableGetElementPtr(kSmallType, kLargeType)->swap, 0);
    EXPECT_EQ(ColInteractionTableGetElementPtr(kLargeType, kSmallType)->swap, 1);
    EXPECT_EQ(ColInteractionTableGetElementPtr(kSmallType, kSmallType)->swap, 0);
}

TEST_F(ColFrameTest, ErrorsCountDown) {
    const MessageLog log;
    for (int i = 0; i < 7; ++i)
        ColError(gColCoreErrorList, 31, "here.");
    std::vector<std::string> texts = MessageLog::take();
    ASSERT_EQ(texts.size(), 5U);
    EXPECT_EQ(texts[3], "Col: Invalid Request here.\n");
    EXPECT_EQ(texts[4], "Col: Invalid Request here.\n[This message will not be repeated again!]\n");
    ColError(gColCoreErrorList, 30, std::string(3000, 'x').c_str());
    texts = MessageLog::take();
    EXPECT_EQ(texts[0].size(), 511U);
    EXPECT_EQ(texts[0].back(), '\n');
    ColMistake(8, "");
    EXPECT_EQ(MessageLog::fatalCount(), 0) << "a caller's mistake ends nothing";
    ColError(gColCoreErrorList, 8, "");
    EXPECT_EQ(MessageLog::fatalCount(), 1);
    ColError(gColCoreErrorList, 1000, " of nothing");
    EXPECT_EQ(MessageLog::take().back(), "Col:  of nothing\n");
}

TEST_F(ColFrameTest, HelloOrdersTheModels) {
    BallModel small(kSmallType, 1, {}), smaller(kSmallType, 0.5, {}), twin(kSmallType, 1, {});
    BallModel large(kLargeType, 0.1, {});
    struct Case {
        const char* name;
        ColModel *first, *second;
    };
    const Case cases[] = {
        {"by the table", small.model, large.model},
        {"one type: the smaller first", smaller.model, small.model},
        {"equal: the older first", small.model, twin.model},
    };
    for (const Case& c : cases)
        for (const bool reversed : {false, true}) {
            ColModelPair pair;
            ColModelPairReset(&pair, reversed ? c.second : c.first, reversed ? c.first : c.second);
            ColHello(&pair);
            EXPECT_EQ(pair.model1, c.first) << c.name;
            EXPECT_EQ(pair.model2, c.second) << c.name;
            EXPECT_EQ(pair.request, ColGetDefaultRequestPtr());
        }
}

TEST_F(ColFrameTest, IntersectNamesModelsAndRefusesBrokenPairs) {
    BallModel a(kSmallType, 1, {}), b(kSmallType, 1, {0, 0, 1.9}), silent(kLargeType, 1, {});
    ColModelPair pair;
    ColModelPairReset(&pair, a.model, b.model);
    ColContact contacts[4];
    ColIntersectResult result;
    result.contacts = contacts;
    result.contactMaxCount = 4;
    ColHello(&pair);
    EXPECT_EQ(ColIntersect(&pair, &result), 1);
    EXPECT_EQ(result.touch, 1);
    ASSERT_EQ(result.contactCount, 1);
    EXPECT_EQ(contacts[0].model1, a.model);
    EXPECT_NEAR(contacts[0].separation, -0.1, kRounding);

    BallModel silentToo(kLargeType, 2, {});
    ColModelPairReset(&pair, silent.model, silentToo.model);
    ColHello(&pair);
    result.contactCount = result.touch = result.groupCount = 3;
    EXPECT_EQ(ColIntersect(&pair, &result), 0);
    EXPECT_EQ(result.contactCount + result.touch + result.groupCount, 0);
    EXPECT_EQ(ColPathIntersect(&pair, &result, 1), 0);

    const MessageLog log;
    EXPECT_EQ(ColIntersect(nullptr, &result), 0);
    EXPECT_EQ(ColIntersect(&pair, nullptr), 0);
    ColModelPairReset(&pair, a.model, nullptr);
    ColHello(&pair);
    EXPECT_EQ(ColIntersect(&pair, &result), 0);
    EXPECT_FALSE(ColNearby(&pair));
    ColModel bare = *b.model;
    bare.mGlobalTM = nullptr;
    ColModelPairReset(&pair, a.model, &bare);
    ColHello(&pair);
    EXPECT_EQ(ColIntersect(&pair, &result), 0);
    EXPECT_EQ(MessageLog::take().size(), 6U);
    EXPECT_EQ(MessageLog::fatalCount(), 0);
}

// Two balls that meet after a second; the models stay where they are.
TEST_F(ColFrameTest, IntersectAtMovesAboutTheCentreOfMass) {
    BallModel a(kSmallType, 1, {}), b(kSmallType, 1, {5, 0, 0});
    const KitVector3 left = {-3.5, 0, 0}, turn = {0, 0, 3.14159265358979323846};
    ColModelSetVelocityPtr(b.model, left, turn, nullptr);
    // Its centre of mass lies half a metre ahead: after half a turn the ball is a metre further.
    ColModelSetCOMRelativePosition(b.model, {-0.5, 0, 0});
    ColModelPair pair;
    ColModelPairReset(&pair, a.model, b.model);
    ColContact contacts[4];
    ColIntersectResult result;
    result.contacts = contacts;
    result.contactMaxCount = 4;
    ColHello(&pair);
    EXPECT_EQ(ColIntersectAt(&pair, &result, 0.1), 1);
    EXPECT_EQ(result.touch, 0);
    EXPECT_EQ(ColIntersectAt(&pair, &result, 1), 1);
    ASSERT_EQ(result.contactCount, 1);
    EXPECT_NEAR(contacts[0].separation, (5 - 3.5 - 1) - 2, kRounding);
    EXPECT_EQ(contacts[0].model2, b.model);
    EXPECT_EQ(result.safeTime, 1);
    EXPECT_EQ(result.pair, &pair);
    EXPECT_EQ(b.transform.t(), lsVec3(5, 0, 0));
    EXPECT_FALSE(ColNearby(&pair));
    b.transform.t() = lsVec3(2, 2, 0);
    EXPECT_TRUE(ColNearby(&pair)) << "touching boxes count";
}

TEST_F(ColFrameTest, PathBoxHoldsTheWholeArc) {
    std::printf("seed 11\n");
    std::mt19937 random(11);
    std::uniform_real_distribution<KitReal> uniform(-4, 4);
    for (int round = 0; round < 200; ++round) {
        BallModel m(kSmallType, 0.3, {uniform(random), uniform(random), uniform(random)});
        KitVector3 v, w, a;
        for (int i = 0; i < 3; ++i) {
            v[i] = uniform(random);
            w[i] = uniform(random);
            a[i] = uniform(random);
        }
        ColModelSetVelocityPtr(m.model, v, w, a);
        ColModelSetCOMRelativePosition(m.model, {uniform(random), uniform(random), 0});
        lsVec3 low, high, lowSlow, highSlow;
        ColModelGetPathAABB(m.model, &lowSlow, &highSlow, 1);
        EXPECT_EQ(highSlow, m.transform.t() + lsVec3(0.3, 0.3, 0.3)) << "not fast";
        ColModelSetFastMoving(m.model, true);
        ColModelGetPathAABB(m.model, &low, &high, 1);
        EXPECT_EQ(m.model->mBounds[1], highSlow[0]) << "the box of the present";
        for (KitReal t = 0; t <= 1; t += 0.05) {
            lsTransform at;
            ASSERT_TRUE(ColModelExtrapolateTransform(m.model, t, &at));
            for (int i = 0; i < 3; ++i) {
                EXPECT_LE(low[i], at.t()[i] - 0.3 + 1e-9);
                EXPECT_GE(high[i], at.t()[i] + 0.3 - 1e-9);
            }
        }
    }
}

TEST_F(ColFrameTest, MoveToSetsTheVelocitiesThatLeadThere) {
    BallModel m(kSmallType, 1, {1, 2, 3});
    KitVector3 v = {7, 7, 7}, w = {7, 7, 7};
    ColModelSetVelocityPtr(m.model, v, w, nullptr);
    lsTransform goal;
    KitMatrix4TMSetRotationFromEulerAngles(goal.matrix(), 0.001, -0.002, 0.003);
    goal.t() = lsVec3(2, 2, 2);
    ColModelMoveTo(m.model, goal, 1e-7);
    EXPECT_EQ(v[0], 7) << "too short a time";
    m.transform = lsTransform();
    ColModelMoveTo(m.model, goal, 0.5);
    EXPECT_EQ(m.transform.t(), goal.t());
    EXPECT_EQ(v[0], 4);
    BallModel replay(kSmallType, 1, {});
    ColModelSetVelocityPtr(replay.model, v, w, nullptr);
    lsTransform there;
    ColModelExtrapolateTransform(replay.model, 0.5, &there);
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(there.axis(i).checkAlmostEqual(goal.axis(i), 1e-8));
    ColModelSetVelocityPtr(m.model, ColDefault0Velocity, ColDefault0Velocity, nullptr);
    ColModelMoveTo(m.model, lsTransform(), 1);
    EXPECT_EQ(ColDefault0Velocity[0], 0);
}

TEST_F(ColFrameTest, RelativeTransformsCompound) {
    BallModel m(kSmallType, 2, {});
    lsTransform reference, relative;
    reference.t() = lsVec3(10, 0, 0);
    KitMatrix4TMSetRotationFromEulerAngles(reference.matrix(), 0, 0, 1);
    relative.t() = lsVec3(0, 3, 0);
    ColModelSetRelativeTransformPtr(m.model, &relative, &reference);
    lsVec3 centre, low, high;
    KitReal radius = 0;
    ColModelGetAABB(m.model, &low, &high);
    ColModelGetBSphere(m.model, &centre, &radius);
    EXPECT_TRUE(centre.checkAlmostEqual(reference.transform(relative.t()), kRounding));
    EXPECT_EQ(radius, 2);
    ColModelSetDensity(m.model, 3);
    ColMassProperties p;
    ASSERT_TRUE(ColModelGetMassProperties(m.model, &p));
    EXPECT_TRUE(p.centre == relative.t());
    EXPECT_NEAR(p.inertia[1][1], 0.4 * p.mass * 4, kRounding * p.mass);
    ColModelSetCOMRelativePosition(m.model, {1, 1, 1});
    EXPECT_TRUE(m.model->mCOMOffset.checkAlmostEqual({-1, 2, -1}, kRounding));

    const MessageLog log;
    ColModelSetDensity(m.model, std::numeric_limits<KitReal>::quiet_NaN());
    ColModelSetContactTolerance(m.model, -1);
    EXPECT_EQ(MessageLog::take().size(), 2U);
    EXPECT_EQ(ColModelGetDensity(m.model), 3);
    EXPECT_EQ(ColModelGetContactTolerance(m.model), static_cast<KitReal>(0.005F));
}

TEST_F(ColFrameTest, RequestTableKeepsEntriesWhileItGrows) {
    ColRequest request;
    ASSERT_NE(ColuRequestTableInit(5, &request), nullptr);
    for (int lo = 0; lo < 5; ++lo)
        for (int hi = lo; hi < 5; ++hi) {
            request.groupMaxCount = 100 * lo + hi;
            ColuRequestTableSetRequest(hi, lo, &request);
        }
    ColRequest* first = ColuRequestTableGetRequestPtr(2, 4);
    request.groupMaxCount = -1;
    EXPECT_EQ(ColuRequestTableResize(3, &request), 1);
    EXPECT_EQ(ColuRequestTableGetSize(), 5);
    EXPECT_EQ(ColuRequestTableResize(12, &request), 1);
    EXPECT_EQ(ColuRequestTableGetRequestPtr(4, 2), first) << "pairs point at entries";
    for (int lo = 0; lo < 12; ++lo)
        for (int hi = lo; hi < 12; ++hi) {
            EXPECT_EQ(ColuRequestTableGetRequestPtr(lo, hi)->groupMaxCount,
                      hi < 5 ? 100 * lo + hi : -1);
            EXPECT_EQ(gColuRequestTable->ididToElement[lo * 12 + hi - lo * (lo + 1) / 2],
                      ColuRequestTableGetRequestPtr(hi, lo));
        }
    EXPECT_EQ(ColuRequestTableGetRequestPtr(12, 0), ColGetDefaultRequestPtr());
    EXPECT_EQ(ColuRequestTableGetRequestPtr(-1, 0), ColGetDefaultRequestPtr());

    BallModel a(kSmallType, 1, {}), b(kLargeType, 1, {});
    ColModelSetRequestID(a.model, 4);
    ColModelSetRequestID(b.model, 2);
    ColModelPair pair;
    ColModelPairReset(&pair, b.model, a.model);
    ColHello(&pair);
    EXPECT_EQ(pair.request, ColGetDefaultRequestPtr()) << "not enabled";
    ColuRequestTableEnable();
    ColHello(&pair);
    EXPECT_EQ(pair.request, first);
    ColHelloWithRequest(&pair, nullptr);
    EXPECT_EQ(pair.request, ColGetDefaultRequestPtr());
    ColuRequestTableTerm();
    EXPECT_EQ(ColGetHelloCallback(), nullptr);
    const MessageLog log;
    EXPECT_EQ(ColuRequestTableResize(5, &request), 0);
    EXPECT_EQ(ColuRequestTableInit(0, &request), nullptr);
    EXPECT_EQ(MessageLog::take().size(), 2U);
}

TEST_F(ColFrameTest, ContainerZonesMeetAndNeverOverlap) {
    ColModelPair pairs[10];
    ColModelPairContainer* c = ColModelPairContainerCreate(9);
    EXPECT_EQ(c->helloEndStayingFirst, 4);
    EXPECT_TRUE(ColModelPairContainerAddHello(c, &pairs[0]));
    EXPECT_TRUE(ColModelPairContainerAddHello(c, &pairs[1]));
    EXPECT_TRUE(ColModelPairContainerAddGoodbye(c, &pairs[2]));
    EXPECT_TRUE(ColModelPairContainerAddGoodbye(c, &pairs[3]));
    EXPECT_FALSE(ColModelPairContainerAddGoodbye(c, &pairs[4]));
    EXPECT_FALSE(ColModelPairContainerAddHello(c, &pairs[4]));
    for (int i = 4; i < 8; ++i)
        EXPECT_TRUE(ColModelPairContainerAddStaying(c, &pairs[i]));
    EXPECT_TRUE(ColModelPairContainerAddFrozen(c, &pairs[8]));
    EXPECT_FALSE(ColModelPairContainerAddFrozen(c, &pairs[9]));
    EXPECT_FALSE(ColModelPairContainerAddStaying(c, &pairs[9]));
    EXPECT_EQ(ColModelPairContainerGetHelloArray(c)[0], &pairs[1]);
    EXPECT_EQ(ColModelPairContainerGetStayingArray(c)[3], &pairs[7]);
    EXPECT_EQ(ColModelPairContainerGetFrozenArray(c)[0], &pairs[8]);
    EXPECT_EQ(ColModelPairContainerGetGoodbyeArray(c)[1], &pairs[3]);
    ColModelPairContainerReset(c);
    EXPECT_EQ(ColModelPairContainerGetHelloCount(c) + ColModelPairContainerGetStayingCount(c) +
                  ColModelPairContainerGetGoodbyeCount(c) + ColModelPairContainerGetFrozenCount(c),
              0);
    ColModelPairContainerDestroy(c);
}

TEST_F(ColFrameTest, EachWalksDownwardAndTakesUpWhereItStopped) {
    BallModel a(kSmallType, 1, {}), b(kLargeType, 1, {0, 0, 1.5});
    ColModelPair pairs[5];
    ColModelPairContainer* c = ColModelPairContainerCreate(20);
    for (int i = 0; i < 5; ++i) {
        ColModelPairReset(&pairs[i], b.model, a.model);
        if (i < 2)
            ColModelPairContainerAddHello(c, &pairs[i]);
        else
            ColModelPairContainerAddStaying(c, &pairs[i]);
        ColHelloWithRequest(&pairs[i], nullptr); // staying pairs have had theirs
    }
    ColHelloEach(c);
    ColModelPairContainerIterator iterator;
    ColModelPairContainerIteratorInit(&iterator, c);
    ColIntersectResult results[8];
    ColContact contacts[6];
    std::vector<ColModelPair*> order;
    int calls = 0, more = 1;
    while (more != 0 && calls++ < 10) {
        int resultCount = 0, contactCount = 0;
        more = ColIntersectEach(c, &iterator, results, 8, &resultCount, contacts, 6, &contactCount);
        EXPECT_EQ(contactCount, resultCount);
        for (int i = 0; i < resultCount; ++i)
            order.push_back(results[i].pair);
        if (more != 0) {
            EXPECT_EQ(resultCount, 3) << "with three contacts left a pair of four waits";
        }
    }
    EXPECT_EQ(order,
              (std::vector<ColModelPair*>{&pairs[4], &pairs[3], &pairs[2], &pairs[0], &pairs[1]}));
    // Arrays too small for any pair still come to an end.
    ColModelPairContainerIteratorInit(&iterator, c);
    for (more = 1, calls = 0; more != 0 && calls < 20; ++calls) {
        int resultCount = 0, contactCount = 0;
        more = ColIntersectEach(c, &iterator, results, 8, &resultCount, contacts, 2, &contactCount);
    }
    EXPECT_EQ(calls, 5);
    ColGoodbyeEach(c);
    ColModelPairContainerDestroy(c);
}

int countDistance(ColModelPair* pair, const ColDistanceRequest*, ColDistanceResult* result) {
    const lsVec3 p1 = pair->model1->mGlobalTM->t(), p2 = pair->model2->mGlobalTM->t();
    result->distanceLB = result->distanceUB = (p1 - p2).norm() -
                                              ballOf(pair->model1->mGeometry).radius -
                                              ballOf(pair->model2->mGeometry).radius;
    result->point1 = p1;
    result->point2 = p2;
    return pair->model1->mGeometry->mID == kLargeType;
}

TEST_F(ColFrameTest, DistancesComeInTheOrderOfThePair) {
    BallModel a(kSmallType, 1, {}), b(kLargeType, 1, {0, 0, 5});
    ColModelPair pair;
    ColModelPairReset(&pair, a.model, b.model);
    ColDistanceResult result;
    EXPECT_EQ(ColDistance(&pair, &result), 0);
    EXPECT_EQ(result.distanceLB, std::numeric_limits<KitReal>::max());
    EXPECT_EQ(result.distanceUB, std::numeric_limits<KitReal>::max());
    ColInteractionTableSetElement(kLargeType, kSmallType, {}, nullptr);
    ColInteractionTableRegisterApproximateDistanceFn(kLargeType, kSmallType, countDistance);
    EXPECT_EQ(ColDistance(&pair, &result), 1) << "the function sees the registered order";
    EXPECT_EQ(result.distanceLB, 3);
    EXPECT_EQ(result.point2, lsVec3(0, 0, 5));
    EXPECT_EQ(pair.model1, a.model);

    ColSafeTimeResult safe;
    EXPECT_EQ(ColSafeTime(&pair, 0.25, &safe), 0);
    EXPECT_EQ(safe.time, 0.25);
}

TEST_F(ColFrameTest, ScratchNestsAndGrows) {
    ColScratchScope outer;
    const auto kept = outer.take<int>(100);
    kept[99] = 42;
    void* place = nullptr;
    for (int i = 0; i < 3; ++i) {
        ColScratchScope inner;
        const auto large = inner.take<KitReal>(100000);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(large.data()) % 64, 0U);
        large[0] = large.back() = 1;
        EXPECT_EQ(i == 0 ? large.data() : place, large.data()) << "the same memory again";
        place = large.data();
        const auto small = inner.take<KitReal>(3);
        std::fill(small.begin(), small.end(), 7);
        EXPECT_EQ(large[0] + large.back(), 2);
    }
    EXPECT_EQ(kept[99], 42);
}
} // namespace
