#include <Hy/HyBallAndSocket.h>

#include <Dyn/DynBSJoint.h>

#include <algorithm>

namespace Hy {

HyBallAndSocket::HyBallAndSocket()
    : HyClass(DynBSJointCreateInPool(getConstraintPool())),
      HyLinearAxisReference(getDynConstraint(), static_cast<DynBSJoint*>(getDynConstraint())),
      mFriction(*this) {
    init();
}

HyBallAndSocket::HyBallAndSocket(HyPart* part1, HyPart* part2, const HyVector3& position,
                                 const HyVector3* axis)
    : HyBallAndSocket() {
    setParts(part1, part2);
    if (axis)
        setAxis(*axis);
    setAttachmentPosition(position);
}

void HyBallAndSocket::init() {
    addEquations({{sEquationNameP0, 0, 0}, {sEquationNameP1, 1, 1}, {sEquationNameP2, 2, 2}});
}

// mValues has no address yet that may be read, only one that may be kept.
HyBallAndSocket::AngularFriction::AngularFriction(const HyBallAndSocket& joint)
    : HyConstraintFriction(&mValues, nullptr), mCoord0(joint.getFriction(0, false)),
      mCoord1(joint.getFriction(1, false)), mCoord2(joint.getFriction(2, false)) {}

template <typename T>
void HyBallAndSocket::AngularFriction::setEach(void (HyConstraintFriction::*set)(T), T value) {
    for (HyConstraintFriction* friction : {mCoord0, mCoord1, mCoord2})
        (friction->*set)(value);
}

void HyBallAndSocket::AngularFriction::setEnabled(bool enabled) {
    HyConstraintFriction::setEnabled(enabled);
    setEach(&HyConstraintFriction::setEnabled, enabled);
}

void HyBallAndSocket::AngularFriction::setMaxForce(HyReal force) {
    HyConstraintFriction::setMaxForce(force);
    setEach(&HyConstraintFriction::setMaxForce, force);
}

HyReal HyBallAndSocket::AngularFriction::getMaxForce() const {
    return std::max({mCoord0->getMaxForce(), mCoord1->getMaxForce(), mCoord2->getMaxForce()});
}

void HyBallAndSocket::AngularFriction::setLoss(HyReal loss) {
    HyConstraintFriction::setLoss(loss);
    setEach(&HyConstraintFriction::setLoss, loss);
}

void HyBallAndSocket::AngularFriction::setCoefficient(HyReal coefficient) {
    HyConstraintFriction::setCoefficient(coefficient);
    setEach(&HyConstraintFriction::setCoefficient, coefficient);
}

void HyBallAndSocket::AngularFriction::setStaticFrictionScale(HyReal scale) {
    HyConstraintFriction::setStaticFrictionScale(scale);
    setEach(&HyConstraintFriction::setStaticFrictionScale, scale);
}

void HyBallAndSocket::AngularFriction::setProportional(bool proportional) {
    HyConstraintFriction::setProportional(proportional);
    setEach(&HyConstraintFriction::setProportional, proportional);
}

void HyBallAndSocket::AngularFriction::setPartReferenceIndex(int part) {
    HyConstraintFriction::setPartReferenceIndex(part);
    setEach(&HyConstraintFriction::setPartReferenceIndex, part);
}

} // namespace Hy
