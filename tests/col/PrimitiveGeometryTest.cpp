#include "PairFixture.h"

namespace {

struct Solid {
    const char* name;
    ColGeometry* geometry;
};

std::vector<Solid> solids() {
    return {{"sphere", ColSphereCreate(0.7)},         {"box", ColBoxCreate(0.6, 1, 1.6)},
            {"cylinder", ColCylinderCreate(0.5, 1)},  {"capsule", ColCapsuleCreate(0.4, 0.9)},
            {"cone", ColConeCreatePointed(0.6, 1.2)}, {"frustum", ColConeCreate(0.3, 0.7, 0.8)}};
}

} // namespace

// Points drawn from the bounding box tell the volume by the share that falls
// inside, and with it centre and inertia; box, sphere and farthest points must
// hold them all and be reached.
TEST_F(PairTest, MassAndBoundsAreThoseOfThePointsInside) {
    constexpr int kPoints = 200000;
    for (const Solid& solid : solids()) {
        SCOPED_TRACE(solid.name);
        lsTransform tm = randomRotation();
        tm.t() = lsVec3(1, 2, 3);
        const Body body(solid.geometry, tm);
        solid.geometry->mSkin = 0;
        lsVec3 lower, upper, sphereCentre;
        KitReal bounds[6], sphereRadius;
        ColGeometryGetAABB(solid.geometry, &tm, &lower, &upper, bounds);
        ColGeometryGetBSphere(solid.geometry, &sphereCentre, &sphereRadius);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(bounds[2 * i], lower[i]);
            EXPECT_EQ(bounds[2 * i + 1], upper[i]);
            for (const KitReal side : {-1.0, 1.0}) {
                lsVec3 direction, farthest;
                direction[i] = side;
                ColGeometryMaximumPoint(solid.geometry, &tm, direction, &farthest);
                EXPECT_NEAR(farthest[i], side < 0 ? lower[i] : upper[i], 1e-12);
                EXPECT_LE((farthest - tm.transform(sphereCentre)).norm(), sphereRadius + 1e-12);
            }
        }
        const lsVec3 oblique = randomUnit();
        lsVec3 extreme;
        ColGeometryMaximumPoint(solid.geometry, &tm, oblique, &extreme);

        KitReal count = 0, second[3][3] = {};
        lsVec3 sum;
        for (int k = 0; k < kPoints; ++k) {
            lsVec3 p;
            for (int i = 0; i < 3; ++i)
                p[i] = uniform(lower[i] - 0.05, upper[i] + 0.05);
            if (!ColGeometryGetPointInVolume(solid.geometry, &tm, p))
                continue;
            for (int i = 0; i < 3; ++i)
                ASSERT_TRUE(p[i] >= lower[i] && p[i] <= upper[i]);
            ASSERT_LE(oblique.dot(p - extreme), 1e-12);
            const lsVec3 local = tm.inverseTransform(p);
            ++count;
            sum += local;
            for (int i = 0; i < 3; ++i)
                for (int j = 0; j < 3; ++j)
                    second[i][j] += local[i] * local[j];
        }
        const lsVec3 size = upper - lower + lsVec3(0.1, 0.1, 0.1);
        const KitReal each = size[0] * size[1] * size[2] / kPoints;
        ColMassProperties mass;
        ASSERT_TRUE(ColGeometryGetMassProperties(solid.geometry, &mass));
        EXPECT_NEAR(mass.mass, count * each, 0.015 * mass.mass);
        const lsVec3 centre = sum / count;
        EXPECT_TRUE(mass.centre.checkAlmostEqual(centre, 0.01));
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                const KitReal trace = second[0][0] + second[1][1] + second[2][2];
                const KitReal moment = each * ((i == j ? trace : 0) - second[i][j]);
                const KitReal shift =
                    mass.mass * ((i == j ? centre.square_norm() : 0) - centre[i] * centre[j]);
                EXPECT_NEAR(mass.inertia[i][j], moment - shift, 0.03 * mass.inertia[0][0]);
            }
    }
}

TEST_F(PairTest, ImpossibleSizesAreRefused) {
    const KitReal nan = std::nan("");
    testing::internal::CaptureStderr();
    EXPECT_EQ(ColSphereCreate(0), nullptr);
    EXPECT_EQ(ColBoxCreate(1, nan, 1), nullptr);
    EXPECT_EQ(ColCylinderCreate(1, -1), nullptr);
    EXPECT_EQ(ColCapsuleCreate(1, HUGE_VAL), nullptr);
    EXPECT_EQ(ColConeCreate(0, 0, 1), nullptr);
    const Body body(ColBoxCreate(1, 2, 3));
    auto* box = static_cast<ColBox*>(body.geometry);
    ColBoxSetDimensions(box, 1, 1, 0);
    EXPECT_EQ(box->mR[1], 1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("ColBoxSetDimensions: dimensions must"),
              std::string::npos);
}

// Only a normal along an axis to rounding bounds the plane: a tilt of 0.9 mrad
// lifts it by 0.9 m in a kilometre.
TEST_F(PairTest, TiltedPlaneIsUnbounded) {
    const Body plane(ColPlaneCreate());
    lsVec3 lower, upper;
    lsTransform tm = placed(0, 0, lsVec3(1, 2, 3));
    ColGeometryGetAABB(plane.geometry, &tm, &lower, &upper, nullptr);
    EXPECT_EQ(upper[2], 3);
    EXPECT_EQ(upper[0], kKitInfinity);
    EXPECT_EQ(lower[2], -kKitInfinity);
    tm = placed(0, std::numbers::pi, lsVec3(1, 2, 3));
    ColGeometryGetAABB(plane.geometry, &tm, &lower, &upper, nullptr);
    EXPECT_EQ(lower[2], 3);
    tm = placed(0, 0.9e-3, lsVec3(1, 2, 3));
    ColGeometryGetAABB(plane.geometry, &tm, &lower, &upper, nullptr);
    EXPECT_EQ(upper[2], kKitInfinity);
}
