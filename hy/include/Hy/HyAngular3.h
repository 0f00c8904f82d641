#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Holds the orientations of two parts together and leaves their positions free.
class HY_API HyAngular3 : public HyClass<kHyAngular3ClassId, HyConstraint> {
public:
    /// Without parts, attachments at the world's origin.
    HyAngular3();
    /// Attached at the origins of the parts.
    /// @param axis in the world, primary axis of both attachments
    HyAngular3(HyPart* part1, HyPart* part2, const HyVector3& axis);
    [[nodiscard]] const char* getClassName() const override { return "HyAngular3"; }

    /// One world direction for the primary axes of both attachments.
    void setAxis(const HyVector3& axis) { setBothAxes(axis, nullptr); }
    /// Leaves the rotation about the primary axis free; off at first. Then there are two equations
    /// only, in rows 0 and 1.
    void setRotationEnable(bool on);
    [[nodiscard]] bool getRotationIsEnabled() const;

private:
    void init();
};

} // namespace Hy
