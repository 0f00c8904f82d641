#include <Hy/HyHinge.h>

#include <Dyn/DynHinge.h>

namespace Hy {

HyHinge::HyHinge()
    : HyClass(DynHingeCreateInPool(getConstraintPool())),
      HyLinearAxisReference(getDynConstraint(), static_cast<DynHinge*>(getDynConstraint())) {
    init();
}

HyHinge::HyHinge(HyPart* part1, HyPart* part2, const HyVector3& position, const HyVector3& axis)
    : HyHinge() {
    setPart(0, part1);
    setPart(1, part2);
    setPartAttachmentAxis(0, axis);
    setPartAttachmentAxis(1, axis);
    setPartAttachmentPosition(0, position);
    setPartAttachmentPosition(1, position);
}

void HyHinge::init() {
    addEquations({{sEquationNameP0, 0, 0},
                  {sEquationNameP1, 1, 1},
                  {sEquationNameP2, 2, 2},
                  {sEquationNameA1, 3, 5},
                  {sEquationNameA2, 4, 4}});
    addCoordinates({"Angular"});
}

} // namespace Hy
