#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>
#include <Hy/HyMessage.h>

namespace Hy {

bool HyPart::takesLoad(const char* operation, const HyVector3& load, const HyVector3& point) {
    if (!load.isFinite() || !point.isFinite()) {
        HyWarning(0, "HyPart::%s: the vectors must be finite.\n", operation);
        return false;
    }
    if (!isDynamic())
        return false;
    wakeDynamics(true);
    return true;
}

void HyPart::addForce(const HyVector3& f) {
    if (takesLoad("addForce", f, {}))
        DynBodyAddForce(mDynBodyID, f.v);
}

void HyPart::addTorque(const HyVector3& t) {
    if (takesLoad("addTorque", t, {}))
        DynBodyAddTorque(mDynBodyID, t.v);
}

void HyPart::addImpulse(const HyVector3& impulse) {
    if (takesLoad("addImpulse", impulse, {}))
        DynBodyAddImpulse(mDynBodyID, impulse.v);
}

void HyPart::addForceAtAbsolutePosition(const HyVector3& f, const HyVector3& p) {
    if (takesLoad("addForceAtAbsolutePosition", f, p))
        DynBodyAddForceAtPosition(mDynBodyID, f.v, p.v);
}

void HyPart::addForceAtAbsolutePosition(const HyReal f[3], const HyReal p[3]) {
    addForceAtAbsolutePosition(HyVector3(f), HyVector3(p));
}

void HyPart::addForceAtRelativePosition(const HyVector3& f, const HyVector3& p) {
    addForceAtAbsolutePosition(f, getTransform().transform(p));
}

void HyPart::addForceAtRelativePosition(const HyReal f[3], const HyReal p[3]) {
    addForceAtRelativePosition(HyVector3(f), HyVector3(p));
}

void HyPart::addForceAtPosition(const HyVector3& f, const HyVector3& p) {
    addForceAtAbsolutePosition(f, p);
}

void HyPart::addForceAtPosition(const HyReal f[3], const HyReal p[3]) {
    addForceAtAbsolutePosition(f, p);
}

void HyPart::addForceAtLocalPosition(const HyVector3& f, const HyVector3& p) {
    addForceAtRelativePosition(f, p);
}

void HyPart::addForceAtLocalPosition(const HyReal f[3], const HyReal p[3]) {
    addForceAtRelativePosition(f, p);
}

void HyPart::addImpulseAtAbsolutePosition(const HyVector3& impulse, const HyVector3& p) {
    if (takesLoad("addImpulseAtAbsolutePosition", impulse, p))
        DynBodyAddImpulseAtPosition(mDynBodyID, impulse.v, p.v);
}

void HyPart::addImpulseAtAbsolutePosition(const HyReal impulse[3], const HyReal p[3]) {
    addImpulseAtAbsolutePosition(HyVector3(impulse), HyVector3(p));
}

void HyPart::addImpulseAtRelativePosition(const HyVector3& impulse, const HyVector3& p) {
    addImpulseAtAbsolutePosition(impulse, getTransform().transform(p));
}

void HyPart::addImpulseAtRelativePosition(const HyReal impulse[3], const HyReal p[3]) {
    addImpulseAtRelativePosition(HyVector3(impulse), HyVector3(p));
}

void HyPart::addImpulseAtPosition(const HyVector3& impulse, const HyVector3& p) {
    addImpulseAtAbsolutePosition(impulse, p);
}

void HyPart::addImpulseAtPosition(const HyReal impulse[3], const HyReal p[3]) {
    addImpulseAtAbsolutePosition(impulse, p);
}

HyVector3 HyPart::getForce() const {
    return HyVector3(mDynBodyID->kiroBody.force);
}

HyVector3 HyPart::getTorque() const {
    return HyVector3(mDynBodyID->kiroBody.torque);
}

HyVector3 HyPart::getLastForce() const {
    return HyVector3(mDynBodyID->lastForce);
}

HyVector3 HyPart::getLastTorque() const {
    return HyVector3(mDynBodyID->lastTorque);
}

void HyPart::getLastForceAndTorque(HyVector3& force, HyVector3& torque) const {
    force = getLastForce();
    torque = getLastTorque();
}

} // namespace Hy
