#include <Hy/HyConstraint.h>

#include <Dyn/DynBody.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynWorld.h>
#include <Hy/ConstraintAccessors.h>
#include <Hy/HyConstraintFactory.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>
#include <Kit/KitPool.h>

#include <algorithm>

// Life of a constraint, its parts, and when it acts.

namespace Hy {
namespace {

constexpr int kRecordsPerBlock = 1000;

KitPool sConstraintPool;
bool sPoolExists = false;
int gConstraintCount = 0;

DynBaseConstraint* taken(DynBaseConstraint* record) {
    if (!record)
        HyFatalErrorOrAbort("HyConstraint::HyConstraint: out of memory.\n");
    ++gConstraintCount;
    return record;
}

// A record that its world holds on to, in the middle of a solve, keeps its place in the pool.
void giveBack(DynBaseConstraint* record) {
    record->mConstraint = nullptr;
    if (!DynConstraintDestroy(record) || --gConstraintCount > 0)
        return;
    KitPoolTerm(&sConstraintPool);
    sPoolExists = false;
}

template <class T>
void deleteAll(HyArray<T*>& owned) {
    for (T* each : owned)
        delete each;
}

} // namespace

KitPool* HyConstraint::getConstraintPool() {
    if (!sPoolExists) {
        KitPoolInit(&sConstraintPool, kRecordsPerBlock, getDynConstraintUnionSize(), 0);
        KitPoolSetPoolName(&sConstraintPool, "constraints");
        sPoolExists = true;
    }
    return &sConstraintPool;
}

HyConstraint::HyConstraint(DynBaseConstraint* record)
    : mConstraint(taken(record)), mFriction{{{&record->bclH.friction[0], record},
                                             {&record->bclH.friction[1], record},
                                             {&record->bclH.friction[2], record},
                                             {&record->bclH.friction[3], record},
                                             {&record->bclH.friction[4], record},
                                             {&record->bclH.friction[5], record}}} {
    mConstraint->mConstraint = this;
    const int parts = mConstraint->bclH.n_bodies;
    for (int i = 0; i < parts; ++i) {
        mPartList.push_back(nullptr);
        mAttachmentListRef.add();
        mPartAttachments.push_back(new ConstraintPartAttachment(this, i));
    }
}

HyConstraint::~HyConstraint() {
    if (HyConstraintFactory* creator = HyConstraintFactory::findFactoryCreatorOf(this))
        creator->onConstraintDestroyed(this);
    if (mUniverse)
        mUniverse->removeConstraint(this);
    for (HyPart*& place : mPartList)
        if (HyPart* part = place) {
            place = nullptr;
            part->_removeConstraint(this);
        }
    deleteAll(mPartAttachments);
    deleteAll(mEquations);
    deleteAll(mCoordinates);
    giveBack(mConstraint);
}

void HyConstraint::addEquations(std::initializer_list<EquationType> equations) {
    for (const EquationType& equation : equations)
        mEquations.push_back(new ConstraintEquation(this, equation));
}

void HyConstraint::addCoordinates(std::initializer_list<const char*> names) {
    for (const char* name : names)
        mCoordinates.push_back(
            new ConstraintCoordinate(this, static_cast<int>(mCoordinates.size()), name));
}

void HyConstraint::_reset() {
    for (int i = 0; i < getMaxPartCount(); ++i)
        setPart(i, nullptr);
    mKinematicPartIndex = -1;
    DynConstraintReset(mConstraint);
}

// Parts.

bool HyConstraint::isPartIndex(int i) const {
    if (i >= 0 && i < getMaxPartCount())
        return true;
    HyWarning(0, "HyArray::isValidIndex : range error\n");
    return false;
}

void HyConstraint::setPart(int i, HyPart* part) {
    if (!isPartIndex(i) || (!part && !getPart(i)))
        return;
    if (mEnabledInternal)
        wakeParts();
    DynConstraintDisable(mConstraint);
    if (DynConstraintIsEnabled(mConstraint)) // in the middle of a solve; it has been told
        return;
    replacePart(i, part);
    if (mKinematicPartIndex == i)
        followKinematicPart();
    updateEnableInternal();
    if (getMaxPartCount() > 1 && mPartList[0] && mPartList[0] == mPartList[1])
        HyInfo(0,
               "HyConstraint::setPart: constraint %s has its two first parts set to the same "
               "value, the constraint might not work correctly.\n",
               getName().c_str());
}

// A part forgets the constraint once no slot holds it.
void HyConstraint::replacePart(int i, HyPart* part) {
    HyPart*& place = mPartList[static_cast<std::size_t>(i)];
    HyPart* old = place;
    place = part;
    DynConstraintSetBody(mConstraint, i, part ? part->getDynBody()->rootParent : nullptr);
    if (old == part)
        return;
    if (old)
        old->_removeConstraint(this);
    if (part)
        part->_addConstraint(this);
}

void HyConstraint::setParts(HyPart* part1, HyPart* part2) {
    setPart(0, part1);
    setPart(1, part2);
}

HyPart* HyConstraint::getPart(int i) const {
    return isPartIndex(i) ? mPartList[static_cast<std::size_t>(i)] : nullptr;
}

int HyConstraint::getPartCount() const {
    return static_cast<int>(mPartList.size()) -
           static_cast<int>(std::count(mPartList.begin(), mPartList.end(), nullptr));
}

bool HyConstraint::hasPart(const HyPart* part) const {
    return std::find(mPartList.begin(), mPartList.end(), part) != mPartList.end();
}

void HyConstraint::forgetPart(HyPart* part) {
    for (int i = 0; i < getMaxPartCount(); ++i)
        if (mPartList[static_cast<std::size_t>(i)] == part)
            setPart(i, nullptr);
}

void HyConstraint::setForcePartKinematicResponse(HyPart* part) {
    if (!part) {
        setForcePartKinematicResponseIndex(-1);
        return;
    }
    HyPart** const place = std::find(mPartList.begin(), mPartList.end(), part);
    if (place == mPartList.end()) {
        HyWarning(0, "HyConstraint::setForcePartKinematicResponse: the part must be one of the "
                     "constraint's.\n");
        return;
    }
    setForcePartKinematicResponseIndex(static_cast<int>(place - mPartList.begin()));
}

void HyConstraint::setForcePartKinematicResponseIndex(int i) {
    if (i != -1 && !isPartIndex(i))
        return;
    mKinematicPartIndex = i;
    followKinematicPart();
    wakePartsIf(mEnabledInternal);
}

void HyConstraint::followKinematicPart() {
    DynConstraintSetBodySeenAsKinematic(
        mConstraint, mKinematicPartIndex < 0 ? nullptr : mConstraint->body[mKinematicPartIndex]);
}

// When it acts.

void HyConstraint::enable(bool on) {
    mEnabled = on;
    updateEnableInternal();
}

bool HyConstraint::mayAct() const {
    if (!mEnabled || !mUniverse || getPartCount() == 0)
        return false;
    return std::all_of(mPartList.begin(), mPartList.end(), [this](const HyPart* part) {
        return !part || part->getUniverse() == mUniverse;
    });
}

void HyConstraint::updateEnableInternal() {
    const bool acts = mayAct();
    if (acts != DynConstraintIsEnabled(mConstraint)) {
        if (acts)
            DynConstraintEnable(mConstraint);
        else
            DynConstraintDisable(mConstraint);
        wakeParts();
    }
    mEnabledInternal = DynConstraintIsEnabled(mConstraint);
}

void HyConstraint::setUniverse(HyUniverse* universe) {
    if (universe == mUniverse)
        return;
    HyUniverse* old = mUniverse;
    mUniverse = nullptr;
    updateEnableInternal();
    if (old)
        old->removeDynConstraint(mConstraint);
    mUniverse = universe;
    if (universe)
        universe->insertDynConstraint(mConstraint);
    updateEnableInternal();
}

void HyConstraint::wakeParts() const {
    DynConstraintEnableBodies(mConstraint);
}

void HyConstraint::wakePartsIf(bool inUse) const {
    if (inUse)
        wakeParts();
}

void HyConstraint::resetDynamics() {
    DynConstraintResetDynamics(mConstraint);
}

bool HyConstraint::lockAll(bool on) {
    if (!on)
        DynConstraintUnlockConstraint(mConstraint);
    const bool done = !on || DynConstraintLockConstraint(mConstraint) != 0;
    wakePartsIf(mEnabledInternal);
    return done;
}

bool HyConstraint::isLockedAll() const {
    return DynConstraintIsLockedConstraint(mConstraint);
}

void HyConstraint::setWeak(bool weak) {
    mConstraint->weak = (mConstraint->weak & ~kDynWeakAlways) | (weak ? kDynWeakAlways : 0);
}

bool HyConstraint::getWeak() const {
    return (mConstraint->weak & kDynWeakAlways) != 0;
}

void HyConstraint::setWeakOneFrame(bool weak) {
    mConstraint->weak = (mConstraint->weak & ~kDynWeakOneFrame) | (weak ? kDynWeakOneFrame : 0);
}

bool HyConstraint::getWeakOneFrame() const {
    return (mConstraint->weak & kDynWeakOneFrame) != 0;
}

HyVector3 HyConstraint::getPartForce(int i) const {
    HyVector3 force;
    if (isPartIndex(i))
        DynConstraintGetForce(mConstraint, i, force.v);
    return force;
}

HyVector3 HyConstraint::getPartTorque(int i) const {
    HyVector3 torque;
    if (isPartIndex(i))
        DynConstraintGetTorque(mConstraint, i, torque.v);
    return torque;
}

} // namespace Hy
