#include <Hy/HyCompositeCollisionGeometry.h>

#include "HyModelTransform.h"

#include <Col/ColComposite.h>
#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometryState.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

#include <cmath>

namespace Hy {

HyCompositeCollisionGeometry::HyCompositeCollisionGeometry() {
    mComposite = ColCompositeGeometryCreate();
    adoptModel(ColModelCreate(mComposite));
}

HyCompositeCollisionGeometry::~HyCompositeCollisionGeometry() {
    destroyCollisionGeometries();
    if (HyPart* part = getPart())
        part->removeCollisionGeometry(this);
    if (ColModel* model = releaseModel())
        ColModelDestroy(model);
    ColGeometryDestroy(mComposite);
}

HyCompositeCollisionGeometry* HyCompositeCollisionGeometry::clone(bool deep) const {
    auto* copy = new HyCompositeCollisionGeometry;
    copy->setTransformRelative(getTransformRelative());
    copy->copySettings(*this);
    for (const HyCollisionGeometry* child : mCollisionGeometries)
        copy->addCollisionGeometry(child->clone(deep));
    return copy;
}

// Children.

bool HyCompositeCollisionGeometry::addCollisionGeometry(HyCollisionGeometry* child) {
    if (!child)
        return false;
    const auto* composite = dynamic_cast<const HyCompositeCollisionGeometry*>(child);
    if (child == this || (composite && composite->isAncestorOf(this))) {
        HyWarning(0, "HyCompositeCollisionGeometry::addCollisionGeometry: Cannot add the specified "
                     "collision geometry, because it is our ancestor.\n");
        return false;
    }
    if (!mCollisionGeometries.insert(child))
        return false;
    if (HyCompositeCollisionGeometry* parent = child->getParent())
        parent->removeCollisionGeometry(child);
    if (HyPart* part = child->getPart())
        part->removeCollisionGeometry(child);
    if (HyUniverse* universe = child->getUniverse())
        universe->removeCollisionGeometry(child);
    child->setParent(this);
    attachModel(*child);
    child->setStatic(isStatic());
    child->setFastMoving(isFastMoving());
    updateSpaceProperties();
    updateMassPropertiesPart();
    registerMaterial();
    return true;
}

HyCollisionGeometry*
HyCompositeCollisionGeometry::removeCollisionGeometry(HyCollisionGeometry* child) {
    if (!child || !mCollisionGeometries.erase(child))
        return nullptr;
    detachModel(*child);
    child->setParent(nullptr);
    updateSpaceProperties();
    updateMassPropertiesPart();
    return child;
}

void HyCompositeCollisionGeometry::destroyCollisionGeometry(HyCollisionGeometry* child) {
    delete removeCollisionGeometry(child);
}

void HyCompositeCollisionGeometry::destroyCollisionGeometries() {
    while (!mCollisionGeometries.empty())
        destroyCollisionGeometry(mCollisionGeometries[mCollisionGeometries.size() - 1]);
}

bool HyCompositeCollisionGeometry::isAncestorOf(const HyCollisionGeometry* geometry) const {
    for (; geometry; geometry = geometry->getParent())
        if (geometry == this)
            return true;
    return false;
}

// Contacts name the children, and the space holds the composite: a child's pairs never live there.
void HyCompositeCollisionGeometry::attachModel(HyCollisionGeometry& child) {
    ColModel* model = child.getColModel();
    if (!model || !getColModel())
        return;
    const auto add = child.isHole() ? ColCompositeModelAddElementHole : ColCompositeModelAddElement;
    add(getColModel(), model, HyModelTransform(child.getTransformRelative()));
    child.updateReferenceFrame();
    ColCompositeGeometryRebuild(mComposite);
}

void HyCompositeCollisionGeometry::detachModel(HyCollisionGeometry& child) {
    ColModel* model = child.getColModel();
    if (!model || !getColModel())
        return;
    if (HyUniverse* universe = getUniverse())
        universe->getBridge()->childModelRemoved(model);
    const auto remove =
        child.isHole() ? ColCompositeModelRemoveElementHole : ColCompositeModelRemoveElement;
    remove(getColModel(), model);
    ColCompositeGeometryRebuild(mComposite);
}

void HyCompositeCollisionGeometry::childChanged() {
    if (mComposite && !mForwarding)
        updateSpaceProperties();
}

void HyCompositeCollisionGeometry::childMoved() {
    if (mComposite)
        ColCompositeGeometryRebuild(mComposite);
}

// Forwarded.

void HyCompositeCollisionGeometry::setGeometry(HyGeometry*) {
    HyWarning(0, "HyCompositeCollisionGeometry: composites don't have geometries. Ignoring.\n");
}

void HyCompositeCollisionGeometry::setMaterial(HyMaterial* material) {
    for (HyCollisionGeometry* child : mCollisionGeometries)
        child->setMaterial(material);
}

void HyCompositeCollisionGeometry::registerMaterial() {
    for (HyCollisionGeometry* child : mCollisionGeometries)
        child->registerMaterial();
}

void HyCompositeCollisionGeometry::setRelativeDensity(HyReal density) {
    HyCollisionGeometry::setRelativeDensity(density);
    for (HyCollisionGeometry* child : mCollisionGeometries)
        child->setRelativeDensity(density);
}

// Holes take no mass away: they are hollows of the shape, not of the stuff.
bool HyCompositeCollisionGeometry::computeMassPropertiesFromDensity(
    HyMassProperties& properties) const {
    HyMassProperties sum;
    for (const HyCollisionGeometry* child : mCollisionGeometries) {
        HyMassProperties one;
        if (!child->isHole() && child->isMassEnabled() &&
            child->computeMassPropertiesFromDensity(one))
            sum.addMassProperties(one, getTransformRelative());
    }
    if (!(sum.getMass() > 0))
        return false;
    properties.copy(sum);
    return true;
}

HyVector3 HyCompositeCollisionGeometry::getCOM() const {
    HyMassProperties properties;
    if (!computeMassPropertiesFromDensity(properties))
        return getTransformAbsolute().t();
    const HyVector3 centre = properties.getCOMPositionLocal();
    if (const HyCompositeCollisionGeometry* parent = getParent())
        return parent->getTransformAbsolute().transform(centre);
    return getPart() ? getPart()->getTransform().transform(centre) : centre;
}

HyVector3 HyCompositeCollisionGeometry::getExtremePoint(const HyVector3& direction) const {
    HyVector3 best = getTransformAbsolute().t();
    bool first = true;
    for (const HyCollisionGeometry* child : mCollisionGeometries) {
        const HyVector3 point = child->getExtremePoint(direction);
        if (first || point.dot(direction) > best.dot(direction))
            best = point;
        first = false;
    }
    return best;
}

void HyCompositeCollisionGeometry::setStatic(bool on) {
    mForwarding = true; // once for all children
    for (HyCollisionGeometry* child : mCollisionGeometries)
        child->setStatic(on);
    mForwarding = false;
    HyCollisionGeometry::setStatic(on);
}

void HyCompositeCollisionGeometry::setFastMoving(bool on) {
    mForwarding = true;
    for (HyCollisionGeometry* child : mCollisionGeometries)
        child->setFastMoving(on);
    mForwarding = false;
    HyCollisionGeometry::setFastMoving(on);
}

void HyCompositeCollisionGeometry::updateReferenceFrame() {
    HyCollisionGeometry::updateReferenceFrame();
    for (HyCollisionGeometry* child : mCollisionGeometries)
        child->updateReferenceFrame();
}

void HyCompositeCollisionGeometry::updateAbsoluteTransform() {
    HyCollisionGeometry::updateAbsoluteTransform();
    for (HyCollisionGeometry* child : mCollisionGeometries)
        child->updateAbsoluteTransform();
}

// State.

HyCollisionGeometryState* HyCompositeCollisionGeometry::createStateImpl() const {
    auto* state = new HyCompositeCollisionGeometryState;
    for (HyCollisionGeometry* child : mCollisionGeometries)
        state->mChildStates.emplace_back(child->createState());
    return state;
}

void HyCompositeCollisionGeometry::restoreStateImpl(const HyCollisionGeometryState& state) {
    const auto* own = dynamic_cast<const HyCompositeCollisionGeometryState*>(&state);
    if (!own)
        return;
    for (const auto& child : own->mChildStates)
        if (child->mInstance.valid() && child->mInstance->getParent() == this)
            child->restore();
}

} // namespace Hy
