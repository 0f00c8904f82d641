#pragma once
#include <Hy/HyFixedArray.h>
#include <Hy/HyTypes.h>
#include <Hy/HyVector3.h>
#include <Kit/KitApi.h>

namespace Hy {

/// Statistics over sets of points, in the unit of the points.
///
/// An operation that answers false leaves its results alone, as one over an empty set does.
class HY_API HyGeometryTools {
public:
    using Points = HyFixedArray<const HyVector3>;
    /// One a point, not negative.
    using Weights = HyFixedArray<const HyReal>;

    /// Eigenvectors of a symmetric matrix as rows, of unit length and right-handed, by falling
    /// eigenvalue. False if Jacobi's method does not converge within 34 sweeps.
    static bool computeSortedEigenvectors(const HyReal matrix[3][3], HyReal vectors[3][3],
                                          HyReal values[3]);

    /// The points that reach least and furthest in a direction of any length other than 0, with
    /// their dot products with it. False for an empty set.
    static bool computeExtremalVertices(const Points& points, const HyVector3& direction,
                                        HyVector3& lowest, HyVector3& highest,
                                        HyReal& lowestProjection, HyReal& highestProjection);
    /// Largest distance of a point from the line through `origin`, and that point. 0 for an empty set.
    static HyReal computeMaxDistanceToLine(const Points& points, const HyVector3& origin,
                                           const HyVector3& direction, HyVector3& farthest);
    /// Largest distance of a point from `origin`, and that point. 0 for an empty set.
    static HyReal computeMaxDistanceToOrigin(const Points& points, const HyVector3& origin,
                                             HyVector3& farthest);
    /// Largest distance of a point from the segment a b, and that point. 0 for an empty set.
    static HyReal computeMaxDistanceToLineSegment(const Points& points, const HyVector3& a,
                                                  const HyVector3& b, HyVector3& farthest);
    /// Distance from a line, and its closest point. A direction of length 0 stands for the origin
    /// alone.
    static HyReal computeDistanceToLine(const HyVector3& point, const HyVector3& origin,
                                        const HyVector3& direction, HyVector3& closest);
    /// Distance from the segment a b, and its closest point.
    static HyReal computeDistanceToLineSegment(const HyVector3& point, const HyVector3& a,
                                               const HyVector3& b, HyVector3& closest);

    /// False for an empty set.
    static bool computeMean(const Points& points, HyVector3& mean);
    /// False unless there is a weight a point and their sum is above 0 and finite.
    static bool computeWeightedMean(const Points& points, const Weights& weights, HyVector3& mean);
    /// Mean of (p − mean)(p − mean)ᵀ, and the mean itself. False as the mean is.
    static bool generateCovarianceMatrix(const Points& points, HyReal covariance[3][3],
                                         HyVector3& mean);
    static bool generateCovarianceMatrix(const Points& points, const Weights& weights,
                                         HyReal covariance[3][3], HyVector3& mean);
    /// Axes of greatest to least variance as rows, the variances along them, and the mean.
    static bool performPrincipalComponentAnalysis(const Points& points, HyReal axes[3][3],
                                                  HyReal variances[3], HyVector3& mean);
    static bool performPrincipalComponentAnalysis(const Points& points, const Weights& weights,
                                                  HyReal axes[3][3], HyReal variances[3],
                                                  HyVector3& mean);
};

} // namespace Hy
