#pragma once
#include <Hy/HyConstraint.h>
#include <Hy/HyLinearAxisReference.h>

namespace Hy {

/// Carries rotation about the primary axes over a bend at constant speed; the bend itself is free.
class HY_API HyHomokinetic : public HyClass<kHyHomokineticClassId, HyConstraint>,
                             public HyLinearAxisReference {
public:
    /// Without parts, attachments at the world's origin.
    HyHomokinetic();
    /// @param position,axis in the world, the same for both attachments
    HyHomokinetic(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis);
    [[nodiscard]] const char* getClassName() const override { return "HyHomokinetic"; }

    /// One world position for both attachments.
    void setAttachmentPosition(const HyVector3& position) { setBothPositions(position); }
    /// One world direction for the primary axes of both attachments.
    void setAxis(const HyVector3& axis) { setBothAxes(axis, nullptr); }

private:
    void init();
};

} // namespace Hy
