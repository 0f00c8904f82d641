#pragma once
#include <Hy/HyConstraint.h>
#include <Hy/HyLinearAxisReference.h>

namespace Hy {

/// Two parts turn against each other about one axis. Its coordinate is the angle about the primary axis
/// of part 0's attachment.
class HY_API HyHinge : public HyClass<kHyHingeClassId, HyConstraint>, public HyLinearAxisReference {
public:
    enum CoordinateEnum { kAngularCoordinate = 0 };

    /// Without parts, attachments at the world's origin.
    HyHinge();
    /// @param position,axis in the world, the same for both attachments
    HyHinge(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis);
    [[nodiscard]] const char* getClassName() const override { return "HyHinge"; }

private:
    void init();
};

} // namespace Hy
