#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// A drive between two parts, without equations: one coordinate along or about the primary axis of a
/// part's attachment, angular at first.
class HY_API HyMotorConstraint : public HyClass<kHyMotorConstraintClassId, HyConstraint> {
public:
    enum CoordinateEnum { kCoordinate = 0 };

    /// Without parts, attachments at the world's origin.
    HyMotorConstraint();
    /// @param axis0,axis1 primary and secondary axis of both attachments in the world
    HyMotorConstraint(HyPart* part1, HyPart* part2, const HyVector3& position,
                      const HyVector3& axis0, const HyVector3& axis1);
    [[nodiscard]] const char* getClassName() const override { return "HyMotorConstraint"; }

    /// Angular, or linear. Index out of range: a warning, no change.
    void setCoordinateAngular(int i, bool angular);
    [[nodiscard]] bool getCoordinateAngular(int i) const { return isAngular(i); }
    /// Part, 0 or 1, whose attachment carries the axis. Another one: a warning, no change.
    void setCoordinateReferencePartIndex(int i, int part) override;

private:
    void init();
};

} // namespace Hy
