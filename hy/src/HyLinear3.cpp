#include <Hy/HyLinear3.h>

#include <Dyn/DynLinear.h>

namespace Hy {

HyLinear3::HyLinear3() : HyClass(DynLinear3CreateInPool(getConstraintPool())) {
    init();
}

HyLinear3::HyLinear3(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3&)
    : HyLinear3() {
    setParts(part1, part2);
    setAttachmentPosition(position);
}

void HyLinear3::init() {
    addEquations({{sEquationNameP1, 0, -1}, {sEquationNameP2, 1, -1}, {sEquationNameA0, 2, -1}});
}

} // namespace Hy
