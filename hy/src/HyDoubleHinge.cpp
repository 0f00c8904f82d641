#include <Hy/HyDoubleHinge.h>

#include <Dyn/DynDoubleHinge.h>

namespace Hy {

HyDoubleHinge::HyDoubleHinge() : HyClass(DynDoubleHingeCreateInPool(getConstraintPool())) {
    init();
}

HyDoubleHinge::HyDoubleHinge(HyPart* part1, HyPart* part2, const HyVector3& position1,
                             const HyVector3& position2, const HyVector3& primary,
                             const HyVector3& secondary)
    : HyDoubleHinge() {
    setParts(part1, part2);
    setPartAttachmentAxes(0, primary, secondary);
    setPartAttachmentAxes(1, primary, secondary);
    setPartAttachmentPosition(0, position1);
    setPartAttachmentPosition(1, position2);
}

void HyDoubleHinge::init() {
    addEquations({{sEquationNameP0, 1, -1}, {sEquationNameA2, 2, -1}, {sEquationNameA1, 3, -1}});
    addCoordinates({"Distance", "Torsion", "Wheel"});
}

} // namespace Hy
