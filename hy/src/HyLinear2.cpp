#include <Hy/HyLinear2.h>

#include <Dyn/DynLinear.h>

namespace Hy {

HyLinear2::HyLinear2() : HyClass(DynLinear2CreateInPool(getConstraintPool())) {
    init();
}

HyLinear2::HyLinear2(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis)
    : HyLinear2() {
    setParts(part1, part2);
    setAttachmentPosition(position);
    setAxis(axis);
}

void HyLinear2::init() {
    addEquations({{sEquationNameP1, 0, -1}, {sEquationNameP2, 1, -1}});
}

} // namespace Hy
