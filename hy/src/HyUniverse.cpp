#include <Hy/HyUniverse.h>

#include "HyCollisionDetection.h"
#include "HyCollisionRuleStore.h"
#include "HySavedCoordinates.h"
#include "HyUserContacts.h"

#include <Col/ColSpace.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyFrame.h>
#include <Hy/HyMaterialTable.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyThread.h>
#include <Hy/HyUniverseObserver.h>

#include <Dyn/DynBody.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynWorld.h>
#include <Dyns/DynsConstraintFrames.h>

#include <algorithm>
#include <limits>

// Life of a universe, its settings, and its place between frame and dynamics world.

namespace Hy {
namespace {

constexpr HyReal kEarthGravity = 9.80665; ///< m/s², standard gravity

// What the world below reaches through its host record.

bool stepAborted(void*) {
    const HyFrame* frame = HyFrame::currentInstance();
    return frame && frame->getStepAborted();
}

KitThreadPool* threadPool(void*) {
    HyFrame* frame = HyFrame::currentInstance();
    return frame ? frame->getThreadPool() : nullptr;
}

int globalCouplingSolverGroup(void* universe) {
    return static_cast<HyUniverse*>(universe)->getGlobalCouplingSolverGroup();
}

void setGeometriesStatic(DynBody* body, bool isStatic) {
    if (body->mPart)
        for (HyCollisionGeometry* geometry : body->mPart->getCollisionGeometries())
            geometry->setStatic(isStatic);
}

// The pairs of the body's geometries end by themselves; until then its contacts rest.
void disableContacts(const DynBody& body) {
    for (KitCListNode *node = body.constraintList, *next = nullptr; node; node = next) {
        next = node->next;
        if (node->constraint->bclH.tag != kDynTagContact)
            continue;
        while (next && next->constraint == node->constraint) // both slots may hold the body
            next = next->next;
        DynConstraintDisable(node->constraint);
    }
}

/// Contacts of one pair before its buffer grows.
constexpr int kContactBufferSize = 1025;

int asCapacity(unsigned count) {
    constexpr unsigned kMost = 1U << 30;
    return static_cast<int>(std::clamp(count, 2U, kMost));
}

unsigned raisedToEven(unsigned n) {
    return n == std::numeric_limits<unsigned>::max() ? n - 1 : n + n % 2;
}

} // namespace

HyUniverse::HyUniverse(unsigned maxCollisionGeometries, unsigned maxCollisionPairs,
                       HyMaterialTable* materialTable)
    : mSavedCoordinates(std::make_unique<HySavedCoordinates>()),
      mCollisionRules(std::make_unique<HyCollisionRuleStore>()),
      mCollisionRulesChanged(std::make_unique<HyCollisionRuleStore>()),
      mOwnMaterialTable(materialTable ? nullptr : new HyMaterialTable),
      mMaterialTable(materialTable ? materialTable : mOwnMaterialTable.get()),
      mCollisionRulesNextID(HyCollisionRule::InvalidID + 1) {
    init(maxCollisionGeometries, maxCollisionPairs);
    setEarthGravity();
}

void HyUniverse::init(unsigned maxCollisionGeometries, unsigned maxCollisionPairs) {
    HyFrame::instance(); // the steps of the world ask it
    mWorld = DynWorldCreate(1, 1);
    mWorld->universe = this;
    DynWorldHost host;
    host.owner = this;
    host.stepAborted = stepAborted;
    host.threadPool = threadPool;
    host.globalCouplingSolverGroup = globalCouplingSolverGroup;
    host.setGeometriesStatic = setGeometriesStatic;
    DynWorldSetHost(mWorld, host);
    mUserContacts = std::make_unique<HyUserContacts>(mWorld);
    DynPartitionParametersSetGroupingMode(&mWorld->partition_parameters, kDynPartitionUserGrouping);
    DynGroupingGet(mWorld, 0);
    setMaxSimultaneousSolverCount(HyThreadGetCPUCount());
    mCollisionGeometriesMaxCount = raisedToEven(maxCollisionGeometries);
    HyCollisionDetection_INCREF();
    const int geometries = asCapacity(mCollisionGeometriesMaxCount);
    const int pairs = asCapacity(maxCollisionPairs);
    mSpace = ColSpaceAxisSortCreate(static_cast<int>(ColAllAxes), geometries, pairs, false);
    mBridge = std::make_unique<HyBridge>(mMaterialTable, mSpace, mWorld, kContactBufferSize);
    mBridge->setCollisionPairsMaxCount(static_cast<unsigned>(pairs));
    initResponses();
    setAutoSleep(true);
}

HyUniverse::~HyUniverse() {
    HyFrame* frame = HyFrame::currentInstance();
    if (frame && frame->hasStepper(this))
        frame->removeUniverse(this);
    mObservers.forEach([this](HyUniverseObserver& observer) {
        observer.onUniverseAboutToBeDestroyed();
        if (mObservers.contains(&observer)) // it may have left in the call
            unregisterObserver(&observer, true);
    });
    deleteAllUserDynamicsContacts();
    destroyExtensions();
    destroyConstraints();
    destroyParts();
    destroyCollisionGeometries();
    mBridge->updateTransitions(); // what ended last
    mBridge.reset();
    mUserContacts.reset();
    mPartVisits.end();
    mConstraintVisits.end();
    mContactVisits.end();
    DynWorldDestroy(mWorld);
    ColSpaceDestroy(mSpace);
    HyCollisionDetection_DECREF();
}

// Settings.

void HyUniverse::setGravity(const HyVector3& gravity) {
    DynWorldSetGravity(mWorld, gravity.v);
}

void HyUniverse::setGravity(HyReal x, HyReal y, HyReal z) {
    setGravity(HyVector3(x, y, z));
}

void HyUniverse::setEarthGravity() {
    setGravity(0, 0, -kEarthGravity);
}

HyVector3 HyUniverse::getGravity() const {
    HyVector3 gravity;
    DynWorldGetGravity(mWorld, gravity.v);
    return gravity;
}

void HyUniverse::setAutoSleep(bool on) {
    DynPartitionParametersSetAutoDisable(&mWorld->partition_parameters, on);
}

bool HyUniverse::getAutoSleep() const {
    return DynPartitionParametersGetAutoDisable(&mWorld->partition_parameters) != 0;
}

void HyUniverse::resetDynamics() {
    DynWorldResetDynamics(mWorld);
}

void HyUniverse::printDynamicsSolverMemoryUsage() const {
    DynsConstraintFramesPrintMemoryUsage(mWorld->constraint_frames);
}

HyReal HyUniverse::getCollisionSafeTime() const {
    return mBridge->getCollisionSafeTime();
}

int HyUniverse::getLastPartitionCount() const {
    return mWorld->partitionOutput.nPartitions;
}

// Materials.

void HyUniverse::setMaterialTable(HyMaterialTable* table) {
    if (!table) {
        HyWarning(0, "HyUniverse::setMaterialTable: table must not be null.\n");
        return;
    }
    if (table == mMaterialTable)
        return;
    warnIfStepping("set material table");
    mMaterialTable = table;
    mBridge->setMaterialTable(table);
    for (HyCollisionGeometry* geometry : mCollisionGeometries)
        geometry->registerMaterial();
    mOwnMaterialTable.reset();
}

HyMaterial* HyUniverse::getMaterial(const char* name) const {
    return mMaterialTable->getMaterial(name);
}

HyContactMaterial* HyUniverse::getContactMaterial(const HyMaterial* material1,
                                                  const HyMaterial* material2) const {
    return mMaterialTable->getContactMaterial(material1, material2);
}

void HyUniverse::dumpMaterialPropertyTable(const char* filename) const {
    mMaterialTable->dump(filename);
}

// Bodies and constraints.

void HyUniverse::warnIfStepping(const char* operation) const {
    if (mStepping)
        HyWarning(0,
                  "HyUniverse %s: cannot be called while stepping (check intersect subscribers).\n",
                  operation);
}

void HyUniverse::insertDynBody(DynBody* body) {
    warnIfStepping("insert part");
    DynWorldInsertBody(mWorld, body);
}

void HyUniverse::removeDynBody(DynBody* body) {
    warnIfStepping("remove part");
    mUserContacts->forget(body);
    disableContacts(*body);
    mPartVisits.leaves(body);
    DynWorldRemoveBody(mWorld, body);
}

void HyUniverse::insertDynConstraint(DynBaseConstraint* record) {
    warnIfStepping("insert constraint");
    DynWorldInsertConstraint(mWorld, record);
}

void HyUniverse::removeDynConstraint(DynBaseConstraint* record) {
    warnIfStepping("remove constraint");
    mConstraintVisits.leaves(record);
    mSavedCoordinates->forget(record);
    DynWorldRemoveConstraint(mWorld, record);
}

// Visits.

HyUniverse::DynamicPartIterator HyUniverse::dynamicPartBegin() {
    return {mPartVisits, *mWorld};
}

HyUniverse::DynamicPartIterator HyUniverse::dynamicPartEnd() {
    return {};
}

HyUniverse::EnabledConstraintsIterator HyUniverse::enabledConstraintsBegin() {
    return {mConstraintVisits, *mWorld};
}

HyUniverse::EnabledConstraintsIterator HyUniverse::enabledConstraintsEnd() {
    return {};
}

HyUniverse::DynamicsContactIterator HyUniverse::dynamicsContactBegin() {
    return {mContactVisits, *mWorld};
}

HyUniverse::DynamicsContactIterator HyUniverse::dynamicsContactEnd() {
    return {};
}

// Update subscribers.

void HyUniverse::addUpdateSubscriber(UpdateSubscriber* subscriber) {
    mUpdateSubscriberList.add(subscriber);
}

void HyUniverse::removeUpdateSubscriber(UpdateSubscriber* subscriber) {
    mUpdateSubscriberList.remove(subscriber);
}

bool HyUniverse::containsUpdateSubscriber(const UpdateSubscriber* subscriber) const {
    return subscriber && mUpdateSubscriberList.contains(subscriber);
}

unsigned HyUniverse::getUpdateSubscriberCount() const {
    return static_cast<unsigned>(mUpdateSubscriberList.size());
}

HyUniverse::UpdateSubscriber* HyUniverse::getUpdateSubscriber(unsigned index) const {
    return mUpdateSubscriberList.at(index);
}

} // namespace Hy
