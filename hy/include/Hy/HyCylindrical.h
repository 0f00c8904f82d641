#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Two parts slide along one axis and turn about it. Its coordinates are position and angle along and
/// about the primary axis of part 0's attachment.
class HY_API HyCylindrical : public HyClass<kHyCylindricalClassId, HyConstraint> {
public:
    enum CoordinateEnum { kLinearCoordinate = 0, kAngularCoordinate = 1 };

    /// Without parts, attachments at the world's origin.
    HyCylindrical();
    /// @param position,axis in the world, the same for both attachments
    HyCylindrical(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis);
    /// The same, attached at the origins of the parts.
    HyCylindrical(HyPart* part1, HyPart* part2, const HyVector3& axis);
    [[nodiscard]] const char* getClassName() const override { return "HyCylindrical"; }

    /// One world direction for the primary axes of both attachments.
    void setAxis(const HyVector3& axis) { setBothAxes(axis, nullptr); }
    /// Primary axis of an attachment in the world.
    void getAxis(int i, HyVector3& axis) const { axis = getPartAttachmentAxis(i); }

private:
    void init();
};

} // namespace Hy
