#include "kit/MathRandom.h"
#include <Hy/HyVector3.h>
#include <algorithm>

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

} // namespace
