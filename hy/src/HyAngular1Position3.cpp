#include <Hy/HyAngular1Position3.h>

#include <Dyn/DynA1P3Joint.h>

namespace Hy {

HyAngular1Position3::HyAngular1Position3()
    : HyClass(DynA1P3JointCreateInPool(getConstraintPool())) {
    init();
}

HyAngular1Position3::HyAngular1Position3(HyPart* part1, HyPart* part2, const HyVector3& position,
                                         const HyVector3& axis0, const HyVector3& axis1)
    : HyAngular1Position3() {
    setPartAndAttachment(0, part1, position, axis0, &axis1);
    setPartAndAttachment(1, part2, position, axis0, &axis1);
}

void HyAngular1Position3::init() {
    addEquations({{sEquationNameA1, 0, 4}, {sEquationNameA2, 1, 5}});
    addCoordinates({"Angular", "Linear0", "Linear1", "Linear2"});
}

} // namespace Hy
