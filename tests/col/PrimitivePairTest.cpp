#include "PairFixture.h"

#include <Col/ColPrimitivePrimitiveDistance.h>

namespace {

using Make = ColGeometry* (*)();

struct Shape {
    const char* name;
    Make make;
};

const Shape kSphere{"sphere", [] { return static_cast<ColGeometry*>(ColSphereCreate(0.4)); }};
const Shape kBox{"box", [] { return static_cast<ColGeometry*>(ColBoxCreate(0.6, 1, 1.6)); }};
const Shape kSlab{"slab", [] { return static_cast<ColGeometry*>(ColBoxCreate(2, 1.2, 0.4)); }};
const Shape kCylinder{"cylinder",
                      [] { return static_cast<ColGeometry*>(ColCylinderCreate(0.4, 1.2)); }};
const Shape kDisc{"disc", [] { return static_cast<ColGeometry*>(ColCylinderCreate(0.8, 0.5)); }};
const Shape kCapsule{"capsule", [] { return static_cast<ColGeometry*>(ColCapsuleCreate(0.3, 1)); }};
const Shape kPill{"pill", [] { return static_cast<ColGeometry*>(ColCapsuleCreate(0.5, 0.2)); }};
const Shape kPlane{"plane", [] { return static_cast<ColGeometry*>(ColPlaneCreate()); }};
const Shape kCone{"cone", [] { return static_cast<ColGeometry*>(ColConeCreatePointed(0.5, 1)); }};
const Shape kFrustum{"frustum",
                     [] { return static_cast<ColGeometry*>(ColConeCreate(0.3, 0.6, 1)); }};

struct Combination {
    Shape a, b;
    KitReal accuracy; ///< of the separation at a shallow overlap, m
};

// The order of names is that of the pair's functions, so no hello swaps but by
// size.
const Combination kCombinations[] = {
    {kSphere, kSphere, 1e-9},  {kSphere, kPlane, 1e-9},   {kBox, kSphere, 1e-6},
    {kBox, kSlab, 1e-6},       {kBox, kPlane, 1e-9},      {kBox, kCapsule, 1e-6},
    {kBox, kCylinder, 1e-6},   {kSlab, kDisc, 1e-6},      {kCapsule, kPill, 1e-6},
    {kCapsule, kSphere, 1e-6}, {kCapsule, kPlane, 1e-9},  {kCylinder, kCapsule, 1e-6},
    {kDisc, kPill, 1e-6},      {kCylinder, kDisc, 1e-6},  {kCylinder, kPlane, 1e-9},
    {kDisc, kSphere, 1e-6},    {kCone, kPlane, 1e-9},     {kFrustum, kPlane, 1e-9},
    {kCone, kSphere, 1e-6},    {kFrustum, kSphere, 1e-6},
};

/// The search over directions stops short of the greatest separation by up to this, m.
constexpr KitReal kSearchError = 0.01;

std::string describe(const Combination& c, int round) {
    return std::string(c.a.name) + " and " + c.b.name + ", round " + std::to_string(round);
}

bool holds(const ColModel& model, const lsVec3& point, KitReal tolerance) {
    const KitReal skin = model.mGeometry->mSkin;
    model.mGeometry->mSkin = tolerance;
    const bool inside = ColGeometryGetPointInVolume(model.mGeometry, model.mGlobalTM, point);
    model.mGeometry->mSkin = skin;
    return inside;
}

} // namespace

// In a random pose the bodies are pushed along their centres' line to a chosen
// overlap; separation and touch must be those of the farthest points in all
// directions, and the deepest contact must lie on both surfaces.
TEST_F(PairTest, SeparationIsThatOfTheFarthestPoints) {
    constexpr int kRounds = 12;
    for (const Combination& c : kCombinations)
        for (int round = 0; round < kRounds; ++round) {
            Body a(c.a.make(), randomRotation()), b(c.b.make(), randomRotation());
            const lsVec3 way = c.b.make == kPlane.make ? -b.frame.axis(2) : randomUnit();
            b.frame.t() = lsVec3(0.3, -0.2, 0.1) + 4 * way;
            const KitReal wanted = round % 3 == 0 ? uniform(0.001, 0.05) : -uniform(0.001, 0.05);
            for (int i = 0; i < 6; ++i)
                b.frame.t().addMultiple(wanted - trueSeparation(a.model, b.model), way);
            const KitReal truth = trueSeparation(a.model, b.model);
            if (truth < -0.1)
                continue;
            SCOPED_TRACE(describe(c, round) + ", separation " + std::to_string(truth));
            const Hit hit(a, b);
            if (truth > 0) {
                EXPECT_EQ(hit.result.touch, 0);
                EXPECT_EQ(hit.result.contactCount, 0);
                continue;
            }
            if (truth > -kSearchError && hit.result.touch == 0)
                continue;
            ASSERT_GT(hit.result.contactCount, 0);
            const ColContact& deepest = hit.deepest();
            EXPECT_NEAR(deepest.normal.norm(), 1, 1e-12);
            // No direction found separates more, and the depth is that along the normal.
            const KitReal found =
                separationAlong(deepest.normal, *hit.pair.model1, *hit.pair.model2);
            EXPECT_GE(found, truth - c.accuracy);
            EXPECT_NEAR(deepest.separation, found, c.accuracy);
            const int at = static_cast<int>(&deepest - hit.contacts);
            const KitReal tolerance = 1e-3 * -truth + 2e-5;
            EXPECT_TRUE(holds(*hit.pair.model1, hit.point(at, 0), tolerance));
            EXPECT_TRUE(holds(*hit.pair.model2, hit.point(at, 1), tolerance));
        }
}

// A motion of both bodies together moves the contacts along; the same bodies in
// the other order give the same contacts.
TEST_F(PairTest, ContactsMoveWithTheBodiesAndForgetTheirOrder) {
    for (const Combination& c : kCombinations)
        for (int round = 0; round < 10; ++round) {
            SCOPED_TRACE(describe(c, round));
            Body a(c.a.make(), randomRotation()), b(c.b.make(), randomRotation());
            a.frame.t() =
                uniform(0.4, 0.8) * (c.b.make == kPlane.make ? b.frame.axis(2) : randomUnit());
            const Hit before(a, b), swapped(b, a);
            lsTransform motion = randomRotation();
            motion.t() = 3 * randomUnit();
            a.frame.thisIsFirstThenSecond(a.frame, motion);
            b.frame.thisIsFirstThenSecond(b.frame, motion);
            const Hit after(a, b);
            ASSERT_EQ(before.result.touch, after.result.touch);
            ASSERT_EQ(before.result.touch, swapped.result.touch);
            if (before.result.contactCount == 0)
                continue;
            EXPECT_EQ(before.pair.model1, swapped.pair.model1);
            EXPECT_NEAR(before.deepest().separation, after.deepest().separation, 1e-6);
            EXPECT_NEAR(before.deepest().separation, swapped.deepest().separation, 1e-6);
            EXPECT_TRUE(motion.transformWithoutTranslate(before.deepest().normal)
                            .checkAlmostEqual(after.deepest().normal, 1e-6));
        }
}

// A cone and its neighbours tell only whether they touch.
TEST_F(PairTest, ConesTouchWithoutContacts) {
    for (const Shape& other : {kBox, kCone, kFrustum, kCylinder})
        for (int round = 0; round < 40; ++round) {
            Body cone(kCone.make(), randomRotation()), b(other.make(), randomRotation());
            b.frame.t() = uniform(0.4, 1.4) * randomUnit();
            const KitReal truth = trueSeparation(cone.model, b.model);
            if (std::abs(truth) < 1e-5)
                continue;
            SCOPED_TRACE(std::string(other.name) + std::to_string(truth));
            const Hit hit(cone, b);
            if (truth > 0 || truth < -kSearchError) {
                EXPECT_EQ(hit.result.touch != 0, truth < 0);
            }
            EXPECT_EQ(hit.result.contactCount, 0);
        }
}

// With no room for contacts all that is told is the touch.
TEST_F(PairTest, NoContactsWantedStillTellsTouch) {
    for (const Combination& c : kCombinations) {
        SCOPED_TRACE(c.a.name);
        Body a(c.a.make()), b(c.b.make());
        b.frame.t() = lsVec3(0.05, 0.02, 0.01);
        const Hit none(a, b, 0);
        EXPECT_EQ(none.result.touch, 1);
        EXPECT_EQ(none.result.contactCount, 0);
        EXPECT_EQ(none.result.groupCount, 0);
        b.frame.t()[0] = std::nan("");
        EXPECT_EQ(Hit(a, b).result.contactCount, 0);
    }
}

// A pair that closes at its velocities and accelerations touches no earlier than its safe time.
TEST_F(PairTest, NothingTouchesBeforeTheSafeTime) {
    for (const Combination& c : kCombinations) {
        Body a(c.a.make(), randomRotation()), b(c.b.make(), randomRotation());
        a.frame.t() = 3 * (c.b.make == kPlane.make ? b.frame.axis(2) : randomUnit());
        const lsVec3 velocity = -2 * a.frame.t(), spin = randomUnit();
        a.model.linearVelocity = velocity.v;
        const lsVec3 pull = -3 * a.frame.t() + randomUnit();
        a.model.angularVelocity = spin.v;
        a.model.linearAcceleration = pull.v;
        ColModelPair pair{.model1 = &a.model, .model2 = &b.model};
        ColHello(&pair);
        ColSafeTimeResult safe;
        if (ColSafeTime(&pair, 1, &safe) == 0)
            continue;
        SCOPED_TRACE(std::string(c.a.name) + c.b.name + std::to_string(safe.time));
        EXPECT_GT(safe.time, 0.05);
        lsTransform later;
        ASSERT_TRUE(ColModelExtrapolateTransform(&a.model, safe.time, &later));
        a.model.mGlobalTM = &later;
        EXPECT_GE(trueSeparation(a.model, b.model), -1e-9);
    }
}

// The distance of bodies apart is their greatest separation, and the closest points are that far from
// each other and on their bodies.
TEST_F(PairTest, DistanceIsTheGreatestSeparation) {
    ColPrimitivePrimitiveRegisterDistance();
    for (const Combination& c : kCombinations) {
        for (int round = 0; round < 10; ++round) {
            SCOPED_TRACE(describe(c, round));
            Body a(c.a.make(), randomRotation()), b(c.b.make(), randomRotation());
            b.frame.t() = uniform(1.5, 3) * randomUnit();
            ColModelPair pair{.model1 = &a.model, .model2 = &b.model};
            ColHello(&pair);
            ColDistanceResult result;
            if (ColDistance(&pair, &result) == 0)
                break;
            EXPECT_GE(result.distanceLB, trueSeparation(a.model, b.model) - 1e-9);
            EXPECT_NEAR((result.point1 - result.point2).norm(), result.distanceUB, 1e-9);
            EXPECT_TRUE(holds(*pair.model1, result.point1, 1e-9));
            EXPECT_TRUE(holds(*pair.model2, result.point2, 1e-9));
            KitReal distance;
            lsVec3 normal;
            ASSERT_EQ(ColPointSurfaceDistance(pair.model1, result.point2, &distance, &normal), 1);
            EXPECT_NEAR(distance, result.distanceUB, 1e-9);
        }
    }
}
