#include <Hy/HyPart.h>

#include <Dyn/DynBody.h>
#include <Dyn/DynWorld.h>
#include <Hy/FrictionDirectionSubscriber.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyCollisionRule.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyMessage.h>
#include <Hy/HySafeWalk.h>
#include <Hy/HyUniverse.h>
#include <Kit/KitPool.h>

namespace Hy {

namespace {

constexpr int kBodiesPerBlock = 1000;

// The bodies of all parts, in the order of creation as long as none is destroyed.
KitPool sBodyPool;
int sPartCount = 0;

DynBody* takeBody() {
    if (sPartCount == 0) {
        KitPoolInitResizable(&sBodyPool, kBodiesPerBlock, static_cast<int>(sizeof(DynBody)),
                             kBodiesPerBlock, 0, static_cast<int>(alignof(DynBody)));
        KitPoolSetPoolName(&sBodyPool, "part bodies");
    }
    DynBody* body = DynBodyCreateInPool(&sBodyPool);
    if (!body)
        HyFatalErrorOrAbort("HyPart::HyPart: out of memory.\n");
    ++sPartCount;
    return body;
}

void returnBody(DynBody* body) {
    body->mPart = nullptr;
    if (body->world) // which holds on to it in the middle of a step: it stays there, asleep
        return;
    DynBodyDestroy(body);
    if (--sPartCount == 0)
        KitPoolTerm(&sBodyPool);
}

} // namespace

HyPart::HyPart() {
    init(kControlAnimated);
}

HyPart::HyPart(HyReal mass) {
    init(mass == 0 ? kControlAnimated : kControlDynamic);
    mFastMoving = mass != 0 && getAutoFastMoving();
    if (mass != 0)
        setMass(mass);
}

void HyPart::init(EntityControlTypeEnum control) {
    mDynBodyID = takeBody();
    mDynBodyID->mPart = this;
    mMassProperties = HyMassProperties(getTransformPtr());
    mControlType = mInternalControl = control;
    setSolverGroup(0);
}

HyPart::~HyPart() {
    destroyCollisionGeometries();
    while (!mConstraintsArr.empty())
        mConstraintsArr.back()->forgetPart(this);
    if (mUniverse)
        mUniverse->removePart(this);
    setFrictionDirectionSubscriber(nullptr);
    DynBodyDisable(mDynBodyID);
    returnBody(mDynBodyID);
}

int HyPart::getCollisionRulePriority() const {
    return HyCollisionRule::PriorityPart;
}

void HyPart::onCollisionRulesChanged() {
    if (mUniverse)
        mUniverse->partNeedsPreStep(this);
}

void HyPart::setControl(EntityControlTypeEnum control) {
    if (control < kControlAnimated || control > kControlStatic) {
        HyWarning(0, "HyPart::setControl: the control must be one of EntityControlTypeEnum.\n");
        return;
    }
    if (control == mControlType)
        return;
    if (mUniverse && mUniverse->isStepping())
        HyWarning(0,
                  "HyPart::setControl: cannot be called while stepping universe (check intersect "
                  "subscribers).\n");
    resetDynamics();
    mInternalControl = mControlType = control;
    mControlTypeDirty = true;
    _updateControl();
}

void HyPart::freeze(bool frozen) {
    if (frozen == mFreezeState)
        return;
    mFreezeState = frozen;
    mInternalControl = kControlStatic;
    mControlTypeDirty = true;
    _updateControl();
}

void HyPart::_updateControl() {
    if (!mControlTypeDirty || !mUniverse)
        return;
    _applyControl(mFreezeState ? kControlStatic : mControlType);
    mControlTypeDirty = false;
}

void HyPart::_applyControl(EntityControlTypeEnum control) {
    mInternalControl = control;
    switch (control) {
    case kControlDynamic:
        _freeze(false);
        DynBodyMakeDynamic(mDynBodyID);
        giveDefaultMass();
        _applyMassProperties(mMassProperties);
        updateMassFromGeometries();
        wakeDynamics(true);
        if (getAutoFastMoving())
            setFastMoving(true);
        break;
    case kControlStatic:
        DynBodyMakeKinematic(mDynBodyID);
        DynBodyDisable(mDynBodyID);
        _freeze(true);
        break;
    case kControlAnimated:
        _freeze(false);
        DynBodyMakeKinematic(mDynBodyID);
        DynBodyDisable(mDynBodyID);
        break;
    }
}

void HyPart::_freeze(bool frozen) {
    setGeometriesStatic(frozen);
    if (!mUniverse)
        return;
    if (mUniverse->isStepping())
        HyWarning(0, "HyPart::_freeze: cannot be called while stepping universe (check intersect "
                     "subscribers).\n");
    if (frozen) {
        DynBodyFreeze(mDynBodyID);
        return;
    }
    DynBodyUnFreeze(mDynBodyID);
    if (isDynamic())
        wakeDynamics(true);
}

void HyPart::wakeDynamics(bool awake) {
    if (mInternalControl == kControlAnimated)
        DynBodyEnableConnectedBodies(mDynBodyID);
    else if (isDynamic() && awake != DynBodyIsEnabled(mDynBodyID))
        awake ? DynBodyEnable(mDynBodyID) : putToSleep();
}

// A step visits what is awake: a load that waits on the part would outlast the step that it is for.
void HyPart::putToSleep() {
    DynBodyDisable(mDynBodyID);
    if (mUniverse && !(getForce().isZero() && getTorque().isZero()))
        mUniverse->partNeedsPostStep(this);
}

bool HyPart::isDynamicsAwake() const {
    return isDynamic() && DynBodyIsEnabled(mDynBodyID);
}

int HyPart::getEnabledSteps() const {
    return DynBodyGetEnabledTime(mDynBodyID);
}

void HyPart::setEnabledSteps(int steps) {
    if (isDynamic())
        DynBodySetEnabledTime(mDynBodyID, steps);
}

bool HyPart::isMoving() const {
    return DynBodyIsMovingTest(mDynBodyID);
}

void HyPart::resetDynamics() {
    DynBodyResetDynamics(mDynBodyID);
}

void HyPart::setSolverGroup(int group) {
    if (group < -1 || group > kDynMaxGrouping) {
        HyWarning(0, "HyPart::setSolverGroup: the group must be at least -1 and at most %d.\n",
                  kDynMaxGrouping);
        return;
    }
    DynBodySetUserGroup(mDynBodyID, group);
    mSolverGroup = group;
    if (mUniverse)
        mUniverse->getSolverParameters(group);
}

int HyPart::getLastPartitionIndex() const {
    return DynBodyGetLastPartitionIndex(mDynBodyID);
}

void HyPart::setUniverse(HyUniverse* universe) {
    if (universe == mUniverse)
        return;
    HyUniverse* old = mUniverse;
    mUniverse = nullptr;
    updateConstraints();
    if (old)
        leaveUniverse(*old);
    mUniverse = universe;
    if (mUniverse)
        enterUniverse(*mUniverse);
    updateConstraints();
    onCollisionRuleContainerUniverseChanged(old, mUniverse);
}

// Constraints.

HyConstraint* HyPart::getConstraint(int i) const {
    return i >= 0 && i < getConstraintCount() ? mConstraintsArr[static_cast<std::size_t>(i)]
                                              : nullptr;
}

void HyPart::updateConstraints() {
    for (HyConstraint* constraint : mConstraintsArr)
        constraint->updateEnableInternal();
}

void HyPart::_addConstraint(HyConstraint* constraint) {
    mConstraintsArr.addUnique(constraint);
    wakeDynamics(true);
}

void HyPart::_removeConstraint(HyConstraint* constraint) {
    if (!constraint->hasPart(this))
        mConstraintsArr.eraseOnce(constraint);
    wakeDynamics(true);
}

void HyPart::leaveUniverse(HyUniverse& universe) {
    for (HySafeWalk walk(mCollisionGeometries); HyCollisionGeometry* geometry = walk.next();)
        universe.removeCollisionGeometry(geometry);
    DynBodyEnableConnectedBodies(mDynBodyID);
    DynBodyDisable(mDynBodyID);
    universe.removeDynBody(mDynBodyID);
    universe.partLeavesPreStep(this);
}

void HyPart::enterUniverse(HyUniverse& universe) {
    for (HySafeWalk walk(mCollisionGeometries); HyCollisionGeometry* geometry = walk.next();)
        universe.addCollisionGeometry(geometry);
    universe.insertDynBody(mDynBodyID);
    wakeDynamics(true);
    setEnabledSteps(0);
    universe.getSolverParameters(mSolverGroup);
    if (mControlTypeDirty)
        universe.partNeedsPreStep(this);
}

void HyPart::preStep() {
    _updateControl();
    preStepCollisionRuleContainer(mUniverse);
}

void HyPart::postStep() {
    if (isDynamic())
        DynBodyClearUserForces(mDynBodyID);
}

} // namespace Hy
