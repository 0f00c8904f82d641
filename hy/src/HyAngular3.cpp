#include <Hy/HyAngular3.h>

#include <Dyn/DynAngular3.h>

namespace Hy {

HyAngular3::HyAngular3() : HyClass(DynAngular3CreateInPool(getConstraintPool())) {
    init();
}

HyAngular3::HyAngular3(HyPart* part1, HyPart* part2, const HyVector3& axis) : HyAngular3() {
    setParts(part1, part2);
    setPartAttachmentPositionRel(0, HyVector3());
    setPartAttachmentPositionRel(1, HyVector3());
    setAxis(axis);
}

void HyAngular3::init() {
    addEquations({{sEquationNameA0, 0, -1}, {sEquationNameA1, 1, -1}, {sEquationNameA2, 2, -1}});
}

void HyAngular3::setRotationEnable(bool on) {
    DynAngular3EnableRotation(static_cast<DynAngular3*>(getDynConstraint()), on);
    wakeParts();
}

bool HyAngular3::getRotationIsEnabled() const {
    return DynAngular3RotationIsEnabled(static_cast<const DynAngular3*>(getDynConstraint()));
}

} // namespace Hy
