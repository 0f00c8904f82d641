#include <Hy/HyUniverse.h>

#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColSpace.h>
#include <Dyn/DynBody.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynContact.h>
#include <Dyn/DynWorld.h>
#include <Hy/HyBridge.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyCollisionGeometryPair.h>
#include <Hy/HyDynamicsContactInput.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>

#include <algorithm>
#include <vector>

// The universe's side of space and bridge: pairs, responses, subscribers.

namespace Hy {
namespace {

ColModel* modelOf(const HyCollisionGeometry* geometry) {
    return geometry && geometry->isCollisionEnabled() ? geometry->getColModel() : nullptr;
}

bool inOneSpace(const HyCollisionGeometry* a, const HyCollisionGeometry* b) {
    const ColModel *modelA = modelOf(a), *modelB = modelOf(b);
    return modelA && modelB && modelA != modelB && modelA->mSpace &&
           modelA->mSpace == modelB->mSpace;
}

bool switchPair(HyCollisionGeometry* a, HyCollisionGeometry* b, bool enable) {
    if (!inOneSpace(a, b))
        return false;
    return (enable ? ColSpaceEnablePair : ColSpaceDisablePair)(modelOf(a), modelOf(b)) != 0;
}

bool switchPairs(HyCollisionGeometry* a, const HyPart* b, bool enable) {
    bool all = b != nullptr;
    if (b)
        for (HyCollisionGeometry* geometry : b->getCollisionGeometries())
            all = switchPair(a, geometry, enable) && all;
    return all;
}

bool switchPairs(const HyPart* a, const HyPart* b, bool enable) {
    bool all = a != nullptr && b != nullptr;
    if (a)
        for (HyCollisionGeometry* geometry : a->getCollisionGeometries())
            all = switchPairs(geometry, b, enable) && all;
    return all;
}

} // namespace

// Models.

void HyUniverse::insertColModel(ColModel* model) {
    warnIfStepping("insert collision geometry");
    ColSpaceInsertModel(mSpace, model);
}

// Its pairs end at once: their records would name a model that may go.
void HyUniverse::removeColModel(ColModel* model) {
    if (!model->mSpace)
        return;
    warnIfStepping("remove collision geometry");
    ColSpaceRemoveModel(model);
    mBridge->modelRemoved(model);
}

// Pairs.

bool HyUniverse::enablePairIntersect(HyCollisionGeometry* a, HyCollisionGeometry* b) {
    return switchPair(a, b, true);
}

bool HyUniverse::disablePairIntersect(HyCollisionGeometry* a, HyCollisionGeometry* b) {
    return switchPair(a, b, false);
}

bool HyUniverse::enablePairIntersect(HyCollisionGeometry* a, HyPart* b) {
    return switchPairs(a, b, true);
}

bool HyUniverse::disablePairIntersect(HyCollisionGeometry* a, HyPart* b) {
    return switchPairs(a, b, false);
}

bool HyUniverse::enablePairIntersect(HyPart* a, HyPart* b) {
    return switchPairs(a, b, true);
}

bool HyUniverse::disablePairIntersect(HyPart* a, HyPart* b) {
    return switchPairs(a, b, false);
}

bool HyUniverse::getPairIntersectEnabled(const HyCollisionGeometry* a,
                                         const HyCollisionGeometry* b) const {
    return inOneSpace(a, b) && ColSpacePairIsEnabled(modelOf(a), modelOf(b));
}

void HyUniverse::enablePairsWith(HyCollisionGeometry* geometry) {
    ColSpaceSetPairEnableWith(modelOf(geometry), true);
}

void HyUniverse::disablePairsWith(HyCollisionGeometry* geometry) {
    ColSpaceSetPairEnableWith(modelOf(geometry), false);
}

void HyUniverse::enablePairsWith(HyPart* part) {
    if (part)
        for (HyCollisionGeometry* geometry : part->getCollisionGeometries())
            enablePairsWith(geometry);
}

void HyUniverse::disablePairsWith(HyPart* part) {
    if (part)
        for (HyCollisionGeometry* geometry : part->getCollisionGeometries())
            disablePairsWith(geometry);
}

void HyUniverse::enableAllPairs() {
    ColSpaceSetAllPairsEnable(mSpace, true);
}

void HyUniverse::disableAllPairs() {
    ColSpaceSetAllPairsEnable(mSpace, false);
}

namespace {

void switchKinematicPairs(const HyUniverse::CollisionGeometries& geometries, bool enable) {
    const auto isKinematic = [](const HyCollisionGeometry* geometry) {
        const HyPart* part = geometry->getPart();
        return part && part->getControl() != HyPart::kControlDynamic;
    };
    for (HyCollisionGeometry* a : geometries) {
        if (!isKinematic(a))
            continue;
        for (HyCollisionGeometry* b : geometries)
            if (a->getPart() != b->getPart() && isKinematic(b))
                switchPair(a, b, enable);
    }
}

} // namespace

void HyUniverse::enableKinematicPairs() {
    switchKinematicPairs(mCollisionGeometries, true);
}

void HyUniverse::disableKinematicPairs() {
    switchKinematicPairs(mCollisionGeometries, false);
}

std::size_t HyUniverse::getPairEnabledCount() const {
    return ColSpaceGetPairEnableCount(mSpace);
}

bool HyUniverse::isPairNearby(const HyCollisionGeometry* a, const HyCollisionGeometry* b) const {
    return inOneSpace(a, b) && ColSpacePairIsNearby(modelOf(a), modelOf(b));
}

bool HyUniverse::isPairNearby(const HyPart* a, const HyPart* b) const {
    if (!a || !b)
        return false;
    for (const HyCollisionGeometry* geometryA : a->getCollisionGeometries())
        for (const HyCollisionGeometry* geometryB : b->getCollisionGeometries())
            if (isPairNearby(geometryA, geometryB))
                return true;
    return false;
}

HyCollisionGeometryPair* HyUniverse::getCollisionGeometryPair(const HyCollisionGeometry* a,
                                                              const HyCollisionGeometry* b) const {
    if (!inOneSpace(a, b))
        return nullptr;
    return HyCollisionGeometryPair::fromColModelPair(ColSpaceGetModelPair(modelOf(a), modelOf(b)));
}

// What a sensor's pair carries is no contact.
HyDynamicsContactInput
HyUniverse::getDynamicsContactInputOnPair(const HyCollisionGeometry* a,
                                          const HyCollisionGeometry* b) const {
    const ColModelPair* pair =
        inOneSpace(a, b) ? ColSpaceGetModelPair(modelOf(a), modelOf(b)) : nullptr;
    const bool makesContacts =
        pair && mBridge->makesContacts(pair->mResponseID1, pair->mResponseID2);
    return HyDynamicsContactInput(makesContacts ? static_cast<DynContact*>(pair->responseData)
                                                : nullptr);
}

// Requests.

HyCollisionPairRequest& HyUniverse::getPartPartCollisionPairRequest(int id1, int id2) {
    mBridge->setPartPartResponseRequestMaxIndex(std::max(id1, id2));
    return mBridge->getPartPartResponseRequest(id1, id2);
}

int HyUniverse::getPartPartCollisionRequestMaxIndex() const {
    return mBridge->getPartPartResponseRequestMaxIndex();
}

void HyUniverse::setPartPartCollisionRequestMaxIndex(int index) {
    mBridge->setPartPartResponseRequestMaxIndex(index);
}

int HyUniverse::getNewPartPartCollisionRequestID(int templateID) {
    const int id = getPartPartCollisionRequestMaxIndex() + 1;
    if (templateID < 0 || templateID >= id) {
        HyWarning(0,
                  "HyUniverse::getNewPartPartCollisionRequestID: the id must be in the table.\n");
        return -1;
    }
    setPartPartCollisionRequestMaxIndex(id);
    for (int other = 0; other <= id; ++other)
        mBridge->getPartPartResponseRequest(other, id) =
            mBridge->getPartPartResponseRequest(other, templateID);
    return id;
}

HyCollisionPairRequest& HyUniverse::getSensorPartCollisionPairRequest() {
    return mBridge->getResponse(kResponseSensor, kResponsePart).mRequest;
}

HyCollisionPairRequest& HyUniverse::getSensorSensorCollisionPairRequest() {
    return mBridge->getResponse(kResponseSensor, kResponseSensor).mRequest;
}

// Responses.

void HyUniverse::initResponses() {
    HyResponsePair parts;
    parts.mResponseHello = new HyResponseStartBody_Body;
    parts.mResponseActive = new HyResponseBody_Body;
    parts.mResponseGoodbye = new HyResponseEndBody_Body;
    mBridge->setResponse(kResponsePart, kResponsePart, parts);
    HyResponsePair sensorPart;
    sensorPart.mResponseHello = new HyResponseStart_Sensor_Body;
    sensorPart.mRequest.setContactMaxCount(0);
    mBridge->setResponse(kResponseSensor, kResponsePart, sensorPart);
    HyResponsePair sensors;
    sensors.mResponseHello = new HyResponseStart_Sensor_Sensor;
    sensors.mRequest.setContactMaxCount(0);
    mBridge->setResponse(kResponseSensor, kResponseSensor, sensors);
    HyResponsePair particles;
    particles.mResponseHello = new HyResponseStart_Sensor_PS;
    mBridge->setResponse(kResponseParticle, kResponseSensor, particles);
}

bool HyUniverse::hasResponsePair(int id1, int id2, const char* operation) const {
    if (std::min(id1, id2) >= 0 && std::max(id1, id2) <= getResponsePairMaxIndex())
        return true;
    HyWarning(0, "HyUniverse::%s: the ids must be in the response table.\n", operation);
    return false;
}

const HyResponsePair& HyUniverse::getResponsePair(int id1, int id2) const {
    if (!hasResponsePair(id1, id2, "getResponsePair"))
        id1 = id2 = kResponsePart;
    return mBridge->getResponse(id1, id2);
}

void HyUniverse::setResponsePair(int id1, int id2, const HyResponsePair& response) {
    if (hasResponsePair(id1, id2, "setResponsePair"))
        mBridge->setResponse(id1, id2, response);
}

int HyUniverse::getResponsePairMaxIndex() const {
    return mBridge->getResponseMaxIndex();
}

void HyUniverse::setResponsePairMaxIndex(int index) {
    mBridge->setResponseMaxIndex(index);
}

int HyUniverse::getNewResponseIDFromTemplateID(int templateID) {
    return mBridge->getNewResponseIDFromTemplateID(templateID);
}

bool HyUniverse::haveSameResponseFunction(int id1, int id2) const {
    return hasResponsePair(id1, id2, "haveSameResponseFunction") &&
           mBridge->haveSameResponseFunction(id1, id2);
}

// Subscribers.

void HyUniverse::addIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                        IntersectSubscriber* subscriber, unsigned priority) {
    mBridge->addIntersectSubscriber(id1, id2, event, subscriber, priority);
}

bool HyUniverse::removeIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                           IntersectSubscriber* subscriber) {
    return mBridge->removeIntersectSubscriber(id1, id2, event, subscriber);
}

unsigned HyUniverse::getIntersectSubscriberPriority(int id1, int id2, eIntersectEventType event,
                                                    const IntersectSubscriber* s) const {
    return mBridge->getIntersectSubscriberPriority(id1, id2, event, s);
}

// Settings.

void HyUniverse::setAcceptNonDynamicPairCollision(bool on) {
    mBridge->setAcceptNonDynamicPairCollision(on);
}

bool HyUniverse::getAcceptNonDynamicPairCollision() const {
    return mBridge->getAcceptNonDynamicPairCollision();
}

void HyUniverse::setCollisionIntersectMultithreaded(bool on) {
    mBridge->setMultithreaded(on);
}

bool HyUniverse::getCollisionIntersectMultithreaded() const {
    return mBridge->getMultithreaded();
}

void HyUniverse::setCollisionBroadPhaseMultithreaded(bool on) {
    mBroadPhaseMultithreaded = on;
}

void HyUniverse::setCollisionMultithreaded(bool on) {
    setCollisionIntersectMultithreaded(on);
    setCollisionBroadPhaseMultithreaded(on);
}

bool HyUniverse::getCollisionMultithreaded() const {
    return getCollisionIntersectMultithreaded() && getCollisionBroadPhaseMultithreaded();
}

void HyUniverse::setPartPairContactMergingEnabled(bool on) {
    if (mBridge->isUpdating()) {
        HyWarning(0, "HyUniverse::setPartPairContactMergingEnabled: cannot be called from a "
                     "response or subscriber.\n");
        return;
    }
    if (on)
        resetContacts(false);
    mBridge->setBatchPartPairContact(on);
}

bool HyUniverse::getPartPairContactMergingEnabled() const {
    return mBridge->getBatchPartPairContact();
}

unsigned HyUniverse::getCollisionGeometryPairMaxCount() const {
    return mBridge->getCollisionPairsMaxCount();
}

void HyUniverse::setContactBufferSize(int size) {
    if (mStepping || size <= 0) {
        HyWarning(0, "HyUniverse::setContactBufferSize: this should not be called during an update "
                     "step with positive values.\n");
        return;
    }
    mBridge->setContactBufferSize(size);
}

// Sleeping parts are woken for the update, since pairs at rest are passed over.
void HyUniverse::resetContacts(bool enableSubscribers) {
    if (mBridge->isUpdating()) {
        HyWarning(0,
                  "HyUniverse::resetContacts: cannot be called from a response or subscriber.\n");
        return;
    }
    std::vector<HyPart*> asleep;
    for (HyPart* part : mParts)
        if (part->getEffectiveControl() == HyPart::kControlDynamic && !part->isDynamicsAwake())
            asleep.push_back(part);
    for (HyPart* part : asleep)
        part->wakeDynamics(true);
    ColSpacePathUpdateAll(mSpace, 0);
    mBridge->setCallBackEnabled(enableSubscribers);
    mBridge->updateContacts(0);
    mBridge->updateTransitions();
    mBridge->setCallBackEnabled(true);
    for (HyPart* part : asleep)
        part->wakeDynamics(false);
    mUpdateSubscriberList.forEach([](UpdateSubscriber& subscriber) { subscriber.reset(); });
}

} // namespace Hy
