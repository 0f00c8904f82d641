#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Keeps a point of part 0 on a line of part 1, the primary axis of part 1's attachment.
class HY_API HyLinear2 : public HyClass<kHyLinear2ClassId, HyConstraint> {
public:
    /// Without parts, attachments at the world's origin.
    HyLinear2();
    /// @param position,axis in the world, the same for both attachments
    HyLinear2(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis);
    [[nodiscard]] const char* getClassName() const override { return "HyLinear2"; }

    /// One world position for both attachments.
    void setAttachmentPosition(const HyVector3& position) { setBothPositions(position); }
    /// One world direction for the primary axes of both attachments.
    void setAxis(const HyVector3& axis) { setBothAxes(axis, nullptr); }

private:
    void init();
};

} // namespace Hy
