#include "kit/MathRandom.h"
#include <Hy/HyVector3.h>
#include <algorithm>
#include <cmath>
#include <limits>

namespace {
using namespace Hy;
constexpr double kRounding = 1e-14;

HyVector3 randomVector(MathRandom& random) {
    return HyVector3(random.vector(2).data());
}

TEST(HyVector3Test, PerpendicularVectorsOfAnyVector) {
    MathRandom random(71);
    for (int n = 0; n < 300; ++n) {
        HyVector3 a = randomVector(random);
        if (n < 8) // along axes and diagonals of the planes
            a.set(n & 1, (n >> 1) & 1, (n >> 2) & 1);
        const HyVector3 unit = a.normalized(), b = a.getOrthogonal();
        EXPECT_NEAR(b.norm(), 1, kRounding);
        EXPECT_NEAR(b.dot(unit), 0, kRounding);
        HyVector3 p, q;
        a.planeSpace(p, q);
        EXPECT_NEAR(q.norm(), 1, kRounding);
        if (!a.isZero()) {
            EXPECT_TRUE(HyVector3::areEqualTol(p.cross(q), unit, kRounding));
        }

        HyVector3 c = randomVector(random);
        const HyVector3 along = c.project(a);
        EXPECT_NEAR(along.cross(a).norm(), 0, 10 * kRounding);
        c.orthogonalize(a);
        EXPECT_NEAR(c.dot(a), 0, 10 * kRounding);
    }
}

TEST(HyVector3Test, CleanBaseIsOrthonormalWhateverComesIn) {
    MathRandom random(72);
    for (int n = 0; n < 300; ++n) {
        HyVector3 a = randomVector(random), b = randomVector(random), c;
        if (n % 4 == 1)
            b = a * -2.7; // along the first
        if (n % 4 == 2)
            b = a + HyVector3(1e-9, 0, 0); // nearly so
        if (n % 4 == 3)
            (n % 8 == 3 ? a : b).set(0, 0, 0);
        const HyVector3 first = a, second = b;
        HyVector3::makeCleanBase(a, b, c);
        EXPECT_NEAR(a.norm(), 1, kRounding);
        EXPECT_NEAR(b.norm(), 1, kRounding);
        EXPECT_NEAR(a.dot(b), 0, kRounding);
        EXPECT_TRUE(HyVector3::areEqualTol(a.cross(b), c, kRounding));
        EXPECT_NEAR(a.dot(first), first.norm(), kRounding);
        if (n % 4 == 0) {
            EXPECT_NEAR(c.dot(second), 0, kRounding);
            EXPECT_GT(b.dot(second), 0);
        }
    }
}

TEST(HyVector3Test, DistanceFromASegmentIsTheLeastOfItsPoints) {
    MathRandom random(73);
    for (int n = 0; n < 50; ++n) {
        const HyVector3 p = randomVector(random), a = randomVector(random);
        const HyVector3 b = n % 10 ? randomVector(random) : a;
        double least = 1e9;
        for (int k = 0; k <= 2000; ++k)
            least = std::min(least, p.distance(a + k / 2000.0 * (b - a)));
        EXPECT_NEAR(p.distancePointToSegment(a, b), least, 1e-3);
        EXPECT_LE(p.distancePointToSegment(a, b), least + kRounding);
    }
}

TEST(HyVector3Test, ComponentsAndCrossProducts) {
    HyVector3 v(1, -5, 5), o(0, 0, 1);
    EXPECT_EQ(v.maxComponentIndex(), 1);
    v.setMax(HyVector3(2, 0, 0));
    v.setMin(HyVector3(3, 3, 3));
    EXPECT_EQ(v, HyVector3(2, 0, 3));
    v.multComp(HyVector3(2, 1, 0));
    EXPECT_EQ(v, HyVector3(4, 0, 0));
    v.preCross(o);
    EXPECT_EQ(v, HyVector3(0, 4, 0));
    v.postCross(o);
    EXPECT_EQ(v, HyVector3(4, 0, 0));
    v.setLinear(2, v, 3, o);
    EXPECT_EQ(v, HyVector3(8, 0, 3));
    v.planeNormal({0, 0, 1}, {1, 0, 1}, {0, 1, 1});
    EXPECT_EQ(v, HyVector3(0, 0, 1));
    v.planeNormal({0, 0, 0}, {1, 1, 1}, {2, 2, 2});
    EXPECT_TRUE(v.isZero());
    v[1] = std::nan("");
    EXPECT_FALSE(v.isFinite() || v.isZero(1) || HyVector3::areEqualTol(v, v, 1));
    HyVector3 huge(1e300, 0, 0); // its square overflows
    EXPECT_EQ(huge.normalize(), 0);
    EXPECT_EQ(huge[0], 1e300);
}
} // namespace
