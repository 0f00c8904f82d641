#include <Hy/HyUniversal.h>

#include <Dyn/DynUniversal.h>

namespace Hy {

HyUniversal::HyUniversal()
    : HyClass(DynUniversalCreateInPool(getConstraintPool())),
      HyLinearAxisReference(getDynConstraint(), static_cast<DynUniversal*>(getDynConstraint())) {
    init();
}

HyUniversal::HyUniversal(HyPart* part1, HyPart* part2, const HyVector3& position,
                         const HyVector3& axis1, const HyVector3& axis2)
    : HyUniversal() {
    setParts(part1, part2);
    setAttachmentPosition(position);
    setAttachmentAxes(axis1, axis2);
}

void HyUniversal::init() {
    addEquations({{sEquationNameP0, 0, 0},
                  {sEquationNameP1, 1, 1},
                  {sEquationNameP2, 2, 2},
                  {sEquationNameA2, 3, 5}});
    addCoordinates({"Angular0", "Angular1"});
}

} // namespace Hy
