#pragma once
#include <Hy/HyGeometry.h>
#include <Hy/HyTransform.h>

namespace Hy {

/// The half space below z = 0 of its frame; the frame's z axis is the outward normal.
class HY_API HyPlane : public HyClass<kHyPlaneClassId, HyGeometry> {
public:
    HyPlane();
    [[nodiscard]] const char* getClassName() const override { return "HyPlane"; }
    [[nodiscard]] HyPlane* clone() const override;

    /// Normal of the plane at a transform.
    static void getNormal(const HyTransform& transform, HyVector3& normal);
    /// Height of a point over the plane at a transform, m, negative inside.
    static void getDistanceToPoint(const HyTransform& transform, const HyVector3& point,
                                   HyReal& distance);
    /// The plane nearest to points in the sense of least squares: the axis of their least variance
    /// is its normal, and their mean its origin. False, after a warning, for fewer than 3 points or
    /// points that have no plane.
    static bool computeLeastSquaresPlane(const HyArray<HyVector3>& points, HyTransform& transform);

protected:
    bool _computeMassPropertiesImplementation(HyReal& volume, HyVector3& centre,
                                              HyReal tensor[3][3]) override;
};

} // namespace Hy
