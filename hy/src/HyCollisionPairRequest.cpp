#include <Hy/HyCollisionPairRequest.h>

#include <Hy/HyMessage.h>

#include <Col/ColRequest.h>

#include <cmath>

namespace Hy {
namespace {

constexpr int kMaxGroupCount = 6;

bool isFinite(HyReal value, const char* operation) {
    if (std::isfinite(value))
        return true;
    HyWarning(0, "HyCollisionPairRequest::%s: the value must be finite.\n", operation);
    return false;
}

bool isChoice(int value, int last, const char* operation) {
    if (value >= 0 && value <= last)
        return true;
    HyWarning(0, "HyCollisionPairRequest::%s: the method must be one of the enumeration.\n",
              operation);
    return false;
}

} // namespace

HyCollisionPairRequest::HyCollisionPairRequest() : mColRequest(std::make_unique<ColRequest>()) {}

HyCollisionPairRequest::HyCollisionPairRequest(unsigned contactMaxCount, bool faceNormalsFirst)
    : HyCollisionPairRequest() {
    setContactMaxCount(contactMaxCount);
    setFaceNormalsFirst(faceNormalsFirst);
}

HyCollisionPairRequest::HyCollisionPairRequest(const HyCollisionPairRequest& other)
    : mColRequest(std::make_unique<ColRequest>(*other.mColRequest)) {}

HyCollisionPairRequest::HyCollisionPairRequest(HyCollisionPairRequest&&) noexcept = default;

HyCollisionPairRequest& HyCollisionPairRequest::operator=(const HyCollisionPairRequest& other) {
    *mColRequest = *other.mColRequest;
    return *this;
}

HyCollisionPairRequest& HyCollisionPairRequest::operator=(HyCollisionPairRequest&& other) noexcept {
    mColRequest.swap(other.mColRequest);
    return *this;
}

HyCollisionPairRequest::~HyCollisionPairRequest() = default;

void HyCollisionPairRequest::setContactMaxCount(unsigned count) {
    mColRequest->contactMaxCount = count;
}

unsigned HyCollisionPairRequest::getContactMaxCount() const {
    return mColRequest->contactMaxCount;
}

void HyCollisionPairRequest::setFaceNormalsFirst(bool on) {
    mColRequest->faceNormalsFirst = on;
}

bool HyCollisionPairRequest::getFaceNormalsFirst() const {
    return mColRequest->faceNormalsFirst != 0;
}

void HyCollisionPairRequest::setCollinearThreshold(HyReal threshold) {
    if (isFinite(threshold, "setCollinearThreshold"))
        mColRequest->collinearThreshold = threshold;
}

HyReal HyCollisionPairRequest::getCollinearThreshold() const {
    return mColRequest->collinearThreshold;
}

void HyCollisionPairRequest::setMaxPenetrationFactor(HyReal factor) {
    if (factor > 0 && factor < 1)
        mColRequest->maxPenetrationFactor = factor;
}

HyReal HyCollisionPairRequest::getMaxPenetrationFactor() const {
    return mColRequest->maxPenetrationFactor;
}

void HyCollisionPairRequest::setGroupMaxCount(int count) {
    if (count < 0) {
        HyWarning(0, "HyCollisionPairRequest::setGroupMaxCount: count must not be negative.\n");
        return;
    }
    if (count > kMaxGroupCount) {
        HyWarning(0,
                  "HyCollisionPairRequest::setGroupMaxCount: @a maxCount exeeds max count (%d)\n",
                  kMaxGroupCount);
        count = kMaxGroupCount;
    }
    mColRequest->groupMaxCount = count;
}

int HyCollisionPairRequest::getGroupMaxCount() const {
    return mColRequest->groupMaxCount;
}

void HyCollisionPairRequest::setGroupAngleCosineTolerance(HyReal cosine) {
    if (isFinite(cosine, "setGroupAngleCosineTolerance"))
        mColRequest->groupTolerance = cosine;
}

HyReal HyCollisionPairRequest::getGroupAngleCosineTolerance() const {
    return mColRequest->groupTolerance;
}

void HyCollisionPairRequest::setGroupNormalMethod(GroupNormalMethodEnum method) {
    if (isChoice(method, kGroupNormalMethodUseWeightedAverage, "setGroupNormalMethod"))
        mColRequest->groupNormalMethod = method;
}

HyCollisionPairRequest::GroupNormalMethodEnum HyCollisionPairRequest::getGroupNormalMethod() const {
    return static_cast<GroupNormalMethodEnum>(mColRequest->groupNormalMethod);
}

void HyCollisionPairRequest::setContactMatchingEpsilon(HyReal distance) {
    if (isFinite(distance, "setContactMatchingEpsilon"))
        mColRequest->contactMatchingEpsilon = distance;
}

HyReal HyCollisionPairRequest::getContactMatchingEpsilon() const {
    return mColRequest->contactMatchingEpsilon;
}

void HyCollisionPairRequest::setTwoContactsSimplifyMethod(TwoContactsSimplifyMethodEnum method) {
    if (isChoice(method, kTwoContactsSimplifyMethodDeepest, "setTwoContactsSimplifyMethod"))
        mColRequest->twoContactsSimplifyMethod = method;
}

HyCollisionPairRequest::TwoContactsSimplifyMethodEnum
HyCollisionPairRequest::getTwoContactsSimplifyMethod() const {
    return static_cast<TwoContactsSimplifyMethodEnum>(mColRequest->twoContactsSimplifyMethod);
}

} // namespace Hy
