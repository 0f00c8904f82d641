#include <Hy/HyMotorConstraint.h>

#include <Dyn/DynMotorJoint.h>
#include <Hy/HyMessage.h>

namespace Hy {

HyMotorConstraint::HyMotorConstraint() : HyClass(DynMotorJointCreateInPool(getConstraintPool())) {
    init();
}

HyMotorConstraint::HyMotorConstraint(HyPart* part1, HyPart* part2, const HyVector3& position,
                                     const HyVector3& axis0, const HyVector3& axis1)
    : HyMotorConstraint() {
    setPartAndAttachment(0, part1, position, axis0, &axis1);
    setPartAndAttachment(1, part2, position, axis0, &axis1);
}

void HyMotorConstraint::init() {
    addCoordinates({"Coordinate"});
}

void HyMotorConstraint::setCoordinateAngular(int i, bool angular) {
    DyncLimit* limit = coordinateAt(i, "setCoordinateAngular");
    if (!limit || (limit->type == kDynLimitTypeAngular) == angular)
        return;
    limit->type = angular ? kDynLimitTypeAngular : kDynLimitTypeLinear;
    limit->position = limit->previous_position = 0; // of the other kind; turns are not known
    recalculateCoordinateCurrentPosition(i);
    wakeParts();
}

void HyMotorConstraint::setCoordinateReferencePartIndex(int i, int part) {
    DyncLimit* limit = coordinateAt(i, "setCoordinateReferencePartIndex");
    if (!limit)
        return;
    if (part != 0 && part != 1) {
        HyWarning(0, "HyMotorConstraint::setCoordinateReferencePartIndex: the part must be 0 or "
                     "1.\n");
        return;
    }
    limit->bodyRef = part;
    wakeParts();
}

} // namespace Hy
