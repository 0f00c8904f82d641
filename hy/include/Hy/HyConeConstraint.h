#pragma once
#include <Hy/HyConstraint.h>

namespace Hy {

/// Keeps an axis of part 1 within an angle of an axis of part 0.
class HY_API HyConeConstraint : public HyClass<kHyConeConstraintClassId, HyConstraint> {
public:
    /// Without parts, attachments at the world's origin.
    HyConeConstraint();
    /// @param axis1,axis2 of part1 and part2, in their frames
    HyConeConstraint(HyPart* part1, HyPart* part2, const HyVector3& axis1, const HyVector3& axis2);
    [[nodiscard]] const char* getClassName() const override { return "HyConeConstraint"; }

    /// In rad, pi at first, which never acts; a negative angle opens around the opposite axis.
    void setHalfAngle(HyReal angle);
    [[nodiscard]] HyReal getHalfAngle() const;
    /// In the frame of part 0, and of part 1; in the world for a null part.
    void setAxis1(const HyVector3& axis) { setAxisOf(0, axis); }
    void setAxis2(const HyVector3& axis) { setAxisOf(1, axis); }

private:
    void init();
    void setAxisOf(int i, const HyVector3& axis);
};

} // namespace Hy
