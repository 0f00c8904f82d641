#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>
#include <Hy/HyMessage.h>

namespace Hy {

void HyPart::setLinearVelocity(const HyReal v[3]) {
    DynBodySetLinearVelocity(mDynBodyID, v);
}

void HyPart::setLinearVelocity(const HyVector3& v) {
    setLinearVelocity(v.v);
}

void HyPart::setLinearVelocity(HyReal x, HyReal y, HyReal z) {
    setLinearVelocity(HyVector3(x, y, z));
}

void HyPart::setAngularVelocity(const HyReal w[3]) {
    DynBodySetAngularVelocity(mDynBodyID, w);
}

void HyPart::setAngularVelocity(const HyVector3& w) {
    setAngularVelocity(w.v);
}

void HyPart::setAngularVelocity(HyReal x, HyReal y, HyReal z) {
    setAngularVelocity(HyVector3(x, y, z));
}

HyVector3 HyPart::getLinearVelocity() const {
    return HyVector3(getLinearVelocityPtr());
}

HyVector3 HyPart::getAngularVelocity() const {
    return HyVector3(getAngularVelocityPtr());
}

HyVector3 HyPart::getLinearVelocityAtAbsolutePosition(const HyVector3& position) const {
    HyVector3 velocity;
    getVelocityAtPoint(position.v, velocity.v);
    return velocity;
}

HyVector3 HyPart::getLinearVelocityAtRelativePosition(const HyVector3& position) const {
    return getLinearVelocityAtAbsolutePosition(getTransform().transform(position));
}

void HyPart::getVelocityAtPoint(const HyReal point[3], HyReal velocity[3]) const {
    DynBodyGetVelocityAtPoint(mDynBodyID, point, velocity);
}

const HyReal* HyPart::getLinearVelocityPtr() const {
    return mDynBodyID->kiroBody.vel;
}

const HyReal* HyPart::getAngularVelocityPtr() const {
    return mDynBodyID->kiroBody.velrot;
}

void HyPart::getVelocityPointers(const HyReal*& linear, const HyReal*& angular) const {
    linear = getLinearVelocityPtr();
    angular = getAngularVelocityPtr();
}

HyVector3 HyPart::getAngularMomentum() const {
    HyVector3 momentum;
    DynBodyGetAngularMomentum(mDynBodyID, momentum.v);
    return momentum;
}

HyReal HyPart::getKineticEnergy() const {
    return DynBodyGetKineticEnergy(mDynBodyID);
}

void HyPart::setLinearVelocityDamping(HyReal damping) {
    DynBodySetLinearVelocityDamping(mDynBodyID, damping);
}

void HyPart::setAngularVelocityDamping(HyReal damping) {
    DynBodySetAngularVelocityDamping(mDynBodyID, damping);
}

HyReal HyPart::getLinearVelocityDamping() const {
    return DynBodyGetLinearVelocityDamping(mDynBodyID);
}

HyReal HyPart::getAngularVelocityDamping() const {
    return DynBodyGetAngularVelocityDamping(mDynBodyID);
}

HyVector3 HyPart::getLinearAcceleration() const {
    return HyVector3(mDynBodyID->kiroBody.accel);
}

HyVector3 HyPart::getAngularAcceleration() const {
    return HyVector3(mDynBodyID->kiroBody.accelrot);
}

HyVector3 HyPart::getLinearAccelerationAtAbsolutePosition(const HyVector3& p) const {
    HyVector3 acceleration;
    getAccelerationAtPoint(p.v, acceleration.v);
    return acceleration;
}

HyVector3 HyPart::getLinearAccelerationAtRelativePosition(const HyVector3& p) const {
    return getLinearAccelerationAtAbsolutePosition(getTransform().transform(p));
}

void HyPart::getAccelerationAtPoint(const HyReal point[3], HyReal acceleration[3]) const {
    DynBodyGetAccelerationAtPoint(mDynBodyID, point, acceleration);
}

void HyPart::setFastSpinAxisEnabled(bool enabled) {
    mFastSpinAxisEnabled = enabled;
    applyFastSpinAxis();
}

void HyPart::setFastSpinAxisRelative(const HyVector3& axis) {
    if (!axis.isFinite()) {
        HyWarning(0, "HyPart::setFastSpinAxis: the axis must be finite.\n");
        return;
    }
    mFastSpinAxis = axis;
    applyFastSpinAxis();
}

void HyPart::setFastSpinAxisAbsolute(const HyVector3& axis) {
    setFastSpinAxisRelative(getTransform().inverseRotate(axis));
}

HyVector3 HyPart::getFastSpinAxisAbsolute() const {
    return getTransform().rotate(mFastSpinAxis);
}

void HyPart::applyFastSpinAxis() {
    if (mFastSpinAxisEnabled)
        DynBodySetFastSpinAxisRel(mDynBodyID, mFastSpinAxis.v);
    else
        DynBodySetNoFastSpinAxis(mDynBodyID);
}

} // namespace Hy
