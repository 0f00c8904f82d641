#include <Hy/HyPart.h>

#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>
#include <Dyn/DynBody.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyCompositeCollisionGeometry.h>
#include <Hy/HyMessage.h>
#include <Hy/HyUniverse.h>

#include <algorithm>
#include <cmath>

// The geometries of a part, and the mass that they give it.

namespace Hy {
namespace {

bool sAutoFastMoving = false;

} // namespace

// Contents.

bool HyPart::addCollisionGeometry(HyCollisionGeometry* geometry) {
    if (!geometry)
        return false;
    if (geometry->isHole()) {
        HyWarning(0,
                  "HyPart::addCollisionGeometry: hole collision geometries can only be added to a "
                  "HyCompositeCollisionGeometry.\n");
        return false;
    }
    if (!mCollisionGeometries.insert(geometry))
        return false;
    if (HyCompositeCollisionGeometry* composite = geometry->getParent())
        composite->removeCollisionGeometry(geometry);
    if (HyPart* other = geometry->getPart())
        other->removeCollisionGeometry(geometry);
    if (HyUniverse* other = geometry->getUniverse(); other && other != mUniverse)
        other->removeCollisionGeometry(geometry);
    geometry->setPart(this);
    if (mUniverse)
        mUniverse->addCollisionGeometry(geometry);
    geometry->setFastMoving(mFastMoving);
    geometry->setStatic(mInternalControl == kControlStatic);
    updateMassFromGeometries();
    return true;
}

HyCollisionGeometry* HyPart::removeCollisionGeometry(HyCollisionGeometry* geometry) {
    if (!geometry || !mCollisionGeometries.erase(geometry))
        return nullptr;
    if (mUniverse)
        mUniverse->removeCollisionGeometry(geometry);
    geometry->setPart(nullptr);
    updateMassFromGeometries();
    return geometry;
}

void HyPart::destroyCollisionGeometry(HyCollisionGeometry* geometry) {
    delete removeCollisionGeometry(geometry);
}

void HyPart::destroyCollisionGeometries() {
    const bool mass = mMassLocked, centre = mCOMLocked, inertia = mInertiaLocked;
    lockMassProperties();
    while (!mCollisionGeometries.empty())
        destroyCollisionGeometry(mCollisionGeometries[mCollisionGeometries.size() - 1]);
    mMassLocked = mass;
    mCOMLocked = centre;
    mInertiaLocked = inertia;
}

// All of them.

void HyPart::getBoundingBox(HyVector3& min, HyVector3& max) const {
    min = max = getPosition();
    bool first = true;
    for (const HyCollisionGeometry* geometry : mCollisionGeometries) {
        HyVector3 low, high;
        geometry->getBoundingBox(low, high);
        for (int axis = 0; axis < 3; ++axis) {
            min[axis] = first ? low[axis] : std::min(min[axis], low[axis]);
            max[axis] = first ? high[axis] : std::max(max[axis], high[axis]);
        }
        first = false;
    }
}

void HyPart::getBoundingSphere(HyVector3& centre, HyReal& radius) const {
    HyVector3 min, max;
    getBoundingBox(min, max);
    centre = (min + max) * 0.5;
    radius = 0;
    for (const HyCollisionGeometry* geometry : mCollisionGeometries) {
        HyVector3 c;
        HyReal r = 0;
        geometry->getBoundingSphere(c, r);
        radius = std::max(radius, (c - centre).norm() + r);
    }
}

void HyPart::updateTransform() {
    for (HyCollisionGeometry* geometry : mCollisionGeometries)
        geometry->updateAbsoluteTransform();
}

void HyPart::updateCollision() {
    for (HyCollisionGeometry* geometry : mCollisionGeometries)
        geometry->updateSpaceProperties();
}

void HyPart::dirtyCollisionGeometries() {
    for (HyCollisionGeometry* geometry : mCollisionGeometries)
        geometry->setDirtyFlag();
}

void HyPart::setGeometriesStatic(bool on) {
    for (HyCollisionGeometry* geometry : mCollisionGeometries)
        geometry->setStatic(on);
}

void HyPart::setFastMoving(bool on) {
    mFastMoving = on;
    for (HyCollisionGeometry* geometry : mCollisionGeometries)
        geometry->setFastMoving(on);
}

void HyPart::setAutoFastMoving(bool on) {
    sAutoFastMoving = on;
}

bool HyPart::getAutoFastMoving() {
    return sAutoFastMoving;
}

// Mass.

void HyPart::setLockMass(bool locked) {
    mMassLocked = locked;
    updateMassFromGeometries();
}

void HyPart::setLockCOM(bool locked) {
    mCOMLocked = locked;
    updateMassFromGeometries();
}

void HyPart::setLockInertia(bool locked) {
    mInertiaLocked = locked;
    updateMassFromGeometries();
}

void HyPart::resetMassPropertiesFromCollisionGeometry() {
    mMassLocked = mCOMLocked = mInertiaLocked = false;
    updateMassFromGeometries();
}

bool HyPart::getGeometryMassProperties(HyMassProperties& properties) const {
    HyMassProperties sum;
    for (const HyCollisionGeometry* geometry : mCollisionGeometries) {
        HyMassProperties one;
        if (geometry->isMassEnabled() && geometry->computeMassPropertiesFromDensity(one))
            sum.addMassProperties(one, HyTransform());
    }
    if (!(sum.getMass() > 0))
        return false;
    properties.copy(sum);
    return true;
}

void HyPart::setMassPropertiesFromGeometry(const HyCollisionGeometry* geometry) {
    HyMassProperties properties;
    if (!geometry || !geometry->computeMassPropertiesFromDensity(properties)) {
        HyWarning(0, "HyPart::setMassPropertiesFromGeometry: the geometry must have a volume.\n");
        return;
    }
    setMassProperties(properties);
}

void HyPart::setInertiaAndCOMFromGeometry(const HyCollisionGeometry* geometry) {
    HyMassProperties properties;
    const HyReal mass = getMass() > 0 ? getMass() : 1;
    if (!geometry || !geometry->computeMassPropertiesFromMass(mass, properties)) {
        HyWarning(0, "HyPart::setInertiaAndCOMFromGeometry: the geometry must have a volume.\n");
        return;
    }
    properties.setMass(getMass());
    mInertiaLocked = mCOMLocked = true;
    mMassProperties.copy(properties);
    _postMassPropertiesChange();
}

void HyPart::updateMassFromGeometries() {
    if (mControlType != kControlDynamic || (mMassLocked && mCOMLocked && mInertiaLocked))
        return;
    HyMassProperties shape;
    if (!getGeometryMassProperties(shape))
        return;
    HyMassProperties changed = mMassProperties;
    const HyReal shapeMass = shape.getMass();
    if (!mInertiaLocked) {
        const HyReal mass = mMassLocked && getMass() > 0 ? getMass() : shapeMass;
        shape.scaleInertiaTensor(mass / shapeMass);
        shape.makeValidInertiaTensor();
        changed.setInertiaTensorLocal(shape.getInertiaTensorLocal());
        changed.setMass(mass);
    } else if (!mMassLocked) {
        if (getMass() > 0)
            changed.scaleInertiaTensor(shapeMass / getMass());
        changed.setMass(shapeMass);
    }
    if (!mCOMLocked)
        changed.setCOMPositionLocal(shape.getCOMPositionLocal());
    mMassProperties.copy(changed);
    _postMassPropertiesChange();
    updateCollisionGeometryCOMOffset();
}

void HyPart::updateCollisionGeometryCOMOffset() {
    for (const HyCollisionGeometry* geometry : mCollisionGeometries)
        if (ColModel* model = geometry->getColModel())
            ColModelSetCOMRelativePosition(model, lsVec3::constCast(getCOMOffset().v));
}

} // namespace Hy
