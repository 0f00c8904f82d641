#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Keeps a point of part 0 on a line of part 1, the primary axis of part 1's attachment, and the
/// secondary axis of part 0's attachment at a right angle to it.
class HY_API HyLinear3 : public HyClass<kHyLinear3ClassId, HyConstraint> {
public:
    /// Without parts, attachments at the world's origin.
    HyLinear3();
    /// @param axis without effect; see setAxes()
    HyLinear3(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis);
    [[nodiscard]] const char* getClassName() const override { return "HyLinear3"; }

    /// One world position for both attachments.
    void setAttachmentPosition(const HyVector3& position) { setBothPositions(position); }
    /// Primary and secondary axis of both attachments in the world.
    void setAxes(const HyVector3& primary, const HyVector3& secondary) {
        setPartAttachmentAxes(0, primary, secondary);
        setPartAttachmentAxes(1, primary, secondary);
    }

private:
    void init();
};

} // namespace Hy
