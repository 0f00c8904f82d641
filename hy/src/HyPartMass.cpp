#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>
#include <Dyn/DynConstraint.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyMessage.h>

#include <cmath>

namespace Hy {

namespace {

constexpr HyReal kUnitTensor[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};

// The solver works with the inverse.
bool isMass(HyReal mass) {
    return mass > 0 && std::isfinite(mass) && std::isfinite(1 / mass);
}

bool isFit(const HyMassProperties& properties) {
    return isMass(properties.getMass()) &&
           DynBodyIsValidInertiaTensor(properties.getInertiaTensorLocal());
}

// The same body in another density. What has no mass yet gets a unit tensor.
HyMassProperties scaledTo(HyReal mass, HyMassProperties properties) {
    if (!isMass(mass) || mass == properties.getMass())
        return properties;
    HyReal oldMass = properties.getMass();
    if (oldMass == 0) {
        properties.setInertiaTensorLocal(kUnitTensor);
        oldMass = 1;
    }
    properties.scaleInertiaTensor(mass / oldMass);
    properties.setMass(mass);
    return properties;
}

} // namespace

// Every change of the mass properties runs here.
template <class Change>
void HyPart::changeMassProperties(Change change) {
    change(mMassProperties);
    _postMassPropertiesChange();
}

void HyPart::_postMassPropertiesChange() {
    _applyMassProperties(mMassProperties);
}

void HyPart::_applyMassProperties(const HyMassProperties& properties) {
    if (isFit(properties)) { // a part that is not dynamic may be without
        _applyMass(properties);
        _applyInertia(properties);
    }
    _applyCOMRelativeTM(properties);
}

void HyPart::_applyMass(const HyMassProperties& properties) {
    DynBodySetMass(mDynBodyID, properties.getMass());
}

void HyPart::_applyInertia(const HyMassProperties& properties) {
    DynBodySetInertiaTensor(mDynBodyID, properties.getInertiaTensorLocal());
}

void HyPart::_applyCOMRelativeTM(const HyMassProperties& properties) {
    placeCentreOfMass(properties.getCOMTransformLocal());
}

// The body takes the attachments of its enabled constraints along.
void HyPart::placeCentreOfMass(const HyTransform& tm) {
    const HyTransform before(mDynBodyID->comToBodyTM);
    DynBodySetCenterOfMassRelativeTransform(mDynBodyID, tm.m);
    if (before == HyTransform(mDynBodyID->comToBodyTM))
        return;
    updateCollisionGeometryCOMOffset();
    HyTransform change;
    change.compoundInverseFirstThenSecond(before, HyTransform(mDynBodyID->comToBodyTM));
    for (HyConstraint* constraint : mConstraintsArr)
        if (!constraint->isEnabledInternal())
            DynConstraintAdaptAttachments(constraint->getDynConstraint(), mDynBodyID, change.m);
}

// What a part needs to become dynamic.
void HyPart::giveDefaultMass() {
    if (isFit(mMassProperties))
        return;
    if (!(mMassProperties.getMass() > 0))
        mMassProperties.setMass(1);
    mMassProperties.setInertiaTensorLocal(kUnitTensor);
    mMassProperties.scaleInertiaTensor(mMassProperties.getMass());
}

void HyPart::setMass(HyReal mass) {
    if (mControlType != kControlDynamic)
        return;
    const HyReal oldMass = getMass();
    const HyMassProperties changed = scaledTo(mass, mMassProperties);
    const bool staysFit = isFit(changed) || (oldMass > 0 && !isFit(mMassProperties));
    if (!isMass(mass) || !staysFit) {
        HyWarning(0, "HyPart::setMass: mass must be larger than 0.\n");
        return;
    }
    mMassLocked = true;
    if (mass != oldMass)
        changeMassProperties([&](HyMassProperties& own) { own.copy(changed); });
}

void HyPart::setMassAndInertia(HyReal mass, const HyReal inertia[3][3]) {
    if (mControlType != kControlDynamic)
        return;
    if (!isMass(mass) || !DynBodyIsValidInertiaTensor(inertia)) {
        HyWarning(0, "HyPart::setMassAndInertia: mass must be larger than 0, inertia positive "
                     "definite.\n");
        return;
    }
    mMassLocked = mInertiaLocked = true;
    changeMassProperties([mass, inertia](HyMassProperties& properties) {
        properties.setMass(mass);
        properties.setInertiaTensorLocal(inertia);
    });
}

void HyPart::setMassFromPart(const HyPart* other) {
    if (!other || other == this || mControlType != kControlDynamic ||
        other->mControlType != kControlDynamic)
        return;
    if (!takeMassProperties(other->mMassProperties, "setMassFromPart"))
        return;
    mMassLocked = other->mMassLocked;
    mCOMLocked = other->mCOMLocked;
    mInertiaLocked = other->mInertiaLocked;
}

bool HyPart::takeMassProperties(const HyMassProperties& properties, const char* operation) {
    if (mControlType == kControlDynamic && !isFit(properties)) {
        HyWarning(0,
                  "HyPart::%s: a dynamic part needs a mass and a positive definite inertia "
                  "tensor.\n",
                  operation);
        return false;
    }
    lockMassProperties();
    changeMassProperties([&](HyMassProperties& own) { own.copy(properties); });
    return true;
}

void HyPart::setMassProperties(const HyMassProperties& properties) {
    takeMassProperties(properties, "setMassProperties");
}

void HyPart::addMassProperties(const HyMassProperties& properties, const HyTransform& tm) {
    HyMassProperties sum = mMassProperties;
    sum.addMassProperties(properties, tm);
    takeMassProperties(sum, "addMassProperties");
}

void HyPart::subtractMassProperties(const HyMassProperties& properties, const HyTransform& tm) {
    HyMassProperties rest = mMassProperties;
    rest.subtractMassProperties(properties, tm);
    takeMassProperties(rest, "subtractMassProperties");
}

void HyPart::setCOMPosition(const HyVector3& position) {
    setCOMOffset(getTransform().inverseTransform(position));
}

HyVector3 HyPart::getCOMPosition() const {
    return HyVector3(mDynBodyID->kiroBody.tm[3]);
}

void HyPart::setCOMOffset(const HyVector3& offset) {
    if (!offset.isFinite()) {
        HyWarning(0, "HyPart::setCOMOffset: the offset must be finite.\n");
        return;
    }
    mCOMLocked = true;
    changeMassProperties(
        [&](HyMassProperties& properties) { properties.setCOMPositionLocal(offset); });
}

HyVector3 HyPart::getCOMOffset() const {
    return mMassProperties.getCOMPositionLocal();
}

void HyPart::getInertiaLocal(HyReal inertia[3][3]) const {
    mMassProperties.getInertiaTensorLocal(inertia);
}

void HyPart::getInertiaAbsolute(HyReal inertia[3][3]) const {
    mMassProperties.getInertiaTensorAbsolute(inertia);
}

void HyPart::getOrthogonalInertia(HyVector3& moments, HyTransform& frame) const {
    mMassProperties.getOrthogonalInertiaTensor(moments, frame);
}

void HyPart::lockMassProperties() {
    mMassLocked = mCOMLocked = mInertiaLocked = true;
}

void HyPart::setSphericalInertiaEnabled(bool enabled) {
    DynBodySetSphericalInertiaFlag(mDynBodyID, enabled);
}

bool HyPart::getSphericalInertiaEnabled() const {
    return DynBodyIsSphericalInertiaFlagSet(mDynBodyID);
}

} // namespace Hy
