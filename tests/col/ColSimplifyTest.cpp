#include "../../Col/src/util/ColDegeneracy.h"
#include "MessageLog.h"

#include <Col/Col.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <set>
#include <utility>

namespace {
constexpr unsigned kSeed = 20260131;
constexpr KitReal kRounding = 1e-12;
constexpr KitReal kPi = 3.14159265358979323846;

ColContact contactAt(KitReal x, KitReal y, KitReal separation, lsVec3 normal = {0, 0, 1}) {
    ColContact c;
    c.position = {x, y, 0};
    c.normal = normal;
    c.separation = separation;
    return c;
}

KitReal twiceArea(const lsVec3& a, const lsVec3& b, const lsVec3& c) {
    return (b - a).cross(c - a)[2];
}

/// Area of the convex hull of points in the plane z = 0 (Andrew 1979).
KitReal hullArea(std::vector<ColContact> points) {
    std::vector<lsVec3> p;
    for (const ColContact& c : points)
        p.push_back(c.position);
    std::sort(p.begin(), p.end(), [](const lsVec3& a, const lsVec3& b) {
        return std::pair(a[0], a[1]) < std::pair(b[0], b[1]);
    });
    std::vector<lsVec3> hull;
    for (int side = 0; side < 2; ++side, std::reverse(p.begin(), p.end())) {
        const std::size_t base = hull.size();
        for (const lsVec3& q : p) {
            while (hull.size() >= base + 2 && twiceArea(hull[hull.size() - 2], hull.back(), q) <= 0)
                hull.pop_back();
            hull.push_back(q);
        }
        hull.pop_back();
    }
    KitReal sum = 0;
    for (std::size_t i = 1; i + 1 < hull.size(); ++i)
        sum += twiceArea(hull[0], hull[i], hull[i + 1]);
    return 0.5 * sum;
}

/// A pair of two models without geometry, and a result with room.
struct ColSimplifyTest : testing::Test {
    ColModel model1, model2;
    ColRequest request;
    ColModelPair pair;
    ColContact room[32];
    ColIntersectResult result;
    lsVec3 normal = {0, 0, 1};
    std::mt19937 random{kSeed};

    ColSimplifyTest() {
        ColSetContactDegeneracyThreshold(0.001, 0.99F);
        ColModelPairReset(&pair, &model1, &model2);
        pair.request = &request;
        result.pair = &pair;
        result.contacts = room;
        result.contactMaxCount = 32;
        RecordProperty("seed", static_cast<int>(kSeed));
    }
    KitReal uniform(KitReal low, KitReal high) {
        return std::uniform_real_distribution<KitReal>(low, high)(random);
    }
    std::vector<ColContact> simplify(std::vector<ColContact> contacts) {
        const int n = ColContactSimplify(&normal, contacts.data(),
                                         static_cast<int>(contacts.size()), &result);
        return {room, room + n};
    }
    std::vector<ColContact> randomContacts(int count, KitReal size) {
        std::vector<ColContact> c;
        for (int i = 0; i < count; ++i) {
            c.push_back(contactAt(uniform(-size, size), uniform(-size, size), uniform(-0.01, 0)));
            c.back().indexElement1 = i;
            c.back().surfaceIndex = static_cast<std::int16_t>(i % 3 - 1);
        }
        return c;
    }
};

TEST_F(ColSimplifyTest, KeepsTheDeepestOnAConvexOutline) {
    std::printf("seed %u\n", kSeed);
    for (int round = 0; round < 300; ++round) {
        const int count = 3 + round % 40;
        request.contactMaxCount = 3 + static_cast<unsigned>(round) % 6;
        request.collinearThreshold = 0;
        const std::vector<ColContact> raw = randomContacts(count, 1);
        const std::vector<ColContact> kept = simplify(raw);
        ASSERT_LE(kept.size(), request.contactMaxCount);
        ASSERT_EQ(result.groupCount, 1);
        EXPECT_EQ(result.groupResult[0].contactCount, static_cast<int>(kept.size()));

        const auto shallower = [](const ColContact& a, const ColContact& b) {
            return a.separation < b.separation;
        };
        EXPECT_EQ(std::min_element(kept.begin(), kept.end(), shallower)->indexElement1,
                  std::min_element(raw.begin(), raw.end(), shallower)->indexElement1);
        std::set<int> distinct;
        for (const ColContact& c : kept)
            distinct.insert(c.indexElement1);
        EXPECT_EQ(distinct.size(), kept.size());
        // Without the deepest, which may be prepended, the points stand counterclockwise.
        for (std::size_t i = 1; i + 2 < kept.size(); ++i)
            EXPECT_GT(twiceArea(kept[i].position, kept[i + 1].position, kept[i + 2].position),
                      -kRounding);
        // Taken one by one the least corner goes, so most of the hull is left.
        if (request.contactMaxCount == 8 && count <= 8) {
            EXPECT_NEAR(hullArea(kept), hullArea(raw), kRounding);
        }
        EXPECT_LE(hullArea(kept), hullArea(raw) + kRounding);
    }
}

// With one corner too many and equal depths, leaving out the corner of the least triangle is best.
TEST_F(ColSimplifyTest, LosesTheLeastAreaOfAPentagon) {
    request.collinearThreshold = 0;
    for (int round = 0; round < 100; ++round) {
        std::vector<ColContact> raw;
        KitReal angle = uniform(0, 1);
        for (int i = 0; i < 5; ++i, angle += uniform(0.6, 1.3))
            raw.push_back(contactAt(std::cos(angle), std::sin(angle), -0.01));
        KitReal best = 0;
        for (std::size_t out = 0; out < 5; ++out) {
            std::vector<ColContact> rest = raw;
            rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(out));
            best = std::max(best, hullArea(rest));
        }
        raw[0].separation = -0.01; // the first of equals is the seed
        const std::vector<ColContact> kept = simplify(raw);
        ASSERT_EQ(kept.size(), 4U);
        const bool seedHeld = kept[0].position == raw[0].position;
        if (seedHeld && hullArea(kept) < best - kRounding) {
            // Only the seed's return may cost area.
            KitReal bestWithSeed = 0;
            for (std::size_t out = 1; out < 5; ++out) {
                std::vector<ColContact> rest = raw;
                rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(out));
                bestWithSeed = std::max(bestWithSeed, hullArea(rest));
            }
            EXPECT_LT(bestWithSeed, best);
        } else {
            EXPECT_NEAR(hullArea(kept), best, kRounding);
        }
    }
}

TEST_F(ColSimplifyTest, PrependsADeepContactInsideAFullOutline) {
    const std::vector<ColContact> kept =
        simplify({contactAt(0, 0, -0.001), contactAt(1, 0, -0.001), contactAt(1, 1, -0.001),
                  contactAt(0, 1, -0.001), contactAt(0.4, 0.3, -0.02)});
    ASSERT_EQ(kept.size(), 4U);
    EXPECT_EQ(kept[0].separation, -0.02);
    for (const ColContact& c : kept)
        EXPECT_FALSE(c.position == lsVec3(0, 0, 0)) << "the nearest corner gives way";
}

TEST_F(ColSimplifyTest, FaceContactsLead) {
    request.faceNormalsFirst = 1;
    std::vector<ColContact> raw = {contactAt(0, 0, -0.05), contactAt(1, 0, -0.01),
                                   contactAt(1, 1, -0.02), contactAt(0, 1, -0.03)};
    raw[2].dims = 2;
    raw[3].dims = 0x0101;
    const std::vector<ColContact> kept = simplify(raw);
    ASSERT_EQ(kept.size(), 4U);
    EXPECT_NE(kept[0].dims, 0);
    EXPECT_NE(kept[1].dims, 0);
    request.contactMaxCount = 1;
    EXPECT_EQ(simplify(raw)[0].separation, -0.03) << "deepest of the faces";
    raw[2].dims = raw[3].dims = 0;
    EXPECT_EQ(simplify(raw)[0].separation, -0.05) << "no face: deepest of all";
}

TEST_F(ColSimplifyTest, SmallRequests) {
    const std::vector<ColContact> line = {contactAt(0, 0, -0.01), contactAt(0.5, 0, -0.02),
                                          contactAt(1, 0, -0.01)};
    request.contactMaxCount = 3;
    std::vector<ColContact> kept = simplify(line);
    ASSERT_EQ(kept.size(), 3U); // ends of the line, and the deepest before them
    EXPECT_EQ(kept[0].separation, -0.02);
    std::vector<ColContact> flat = line;
    flat[0].separation = -0.03;
    EXPECT_EQ(simplify(flat).size(), 2U) << "the middle one is dropped";

    request.contactMaxCount = 0;
    EXPECT_TRUE(simplify(line).empty());
    EXPECT_EQ(result.groupCount, 0);
    request.contactMaxCount = 2;
    const std::vector<ColContact> three = {contactAt(0, 0, -0.03), contactAt(0.1, 0, -0.02),
                                           contactAt(1, 0, -0.01)};
    EXPECT_EQ(simplify(three)[1].position[0], 1) << "distance times depth";
    request.twoContactsSimplifyMethod = 1;
    EXPECT_EQ(simplify(three)[1].position[0], 0.1) << "deepest other";

    // From nine asked for there is no outline, and the room of the result is respected.
    request.contactMaxCount = 40;
    result.contactMaxCount = 7;
    EXPECT_EQ(simplify(randomContacts(30, 1)).size(), 7U);
}

TEST_F(ColSimplifyTest, GroupsByNormal) {
    request.groupMaxCount = 2;
    const lsVec3 up(0, 0, 1), down(0, 0, -1), side(1, 0, 0);
    const std::vector<ColContact> kept = simplify(
        {contactAt(0, 0, -0.01, up), contactAt(0, 0, -0.02, down), contactAt(1, 0, -0.01, up),
         contactAt(1, 0, -0.02, down), contactAt(2, 5, -0.01, side)});
    ASSERT_EQ(result.groupCount, 2);
    EXPECT_EQ(result.groupResult[0].contactCount, 2);
    EXPECT_EQ(result.groupResult[1].contactCount, 3) << "no group left: the last takes the side";
    EXPECT_EQ(result.groupResult[0].surface, 1);
    ASSERT_EQ(kept.size(), 5U);
    EXPECT_EQ(kept[1].normal, up);
    EXPECT_EQ(kept[2].separation, -0.02);

    request.groupNormalMethod = 3; // weighted by depth
    request.groupMaxCount = 4;
    request.groupTolerance = -0.5;
    simplify({contactAt(0, 0, -0.03, up), contactAt(1, 0, -0.04, side), contactAt(3, 0, 1, side)});
    EXPECT_TRUE(result.groupResult[0].normal.checkAlmostEqual({0.8, 0, 0.6}, kRounding));
    request.groupNormalMethod = 1;
    simplify({contactAt(0, 0, -0.03, up), contactAt(1, 0, -0.04, side)});
    EXPECT_NEAR(result.groupResult[0].normal[0], std::sqrt(0.5), kRounding);

    normal = {};
    request.groupMaxCount = 1;
    simplify({contactAt(0, 0, -0.03, side), contactAt(0, 1, -0.03, side)});
    EXPECT_EQ(normal, side) << "a null normal takes the first contact's";
}

TEST_F(ColSimplifyTest, SurfaceOfAGroup) {
    request.computeGroupContactSurface = 1;
    request.collinearThreshold = 0;
    model1.mPadding = 0.001;
    model2.mPadding = 0.002;
    simplify({contactAt(0, 0, -0.002)});
    EXPECT_NEAR(result.groupResult[0].surface, kPi * 9e-6, 1e-18);
    simplify({contactAt(0, 0, -0.01), contactAt(0, 2, -0.03)});
    EXPECT_NEAR(result.groupResult[0].surface, 2 * 2 * 0.03 * (0.03 / 0.04), kRounding);
    simplify({contactAt(0, 0, -0.01), contactAt(2, 0, -0.01), contactAt(2, 3, -0.01),
              contactAt(0, 3, -0.01)});
    EXPECT_NEAR(result.groupResult[0].surface, 6 * 0.25, kRounding);
}

// The cells must answer what the pairs answer, order and all.
TEST_F(ColSimplifyTest, CellsFindTheDuplicatesOfThePairs) {
    std::printf("seed %u\n", kSeed);
    int removed = 0;
    for (int round = 0; round < 200; ++round) {
        lsVec3 n(uniform(-1, 1), uniform(-1, 1), uniform(-1, 1));
        n.normalize();
        std::vector<ColContact> pairs;
        for (int i = 0; i < 40 + round; ++i) {
            const KitReal size = round % 3 == 0 ? 0.004 : 0.02;
            ColContact c = contactAt(uniform(-size, size), uniform(-size, size), uniform(-0.01, 0),
                                     round % 2 == 0 ? n : lsVec3(0, 0, 1));
            if (i % 5 == 0)
                c.normal = -c.normal;
            c.position[2] = uniform(-size, size);
            c.surfaceIndex = static_cast<std::int16_t>(i % 3 - 1);
            c.indexElement1 = i;
            pairs.push_back(c);
        }
        std::vector<ColContact> cells = pairs;
        const int count = static_cast<int>(pairs.size());
        const int expected = ColRemoveDuplicatesByPairs(pairs.data(), count, n);
        ASSERT_EQ(ColRemoveDuplicatesByCells(cells.data(), count, n), expected);
        for (std::size_t i = 0; i < static_cast<std::size_t>(expected); ++i)
            ASSERT_EQ(cells[i].indexElement1, pairs[i].indexElement1);
        removed += count - expected;
    }
    EXPECT_GT(removed, 200 * 20);
}

TEST_F(ColSimplifyTest, DuplicatesBySurface) {
    struct Case {
        const char* name;
        std::int16_t surface1, surface2;
        KitReal separation1, separation2;
        int kept;
    };
    const Case cases[] = {
        {"same surface, the deeper stays", 0, 0, -0.01, -0.02, 2},
        {"same surface, equal depth", 1, 1, -0.01, -0.01, 1},
        {"the later has a surface", -1, 0, -0.02, -0.01, 2},
        {"the later has none", 1, -1, -0.01, -0.02, 1},
    };
    for (const Case& c : cases) {
        ColContact pairOfContacts[2] = {contactAt(0, 0, c.separation1),
                                        contactAt(0.0005, 0, c.separation2)};
        pairOfContacts[0].surfaceIndex = c.surface1;
        pairOfContacts[1].surfaceIndex = c.surface2;
        pairOfContacts[0].indexElement1 = 1;
        pairOfContacts[1].indexElement1 = 2;
        EXPECT_EQ(ColRemoveDuplicatesByPairs(pairOfContacts, 2, normal), 1) << c.name;
        EXPECT_EQ(pairOfContacts[0].indexElement1, c.kept) << c.name;
    }
}

TEST_F(ColSimplifyTest, BadContactsAndResults) {
    const KitReal nan = std::numeric_limits<KitReal>::quiet_NaN();
    std::vector<ColContact> kept =
        simplify({contactAt(nan, 0, -1), contactAt(0, 0, -0.01), contactAt(1, 0, nan),
                  contactAt(0, 1, -kKitInfinity * 2)});
    ASSERT_EQ(kept.size(), 1U);
    EXPECT_EQ(kept[0].separation, -0.01);
    EXPECT_TRUE(simplify({contactAt(nan, 0, -1)}).empty());

    const MessageLog log;
    ColContact c = contactAt(0, 0, -1);
    EXPECT_EQ(ColContactSimplify(&normal, &c, 1, nullptr), 0);
    result.pair = nullptr;
    EXPECT_EQ(ColContactSimplify(&normal, &c, 1, &result), 0);
    EXPECT_EQ(MessageLog::fatalCount(), 2);
    EXPECT_EQ(MessageLog::take()[0], "ColContactSimplify: result with a valid pair required.\n");

    ColSetContactDegeneracyThreshold(nan, 0.5);
    ColSetContactDegeneracyThreshold(-1, 0.5);
    KitReal distance = 0, cosine = 0;
    ColGetContactDegeneracyThreshold(&distance, &cosine);
    EXPECT_NEAR(distance, 0.001, kRounding);
    EXPECT_EQ(cosine, static_cast<KitReal>(0.99F));
}

// Both points of a contact are the same seen from either side.
TEST_F(ColSimplifyTest, InvertingExchangesTheSides) {
    for (const std::int16_t surface : {kColSurfaceModel1, kColSurfaceModel2}) {
        ColContact c = contactAt(1, 2, -0.1, {0.6, 0, 0.8});
        c.surfaceIndex = surface;
        c.dims = 0x0102;
        c.indexElement1 = 7;
        c.model1 = &model1;
        lsVec3 on1, on2, inverted1, inverted2;
        ColContactGetPosition(&c, 0, &on1);
        ColContactGetPosition(&c, 1, &on2);
        EXPECT_NEAR((on1 - on2).dot(c.normal), c.separation, kRounding);
        ColContactInvert(&c);
        ColContactGetPosition(&c, 0, &inverted1);
        ColContactGetPosition(&c, 1, &inverted2);
        EXPECT_TRUE(inverted1.checkAlmostEqual(on2, kRounding));
        EXPECT_TRUE(inverted2.checkAlmostEqual(on1, kRounding));
        EXPECT_EQ(c.surfaceIndex, 0);
        EXPECT_EQ(c.dims, 0x0201);
        EXPECT_EQ(c.indexElement2, 7);
        EXPECT_EQ(c.model2, &model1);
    }
    const MessageLog log;
    ColContact c = contactAt(1, 2, -0.1);
    c.surfaceIndex = 5;
    lsVec3 p;
    ColContactGetPosition(&c, 0, &p);
    EXPECT_EQ(p, c.position);
    EXPECT_EQ(MessageLog::take()[0], "ColContactGetPosition: surfaceIndex between -1 -1 not set\n");
}

// A corner that a crossing stands for takes the depth of the contact that the outline lost.
TEST_F(ColSimplifyTest, CrossingsShareTheLostDepth) {
    request.collinearThreshold = 0;
    const KitReal depth = -0.02;
    const auto crossing = [](KitReal x, KitReal y) {
        ColContact c = contactAt(x, y, -1e-6);
        c.surfaceIndex = -1;
        return c;
    };
    const auto corner = [](KitReal x, KitReal y, KitReal separation) {
        ColContact c = contactAt(x, y, separation);
        c.surfaceIndex = 0;
        return c;
    };
    const auto depths = [&](std::vector<ColContact> raw) {
        ColSimplifyConvexContacts(raw.data(), static_cast<int>(raw.size()), &result, depth);
        std::vector<KitReal> d;
        for (int i = 0; i < result.contactCount; ++i)
            if (room[i].surfaceIndex == -1)
                d.push_back(room[i].separation);
        return d;
    };
    EXPECT_EQ(depths({corner(0, 0, depth), crossing(1, 0), crossing(0, 1)}),
              (std::vector<KitReal>{depth, depth}))
        << "all as deep as the whole";

    // Five: an inner corner of -0.006 is lost. It lies nearer to the crossing at x = 1.
    const std::vector<KitReal> shared =
        depths({corner(0, 0, depth), crossing(1, 0), corner(0.6, 0.25, -0.006), crossing(0, 1),
                corner(1, 1, -0.01)});
    ASSERT_EQ(shared.size(), 2U);
    EXPECT_NEAR(shared[0] + shared[1], -0.006, kRounding);
    const lsVec3 centre(0.6, 0.25, 0);
    const KitReal r1 = (lsVec3(1, 0, 0) - centre).norm(), r2 = (lsVec3(0, 1, 0) - centre).norm();
    EXPECT_NEAR(std::min(shared[0], shared[1]) / std::max(shared[0], shared[1]), r2 / r1, 1e-9);

    // A crossing at the very place: equal shares, never a division by zero.
    const std::vector<KitReal> equal =
        depths({corner(0, 0, depth), crossing(1, 0), corner(1, 0, -0.006), crossing(0, 1)});
    for (const KitReal d : equal) {
        EXPECT_TRUE(std::isfinite(d));
        EXPECT_GE(d, depth);
    }
}

TEST_F(ColSimplifyTest, ResultInPlaceKeepsToItsPool) {
    KitPool pool;
    KitPoolInit(&pool, 1, 3 * static_cast<int>(sizeof(ColContact)), 0);
    const MessageLog log;
    for (const bool pooled : {true, false}) {
        result.contactPool = pooled ? &pool : nullptr;
        result.contactCount = 4;
        for (int i = 0; i < 4; ++i)
            room[i] = contactAt(i % 2, i / 2, -0.01);
        ColContactSimplifyResult(&result);
        EXPECT_EQ(result.contactCount, pooled ? 3 : 4);
        EXPECT_EQ(MessageLog::take().size(), pooled ? 1U : 0U);
    }
    EXPECT_EQ(KitPoolGetUsed(&pool), 0);
    KitPoolTerm(&pool);
}
} // namespace
