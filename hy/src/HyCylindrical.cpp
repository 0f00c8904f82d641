#include <Hy/HyCylindrical.h>

#include <Dyn/DynCylindrical.h>

namespace Hy {

HyCylindrical::HyCylindrical() : HyClass(DynCylindricalCreateInPool(getConstraintPool())) {
    init();
}

HyCylindrical::HyCylindrical(HyPart* part1, HyPart* part2, const HyVector3& position,
                             const HyVector3& axis)
    : HyCylindrical() {
    setParts(part1, part2);
    setAxis(axis);
    setPartAttachmentPosition(0, position);
    setPartAttachmentPosition(1, position);
}

HyCylindrical::HyCylindrical(HyPart* part1, HyPart* part2, const HyVector3& axis)
    : HyCylindrical() {
    setParts(part1, part2);
    setAxis(axis);
    setPartAttachmentPositionRel(0, HyVector3());
    setPartAttachmentPositionRel(1, HyVector3());
}

void HyCylindrical::init() {
    addEquations({{sEquationNameP1, 0, 1},
                  {sEquationNameP2, 1, 2},
                  {sEquationNameA1, 2, 5},
                  {sEquationNameA2, 3, 4}});
    addCoordinates({"Linear", "Angular"});
}

} // namespace Hy
