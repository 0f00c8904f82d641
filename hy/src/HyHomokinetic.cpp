#include <Hy/HyHomokinetic.h>

#include <Dyn/DynHomokinetic.h>

namespace Hy {

HyHomokinetic::HyHomokinetic()
    : HyClass(DynHomokineticCreateInPool(getConstraintPool())),
      HyLinearAxisReference(getDynConstraint(), static_cast<DynHomokinetic*>(getDynConstraint())) {
    init();
}

HyHomokinetic::HyHomokinetic(HyPart* part1, HyPart* part2, const HyVector3& position,
                             const HyVector3& axis)
    : HyHomokinetic() {
    setPartAndAttachment(0, part1, position, axis, nullptr);
    setPartAndAttachment(1, part2, position, axis, nullptr);
}

void HyHomokinetic::init() {
    addEquations({{sEquationNameP0, 0, 0},
                  {sEquationNameP1, 1, 1},
                  {sEquationNameP2, 2, 2},
                  {sEquationNameA0, 3, 3}});
}

} // namespace Hy
