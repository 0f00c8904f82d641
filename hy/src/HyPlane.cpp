#include <Hy/HyPlane.h>

#include <Col/ColPlane.h>
#include <Hy/HyGeometryTools.h>
#include <Hy/HyMessage.h>

#include <algorithm>

namespace Hy {

HyPlane::HyPlane() : HyClass(ColPlaneCreate()) {}

HyPlane* HyPlane::clone() const {
    return new HyPlane;
}

bool HyPlane::_computeMassPropertiesImplementation(HyReal&, HyVector3&, HyReal[3][3]) {
    return false; // a half space has no volume
}

void HyPlane::getNormal(const HyTransform& transform, HyVector3& normal) {
    normal = transform.axis(2);
}

void HyPlane::getDistanceToPoint(const HyTransform& transform, const HyVector3& point,
                                 HyReal& distance) {
    distance = (point - transform.t()).dot(transform.axis(2));
}

bool HyPlane::computeLeastSquaresPlane(const HyArray<HyVector3>& points, HyTransform& transform) {
    constexpr std::size_t kPlanePoints = 3;
    if (points.size() < kPlanePoints) {
        HyWarning(0,
                  "HyPlane::computeSmallestEnclosing: insufficient number of points (%d) "
                  "specified.\n",
                  static_cast<int>(points.size()));
        return false;
    }
    HyReal axes[3][3], variances[3];
    HyVector3 mean;
    const HyGeometryTools::Points all(points.begin(), points.size());
    if (!HyGeometryTools::performPrincipalComponentAnalysis(all, axes, variances, mean)) {
        HyWarning(0, "HyPlane::computeLeastSquaresPlane: error performing principal component "
                     "analysis.\n");
        return false;
    }
    HyTransform plane;
    for (int row = 0; row < 3; ++row)
        std::copy_n(axes[row], 3, plane[row]);
    plane.t() = mean;
    plane.makeOrthonormal(2);
    if (!plane.isFinite()) {
        HyWarning(0, "HyPlane::computeSmallestEnclosing: internal error computing least squares "
                     "plane.\n");
        return false;
    }
    transform = plane;
    return true;
}

} // namespace Hy
