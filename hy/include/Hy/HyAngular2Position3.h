#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Keeps the primary axis of part 0's attachment at a right angle to the secondary axis of part 1's.
/// Its coordinates, all free at first, are the angles about these two and the positions along the three
/// axes of part 0's attachment.
class HY_API HyAngular2Position3 : public HyClass<kHyAngular2Position3ClassId, HyConstraint> {
public:
    enum CoordinateEnum {
        kAngular0Coordinate = 0,
        kAngular1Coordinate = 1,
        kLinear0Coordinate = 2,
        kLinear1Coordinate = 3,
        kLinear2Coordinate = 4
    };

    /// Without parts, attachments at the world's origin.
    HyAngular2Position3();
    /// @param axis0,axis1 primary and secondary axis of both attachments in the world
    HyAngular2Position3(HyPart* part1, HyPart* part2, const HyVector3& position,
                        const HyVector3& axis0, const HyVector3& axis1);
    [[nodiscard]] const char* getClassName() const override { return "HyAngular2Position3"; }

private:
    void init();
};

} // namespace Hy
