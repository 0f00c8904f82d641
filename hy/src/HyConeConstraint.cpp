#include <Hy/HyConeConstraint.h>

#include <Dyn/DynConeLimit.h>

namespace Hy {

HyConeConstraint::HyConeConstraint() : HyClass(DynConeLimitCreateInPool(getConstraintPool())) {
    init();
}

HyConeConstraint::HyConeConstraint(HyPart* part1, HyPart* part2, const HyVector3& axis1,
                                   const HyVector3& axis2)
    : HyConeConstraint() {
    setParts(part1, part2);
    setAxis1(axis1);
    setAxis2(axis2);
}

void HyConeConstraint::init() {
    addEquations({{sEquationNameA0, 0, -1}});
}

void HyConeConstraint::setHalfAngle(HyReal angle) {
    DynConeLimitSetConeHalfAngle(static_cast<DynConeLimit*>(getDynConstraint()), angle);
    wakeParts();
}

HyReal HyConeConstraint::getHalfAngle() const {
    return DynConeLimitGetConeHalfAngle(static_cast<const DynConeLimit*>(getDynConstraint()));
}

void HyConeConstraint::setAxisOf(int i, const HyVector3& axis) {
    const HyVector3 other = axis.z() > axis.y() ? HyVector3(0, 1, 0) : HyVector3(0, 0, 1);
    setPartAttachmentAxesRel(i, axis, axis.cross(other));
}

} // namespace Hy
