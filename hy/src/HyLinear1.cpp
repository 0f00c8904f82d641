#include <Hy/HyLinear1.h>

#include <Dyn/DynLinear.h>

namespace Hy {

HyLinear1::HyLinear1() : HyClass(DynLinear1CreateInPool(getConstraintPool())) {
    init();
}

HyLinear1::HyLinear1(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis)
    : HyLinear1() {
    setParts(part1, part2);
    setAttachmentPosition(position);
    setAxis(axis);
}

void HyLinear1::init() {
    addEquations({{sEquationNameP0, 0, -1}});
}

} // namespace Hy
