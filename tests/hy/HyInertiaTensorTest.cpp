#include <Hy/HyInertiaTensor.h>
#include <Hy/HyQuaternion.h>

#include "kit/KitTestSupport.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace Hy;

namespace {

constexpr unsigned kSeed = 77;

Eigen::Matrix3d toEigen(const HyInertiaTensor& tensor) {
    Eigen::Matrix3d out;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            out(i, j) = tensor(i, j);
    return out;
}

Eigen::Vector3d momentsOf(const HyInertiaTensor& tensor) {
    const Eigen::Matrix3d m = toEigen(tensor);
    return Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d>((m + m.transpose()) / 2).eigenvalues();
}

class HyInertiaTensorTest : public testing::Test {
protected:
    HyReal random(HyReal low, HyReal high) {
        return std::uniform_real_distribution<HyReal>(low, high)(mEngine);
    }
    HyTransform randomAxes() {
        return HyTransform(
            HyQuaternion(random(-1, 1), random(-1, 1), random(-1, 1), random(0.1, 1)));
    }

private:
    std::mt19937 mEngine{kSeed};
    testing::ScopedTrace mSeed{__FILE__, __LINE__, "seed " + std::to_string(kSeed)};
};

TEST_F(HyInertiaTensorTest, TestsAgreeWithEigenvalues) {
    int physical = 0, definite = 0;
    for (int round = 0; round < 2000; ++round) {
        const HyReal scale = std::pow(10, random(-9, 9));
        const HyVector3 moments(scale * random(-0.3, 1), scale * random(-0.3, 1),
                                scale * random(-0.3, 1));
        const HyInertiaTensor tensor(moments, randomAxes());
        const HyReal sum = moments[0] + moments[1] + moments[2];
        const HyReal largest = std::max({moments[0], moments[1], moments[2]});
        const HyReal smallest = std::min({moments[0], moments[1], moments[2]});
        const bool isPhysical = sum > 0 && 2 * largest <= sum;
        const bool isDefinite = smallest > 0;
        EXPECT_EQ(tensor.isPhysical(), isPhysical) << moments[0] << " " << moments[1];
        EXPECT_EQ(tensor.isPositiveDefinite(), isDefinite) << moments[0] << " " << moments[1];
        EXPECT_EQ(tensor.isValid(), isPhysical && tensor.isSymmetric());
        physical += isPhysical;
        definite += isDefinite;
    }
    EXPECT_GT(physical, 200); // the sample holds both kinds
    EXPECT_GT(definite, physical);
}

TEST_F(HyInertiaTensorTest, EachTurnedLaminaIsPhysical) {
    for (int round = 0; round < 2000; ++round) {
        const HyReal a = std::pow(10, random(-6, 6)), b = std::pow(10, random(-6, 6));
        HyInertiaTensor lamina(HyVector3(a, b, a + b), randomAxes());
        EXPECT_TRUE(lamina.isPhysical()) << a << " " << b;
        const Eigen::Matrix3d before = toEigen(lamina);
        EXPECT_TRUE(lamina.makeValid());
        EXPECT_EQ(toEigen(lamina), before);
    }
}

TEST_F(HyInertiaTensorTest, MakeValidKeepsTheLargestMomentAndTheAxes) {
    for (int round = 0; round < 500; ++round) {
        const HyReal scale = std::pow(10, random(-6, 6));
        const HyVector3 moments(scale * random(-1, 1), scale * random(-1, 1), scale);
        HyInertiaTensor tensor(moments, randomAxes());
        const Eigen::Matrix3d before = toEigen(tensor);
        const bool physical = tensor.isPhysical();
        EXPECT_EQ(tensor.makeValid(), physical);
        EXPECT_TRUE(tensor.isValid());
        EXPECT_NEAR(momentsOf(tensor)[2], scale, 1e-13 * scale);
        const Eigen::Matrix3d after = toEigen(tensor);
        EXPECT_LE((after * before - before * after).norm(), 1e-13 * scale * scale);
        EXPECT_TRUE(tensor.makeValid());
    }
    HyInertiaTensor skew(1, 0.5, 0, 0.1, 1, 0, 0, 0, 1);
    EXPECT_FALSE(skew.isSymmetric());
    EXPECT_FALSE(skew.isValid());
    EXPECT_TRUE(skew.makeValid());
    EXPECT_EQ(skew(0, 1), 0.3);
    EXPECT_EQ(skew(1, 0), 0.3);
    HyInertiaTensor negative(-1, -2, -3, 0, 0, 0);
    EXPECT_FALSE(negative.makePhysical());
    EXPECT_EQ(negative(2, 2), -3);
}

TEST_F(HyInertiaTensorTest, EpsilonAndTraceDecideAtTheBorder) {
    HyInertiaTensor tensor(1, 1, 2.02, 0, 0, 0); // 0.005 of the trace too much
    EXPECT_FALSE(tensor.isPhysical());
    tensor.setValidationEpsilon(0.01);
    EXPECT_TRUE(tensor.isPhysical());
    tensor.setValidationEpsilon(-1);
    EXPECT_FALSE(tensor.isPhysical());
    tensor.set(1, 0.001, 0, 0, 1, 0, 0, 0, 1);
    EXPECT_FALSE(tensor.isSymmetric());
    tensor.setValidationEpsilon(0.01);
    EXPECT_TRUE(tensor.isSymmetric());

    const HyInertiaTensor tiny(1e-18, 1e-18, 1e-18, 0, 0, 0), zero;
    for (const HyInertiaTensor& each : {tiny, zero}) {
        EXPECT_FALSE(each.isPhysical());
        EXPECT_FALSE(each.isPositiveDefinite());
        EXPECT_FALSE(each.isSymmetric());
    }
    EXPECT_FALSE(HyInertiaTensor(2, 3, -1, 0, 0, 0).isPhysical()); // whose leading minors pass
}

TEST_F(HyInertiaTensorTest, PrincipalFrameStaysNearTheReference) {
    for (int round = 0; round < 200; ++round) {
        const HyTransform axes = randomAxes();
        const HyVector3 wanted(random(0.1, 1), random(0.1, 1), random(0.1, 1));
        HyVector3 moments;
        HyTransform found;
        HyTransform near = axes; // 0.2 rad off the axes
        near.rotateSelf({0.1, -0.1, 0.14}, 1);
        HyInertiaTensor(wanted, axes).get(moments, found, near);
        EXPECT_LE(moments.distance(wanted), 1e-14);
        EXPECT_TRUE(found.isValid());
        for (int i = 0; i < 3; ++i)
            EXPECT_GT(found.axis(i).dot(axes.axis(i)), 0.999);
        HyInertiaTensor(HyVector3(2, 2, 2), axes).get(moments, found, near); // any axes will do
        for (int i = 0; i < 3; ++i)
            EXPECT_GT(found.axis(i).dot(near.axis(i)), 1 - 1e-14);
    }
}

TEST_F(HyInertiaTensorTest, RefusesWhatIsNotFiniteAndIndicesOutOfRange) {
    const WarningRecorder warnings;
    constexpr HyReal kNaN = std::numeric_limits<HyReal>::quiet_NaN();
    HyInertiaTensor tensor;
    tensor.setIdentity();
    tensor.set(kNaN, 1, 1, 0, 0, 0);
    HyTransform broken;
    broken.m[1][1] = kNaN;
    tensor.set(HyVector3(1, 2, 3), broken);
    tensor.rotateBy(broken);
    HyTransform huge;
    huge.m[1][1] = 1e200; // finite, but its square is not
    tensor.rotateBy(huge);
    EXPECT_EQ(warnings.take(), (std::vector<std::string>{
                                   "0: HyInertiaTensor::set: the numbers must be finite.\n",
                                   "0: HyInertiaTensor::set: the numbers must be finite.\n",
                                   "0: HyInertiaTensor::rotateBy: the numbers must be finite.\n",
                                   "0: HyInertiaTensor::rotateBy: the numbers must be finite.\n"}));
    EXPECT_EQ(toEigen(tensor), Eigen::Matrix3d::Identity());
    EXPECT_EQ(tensor(3, 0), 0);
    EXPECT_EQ(tensor(0, -1), 0);
    EXPECT_EQ(warnings.take().size(), 2u);
}

TEST_F(HyInertiaTensorTest, BoxesAndMomentsAreInverse) {
    for (int round = 0; round < 100; ++round) {
        const HyVector3 sides(random(0, 5), random(0, 5), random(0, 5));
        HyVector3 moments, back;
        HyInertiaTensor::unitMassBoxDimensionsToMomentsOfInertia(sides, moments);
        // ∫(y² + z²) over the box, by its corners' mean: the second moment of a side is a third.
        EXPECT_NEAR(moments[0], (sides[1] * sides[1] + sides[2] * sides[2]) / 4 / 3, 1e-14);
        ASSERT_TRUE(HyInertiaTensor::momentsOfInertiaToUnitMassBoxDimensions(moments, back));
        EXPECT_LE(back.distance(sides), 1e-6); // a square root of a difference
    }
    HyVector3 sides(7, 7, 7);
    EXPECT_FALSE(HyInertiaTensor::momentsOfInertiaToUnitMassBoxDimensions({1, 1, 3}, sides));
    EXPECT_EQ(sides, HyVector3(7, 7, 7));
}

} // namespace
