#include "Measures.h"
#include "Overlap.h"
#include "Rays.h"
#include "References.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace bench {
namespace {

constexpr Vec3 kX{1, 0, 0}, kY{0, 1, 0}, kZ{0, 0, 1};

TEST(OverlapTest, BoxesAgainstClosedForms) {
    const Vec3 cube{0.5, 0.5, 0.5};
    const double diagonal = std::sqrt(0.5);
    const Quat upright = turn(normed(kX - kY), std::atan(std::sqrt(2.0))); // a corner points up
    struct Case {
        const char* name;
        Motion first, second;
        double depth;
    };
    const Case cases[] = {
        {"face on face", {}, {{0, 0, 0.9}, {}, {}, {}}, 0.1},
        {"apart", {}, {{0, 0, 1.25}, {}, {}, {}}, -0.25},
        {"nearest face counts", {}, {{0.3, 0.8, 0.5}, {}, {}, {}}, 0.2},
        {"edge on face", {}, {{0, 0, 1.1}, turn(kX, M_PI / 4), {}, {}}, diagonal - 0.6},
        {"corner on face", {}, {{0, 0, 1.3}, upright, {}, {}}, std::sqrt(0.75) - 0.8},
        {"crossed edges", // up to half a diagonal each
         {{}, turn(kX, M_PI / 4), {}, {}},
         {{0, 0, 1.4}, turn(kY, M_PI / 4), {}, {}},
         2 * diagonal - 1.4},
        {"parallel edges", // along the faces' common normal, at 45 degrees
         {{}, turn(kX, M_PI / 4), {}, {}},
         {{0, 0, 1.4}, turn(kX, M_PI / 4), {}, {}},
         1 - 1.4 * diagonal},
    };
    for (const Case& c : cases) {
        EXPECT_NEAR(depthOfBoxes(cube, c.first, cube, c.second), c.depth, 1e-12) << c.name;
        EXPECT_NEAR(depthOfBoxes(cube, c.second, cube, c.first), c.depth, 1e-12) << c.name;
    }
}

TEST(OverlapTest, SegmentsAgainstSampling) {
    Random random(7);
    for (int n = 0; n < 300; ++n) {
        const Vec3 c1 = random.vector(-1, 1), c2 = random.vector(-1, 1);
        const Vec3 h1 = random.vector(-1, 1);
        const Vec3 h2 = n % 3 == 0 ? 0.5 * h1 : n % 3 == 1 ? Vec3{} : random.vector(-1, 1);
        const double told = segmentDistance(c1, h1, c2, h2);
        constexpr int kPoints = 100;
        double sampled = 1e9;
        for (int i = -kPoints; i <= kPoints; ++i)
            for (int j = -kPoints; j <= kPoints; ++j)
                sampled = std::min(
                    sampled, norm(c1 + i / double(kPoints) * h1 - c2 - j / double(kPoints) * h2));
        EXPECT_LE(told, sampled + 1e-12) << n;
        EXPECT_NEAR(told, sampled, 0.02) << n;
    }
}

// The first sample of the segment that lies inside.
TEST(RayTest, HitsAreWhereTheSegmentComesIn) {
    Scene scene;
    ASSERT_TRUE(makeScene("rays", scene));
    ASSERT_EQ(scene.bodies.size(), 2000U);
    Random random(11);
    int hits = 0;
    for (std::size_t i = 0; i < scene.bodies.size(); ++i) {
        const Body& body = scene.bodies[i];
        const Segment segment{body.start.p + random.vector(-3, 3),
                              body.start.p + random.vector(-3, 3)};
        if (isInside(body.shape, body.start, segment.start))
            continue;
        const double length = norm(segment.end - segment.start);
        const Vec3 d = (segment.end - segment.start) / length;
        double sampled = -1;
        for (double t = 0; t <= length && sampled < 0; t += 1e-3)
            if (isInside(body.shape, body.start, segment.start + t * d))
                sampled = t;
        const double told = hitDistance(body.shape, body.start, segment);
        if (sampled >= 0) {
            EXPECT_NEAR(told, sampled, 1.1e-3) << i;
            ++hits;
        } else if (told >= 0) { // grazes between two samples
            EXPECT_FALSE(isInside(body.shape, body.start, segment.start + (told + 1e-3) * d) &&
                         isInside(body.shape, body.start, segment.start + (told + 2e-3) * d))
                << i;
        }
    }
    EXPECT_GT(hits, 50);
}

TEST(OverlapTest, LowestPointsOfTurnedShapes) {
    const Motion tilted{{0, 0, 1}, turn(kY, M_PI / 6), {}, {}};
    const double c = std::cos(M_PI / 6), s = std::sin(M_PI / 6);
    EXPECT_NEAR(depthInGround(Shape::sphere(0.5), tilted), -0.5, 1e-12);
    EXPECT_NEAR(depthInGround(Shape::box(0.5, 0.3, 0.2), tilted), 0.5 * s + 0.2 * c - 1, 1e-12);
    EXPECT_NEAR(depthInGround(Shape::capsule(0.2, 0.4), tilted), 0.2 + 0.4 * c - 1, 1e-12);
    EXPECT_NEAR(depthInGround(Shape::cylinder(0.2, 0.4), tilted), 0.2 * s + 0.4 * c - 1, 1e-12);
}

// A long capsule has the moments of a rod, one without length those of a sphere.
TEST(ShapeTest, InertiaOfLimits) {
    const Vec3 ball = Shape::capsule(0.5, 0).inertia(3), rod = Shape::capsule(1e-4, 1).inertia(3);
    EXPECT_NEAR(ball.x, 0.4 * 3 * 0.25, 1e-12);
    EXPECT_NEAR(ball.z, 0.4 * 3 * 0.25, 1e-12);
    EXPECT_NEAR(rod.x, 3 * 4.0 / 12, 1e-3);
    EXPECT_NEAR(Shape::box(1, 2, 3).inertia(6).x, 6 * (16 + 36) / 12.0, 1e-12);
}

TEST(RandomTest, IsSplitMix) { // first outputs of the seed 0, published with the generator
    Random random(0);
    EXPECT_EQ(random(), static_cast<double>(0xE220A8397B1DCDAFU >> 11) * 0x1p-53);
    EXPECT_EQ(random(), static_cast<double>(0x6E789E6AA1B965F4U >> 11) * 0x1p-53);
}

TEST(TurnTest, TakesZToADirection) {
    Random random(3);
    for (int n = 0; n < 20; ++n) {
        const Vec3 d = normed(random.vector(-1, 1));
        EXPECT_NEAR(norm(rotate(turnZ(d), kZ) - d), 0, 1e-12);
        EXPECT_NEAR(angleOf(turnZ(d)), std::acos(d.z), 1e-7);
    }
    EXPECT_NEAR(rotate(turnZ(-kZ), kZ).z, -1, 1e-12);
    EXPECT_NEAR(angleAbout(turn(kX, -2), kX), -2, 1e-12);
}

// One link is a compound pendulum with a bob. Small swings have its period, and any swing its energy.
TEST(ReferenceTest, CableOfOneLinkIsAPendulum) {
    const double g = 9.81, L = 0.1, m = 0.1, M = 10, small = 1e-4;
    const double inertia = m * (0.02 * 0.02 / 4 + L * L / 3) + M * L * L;
    const double omega = std::sqrt(g * (M * L + m * L / 2) / inertia);
    const Cable cable{1, L, m, M, 0.2, small, 0.5, 5};
    const std::vector<Vec3> ends = cableReference(cable, g);
    ASSERT_EQ(ends.size(), 11U);
    for (std::size_t i = 0; i < ends.size(); ++i)
        EXPECT_NEAR(ends[i].x, L * small * std::cos(omega * 0.5 * static_cast<double>(i)),
                    1e-5 * L * small);
}

// Whatever the angles, the forces in the joints do no work: energy changes as gravity says.
TEST(ReferenceTest, CableKeepsItsEnergy) {
    const Cable cable{5, 0.3, 0.7, 2, 0.2, 0, 1, 1};
    CableDynamics dynamics(cable, 9.81);
    const double inertia = Shape::cylinder(0.02, 0.15).inertia(0.7).x;
    const auto energyOf = [&](const std::vector<double>& a, const std::vector<double>& w) {
        Vec3 p, v;
        double sum = 0;
        for (std::size_t k = 0; k < a.size(); ++k) {
            const Vec3 d{std::sin(a[k]), 0, -std::cos(a[k])}, e{std::cos(a[k]), 0, std::sin(a[k])};
            const Vec3 middle = p + 0.15 * d, speed = v + 0.15 * w[k] * e;
            sum += 0.7 * (9.81 * middle.z + dot(speed, speed) / 2) + inertia * w[k] * w[k] / 2;
            p += 0.3 * d;
            v += 0.3 * w[k] * e;
        }
        return sum + 2 * (9.81 * p.z + dot(v, v) / 2);
    };
    Random random(5);
    std::vector<double> a(5), w(5), rate(5);
    for (std::size_t k = 0; k < 5; ++k) {
        a[k] = random(-3, 3);
        w[k] = random(-4, 4);
    }
    dynamics.accelerate(a, w, rate);
    constexpr double h = 1e-5;
    const auto moved = [&](const std::vector<double>& x, const std::vector<double>& dx, double t) {
        std::vector<double> y(x);
        for (std::size_t k = 0; k < y.size(); ++k)
            y[k] += t * dx[k];
        return y;
    };
    const double power = (energyOf(moved(a, w, h), moved(w, rate, h)) -
                          energyOf(moved(a, w, -h), moved(w, rate, -h))) /
                         (2 * h);
    EXPECT_NEAR(power, 0, 1e-6);
}

// The rods' lengths and the energy stand though nothing but the multipliers keeps them.
TEST(ReferenceTest, NetKeepsItsRodsAndItsEnergy) {
    const std::vector<NetSample> samples = netReference(9.81);
    ASSERT_EQ(samples.size(), 5U);
    EXPECT_NEAR(samples[0].node.x, 1, 1e-12);
    constexpr double kFall = 152 * 9.81; // J, of the whole net by 1 m
    for (const NetSample& sample : samples) {
        EXPECT_LT(sample.stretch, 1e-5);
        EXPECT_NEAR(sample.energy, 0, 1e-5 * kFall);
        EXPECT_NEAR(sample.node.x, sample.node.y, 1e-9); // on the mirror of the net
        EXPECT_LE(norm(sample.node), 2.0 + 1e-4);        // four rods from the corner
    }
    EXPECT_NEAR(samples[1].node.z, -9.81 * 0.25 * 0.25 / 2, 0.01); // still nearly falls freely
    EXPECT_LT(samples[4].node.z, samples[1].node.z);
}

TEST(ReferenceTest, PendulumSwingsUpToItsStart) {
    Scene scene;
    ASSERT_TRUE(makeScene("pendulum", scene));
    const std::vector<double> angles = pendulumReference(scene);
    const double highest = *std::max_element(angles.begin(), angles.end());
    EXPECT_NEAR(highest, M_PI, 1e-3);
    EXPECT_LT(highest, M_PI + 1e-9);
}

TEST(SceneTest, HasTheToldNumbersOfBodiesAndJoints) {
    struct Case {
        const char* name;
        std::size_t bodies, joints;
    };
    const Case cases[] = {{"pyramid", 210, 0},    {"wall10k", 10025, 0},    {"heap", 1000, 0},
                          {"six", 216, 0},        {"scale5k", 5000, 0},     {"net", 760, 1122},
                          {"chain100", 101, 101}, {"ragdolls", 2000, 1800}, {"bridge", 41, 82},
                          {"fourbar", 3, 4},      {"vehicle", 5, 4},        {"bounce", 49, 0}};
    for (const Case& c : cases) {
        Scene scene;
        ASSERT_TRUE(makeScene(c.name, scene)) << c.name;
        EXPECT_EQ(scene.bodies.size(), c.bodies) << c.name;
        EXPECT_EQ(scene.joints.size(), c.joints) << c.name;
        // At the start nothing is violated. Chains and net would compute their references.
        Results results;
        std::vector<Motion> motions;
        for (const Body& body : scene.bodies)
            motions.push_back(body.start);
        if (!scene.joints.empty() && scene.name != "net" && scene.name != "chain100")
            for (const auto& measure : makeMeasures(scene, "")) {
                measure->sample(0, motions);
                measure->report(results);
            }
        for (const auto& [name, value] : results)
            if (name == "drift_max" || name == "axis_deg" || name == "limit_deg") {
                EXPECT_NEAR(value, 0, 1e-7) << c.name << ' ' << name;
            }
    }
    Scene scene;
    EXPECT_FALSE(makeScene("chain", scene));
    EXPECT_FALSE(makeScene("chain0", scene));
    EXPECT_FALSE(makeScene("heap5", scene));
}

} // namespace
} // namespace bench
