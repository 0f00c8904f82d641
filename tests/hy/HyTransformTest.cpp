#include "kit/MathRandom.h"
#include <Hy/HyTransform.h>
#include <cmath>
#include <numbers>

namespace {
using namespace Hy;
constexpr double kRounding = 1e-13;

HyTransform randomTransform(MathRandom& random) {
    HyTransform r;
    storeTransform(r.m, random.rotation().toRotationMatrix(), random.vector(3));
    return r;
}

HyVector3 randomVector(MathRandom& random) {
    return HyVector3(random.vector(2).data());
}

double distance(const HyTransform& a, const HyTransform& b) {
    return (columnForm(a.m) - columnForm(b.m)).norm();
}

TEST(HyTransformTest, ProductsApplyTheirOperandsInOrder) {
    MathRandom random(61);
    for (int n = 0; n < 100; ++n) {
        const HyTransform T = randomTransform(random), o = randomTransform(random);
        const HyVector3 p = randomVector(random);
        const auto image = [&](void (HyTransform::*compound)(const HyTransform&) noexcept) {
            HyTransform r = T;
            (r.*compound)(o);
            return r.transform(p);
        };
        const auto near = [](const HyVector3& a, const HyVector3& b) {
            return HyVector3::areEqualTol(a, b, kRounding);
        };
        EXPECT_TRUE(near(image(&HyTransform::postCompound), o.transform(T.transform(p))));
        EXPECT_TRUE(near(image(&HyTransform::preCompound), T.transform(o.transform(p))));
        EXPECT_TRUE(
            near(image(&HyTransform::postCompoundWithInverse), o.inverseTransform(T.transform(p))));
        EXPECT_TRUE(
            near(image(&HyTransform::preCompoundWithInverse), T.transform(o.inverseTransform(p))));
        EXPECT_TRUE(near(T.inverse().transform(p), T.inverseTransform(p)));
        EXPECT_TRUE(near(T.inverseRotate(T.rotate(p)), p));

        HyTransform self = T;
        self.postCompoundWithInverse(self);
        EXPECT_TRUE(self.isIdentity(kRounding));
        EXPECT_TRUE(self.isValid());
    }
}

TEST(HyTransformTest, MakeOrthonormalKeepsTheReferenceRow) {
    MathRandom random(62);
    for (int n = 0; n < 300; ++n)
        for (int i = 0; i < 3; ++i) {
            const int j = (i + 1) % 3, k = (i + 2) % 3;
            HyTransform T(randomVector(random));
            for (int row = 0; row < 3; ++row)
                T.axis(row) = randomVector(random);
            if (n % 3 == 1)
                T.axis(j) = T.axis(i) * 3; // row k must help out
            const HyTransform before = T;
            T.makeOrthonormal(i);
            EXPECT_TRUE(T.isValid());
            EXPECT_NEAR(T.axis(i).dot(before.axis(i)), before.axis(i).norm(), kRounding);
            const int helper = n % 3 == 1 ? k : j; // keeps its half-plane with row i
            EXPECT_GT(T.axis(j).dot(before.axis(helper)), 0);
            EXPECT_NEAR(T.axis(k).dot(before.axis(helper)), 0, 1e-11);
            EXPECT_EQ(T.t(), before.t());
        }
    HyTransform zero;
    for (int row = 0; row < 3; ++row)
        zero.axis(row).set(0, 0, 0);
    zero.makeOrthonormal(1);
    EXPECT_TRUE(zero.isIdentity(0));
}

TEST(HyTransformTest, MakeRotationLooksAtRowOneOnlyInItsTest) {
    MathRandom random(63);
    const HyVector3 zero;
    for (int n = 0; n < 200; ++n) {
        HyTransform T = randomTransform(random), other = randomTransform(random);
        const HyVector3 v = n < 2 ? HyVector3(n, 0, 1 - n) : randomVector(random);
        if (n < 2)
            T.axis(1) = other.axis(1) = HyVector3(0, 1, 0.1);
        ASSERT_TRUE(T.makeRotation(v));
        ASSERT_TRUE(other.makeRotation(v));
        other.t() = T.t();
        EXPECT_EQ(T, other);
        EXPECT_TRUE(T.isValid());
        EXPECT_NEAR(T.axis(0).dot(v), v.norm(), kRounding);

        const HyTransform before = T;
        EXPECT_FALSE(T.makeRotation(T.axis(1) * -5)) << "along row 1";
        EXPECT_FALSE(T.makeRotation(v, 100)) << "shorter than the tolerance";
        EXPECT_FALSE(T.makeRotation(HyVector3(0, std::nan(""), 1)));
        EXPECT_EQ(T, before);
        T.axis(1) = zero;
        EXPECT_FALSE(T.makeRotation(v));
    }
}

TEST(HyTransformTest, LookAtLooksAlongItsNegativeZ) {
    MathRandom random(64);
    for (int n = 0; n < 300; ++n) {
        const HyVector3 from = randomVector(random), to = randomVector(random);
        HyVector3 up = n % 2 ? HyVector3(0, 0, 1) : randomVector(random).normalized();
        const HyVector3 view = (to - from).normalized();
        const bool along = n % 5 == 0;
        if (along)
            up = view * (n % 10 ? -1 : 1);
        const HyTransform T = HyTransform::createLookAt(from, to, up);
        EXPECT_TRUE(T.isValid());
        EXPECT_NEAR(T.inverseTransform(to)[2], -from.distance(to), kRounding);
        EXPECT_EQ(T.t(), from);
        if (!along) {
            EXPECT_NEAR(T.axis(0).dot(up), 0, kRounding);
            EXPECT_GT(T.axis(1).dot(up), 0);
        }
    }
    // The pushed component: 1 and 2 where |x| and |y| are largest, else 0.
    EXPECT_EQ(HyTransform::createLookAt({}, {1, 0, 0}, {1, 0, 0}).axis(0), HyVector3(0, 0, 1));
    EXPECT_EQ(HyTransform::createLookAt({}, {0, 1, 0}, {0, 1, 0}).axis(0), HyVector3(1, 0, 0));
    EXPECT_EQ(HyTransform::createLookAt({}, {0, 0, 1}, {0, 0, 1}).axis(0), HyVector3(0, 1, 0));
    EXPECT_TRUE(HyTransform::createLookAt({1, 1, 1}, {1, 1, 1}, {0, 0, 0}).isValid());
}

TEST(HyTransformTest, InterpolatesAndDifferentiatesAMotion) {
    MathRandom random(65);
    for (int n = 0; n < 200; ++n) {
        const HyTransform a = randomTransform(random);
        HyTransform b = a, middle;
        const HyVector3 w = randomVector(random), way = randomVector(random);
        b.rotateSelf(w, 0.8);
        EXPECT_EQ(b.t(), a.t());
        b.t() += way;
        middle.interpolate(a, b, 0.25);
        HyTransform expected = a;
        expected.rotateSelf(w, 0.2);
        expected.t() += way * 0.25;
        const double angle = w.norm() * 0.8; // of which the short way goes half in the quaternion
        EXPECT_LT(distance(middle, expected), 1 - std::cos(angle / 2) > 0.05 ? 1e-12 : 1e-2);
        EXPECT_TRUE(middle.isValid());

        constexpr double kStep = 1e-5; // s
        HyTransform next = a;
        next.rotateSelf(w, kStep);
        next.t() += way * kStep;
        HyVector3 linear, angular;
        HyTransform::computeLinearVelocity(a, next, kStep, linear);
        HyTransform::computeAngularVelocity(a, next, kStep, angular);
        EXPECT_TRUE(HyVector3::areEqualTol(linear, way, 1e-9));
        EXPECT_TRUE(HyVector3::areEqualTol(angular, w, 1e-8));
    }
}

// Quaternions of one sign rule change their sign somewhere between orientations: at a third of a turn
// about the negative axes.
TEST(HyTransformTest, AngularVelocityIsTheSameOnBothSidesOfASignChange) {
    constexpr double kStep = 1e-4, kThird = 2 * std::numbers::pi / 3; // s, rad
    int changes = 0;
    for (int i = 0; i < 6; ++i) {
        HyVector3 w;
        w[i % 3] = i < 3 ? 2 : -2; // rad/s
        HyTransform a, b;
        a.rotateSelf(w, (kThird - 1e-4) / 2);
        b.rotateSelf(w, (kThird + 1e-4) / 2);
        changes += HyQuaternion(a).dot(HyQuaternion(b)) < 0 ? 1 : 0;
        HyVector3 angular;
        HyTransform::computeAngularVelocity(a, b, kStep, angular);
        EXPECT_LT(angular.distance(w), 1e-8) << i;
    }
    EXPECT_EQ(changes, 3);
}

} // namespace
