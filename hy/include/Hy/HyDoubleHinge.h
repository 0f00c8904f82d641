#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Two hinges with parallel axes and a link between them that has no mass: a swing arm. The link is a
/// spring, the lock of the coordinate "Distance"; its angles in the two parts are "Torsion" and
/// "Wheel". Equations stand in rows 1 to 3.
class HY_API HyDoubleHinge : public HyClass<kHyDoubleHingeClassId, HyConstraint> {
public:
    enum CoordinateEnum { kDistanceCoordinate = 0, kTorsionCoordinate = 1, kWheelCoordinate = 2 };

    /// Without parts, attachments at the world's origin.
    HyDoubleHinge();
    /// @param position1,position2 of the hinges in part1 and part2, in the world
    /// @param primary axis of both hinges in the world
    /// @param secondary from which their angles count
    HyDoubleHinge(HyPart* part1, HyPart* part2, const HyVector3& position1,
                  const HyVector3& position2, const HyVector3& primary, const HyVector3& secondary);
    [[nodiscard]] const char* getClassName() const override { return "HyDoubleHinge"; }

private:
    void init();
};

} // namespace Hy
