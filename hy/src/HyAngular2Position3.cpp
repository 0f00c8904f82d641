#include <Hy/HyAngular2Position3.h>

#include <Dyn/DynA2P3Joint.h>

namespace Hy {

HyAngular2Position3::HyAngular2Position3()
    : HyClass(DynA2P3JointCreateInPool(getConstraintPool())) {
    init();
}

HyAngular2Position3::HyAngular2Position3(HyPart* part1, HyPart* part2, const HyVector3& position,
                                         const HyVector3& axis0, const HyVector3& axis1)
    : HyAngular2Position3() {
    setPartAndAttachment(0, part1, position, axis0, &axis1);
    setPartAndAttachment(1, part2, position, axis0, &axis1);
}

void HyAngular2Position3::init() {
    addEquations({{sEquationNameA2, 0, 5}});
    addCoordinates({"Angular0", "Angular1", "Linear0", "Linear1", "Linear2"});
}

} // namespace Hy
