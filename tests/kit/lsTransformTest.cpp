#include "kit/MathRandom.h"
#include <Kit/lsTransform.h>

namespace {
constexpr double kRounding = 1e-14;

lsTransform randomTransform(MathRandom& random) {
    lsTransform r;
    storeTransform(r.matrix(), random.rotation().toRotationMatrix(), random.vector(3));
    return r;
}

double distance(const lsVec3& a, const lsVec3& b) {
    return (a - b).norm();
}

TEST(lsTransformTest, ProductsMapPointsInOrder) {
    MathRandom random(41);
    for (int n = 0; n < 100; ++n) {
        const lsTransform a = randomTransform(random), b = randomTransform(random);
        const lsVec3 p(random.real(-2, 2), random.real(-2, 2), random.real(-2, 2));
        lsTransform r;
        r.thisIsFirstThenSecond(a, b);
        EXPECT_LT(distance(r.transform(p), b.transform(a.transform(p))), kRounding * 10);
        r.thisIsFirstToSecond(a, b);
        EXPECT_LT(distance(r.transform(p), b.refFrameToThisFrame(a.thisFrameToRefFrame(p))),
                  kRounding * 10);
        r.thisIsInverseFirstThenSecond(a, b);
        EXPECT_LT(distance(r.transform(p), b.transform(a.inverseTransform(p))), kRounding * 10);
        r = a;
        r.thisIsThisThenInverseThat(b);
        EXPECT_LT(distance(r.transform(p), b.inverseTransform(a.transform(p))), kRounding * 10);
        r.thisIsInverseThat(r);
        EXPECT_LT(distance(r.transform(b.inverseTransform(a.transform(p))), p), kRounding * 100);
        EXPECT_LT(distance(lsTransform::inverseOf(a).transform(a.transform(p)), p), kRounding * 10);
        EXPECT_TRUE(r.isOrthonormal(1e-12));
    }
}

TEST(lsTransformTest, ViewsShareTheMemory) {
    KitMatrix4 m;
    KitMatrix4SetIdentity(m);
    lsTransform& view = lsTransform::cast(m);
    view.t() = lsVec3(1, 2, 3);
    view.axis(0) *= 2;
    m[2][3] = 5;
    EXPECT_EQ(m[3][1], 2);
    EXPECT_FALSE(view.isOrthonormal(0.1));
    view.axis(0).normalize();
    view.axis(1) = -view.axis(1);
    EXPECT_FALSE(view.isOrthonormal(0.1)) << "left-handed";
    view.resetUnused();
    EXPECT_EQ(m[2][3], 0);
    EXPECT_EQ(lsTransform::constCast(m).transform(lsVec3(1, 1, 1)), lsVec3(2, 1, 4));
}

} // namespace
