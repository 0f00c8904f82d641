#include "kit/MathRandom.h"
#include <Hy/HyQuaternion.h>
#include <Hy/HySmallReal.h>
#include <Hy/HyTransform.h>
#include <cmath>
#include <numbers>

namespace {
using namespace Hy;
using std::numbers::pi;
constexpr double kRounding = 1e-14;

HyQuaternion randomRotation(MathRandom& random) {
    const Eigen::Quaterniond q = random.rotation();
    return {q.w(), q.x(), q.y(), q.z()};
}

double distance(const HyQuaternion& q, const Eigen::Quaterniond& expected) {
    return (toEigen(q.mQuat).coeffs() - expected.coeffs()).norm();
}

TEST(HyQuaternionTest, ProductAndRotationAgreeWithEigenAndTheTransform) {
    MathRandom random(81);
    for (int n = 0; n < 200; ++n) {
        const HyQuaternion a = randomRotation(random), b = randomRotation(random);
        EXPECT_LT(distance(a * b, toEigen(a.mQuat) * toEigen(b.mQuat)), kRounding);
        HyQuaternion square = a;
        square *= square;
        EXPECT_EQ(square, a * a);

        const HyVector3 v(random.vector(2).data());
        const HyVector3 image = a.rotate(v);
        EXPECT_TRUE(HyVector3::areEqualTol(image, a.toTransform().rotate(v), kRounding));
        EXPECT_TRUE(HyVector3::areEqualTol(a.inverseRotate(image), v, kRounding));
        EXPECT_NEAR(std::abs(HyQuaternion(a.toTransform()).dot(a)), 1, kRounding);
    }
}

TEST(HyQuaternionTest, EulerAnglesAboutFixedAxes) {
    MathRandom random(82);
    for (int n = 0; n < 200; ++n) {
        const double x = random.real(-3, 3), y = random.real(-1.5, 1.5), z = random.real(-3, 3);
        HyQuaternion q;
        q.fromEulerXYZ(x, y, z);
        using Eigen::AngleAxisd, Eigen::Vector3d;
        EXPECT_LT(distance(q, AngleAxisd(z, Vector3d::UnitZ()) * AngleAxisd(y, Vector3d::UnitY()) *
                                  AngleAxisd(x, Vector3d::UnitX())),
                  kRounding);
        double a, b, c;
        q.toEulerXYZ(a, b, c);
        EXPECT_NEAR(a, x, 1e-12);
        EXPECT_NEAR(b, y, 1e-12);
        EXPECT_NEAR(c, z, 1e-12);
    }
    double x, y, z;
    HyQuaternion(std::sqrt(0.5) + 1e-9, 0, std::sqrt(0.5), 0).toEulerXYZ(x, y, z); // sine above 1
    EXPECT_DOUBLE_EQ(y, pi / 2);
}

TEST(HyQuaternionTest, AxisAndAngle) {
    MathRandom random(83);
    for (int n = 0; n < 200; ++n) {
        const Eigen::Vector3d axis = random.direction();
        const double angle = random.real(0.01, 2 * pi - 0.01);
        HyQuaternion q;
        q.fromAxisAngle(HyVector3(axis.data()), angle);
        EXPECT_LT(distance(q, Eigen::Quaterniond(Eigen::AngleAxisd(angle, axis))), kRounding);
        HyVector3 foundAxis;
        double found;
        q.toAxisAngle(foundAxis, found);
        EXPECT_NEAR(found, angle, 1e-11);
        EXPECT_TRUE(HyVector3::areEqualTol(foundAxis, HyVector3(axis.data()), 1e-12));
    }
    struct Case {
        HyQuaternion q;
        double angle;
        HyVector3 axis;
    };
    const Case cases[] = {{{1, 0, 0, 0}, 0, {1, 0, 0}},
                          {{1, 0, 9e-15, 0}, 0, {1, 0, 0}},
                          {{1 + 1e-15, 0, 1e-3, 0}, 0, {1, 0, 0}},
                          {{-1 - 1e-15, 0, 1e-3, 0}, 2 * pi, {0, 1, 0}}};
    for (const Case& c : cases) {
        HyVector3 axis;
        double angle = -1;
        c.q.toAxisAngle(axis, angle);
        EXPECT_DOUBLE_EQ(angle, c.angle);
        EXPECT_EQ(axis, c.axis);
    }
}

TEST(HyQuaternionTest, NormalizeGivesUnitLengthOrTheIdentity) {
    struct Case {
        HyQuaternion q, expected;
    };
    const Case cases[] = {{{0, 0, 0, 0}, {}},
                          {{9e-8, 0, 0, 0}, {}}, // square 8.1e-15: too short
                          {{0, -1.1e-7, 0, 0}, {0, -1, 0, 0}},
                          {{0, 0, 3, 4}, {0, 0, 0.6, 0.8}},
                          {{std::nan(""), 0, 0, 0}, {}}};
    for (const Case& c : cases) {
        HyQuaternion q = c.q;
        q.normalize();
        EXPECT_LT(distance(q, toEigen(c.expected.mQuat)), 1e-15);
    }
    EXPECT_EQ(HY_SMALL_REAL<double>::epsilon, 9.9999998245167e-15);
}

TEST(HyQuaternionTest, SlerpGoesTheShortWayAndIsLinearOnlyWhenNear) {
    const HyQuaternion from, near(std::cos(0.0004), std::sin(0.0004), 0, 0);
    EXPECT_DOUBLE_EQ(from.slerp(near, 0.5)[1], std::sin(0.0004) / 2);
    const HyQuaternion half(std::cos(0.1), 0, std::sin(0.1), 0); // linear for KitQuaternionSlerp
    EXPECT_DOUBLE_EQ(from.slerp(half, 0.5)[2], std::sin(0.05));
    const HyQuaternion opposite(-half[0], 0, -half[2], 0);
    EXPECT_EQ(from.slerp(opposite, 0.5), from.slerp(half, 0.5));
    EXPECT_EQ(from.slerp(HyQuaternion(-1, 0, 0, 0), 0.3), from);
}
} // namespace
