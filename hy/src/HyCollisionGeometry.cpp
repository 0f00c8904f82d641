#include <Hy/HyCollisionGeometry.h>

#include "HyCollisionDetection.h"
#include "HyModelTransform.h"

#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColSpace.h>
#include <Dyn/DynBody.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCompositeCollisionGeometry.h>
#include <Hy/HyFrame.h>
#include <Hy/HyGeometry.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMaterialTable.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

#include <cmath>

// Life of a placement, its shape, and its place between part, composite and universe.

namespace Hy {

HyCollisionGeometry::HyCollisionGeometry(HyGeometry* geometry, HyMaterial* material)
    : HyCollisionGeometry(geometry, material, HyTransform()) {}

HyCollisionGeometry::HyCollisionGeometry(HyGeometry* geometry, HyMaterial* material,
                                         const HyTransform& relative)
    : mMaterial(material) {
    HyCollisionDetection_INCREF();
    if (relative.isFinite())
        mTransform = relative;
    else
        HyWarning(0, "HyCollisionGeometry::HyCollisionGeometry: the transform must be finite.\n");
    if (material)
        material->registerUsage(this);
    HyCollisionGeometry::setGeometry(geometry);
}

HyCollisionGeometry::~HyCollisionGeometry() {
    if (mParent)
        mParent->removeCollisionGeometry(this);
    if (mPart)
        mPart->removeCollisionGeometry(this);
    if (mUniverse)
        mUniverse->removeCollisionGeometry(this);
    HyCollisionGeometry::setGeometry(nullptr);
    if (ColModel* model = releaseModel()) // a composite's, which it has emptied
        ColModelDestroy(model);
    if (mMaterial.valid())
        mMaterial->unregisterUsage(this);
    HyCollisionDetection_DECREF();
}

HyCollisionGeometry* HyCollisionGeometry::clone(bool deep) const {
    HyGeometry* shape = getGeometry();
    auto* copy =
        new HyCollisionGeometry(shape && deep ? shape->clone() : shape, getMaterial(), mTransform);
    copy->copySettings(*this);
    return copy;
}

void HyCollisionGeometry::copySettings(const HyCollisionGeometry& from) {
    mFilter = from.mFilter;
    mTolerance = from.mTolerance;
    mDensity = from.mDensity;
    initModel();
    mCollisionEnabled = from.mCollisionEnabled;
    mMassEnabled = from.mMassEnabled;
    mStatic = from.mStatic;
    mFastMoving = from.mFastMoving;
    setRequestID(from.getRequestID(), false);
    setResponseID(from.getResponseID());
    setTemporaryDisabledStatus(from.mTemporarilyDisabledFlag);
}

// Shape.

ColModel* HyCollisionGeometry::releaseModel() {
    ColModel* model = mColModelID;
    if (!model)
        return nullptr;
    if (HyUniverse* universe = getUniverse())
        universe->removeColModel(model);
    model->mCollisionGeometry = nullptr;
    mColModelID = nullptr;
    return model;
}

void HyCollisionGeometry::adoptModel(ColModel* model) {
    mColModelID = model;
    model->mCollisionGeometry = this;
    model->mResponseID = HyUniverse::kResponsePart;
    initModel();
    updateBodyProperties();
    updateReferenceFrame();
    updateAbsoluteTransform();
}

void HyCollisionGeometry::initModel() {
    if (!mColModelID)
        return;
    ColModelSetIntersectFilter(mColModelID, mFilter);
    ColModelSetDensity(mColModelID, mDensity);
    if (mTolerance >= 0)
        ColModelSetContactTolerance(mColModelID, mTolerance);
}

void HyCollisionGeometry::setGeometry(HyGeometry* geometry) {
    if (geometry == mGeometry.get())
        return;
    const int response = getResponseID();
    if (mParent)
        mParent->detachModel(*this);
    if (ColModel* model = releaseModel())
        ColModelDestroy(model);
    if (mGeometry.valid())
        mGeometry->removeOwner(this);
    mGeometry = geometry;
    if (geometry) {
        geometry->build();
        geometry->addOwner(this);
        adoptModel(ColModelCreate(geometry->getColGeometry()));
        mColModelID->mResponseID = response;
    }
    if (mParent)
        mParent->attachModel(*this);
    updateSpaceProperties();
    updateMassPropertiesPart();
    disableCollisionsWithPart();
    setDirtyFlag();
    setRequestID(HyGeometry::getDefaultRequestID(geometry), true);
}

bool HyCollisionGeometry::isHole() const {
    return mGeometry.valid() && mGeometry->isHole();
}

void HyCollisionGeometry::setMaterial(HyMaterial* material) {
    if (material == mMaterial.get())
        return;
    if (mMaterial.valid())
        mMaterial->unregisterUsage(this);
    mMaterial = material;
    if (material)
        material->registerUsage(this);
    if (getUniverse())
        registerMaterial();
}

HyMaterial* HyCollisionGeometry::getMaterial(int element) const {
    HyMaterial* material = mGeometry.valid() ? mGeometry->getMaterial(element) : nullptr;
    return material ? material : getMaterial();
}

void HyCollisionGeometry::registerMaterial() {
    HyUniverse* universe = getUniverse();
    if (!universe)
        return;
    if (mMaterial.valid()) {
        HyMaterial* registered = universe->getMaterialTable()->registerMaterial(mMaterial.get());
        if (registered != mMaterial.get()) {
            mMaterial->unregisterUsage(this);
            mMaterial = registered;
            registered->registerUsage(this);
        }
    }
    if (mGeometry.valid())
        mGeometry->registerMaterials(universe);
}

// Where it belongs.

HyUniverse* HyCollisionGeometry::getUniverse() const {
    return mParent ? mParent->getUniverse() : mUniverse;
}

// Removing and inserting the model ends its pairs and forgets which were disabled.
void HyCollisionGeometry::setPart(HyPart* part) {
    if (part == mPart)
        return;
    if (mPart && mUniverse && mCollisionEnabled && mColModelID) {
        mUniverse->removeColModel(mColModelID);
        mPart = nullptr;
        mUniverse->insertColModel(mColModelID);
    }
    mPart = part;
    disableCollisionsWithPart();
    updateBodyProperties();
    updateReferenceFrame();
    updateAbsoluteTransform();
    updateSpaceProperties();
    updateMassPropertiesPart();
    setDirtyFlag();
}

void HyCollisionGeometry::setUniverse(HyUniverse* universe) {
    if (universe == mUniverse)
        return;
    if (mUniverse && mColModelID)
        mUniverse->removeColModel(mColModelID);
    mUniverse = universe;
    updateSpaceProperties();
    if (universe) {
        disableCollisionsWithPart();
        registerMaterial();
    }
    setDirtyFlag();
}

void HyCollisionGeometry::setParent(HyCompositeCollisionGeometry* parent) {
    if (parent == mParent)
        return;
    mParent = parent;
    if (mColModelID)
        mColModelID->mParent = parent ? parent->getColModel() : nullptr;
    updateReferenceFrame();
    updateAbsoluteTransform();
    setDirtyFlag();
}

void HyCollisionGeometry::disableCollisionsWithPart() {
    if (!mPart || !mUniverse || !mColModelID)
        return;
    for (const HyCollisionGeometry* sibling : mPart->getCollisionGeometries())
        if (sibling != this && sibling->getColModel())
            ColSpaceDisablePair(mColModelID, sibling->getColModel());
}

void HyCollisionGeometry::setDirtyFlag() {
    HyUniverse* universe = getUniverse();
    if (!universe)
        return;
    mDirtyFlag = true;
    universe->collisionGeometryDirty(this);
}

// Settings.

void HyCollisionGeometry::setCollisionEnabled(bool enabled) {
    if (enabled == mCollisionEnabled)
        return;
    mCollisionEnabled = enabled;
    updateSpaceProperties();
    if (enabled)
        disableCollisionsWithPart();
    setDirtyFlag();
}

void HyCollisionGeometry::setTemporaryDisabledStatus(TemporaryDisabledStatus status) {
    if (status < kNotTemporaryDisabled || status > kTemporaryDisabledLongTerm) {
        HyWarning(0, "HyCollisionGeometry::setTemporaryDisabledStatus: the status must be one of "
                     "TemporaryDisabledStatus.\n");
        return;
    }
    mTemporarilyDisabledFlag = status;
    updateSpaceProperties();
    setDirtyFlag();
}

void HyCollisionGeometry::setStatic(bool on) {
    if (on == mStatic)
        return;
    mStatic = on;
    updateSpaceProperties();
}

void HyCollisionGeometry::setFastMoving(bool on) {
    if (on == mFastMoving)
        return;
    mFastMoving = on;
    updateSpaceProperties();
}

void HyCollisionGeometry::setIntersectFilter(HyIntersectFilter* filter) {
    mFilter = filter;
    initModel();
}

HyIntersectFilter* HyCollisionGeometry::getIntersectFilter() const {
    return mFilter;
}

void HyCollisionGeometry::setContactTolerance(HyReal tolerance) {
    if (!(tolerance >= 0) || !std::isfinite(tolerance)) {
        HyWarning(0,
                  "HyCollisionGeometry::setContactTolerance: the tolerance must be finite and not "
                  "negative.\n");
        return;
    }
    mTolerance = tolerance;
    initModel();
    updateSpaceProperties();
}

HyReal HyCollisionGeometry::getContactTolerance() const {
    if (mColModelID)
        return ColModelGetContactTolerance(mColModelID);
    return mTolerance >= 0 ? mTolerance : HyUniverse::getDefaultContactTolerance();
}

bool HyCollisionGeometry::setRequestID(int id, bool updatePairs) {
    if (id < 0 || !mColModelID) {
        if (id < 0)
            HyWarning(0, "HyCollisionGeometry::setRequestID: the id must not be negative.\n");
        return false;
    }
    if (id == mColModelID->mRequestID)
        return true;
    mColModelID->mRequestID = id;
    updateSpaceProperties();
    if (updatePairs && mUniverse && mCollisionEnabled)
        mUniverse->getBridge()->updatePairsForNewCollisionGeometryRequest(this);
    return true;
}

int HyCollisionGeometry::getRequestID() const {
    return mColModelID ? mColModelID->mRequestID : 0;
}

void HyCollisionGeometry::setResponseID(int id) {
    const HyUniverse* universe = getUniverse();
    const int end = universe ? universe->getResponsePairMaxIndex() + 1 : id + 1;
    if (id < 0 || id >= end) {
        HyWarning(0, "HyCollisionGeometry::setResponseID: the id must be in the response table.\n");
        return;
    }
    if (!mColModelID || id == mColModelID->mResponseID)
        return;
    ColModelSetResponseID(mColModelID, id);
    if (mColModelID->mSpace && mTemporarilyDisabledFlag != kTemporaryDisabledLongTerm) {
        ColSpaceParkModel(mColModelID,
                          true); // its pairs end by the old responses and begin by the new
        ColSpaceParkModel(mColModelID, false);
    }
}

int HyCollisionGeometry::getResponseID() const {
    return mColModelID ? mColModelID->mResponseID : static_cast<int>(HyUniverse::kResponsePart);
}

// The one place that aligns the space with the settings.
void HyCollisionGeometry::updateSpaceProperties() {
    ColModel* model = mColModelID;
    if (!model)
        return;
    if (mUniverse && mCollisionEnabled) {
        if (model->mSpace != mUniverse->getColSpace()) {
            if (model->mRequestID > mUniverse->getPartPartCollisionRequestMaxIndex())
                mUniverse->setPartPartCollisionRequestMaxIndex(2 * model->mRequestID);
            mUniverse->insertColModel(model);
        }
    } else if (mUniverse && model->mSpace) {
        mUniverse->removeColModel(model);
    }
    if (CxSpace* space = model->mSpace) {
        const bool frozen = ColSpaceModelIsFrozen(model);
        if (ColSpaceIsChanging(space)) {
            model->mFastMoving = mFastMoving && !mStatic;
            if (frozen)
                ColSpaceUnfreezeModel(model);
            if (mStatic)
                ColSpaceUpdateModel(model);
            else
                ColSpacePathUpdateModel(model, HyFrame::instance()->getTimeStep(), 1);
        } else if (frozen && !mStatic) {
            ColSpaceUnfreezeModel(model);
        }
        if (mStatic)
            ColSpaceFreezeModel(model);
    } else {
        model->mFastMoving = mFastMoving && !mStatic;
    }
    if (mParent && mCollisionEnabled)
        mParent->childChanged();
    ColModelSetTemporaryDisabledStatus(
        model, static_cast<ColModelTemporaryDisabledStatus>(mTemporarilyDisabledFlag));
}

bool HyCollisionGeometry::invariant() const {
    bool holds = true;
    const auto require = [&holds](bool rule, const char* text) {
        if (rule)
            return;
        holds = false;
        HyWarning(0, "HyCollisionGeometry::invariant: %s\n", text);
    };
    require(mColModelID || !mGeometry.valid(), "a collision geometry must have a model");
    require(!mParent || !mUniverse,
            "a collision geometry cannot both have a parent and be in a universe");
    require(!mParent || !mPart, "a collision geometry cannot both have a parent and be in a part");
    require(!mPart || !mPart->getUniverse() || mPart->getUniverse() == mUniverse,
            "a collision geometry cannot be in a different universe than it's part");
    if (mColModelID) {
        require(!mUniverse || (mColModelID->mSpace != nullptr) == mCollisionEnabled,
                "a model is in a space if, and only if, it's collision geometry is an universe and "
                "is enabled");
        require(!mPart || mColModelID->mBody == mPart->getDynBody(),
                "a model's body must match it's part's body");
    }
    return holds;
}

} // namespace Hy
