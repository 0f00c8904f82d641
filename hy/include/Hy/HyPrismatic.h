#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Two parts slide against each other along one axis and do not turn. Its coordinate is the position
/// along the primary axis of part 0's attachment.
class HY_API HyPrismatic : public HyClass<kHyPrismaticClassId, HyConstraint> {
public:
    enum CoordinateEnum { kLinearCoordinate = 0 };

    /// Without parts, attachments at the world's origin.
    HyPrismatic();
    /// @param position,axis in the world, the same for both attachments
    HyPrismatic(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis);
    [[nodiscard]] const char* getClassName() const override { return "HyPrismatic"; }

    /// One world position for both attachments.
    void setAttachmentPosition(const HyVector3& position) { setBothPositions(position); }
    /// One world direction for the primary axes of both attachments.
    void setAxis(const HyVector3& axis) { setBothAxes(axis, nullptr); }

private:
    void init();
};

} // namespace Hy
