#include "../../Col/src/math/BoxBoxIntersect.h"
#include "PairFixture.h"

namespace {

constexpr KitReal kDepth = 0.001; // m

/// Twice the area that the contacts span, seen along z. They need not be in
/// order.
KitReal spannedArea(const Hit& hit) {
    std::vector<lsVec3> p;
    for (int i = 0; i < hit.result.contactCount; ++i)
        p.push_back(hit.point(i, 0));
    lsVec3 middle;
    for (const lsVec3& q : p)
        middle += q / static_cast<KitReal>(p.size());
    std::sort(p.begin(), p.end(), [&](const lsVec3& a, const lsVec3& b) {
        return std::atan2(a[1] - middle[1], a[0] - middle[0]) <
               std::atan2(b[1] - middle[1], b[0] - middle[0]);
    });
    KitReal area = 0;
    for (std::size_t i = 0; i < p.size(); ++i) {
        const lsVec3 a = p[i] - middle, b = p[(i + 1) % p.size()] - middle;
        area += a[0] * b[1] - a[1] * b[0];
    }
    return area;
}

} // namespace

// Two equal boxes, one on the other with a yaw of rounding size, under any
// common rotation: all four corners bear.
TEST_F(PairTest, YawedEqualBoxesLoseNoCorner) {
    for (int round = 0; round < 300; ++round) {
        const KitReal yaw = std::pow(10, uniform(-14, -6));
        Body lower(ColBoxCreate(1, 1, 1));
        Body upper(ColBoxCreate(1, 1, 1), placed(2, yaw, lsVec3(0, 0, 1 - kDepth)));
        const lsTransform common = randomRotation();
        upper.frame.thisIsFirstThenSecond(upper.frame, common);
        lower.frame = common;
        Hit hit(lower, upper, 4);
        ASSERT_EQ(hit.result.contactCount, 4) << "yaw " << yaw << ", round " << round;
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(hit.contacts[i].dims, 0x0202);
            EXPECT_NEAR(hit.contacts[i].separation, -kDepth, 1e-9);
            hit.contacts[i].position = common.inverseTransform(hit.contacts[i].position);
            hit.contacts[i].normal =
                common.inverseTransformWithoutTranslate(hit.contacts[i].normal);
        }
        EXPECT_NEAR(spannedArea(hit), 2, 1e-4) << "yaw " << yaw << ", round " << round;
    }
}

// Each point of a tilted box lies at its own depth below the other's face,
// whichever is which.
TEST_F(PairTest, TiltedBoxTouchesAtItsOwnDepths) {
    constexpr KitReal kTilt = 0.01; // rad
    for (const bool large : {false, true}) {
        Body table(ColBoxCreate(large ? 4 : 0.9, large ? 4 : 0.9, 1));
        Body box(ColBoxCreate(1, 1, 1), placed(1, kTilt, lsVec3(0, 0, 1 - 0.02)));
        const Hit hit(table, box, 4);
        ASSERT_EQ(hit.result.contactCount, 4) << large;
        for (int i = 0; i < 4; ++i) {
            // Height of the bottom face at the contact's place.
            const KitReal x = hit.point(i, 0)[0];
            const KitReal bottom = 0.98 - 0.5 / std::cos(kTilt) - x * std::tan(kTilt);
            EXPECT_NEAR(hit.contacts[i].separation, bottom - 0.5, 2e-4) << large;
        }
    }
}

// The clipped face gives the points of all clipped edges, once the shallow ones
// are left out.
TEST_F(PairTest, ClippedFaceEqualsClippedEdges) {
    int compared = 0;
    for (int round = 0; round < 300; ++round) {
        const lsVec3 r1(uniform(0.3, 1), uniform(0.3, 1), uniform(0.3, 1));
        const lsVec3 r2(uniform(0.3, 1), uniform(0.3, 1), uniform(0.3, 1));
        lsTransform t12 = placed(2, uniform(-3, 3), lsVec3());
        t12.thisIsFirstThenSecond(t12, placed(round % 2, uniform(-0.02, 0.02), lsVec3()));
        t12.t() = lsVec3(uniform(-0.8, 0.8), uniform(-0.8, 0.8), r1[2] + r2[2] - 0.01);
        OverlapAxis overlap;
        if (!overlapOBBs(&overlap, 0, r1, r2, t12) || overlap.code != kOverlapFace1 + 2)
            continue;
        FaceClipPoint clipped[8];
        const int count = ClipIncidentFace(clipped, r1, 2, 1, r2, t12);
        CandidateList edges;
        BoxBoxIntersect(&edges, t12, r1, r2);
        ASSERT_LE(count, 8);
        const auto height = [&](const lsVec3& p) { return p[2] - r1[2]; };
        const KitReal limit = 0.01 * overlap.separation;
        ++compared;
        for (int i = 0; i < count; ++i) {
            KitReal nearest = 1;
            for (int k = 0; k < edges.count; ++k)
                nearest = std::min(nearest, (clipped[i].position - edges.points[k]).norm());
            EXPECT_NEAR(clipped[i].separation, height(clipped[i].position), 1e-12);
            if (clipped[i].separation < limit) {
                EXPECT_LT(nearest, 1e-4) << round;
            }
        }
        for (int k = 0; k < edges.count; ++k) {
            if (height(edges.points[k]) > 0.2 * overlap.separation) // on a side of box 2
                continue;
            KitReal nearest = 1;
            for (int i = 0; i < count; ++i)
                nearest = std::min(nearest, (clipped[i].position - edges.points[k]).norm());
            EXPECT_LT(nearest, 2e-3) << round << " " << height(edges.points[k]);
        }
    }
    EXPECT_GT(compared, 50);
}

TEST_F(PairTest, CrossedEdgesMeetAtOnePlace) {
    // Two beams turned on edge, crossing at right angles.
    const KitReal half = std::sqrt(2.0) / 2;
    Body lower(ColBoxCreate(3, 1, 1), placed(0, std::numbers::pi / 4, lsVec3()));
    Body upper(ColBoxCreate(1, 3, 1),
               placed(1, std::numbers::pi / 4, lsVec3(0, 0, 2 * half - kDepth)));
    const Hit hit(lower, upper);
    ASSERT_GT(hit.result.contactCount, 0);
    EXPECT_EQ(hit.deepest().dims, 0x0101);
    EXPECT_NEAR(hit.deepest().separation, -kDepth, 1e-9);
    EXPECT_LT((hit.deepest().position - lsVec3(0, 0, half)).norm(), 3 * kDepth);
}

TEST_F(PairTest, CylindersBearOnTheirWholeEnds) {
    struct Case {
        const char* name;
        KitReal lower, upper; ///< radii, m
        KitReal shift, tilt;  ///< m, rad
        KitReal area;         ///< least that must be spanned, in halves of the smaller square
    };
    const Case cases[] = {
        {"equal", 0.5, 0.5, 0, 0, 0.95},          {"turned", 0.5, 0.5, 0, 1e-9, 0.95},
        {"shifted", 0.5, 0.5, 1e-3, 0, 0.9},      {"well shifted", 0.5, 0.5, 0.3, 0, 0.3},
        {"small on large", 1, 0.3, 0.2, 0, 0.95}, {"large on small", 0.3, 1, 0.2, 1e-12, 0.9},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Body lower(ColCylinderCreate(c.lower, 1));
        Body upper(ColCylinderCreate(c.upper, 1),
                   placed(0, c.tilt, lsVec3(c.shift, 0, 1 - kDepth)));
        const Hit hit(lower, upper, 4);
        EXPECT_GE(hit.result.contactCount, 3);
        const KitReal r = std::min(c.lower, c.upper);
        EXPECT_GT(spannedArea(hit), c.area * 4 * r * r);
        for (int i = 0; i < hit.result.contactCount; ++i)
            EXPECT_NEAR(hit.contacts[i].separation, -kDepth, 1e-6);
    }
}

TEST_F(PairTest, RoundBodiesStandAndLieInsideALargeFace) {
    struct Case {
        const char* name;
        ColGeometry* geometry;
        int axis;
        KitReal angle, height; ///< rad, m from the centre to the lowest point
        int contacts;
    };
    const KitReal right = std::numbers::pi / 2;
    for (const bool plane : {false, true}) {
        const Case cases[] = {
            {"standing cylinder", ColCylinderCreate(0.5, 2), 0, 0, 1, 4},
            {"lying cylinder", ColCylinderCreate(0.5, 2), 0, right, 0.5, 2},
            {"standing capsule", ColCapsuleCreate(0.5, 1), 0, 0, 1, 1},
            {"lying capsule", ColCapsuleCreate(0.5, 1), 0, right, 0.5, 2},
            {"tilted cylinder", ColCylinderCreate(0.5, 2), 0, 0.5,
             std::cos(0.5) + 0.5 * std::sin(0.5), 1},
        };
        for (const Case& c : cases) {
            SCOPED_TRACE(c.name);
            Body ground(plane ? static_cast<ColGeometry*>(ColPlaneCreate())
                              : ColBoxCreate(10, 10, 1));
            ground.frame.t()[2] = plane ? 0 : -0.5;
            Body body(c.geometry, placed(c.axis, c.angle, lsVec3(0.3, 0.2, c.height - kDepth)));
            const Hit hit(ground, body, 4);
            EXPECT_EQ(hit.result.contactCount, c.contacts);
            for (int i = 0; i < hit.result.contactCount; ++i) {
                EXPECT_NEAR(hit.contacts[i].separation, -kDepth, 1e-6);
                EXPECT_NEAR(std::abs(hit.contacts[i].normal[2]), 1, 1e-12);
            }
        }
    }
}

// Bodies whose centre lines meet have no direction apart: one is chosen, never
// silence.
TEST_F(PairTest, MeetingAxesGiveADefinedNormal) {
    const KitReal right = std::numbers::pi / 2;
    Body capsule(ColCapsuleCreate(0.3, 1)), sphere(ColSphereCreate(0.4));
    const Hit through(capsule, sphere);
    ASSERT_EQ(through.result.contactCount, 1);
    EXPECT_NEAR(through.contacts[0].separation, -0.7, 1e-12);
    EXPECT_NEAR(through.contacts[0].normal[2], 0, 1e-12);

    Body across(ColCapsuleCreate(0.2, 1), placed(0, right, lsVec3()));
    const Hit crossed(capsule, across);
    ASSERT_EQ(crossed.result.contactCount, 1);
    EXPECT_NEAR(std::abs(crossed.contacts[0].normal[0]), 1, 1e-9);
    EXPECT_NEAR(crossed.contacts[0].separation, -0.5, 1e-9);

    Body other(ColSphereCreate(0.2));
    const Hit concentric(sphere, other);
    ASSERT_EQ(concentric.result.contactCount, 1);
    EXPECT_EQ(concentric.contacts[0].normal, lsVec3(0, 0, 1));
    EXPECT_EQ(concentric.contacts[0].dims, 0x0303);
    EXPECT_EQ(concentric.result.groupResult[0].contactCount, 1);
}
