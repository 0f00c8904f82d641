#include <Hy/HyBridge.h>

#include "HyBridgeArena.h"

#include <Col/ColModel.h>
#include <Col/ColModelPairContainer.h>
#include <Col/ColSpace.h>
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyContactMaterial.h>
#include <Hy/HyMaterialTable.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

#include <algorithm>
#include <set>
#include <string>

// Tables of the bridge: who responds to a pair, with which request, and who is told.

namespace Hy {
namespace {

constexpr int kResponseIDs = HyUniverse::kMaxResponseID + 1;
constexpr int kRequestIDs = 6;

} // namespace

HyBridge::HyBridge(HyMaterialTable* materialTable, CxSpace* space, DynWorld* world,
                   int contactBufferSize)
    : mMaterialTable(materialTable), mSpace(space), mWorld(world), mResponseTable(kResponseIDs),
      mContactBufferSize(std::max(1, contactBufferSize)),
      mTriangleLists(std::make_unique<TriangleLists>(this)) {
    setPartPartResponseRequestMaxIndex(kRequestIDs - 1);
    fillRequestTable();
}

HyBridge::~HyBridge() {
    ColModelPairContainerDestroy(mPairs);
}

void HyBridge::fillRequestTable() {
    const auto request = [this](int id1, int id2) -> HyCollisionPairRequest& {
        return *mRequestTable.getEntry(id1, id2);
    };
    const auto forRow = [&](int row, auto change) {
        for (int id = 0; id < kRequestIDs; ++id)
            change(request(row, id));
    };
    request(0, 0).setGroupMaxCount(1);
    request(0, 1).setGroupMaxCount(4);
    request(0, 5).setGroupMaxCount(4);
    request(1, 1).setGroupMaxCount(4);
    forRow(3, [](HyCollisionPairRequest& each) {
        each.setContactMaxCount(2);
        each.setGroupMaxCount(3);
        each.setGroupAngleCosineTolerance(0.5);
    });
    forRow(4, [](HyCollisionPairRequest& each) {
        each.setContactMaxCount(2);
        each.setGroupMaxCount(2);
    });
    request(4, 4).setGroupMaxCount(1);
    request(4, 4).setContactMaxCount(1);
    request(3, 3).setGroupMaxCount(1);
    request(3, 0).setGroupMaxCount(1);
    request(4, 0).setGroupMaxCount(1);
    forRow(2, [](HyCollisionPairRequest& each) { each.setContactMaxCount(0); });
}

void HyBridge::setCollisionPairsMaxCount(unsigned count) {
    constexpr unsigned kMaxPairs = 1U << 30;
    if (count <= mCollisionPairsMaxCount || count > kMaxPairs)
        return;
    ColModelPairContainerDestroy(mPairs);
    mPairs = ColModelPairContainerCreate(static_cast<int>(count));
    mCollisionPairsMaxCount = count;
}

void HyBridge::setContactBufferSize(int size) {
    if (size > 0)
        mContactBufferSize = size;
}

// Responses.

void HyBridge::setResponse(int id1, int id2, const HyResponsePair& response) {
    mResponseTable.getEntry(id1, id2) = response;
}

HyResponsePair& HyBridge::getResponse(int id1, int id2) {
    return mResponseTable.getEntry(id1, id2);
}

const HyResponsePair& HyBridge::getResponse(int id1, int id2) const {
    return mResponseTable.getEntry(id1, id2);
}

int HyBridge::getResponseMaxIndex() const {
    return mResponseTable.size() - 1;
}

void HyBridge::setResponseMaxIndex(int index) {
    constexpr int kMaxIndex = 1 << 12;
    if (index > kMaxIndex)
        HyWarning(0, "HyBridge::setResponseMaxIndex: the index must be at most %d.\n", kMaxIndex);
    else if (index > getResponseMaxIndex())
        mResponseTable.resize(index + 1);
}

bool HyBridge::haveSameResponseFunction(int id1, int id2) const {
    for (int other = 0; other <= getResponseMaxIndex(); ++other) {
        const HyResponsePair& a = getResponse(id1, other);
        const HyResponsePair& b = getResponse(id2, other);
        if (!(a.mResponseHello == b.mResponseHello && a.mResponseActive == b.mResponseActive &&
              a.mResponseGoodbye == b.mResponseGoodbye))
            return false;
    }
    return true;
}

bool HyBridge::makesContacts(int id1, int id2) const {
    const HyResponseActive* parts =
        getResponse(HyUniverse::kResponsePart, HyUniverse::kResponsePart).mResponseActive.get();
    return getResponse(id1, id2).mResponseActive.get() == parts;
}

int HyBridge::getNewResponseIDFromTemplateID(int templateID) {
    const int id = getResponseMaxIndex() + 1;
    if (templateID < 0 || templateID >= id) {
        HyWarning(0, "HyBridge::getNewResponseIDFromTemplateID: the id must be in the table.\n");
        return -1;
    }
    setResponseMaxIndex(id);
    for (int other = 0; other < id; ++other)
        getResponse(id, other) = getResponse(templateID, other);
    getResponse(id, id) = getResponse(templateID, templateID);
    return id;
}

// Requests.

void HyBridge::setPartPartResponseRequest(int id1, int id2, const HyCollisionPairRequest& request) {
    setPartPartResponseRequestMaxIndex(std::max(id1, id2));
    if (std::min(id1, id2) >= 0 && std::max(id1, id2) < mRequestTable.size())
        *mRequestTable.getEntry(id1, id2) = request;
}

HyCollisionPairRequest& HyBridge::getPartPartResponseRequest(int id1, int id2) {
    const bool known = std::min(id1, id2) >= 0 && std::max(id1, id2) < mRequestTable.size();
    return known ? *mRequestTable.getEntry(id1, id2) : *mRequestTable.getEntry(0, 0);
}

ColRequest* HyBridge::getPartPartColRequest(int id1, int id2) {
    return getPartPartResponseRequest(id1, id2).getColRequest();
}

int HyBridge::getPartPartResponseRequestMaxIndex() const {
    return mRequestTable.size() - 1;
}

// The requests stay in place, since pairs point at them.
void HyBridge::setPartPartResponseRequestMaxIndex(int index) {
    constexpr int kMaxIndex = 1 << 12;
    const int old = mRequestTable.size();
    if (index > kMaxIndex)
        HyWarning(0,
                  "HyBridge::setPartPartResponseRequestMaxIndex: the index must be at most %d.\n",
                  kMaxIndex);
    if (index < old || index > kMaxIndex)
        return;
    mRequestTable.resize(index + 1);
    for (int low = 0; low <= index; ++low)
        for (int high = std::max(low, old); high <= index; ++high)
            mRequestTable.getEntry(low, high) = std::make_unique<HyCollisionPairRequest>();
}

void HyBridge::updatePairsForNewCollisionGeometryRequest(HyCollisionGeometry* geometry) {
    ColModel* model = geometry ? geometry->getColModel() : nullptr;
    if (!model || model->mSpace != mSpace || !geometry->getPart())
        return;
    for (CxPairLink* link = mSpace->GetNextPairOf(model->mSpaceID, nullptr); link;
         link = mSpace->GetNextPairOf(model->mSpaceID, link)) {
        ColModelPair* pair = &link->mPair;
        const ColModel* other = pair->model1 == model ? pair->model2 : pair->model1;
        const HyCollisionGeometry* partner = other->mCollisionGeometry;
        if (partner && partner->getPart())
            pair->request =
                getPartPartColRequest(pair->model1->mRequestID, pair->model2->mRequestID);
    }
}

// Materials.

const HyContactMaterial* HyBridge::getContactMaterial(const HyMaterial* material1,
                                                      const HyMaterial* material2) const {
    static const HyContactMaterial kPlain; // for a table that was cleared
    if (const HyContactMaterial* own = mMaterialTable->getContactMaterial(material1, material2))
        return own;
    const HyContactMaterial* standard = mMaterialTable->getContactMaterial(nullptr, nullptr);
    return standard ? standard : &kPlain;
}

const char* HyBridge::getInternedName(const HyContactMaterial& material) const {
    static std::set<std::string> names; // of the process: a contact may outlive its bridge's table
    static const std::string* latest = nullptr;
    const std::string& name = material.getName();
    if (!latest || *latest != name)
        latest = &*names.insert(name).first;
    return latest->c_str();
}

// Subscribers: pairs that only they ask for are looked at while there are some.

void HyBridge::countSubscriber(int id1, int id2, eIntersectEventType event, int change) {
    const int sensors = (id1 == HyUniverse::kResponseSensor) + (id2 == HyUniverse::kResponseSensor);
    if (event == kEventInactive)
        mNumInactiveEntityPairSubscribers += change;
    if (sensors == 2)
        mNumSensorSensorPairSubscribers += change;
    else if (sensors == 1)
        mNumSensorPartPairSubscribers += change;
}

void HyBridge::addIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                      HyIntersectSubscriber* subscriber, unsigned priority) {
    const unsigned before = getIntersectSubscriberPriority(id1, id2, event, subscriber);
    HySubscriberListResponseHandler::addIntersectSubscriber(id1, id2, event, subscriber, priority);
    if (before != getIntersectSubscriberPriority(id1, id2, event, subscriber))
        countSubscriber(id1, id2, event, 1);
}

bool HyBridge::removeIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                         HyIntersectSubscriber* subscriber) {
    if (!HySubscriberListResponseHandler::removeIntersectSubscriber(id1, id2, event, subscriber))
        return false;
    countSubscriber(id1, id2, event, -1);
    return true;
}

void HyBridge::removeAllIntersectSubscriber() {
    HySubscriberListResponseHandler::removeAllIntersectSubscriber();
    mNumInactiveEntityPairSubscribers = mNumSensorSensorPairSubscribers =
        mNumSensorPartPairSubscribers = 0;
}

} // namespace Hy
