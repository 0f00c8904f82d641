#include <Hy/HyGeometryTools.h>

#include <Eigen/Dense>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace Hy;

namespace {

constexpr unsigned kSeed = 4711;
using Points = HyGeometryTools::Points;
using Weights = HyGeometryTools::Weights;

class HyGeometryToolsTest : public testing::Test {
protected:
    HyVector3 random() {
        std::normal_distribution<HyReal> normal;
        return {normal(mEngine), 3 * normal(mEngine), 0.2 * normal(mEngine)};
    }
    std::vector<HyVector3> randomPoints(std::size_t count) {
        std::vector<HyVector3> points(count);
        for (HyVector3& point : points)
            point = random() + HyVector3(5, -7, 2);
        return points;
    }
    std::mt19937 mEngine{kSeed};
    testing::ScopedTrace mSeed{__FILE__, __LINE__, "seed " + std::to_string(kSeed)};
};

Points view(const std::vector<HyVector3>& points) {
    return {points.data(), points.size()};
}

Eigen::Vector3d toEigen(const HyVector3& v) {
    return {v[0], v[1], v[2]};
}

TEST_F(HyGeometryToolsTest, PrincipalComponentsDiagonaliseTheCovariance) {
    const std::vector<HyVector3> points = randomPoints(200);
    std::vector<HyReal> weights(points.size());
    for (std::size_t i = 0; i < weights.size(); ++i)
        weights[i] = static_cast<HyReal>(i % 5);

    for (const bool weighted : {false, true}) {
        Eigen::Vector3d mean = Eigen::Vector3d::Zero();
        Eigen::Matrix3d covariance = Eigen::Matrix3d::Zero();
        double sum = 0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            const double w = weighted ? weights[i] : 1;
            mean += w * toEigen(points[i]);
            covariance += w * toEigen(points[i]) * toEigen(points[i]).transpose();
            sum += w;
        }
        mean /= sum;
        covariance = covariance / sum - mean * mean.transpose();

        HyReal axes[3][3], variances[3];
        HyVector3 found, foundMean;
        const Weights w(weights.data(), weights.size());
        ASSERT_TRUE(weighted ? HyGeometryTools::performPrincipalComponentAnalysis(
                                   view(points), w, axes, variances, found)
                             : HyGeometryTools::performPrincipalComponentAnalysis(
                                   view(points), axes, variances, found));
        ASSERT_TRUE(weighted ? HyGeometryTools::computeWeightedMean(view(points), w, foundMean)
                             : HyGeometryTools::computeMean(view(points), foundMean));
        EXPECT_EQ(found, foundMean);
        EXPECT_LE((toEigen(found) - mean).norm(), 1e-13);
        EXPECT_GE(variances[0], variances[1]);
        EXPECT_GE(variances[1], variances[2]);
        Eigen::Matrix3d rows;
        for (int i = 0; i < 3; ++i)
            rows.row(i) = Eigen::RowVector3d(axes[i][0], axes[i][1], axes[i][2]);
        EXPECT_NEAR(rows.determinant(), 1, 1e-14);
        const Eigen::Vector3d values(variances[0], variances[1], variances[2]);
        EXPECT_LE((rows.transpose() * values.asDiagonal() * rows - covariance).norm(), 1e-12);
    }
}

TEST_F(HyGeometryToolsTest, EigenvectorsAreSortedForEachOrderOfTheValues) {
    HyReal order[3] = {1, 2, 3};
    do {
        const HyReal matrix[3][3] = {{order[0], 0, 0}, {0, order[1], 0}, {0, 0, order[2]}};
        HyReal vectors[3][3], values[3];
        ASSERT_TRUE(HyGeometryTools::computeSortedEigenvectors(matrix, vectors, values));
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(values[i], 3 - i);
            for (int j = 0; j < 3; ++j)
                EXPECT_EQ(std::abs(vectors[i][j]), order[j] == values[i] ? 1 : 0);
        }
    } while (std::next_permutation(order, order + 3));
    const HyReal nan = std::numeric_limits<HyReal>::quiet_NaN();
    const HyReal broken[3][3] = {{1, nan, 0}, {nan, 1, 0}, {0, 0, 1}};
    HyReal vectors[3][3], values[3];
    EXPECT_FALSE(HyGeometryTools::computeSortedEigenvectors(broken, vectors, values));
}

/// Least distance to points densely taken from a line's stretch.
HyReal scanDistance(const HyVector3& p, const HyVector3& a, const HyVector3& b, HyReal from,
                    HyReal to) {
    HyReal least = std::numeric_limits<HyReal>::max();
    constexpr int kSteps = 4000;
    for (int i = 0; i <= kSteps; ++i) {
        const HyReal t = from + (to - from) * i / kSteps;
        least = std::min(least, p.distance(a + (b - a) * t));
    }
    return least;
}

TEST_F(HyGeometryToolsTest, DistancesAreThoseOfAScan) {
    for (int round = 0; round < 30; ++round) {
        const HyVector3 a = random(), b = random(), p = random();
        HyVector3 closest;
        const HyReal toSegment = HyGeometryTools::computeDistanceToLineSegment(p, a, b, closest);
        EXPECT_NEAR(toSegment, scanDistance(p, a, b, 0, 1), 1e-3);
        EXPECT_NEAR(p.distance(closest), toSegment, 1e-14);
        const HyReal toLine = HyGeometryTools::computeDistanceToLine(p, a, b - a, closest);
        EXPECT_NEAR((p - closest).dot(b - a), 0, 1e-13 * (b - a).norm() * (1 + p.norm()));
        EXPECT_NEAR((closest - a).cross(b - a).norm(), 0, 1e-12);
        EXPECT_NEAR(p.distance(closest), toLine, 1e-14);
        EXPECT_LE(toLine, toSegment + 1e-14);
    }
    HyVector3 closest;
    const HyVector3 a(1, 0, 0), b(3, 0, 0), up(0, 2, 0);
    EXPECT_EQ(HyGeometryTools::computeDistanceToLineSegment(a - a + up, a, b, closest),
              std::sqrt(5));
    EXPECT_EQ(closest, a);
    EXPECT_EQ(HyGeometryTools::computeDistanceToLineSegment({7, 0, 3}, a, b, closest), 5);
    EXPECT_EQ(closest, b);
    EXPECT_EQ(HyGeometryTools::computeDistanceToLineSegment(a + up, a, a, closest), 2);
    EXPECT_EQ(HyGeometryTools::computeDistanceToLine(a + up, a, {0, 0, 0}, closest), 2);
    EXPECT_EQ(closest, a);
}

TEST_F(HyGeometryToolsTest, ExtremesAreThoseOfTheSet) {
    const std::vector<HyVector3> points = randomPoints(100);
    const HyVector3 a = random(), b = random();
    HyVector3 toLine, toOrigin, toSegment, low, high, unused;
    const HyReal line = HyGeometryTools::computeMaxDistanceToLine(view(points), a, b - a, toLine);
    const HyReal origin = HyGeometryTools::computeMaxDistanceToOrigin(view(points), a, toOrigin);
    const HyReal segment =
        HyGeometryTools::computeMaxDistanceToLineSegment(view(points), a, b, toSegment);
    HyReal lowest = 0, highest = 0;
    ASSERT_TRUE(
        HyGeometryTools::computeExtremalVertices(view(points), b, low, high, lowest, highest));
    for (const HyVector3& p : points) {
        EXPECT_LE(HyGeometryTools::computeDistanceToLine(p, a, b - a, unused), line + 1e-14);
        EXPECT_LE(p.distance(a), origin);
        EXPECT_LE(HyGeometryTools::computeDistanceToLineSegment(p, a, b, unused), segment + 1e-14);
        EXPECT_GE(p.dot(b), lowest);
        EXPECT_LE(p.dot(b), highest);
    }
    EXPECT_NEAR(HyGeometryTools::computeDistanceToLine(toLine, a, b - a, unused), line, 1e-14);
    EXPECT_EQ(toOrigin.distance(a), origin);
    EXPECT_NEAR(HyGeometryTools::computeDistanceToLineSegment(toSegment, a, b, unused), segment,
                1e-14);
    EXPECT_EQ(low.dot(b), lowest);
    EXPECT_EQ(high.dot(b), highest);
}

TEST_F(HyGeometryToolsTest, EmptySetsAndUnusableWeightsGiveNothing) {
    const std::vector<HyVector3> points(2, HyVector3(1, 2, 3));
    const HyReal weights[] = {0, 0, -1, 2, 1, std::numeric_limits<HyReal>::infinity()};
    HyVector3 mean(9, 9, 9), other;
    HyReal matrix[3][3], values[3], low = 0, high = 0;
    EXPECT_FALSE(HyGeometryTools::computeMean(Points(), mean));
    EXPECT_FALSE(HyGeometryTools::generateCovarianceMatrix(Points(), matrix, mean));
    EXPECT_FALSE(
        HyGeometryTools::performPrincipalComponentAnalysis(Points(), matrix, values, mean));
    EXPECT_FALSE(HyGeometryTools::computeExtremalVertices(Points(), mean, mean, other, low, high));
    for (const Weights& unusable : {Weights(), Weights(weights, 1), Weights(weights, 2),
                                    Weights(weights + 2, 2), Weights(weights + 4, 2)}) {
        EXPECT_FALSE(HyGeometryTools::computeWeightedMean(view(points), unusable, mean));
        EXPECT_FALSE(
            HyGeometryTools::generateCovarianceMatrix(view(points), unusable, matrix, mean));
    }
    EXPECT_EQ(HyGeometryTools::computeMaxDistanceToOrigin(Points(), other, mean), 0);
    EXPECT_EQ(mean, HyVector3(9, 9, 9));
}

} // namespace
