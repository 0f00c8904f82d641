#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Keeps the primary axes of two parts parallel. Its coordinates, all free at first, are the angle
/// about that axis and the positions along the three axes of part 0's attachment.
class HY_API HyAngular1Position3 : public HyClass<kHyAngular1Position3ClassId, HyConstraint> {
public:
    enum CoordinateEnum {
        kAngularCoordinate = 0,
        kLinear0Coordinate = 1,
        kLinear1Coordinate = 2,
        kLinear2Coordinate = 3
    };

    /// Without parts, attachments at the world's origin.
    HyAngular1Position3();
    /// @param axis0,axis1 primary and secondary axis of both attachments in the world
    HyAngular1Position3(HyPart* part1, HyPart* part2, const HyVector3& position,
                        const HyVector3& axis0, const HyVector3& axis1);
    [[nodiscard]] const char* getClassName() const override { return "HyAngular1Position3"; }

private:
    void init();
};

} // namespace Hy
