#include <Hy/HyGeometryTools.h>

#include "HyTensor.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace Hy {

namespace {

constexpr int kJacobiSweeps = 35;

/// The point of largest squared distance, and the distance itself.
template <class SquaredDistance>
HyReal findFarthest(const HyGeometryTools::Points& points, HyVector3& farthest,
                    SquaredDistance squaredDistance) {
    HyReal largest = -1;
    for (const HyVector3& point : points) {
        const HyReal squared = squaredDistance(point);
        if (squared > largest) {
            largest = squared;
            farthest = point;
        }
    }
    return std::sqrt(std::max<HyReal>(0, largest));
}

HyVector3 closestOnLine(const HyVector3& point, const HyVector3& origin,
                        const HyVector3& direction) {
    const HyReal square = direction.squareNorm();
    return square > 0 ? origin + direction * ((point - origin).dot(direction) / square) : origin;
}

HyVector3 closestOnSegment(const HyVector3& point, const HyVector3& a, const HyVector3& b) {
    const HyVector3 u = b - a;
    const HyReal t = (point - a).dot(u), square = u.squareNorm();
    if (t <= 0)
        return a;
    return t >= square ? b : a + u * (t / square);
}

template <class Weight>
bool computeMeanOf(const HyGeometryTools::Points& points, HyVector3& mean, Weight weight,
                   HyReal sum) {
    if (!(sum > 0) || !std::isfinite(sum))
        return false;
    HyVector3 weighted;
    for (std::size_t i = 0; i < points.size(); ++i)
        weighted += points[i] * weight(i);
    mean = weighted / sum;
    return true;
}

template <class Weight>
bool computeCovarianceOf(const HyGeometryTools::Points& points, HyReal covariance[3][3],
                         HyVector3& mean, Weight weight, HyReal sum) {
    if (!computeMeanOf(points, mean, weight, sum))
        return false;
    HyTensor total;
    for (std::size_t n = 0; n < points.size(); ++n) {
        const HyVector3 d = points[n] - mean;
        const HyReal share = weight(n) / sum;
        for (int i = 0; i < 3; ++i) {
            for (int j = i; j < 3; ++j)
                total.m[i][j] += share * d[i] * d[j];
        }
    }
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < i; ++j)
            total.m[i][j] = total.m[j][i];
    }
    total.copyTo(covariance);
    return true;
}

constexpr auto kEqualWeight = [](std::size_t) -> HyReal { return 1; };

HyReal countOf(const HyGeometryTools::Points& points) {
    return static_cast<HyReal>(points.size());
}

/// Sum of the weights, 0 if they do not belong to the points.
HyReal sumOf(const HyGeometryTools::Points& points, const HyGeometryTools::Weights& weights) {
    const bool usable =
        points.size() == weights.size() &&
        std::all_of(weights.begin(), weights.end(), [](HyReal weight) { return weight >= 0; });
    return usable ? std::accumulate(weights.begin(), weights.end(), HyReal(0)) : 0;
}

} // namespace

bool HyGeometryTools::computeSortedEigenvectors(const HyReal matrix[3][3], HyReal vectors[3][3],
                                                HyReal values[3]) {
    const HyPrincipalMoments principal(HyTensor(matrix), kJacobiSweeps);
    if (principal.sweeps >= kJacobiSweeps)
        return false;
    int order[3] = {0, 1, 2};
    std::stable_sort(order, order + 3,
                     [&](int a, int b) { return principal.moments[a] > principal.moments[b]; });
    HyTensor sorted;
    for (int i = 0; i < 3; ++i) {
        values[i] = principal.moments[order[i]];
        std::copy_n(principal.axes.m[order[i]], 3, sorted.m[i]);
    }
    const HyVector3 x = HyVector3::constCast(sorted.m[0]), y = HyVector3::constCast(sorted.m[1]);
    HyVector3& z = HyVector3::cast(sorted.m[2]);
    if (x.cross(y).dot(z) < 0)
        z = -z;
    sorted.copyTo(vectors);
    return true;
}

// Extremes

bool HyGeometryTools::computeExtremalVertices(const Points& points, const HyVector3& direction,
                                              HyVector3& lowest, HyVector3& highest,
                                              HyReal& lowestProjection, HyReal& highestProjection) {
    if (points.empty())
        return false;
    const auto [low, high] = std::minmax_element(
        points.begin(), points.end(), [&direction](const HyVector3& a, const HyVector3& b) {
            return a.dot(direction) < b.dot(direction);
        });
    lowest = *low;
    highest = *high;
    lowestProjection = lowest.dot(direction);
    highestProjection = highest.dot(direction);
    return true;
}

HyReal HyGeometryTools::computeMaxDistanceToLine(const Points& points, const HyVector3& origin,
                                                 const HyVector3& direction, HyVector3& farthest) {
    return findFarthest(points, farthest, [&](const HyVector3& point) {
        return point.distanceSqr(closestOnLine(point, origin, direction));
    });
}

HyReal HyGeometryTools::computeMaxDistanceToOrigin(const Points& points, const HyVector3& origin,
                                                   HyVector3& farthest) {
    return findFarthest(points, farthest,
                        [&](const HyVector3& point) { return point.distanceSqr(origin); });
}

HyReal HyGeometryTools::computeMaxDistanceToLineSegment(const Points& points, const HyVector3& a,
                                                        const HyVector3& b, HyVector3& farthest) {
    return findFarthest(points, farthest, [&](const HyVector3& point) {
        return point.distanceSqr(closestOnSegment(point, a, b));
    });
}

HyReal HyGeometryTools::computeDistanceToLine(const HyVector3& point, const HyVector3& origin,
                                              const HyVector3& direction, HyVector3& closest) {
    const HyVector3 found = closestOnLine(point, origin, direction);
    const HyReal distance = point.distance(found);
    closest = found;
    return distance;
}

HyReal HyGeometryTools::computeDistanceToLineSegment(const HyVector3& point, const HyVector3& a,
                                                     const HyVector3& b, HyVector3& closest) {
    const HyVector3 found = closestOnSegment(point, a, b);
    const HyReal distance = point.distance(found);
    closest = found;
    return distance;
}

// Mean and covariance

bool HyGeometryTools::computeMean(const Points& points, HyVector3& mean) {
    return computeMeanOf(points, mean, kEqualWeight, countOf(points));
}

bool HyGeometryTools::computeWeightedMean(const Points& points, const Weights& weights,
                                          HyVector3& mean) {
    const auto weight = [&weights](std::size_t i) { return weights[i]; };
    return computeMeanOf(points, mean, weight, sumOf(points, weights));
}

bool HyGeometryTools::generateCovarianceMatrix(const Points& points, HyReal covariance[3][3],
                                               HyVector3& mean) {
    return computeCovarianceOf(points, covariance, mean, kEqualWeight, countOf(points));
}

bool HyGeometryTools::generateCovarianceMatrix(const Points& points, const Weights& weights,
                                               HyReal covariance[3][3], HyVector3& mean) {
    const auto weight = [&weights](std::size_t i) { return weights[i]; };
    return computeCovarianceOf(points, covariance, mean, weight, sumOf(points, weights));
}

bool HyGeometryTools::performPrincipalComponentAnalysis(const Points& points, HyReal axes[3][3],
                                                        HyReal variances[3], HyVector3& mean) {
    HyReal covariance[3][3];
    HyVector3 centre;
    if (!generateCovarianceMatrix(points, covariance, centre) ||
        !computeSortedEigenvectors(covariance, axes, variances))
        return false;
    mean = centre;
    return true;
}

bool HyGeometryTools::performPrincipalComponentAnalysis(const Points& points,
                                                        const Weights& weights, HyReal axes[3][3],
                                                        HyReal variances[3], HyVector3& mean) {
    HyReal covariance[3][3];
    HyVector3 centre;
    if (!generateCovarianceMatrix(points, weights, covariance, centre) ||
        !computeSortedEigenvectors(covariance, axes, variances))
        return false;
    mean = centre;
    return true;
}

} // namespace Hy
