#include <Hy/HyPrismatic.h>

#include <Dyn/DynPrismatic.h>

namespace Hy {

HyPrismatic::HyPrismatic() : HyClass(DynPrismaticCreateInPool(getConstraintPool())) {
    init();
}

HyPrismatic::HyPrismatic(HyPart* part1, HyPart* part2, const HyVector3& position,
                         const HyVector3& axis)
    : HyPrismatic() {
    setParts(part1, part2);
    setAttachmentPosition(position);
    setAxis(axis);
}

void HyPrismatic::init() {
    addEquations({{sEquationNameP1, 0, 1},
                  {sEquationNameP2, 1, 2},
                  {sEquationNameA0, 2, 3},
                  {sEquationNameA1, 3, 4},
                  {sEquationNameA2, 4, 5}});
    addCoordinates({"Linear"});
}

} // namespace Hy
