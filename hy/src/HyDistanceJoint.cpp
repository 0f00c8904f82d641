#include <Hy/HyDistanceJoint.h>

#include <Dyn/DynDistance.h>
#include <Hy/HyDistanceJointState.h>

namespace Hy {

HyDistanceJoint::HyDistanceJoint() : HyClass(DynDistanceCreateInPool(getConstraintPool())) {
    init();
}

HyDistanceJoint::HyDistanceJoint(HyPart* part1, HyPart* part2, HyReal distance)
    : HyDistanceJoint() {
    setParts(part1, part2);
    setDistance(distance);
    setPartAttachmentPositionRel(0, HyVector3());
    setPartAttachmentPositionRel(1, HyVector3());
}

void HyDistanceJoint::init() {
    addEquations({{sEquationNameD, 0, -1}});
}

void HyDistanceJoint::setDistance(HyReal distance) {
    DynDistanceSetDistance(static_cast<DynDistance*>(getDynConstraint()), distance);
    wakeParts();
}

HyReal HyDistanceJoint::getDistance() const {
    return DynDistanceGetDistance(static_cast<const DynDistance*>(getDynConstraint()));
}

HyConstraintState* HyDistanceJoint::createStateImpl() {
    auto* state = new HyDistanceJointState;
    state->mDistance = getDistance();
    return state;
}

void HyDistanceJoint::restoreStateImpl(const HyConstraintState& state) {
    if (const auto* own = dynamic_cast<const HyDistanceJointState*>(&state))
        setDistance(own->mDistance);
}

} // namespace Hy
