#include "kit/MathRandom.h"
#include <Kit/KitQuaternion.h>
#include <cmath>
#include <limits>
#include <numbers>

namespace {
using std::numbers::pi;
constexpr double kRounding = 1e-14;

double distance(const KitVector4 q, const Eigen::Quaterniond& expected) {
    return (toEigen(q).coeffs() - expected.coeffs()).norm();
}

TEST(KitQuaternionTest, OfTransformAgreesWithEigenUpToSign) {
    MathRandom random(11);
    for (int n = 0; n < 1000; ++n) {
        const Eigen::Quaterniond expected = random.rotation();
        const double scale = random.real(0.1, 10); // a uniform scale is taken out
        KitMatrix4 tm;
        storeTransform(tm, scale * expected.toRotationMatrix(), random.vector(5));
        KitVector4 q;
        KitQuaternionFromTM(q, tm);
        EXPECT_NEAR(std::abs(toEigen(q).dot(expected)), 1, kRounding);
        EXPECT_NEAR(toEigen(q).norm(), 1, kRounding);

        KitMatrix4SetIdentity(tm);
        const double drift = random.real(0.5, 2); // and so is the length of a quaternion
        for (double& component : q)
            component *= drift;
        KitMatrix4TMSetRotationFromQuaternion(tm, q);
        EXPECT_LT((rotationOf(tm) - expected.toRotationMatrix()).norm(), kRounding);
    }
}

TEST(KitQuaternionTest, OfHalfTurnsAboutAnyAxis) {
    MathRandom random(12);
    for (int n = 0; n < 300; ++n) {
        const Eigen::Vector3d axis = n < 3 ? Eigen::Vector3d::Unit(n) : random.direction();
        KitMatrix4 tm;
        storeTransform(tm, 2 * axis * axis.transpose() - Eigen::Matrix3d::Identity(),
                       Eigen::Vector3d::Zero());
        KitVector4 q;
        KitQuaternionFromTM(q, tm);
        EXPECT_NEAR(std::abs(toEigen(q).vec().dot(axis)), 1, kRounding);
        EXPECT_NEAR(q[0], 0, kRounding);
    }
}

TEST(KitQuaternionTest, ZeroAndBadInputGiveTheIdentity) {
    KitMatrix4 zero = {}, nan = {};
    nan[1][1] = std::numeric_limits<double>::quiet_NaN();
    for (const auto* bad : {&zero, &nan}) {
        KitVector4 q = {0, 1, 0, 0};
        KitQuaternionFromTM(q, *bad);
        EXPECT_EQ(distance(q, Eigen::Quaterniond::Identity()), 0);
    }
    const KitVector4 noRotation = {0, 0, 0, 0}, notFinite = {1, nan[1][1], 0, 0};
    for (const KitVector4* bad : {&noRotation, &notFinite}) {
        KitMatrix4 tm = {};
        KitMatrix4TMSetRotationFromQuaternion(tm, *bad);
        EXPECT_EQ(rotationOf(tm), Eigen::Matrix3d::Identity());
    }
}

TEST(KitQuaternionTest, FiniteRotationTurnsAboutTheWorldAxis) {
    MathRandom random(13);
    for (int n = 0; n < 500; ++n) {
        const Eigen::Quaterniond start = random.rotation();
        const Eigen::Vector3d w = random.vector(20); // rad/s
        const double h = random.real(1e-3, 1);       // s
        KitVector4 q = {start.w(), start.x(), start.y(), start.z()};
        KitQuaternionFiniteRotation(q, w.data(), h);
        const Eigen::Quaterniond turn(Eigen::AngleAxisd(w.norm() * h, w.normalized()));
        EXPECT_LT(distance(q, turn * start), kRounding * 10);
    }

    const KitVector3 still = {0, 0, 0}, endless = {std::numeric_limits<double>::infinity(), 0, 0};
    KitVector4 q = {0.5, -0.5, 0.5, 0.5};
    KitQuaternionFiniteRotation(q, still, 1);
    KitQuaternionFiniteRotation(q, endless, 1);
    EXPECT_EQ(distance(q, Eigen::Quaterniond(0.5, -0.5, 0.5, 0.5)), 0);
}

// Spherical weights give a unit result in the plane of both; linear ones a chord, shorter than 1.
TEST(KitQuaternionTest, SlerpChangesItsWeightsAtItsThreshold) {
    struct Case {
        const char* name;
        double angle, threshold;
        bool spherical;
    };
    const double atThreshold = std::acos(0.95);
    const Case cases[] = {
        {"beyond 0.05", atThreshold + 1e-6, 0.05, true},
        {"within 0.05", atThreshold - 1e-6, 0.05, false},
        {"beyond 1e-7", 0.001, 1e-7, true},
        {"within 1e-7", 0.0004, 1e-7, false},
    };
    for (const Case& c : cases)
        for (const double sign : {1.0, -1.0}) { // -q is the same orientation: the short way
            const KitVector4 from = {1, 0, 0, 0};
            const KitVector4 to = {sign * std::cos(c.angle), 0, 0, sign * std::sin(c.angle)};
            KitVector4 q;
            KitQuaternionSlerpWithThreshold(q, from, to, 0.25, c.threshold);
            const double length = toEigen(q).norm();
            const double chord = std::sqrt(1 - 2 * 0.25 * 0.75 * (1 - std::cos(c.angle)));
            EXPECT_NEAR(length, c.spherical ? 1 : chord, 1e-15) << c.name;
            if (c.spherical) {
                EXPECT_NEAR(std::atan2(q[3], q[0]), c.angle / 4, kRounding) << c.name;
            }
        }
    KitVector4 q;
    const KitVector4 from = {1, 0, 0, 0}, to = {0.96, 0.28, 0, 0};
    KitQuaternionSlerp(q, from, to, 0.5);
    EXPECT_DOUBLE_EQ(q[0], 0.98);
    EXPECT_DOUBLE_EQ(q[1], 0.14);
}

TEST(KitQuaternionTest, ForRotationTakesOneVectorToTheOther) {
    MathRandom random(15);
    for (int n = 0; n < 500; ++n) {
        const Eigen::Vector3d from = n < 3 ? Eigen::Vector3d::Unit(n) : random.direction();
        const Eigen::Vector3d other = random.direction();
        for (const Eigen::Vector3d& to : {other, from, Eigen::Vector3d(-from)}) {
            KitVector4 q;
            KitQuaternionForRotation(q, from.data(), to.data());
            EXPECT_NEAR(toEigen(q).norm(), 1, kRounding);
            EXPECT_LT((toEigen(q) * from - to).norm(), 1e-7); // half angles: roots of rounding
            EXPECT_NEAR(toEigen(q).vec().dot(from), 0, 1e-7) << "not the shortest";
        }
    }
    const KitVector3 z = {0, 0, 1}, down = {0, 0, -1}, zero = {0, 0, 0};
    struct Case {
        const double *v1, *v2;
        Eigen::Quaterniond expected;
    };
    const double half = std::sqrt(0.5);
    const Case cases[] = {{z, z, {1, 0, 0, 0}},
                          {z, down, {0, -1, 0, 0}},
                          {down, z, {0, 1, 0, 0}}, // no axis from (-y, x, 0)
                          {zero, z, {half, 0, half, 0}}};
    for (const Case& c : cases) {
        KitVector4 q;
        KitQuaternionForRotation(q, c.v1, c.v2);
        EXPECT_LT(distance(q, c.expected), kRounding);
    }
}
} // namespace
