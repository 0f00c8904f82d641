#include <Hy/HyCollisionGeometry.h>

#include "HyModelTransform.h"

#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>
#include <Dyn/DynBody.h>
#include <Hy/HyCollisionGeometryState.h>
#include <Hy/HyCompositeCollisionGeometry.h>
#include <Hy/HyGeometry.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

#include <cmath>

// Where a placement stands, what it weighs, and its state.

namespace Hy {

// Place.

void HyCollisionGeometry::setTransformRelative(const HyTransform& transform) {
    if (!transform.isFinite()) {
        HyWarning(0, "HyCollisionGeometry::setTransformRelative: the transform must be finite.\n");
        return;
    }
    mTransform = transform;
    updateReferenceFrame();
    updateAbsoluteTransform();
    updateMassPropertiesPart();
    updateSpaceProperties();
}

void HyCollisionGeometry::setTransformAbsolute(const HyTransform& transform) {
    if (!transform.isFinite()) {
        HyWarning(0, "HyCollisionGeometry::setTransformAbsolute: the transform must be finite.\n");
        return;
    }
    HyTransform relative = transform;
    if (mParent)
        relative.compoundFirstThenInverseSecond(transform, mParent->getTransformAbsolute());
    else if (mPart)
        relative.compoundFirstThenInverseSecond(transform, mPart->getTransform());
    setTransformRelative(relative);
}

HyTransform HyCollisionGeometry::getTransformAbsolute() const {
    HyTransform absolute = mTransform;
    if (mParent)
        absolute.compound(mTransform, mParent->getTransformAbsolute());
    else if (mPart)
        absolute.compound(mTransform, mPart->getTransform());
    return absolute;
}

bool HyCollisionGeometry::isInPartAtIdentity() const {
    return mPart && mTransform.isIdentity();
}

// A shape that sits in its part's frame shares the part's transform, so that the common case costs
// nothing a step.
void HyCollisionGeometry::updateReferenceFrame() {
    ColModel* model = mColModelID;
    if (!model)
        return;
    lsTransform* body = mPart ? &lsTransform::cast(mPart->getDynBody()->bodyTM) : nullptr;
    if (isInPartAtIdentity()) {
        ColModelSetTransformPtr(model, body);
    } else if (!mPart && !mParent) {
        ColModelSetTransformPtr(model, HyModelTransform(mTransform));
    } else {
        lsTransform* reference = mParent ? mParent->getColModel()->mGlobalTM : body;
        ColModelSetTransformPtr(model, HyModelTransform(mAbsoluteTransform));
        ColModelSetRelativeTransformPtr(model, HyModelTransform(mTransform), reference);
    }
    if (mPart)
        ColModelSetCOMRelativePosition(model, lsVec3::constCast(mPart->getCOMOffset().v));
}

void HyCollisionGeometry::updateAbsoluteTransform() {
    mAbsoluteTransform = getTransformAbsolute();
    if (mColModelID)
        ColModelUpdate(mColModelID);
}

void HyCollisionGeometry::updateBodyProperties() {
    ColModel* model = mColModelID;
    if (!model)
        return;
    DynBody* body = mPart ? mPart->getDynBody() : nullptr;
    ColModelSetBody(model, body);
    if (body)
        model->mSetVelocityPtrFn(model, body->kiroBody.vel, body->kiroBody.velrot,
                                 body->kiroBody.accel);
    else
        model->mSetVelocityPtrFn(model, ColDefault0Velocity, ColDefault0Velocity,
                                 ColDefault0Velocity);
}

void HyCollisionGeometry::getBoundingBox(HyVector3& min, HyVector3& max) const {
    lsVec3 low, high;
    if (mColModelID)
        ColModelGetAABB(mColModelID, &low, &high);
    min = HyVector3(low.v);
    max = HyVector3(high.v);
}

void HyCollisionGeometry::getBoundingSphere(HyVector3& centre, HyReal& radius) const {
    lsVec3 middle;
    radius = 0;
    if (mColModelID) {
        ColModelUpdate(mColModelID);
        ColModelGetBSphere(mColModelID, &middle, &radius);
    }
    centre = HyVector3(middle.v);
}

HyVector3 HyCollisionGeometry::getExtremePoint(const HyVector3& direction) const {
    lsVec3 point;
    if (mColModelID) {
        ColModelUpdate(mColModelID);
        ColGeometryMaximumPoint(mColModelID->mGeometry, mColModelID->mGlobalTM,
                                lsVec3::constCast(direction.v), &point);
    }
    return HyVector3(point.v);
}

// Mass.

void HyCollisionGeometry::setRelativeDensity(HyReal density) {
    if (!(density > 0) || !std::isfinite(density)) {
        HyWarning(0,
                  "HyCollisionGeometry::setRelativeDensity: the density must be finite and larger "
                  "than 0.\n");
        return;
    }
    mDensity = density;
    initModel();
    updateMassPropertiesPart();
}

HyReal HyCollisionGeometry::getRelativeDensity() const {
    return mDensity;
}

void HyCollisionGeometry::setMassEnabled(bool enabled) {
    if (enabled == mMassEnabled)
        return;
    mMassEnabled = enabled;
    updateMassPropertiesPart();
}

void HyCollisionGeometry::updateMassPropertiesPart() {
    if (mParent) {
        mParent->childMoved();
        mParent->updateMassPropertiesPart();
    } else if (mPart) {
        mPart->updateMassFromGeometries();
    }
}

bool HyCollisionGeometry::computeMassPropertiesFromDensity(HyMassProperties& properties) const {
    if (!mGeometry.valid() || !(mGeometry->getVolume() > 0))
        return false;
    HyReal shape[3][3], tensor[3][3] = {};
    mGeometry->getInertiaTensor(shape);
    for (int i = 0; i < 3; ++i) // turned to the axes of the part: R^T I R for row vectors
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                for (int l = 0; l < 3; ++l)
                    tensor[i][j] += mTransform[k][i] * shape[k][l] * mTransform[l][j];
    for (auto& row : tensor)
        for (HyReal& entry : row)
            entry *= mDensity;
    properties.setMass(mDensity * mGeometry->getVolume());
    properties.setInertiaTensorLocal(tensor);
    properties.setCOMPositionLocal(mTransform.transform(mGeometry->getCOM()));
    return true;
}

bool HyCollisionGeometry::computeMassPropertiesFromMass(HyReal mass,
                                                        HyMassProperties& properties) const {
    if (!(mass > 0) || !std::isfinite(mass) || !computeMassPropertiesFromDensity(properties))
        return false;
    properties.scaleInertiaTensor(mass / properties.getMass());
    properties.setMass(mass);
    return true;
}

HyVector3 HyCollisionGeometry::getCOM() const {
    if (!mGeometry.valid())
        return getTransformAbsolute().t();
    return getTransformAbsolute().transform(mGeometry->getCOM());
}

// State.

void HyCollisionGeometryState::restore() {
    if (mInstance.valid())
        mInstance->restoreState(this);
}

HyCollisionGeometryState* HyCollisionGeometry::createState() {
    HyCollisionGeometryState* state = createStateImpl();
    state->mInstance = this;
    state->mAbsoluteTransform = getTransformAbsolute();
    state->mRelativeDensity = getRelativeDensity();
    state->mTemporarilyDisabledFlag = mTemporarilyDisabledFlag;
    state->mMassEnabled = mMassEnabled;
    state->mCollisionEnabled = mCollisionEnabled;
    state->mStatic = mStatic;
    state->mFastMoving = mFastMoving;
    return state;
}

HyCollisionGeometryState* HyCollisionGeometry::createStateImpl() const {
    return new HyCollisionGeometryState;
}

bool HyCollisionGeometry::restoreState(const HyCollisionGeometryState* state) {
    if (!state || state->mInstance.get() != this)
        return false;
    if (!mPart && !mParent)
        setTransformAbsolute(state->mAbsoluteTransform);
    if (state->mRelativeDensity != getRelativeDensity())
        setRelativeDensity(state->mRelativeDensity);
    setMassEnabled(state->mMassEnabled);
    setCollisionEnabled(state->mCollisionEnabled);
    setStatic(state->mStatic);
    setFastMoving(state->mFastMoving);
    if (state->mTemporarilyDisabledFlag != mTemporarilyDisabledFlag)
        setTemporaryDisabledStatus(state->mTemporarilyDisabledFlag);
    restoreStateImpl(*state);
    return true;
}

void HyCollisionGeometry::restoreStateImpl(const HyCollisionGeometryState&) {}

} // namespace Hy
