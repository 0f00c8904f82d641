#include <Hy/HyIntersectSubscriberList.h>

#include <Hy/HyIntersectResult.h>
#include <Hy/HyMessage.h>

#include <algorithm>
#include <limits>

namespace Hy {

void HyIntersectSubscriberList::insert(HyIntersectSubscriber* subscriber, unsigned priority) {
    if (!subscriber)
        return;
    const std::size_t place = std::min<std::size_t>(priority, mList.size());
    mList.insert(mList.begin() + static_cast<std::ptrdiff_t>(place), subscriber);
}

bool HyIntersectSubscriberList::contain(const HyIntersectSubscriber* subscriber) const {
    return std::find(mList.begin(), mList.end(), subscriber) != mList.end();
}

bool HyIntersectSubscriberList::remove(HyIntersectSubscriber* subscriber) {
    return std::erase(mList, subscriber) > 0;
}

unsigned HyIntersectSubscriberList::priority(const HyIntersectSubscriber* subscriber) const {
    const auto place = std::find(mList.begin(), mList.end(), subscriber);
    return place == mList.end() ? std::numeric_limits<unsigned>::max()
                                : static_cast<unsigned>(place - mList.begin());
}

template <class Call>
void HyIntersectSubscriberList::forEach(Call call) {
    if (mWalking) { // a subscriber led back to here
        const std::vector<HyIntersectSubscriber*> snapshot = mList;
        for (HyIntersectSubscriber* subscriber : snapshot)
            if (contain(subscriber))
                call(*subscriber);
        return;
    }
    mWalking = true;
    mSnapshot = mList;
    for (HyIntersectSubscriber* subscriber : mSnapshot)
        if (contain(subscriber))
            call(*subscriber);
    mWalking = false;
}

void HyIntersectSubscriberList::notifyDisjoint(eIntersectEventType event,
                                               HyIntersectResult* result) {
    forEach([&](HyIntersectSubscriber& subscriber) { subscriber.notifyDisjoint(event, result); });
}

void HyIntersectSubscriberList::notifyIntersect(eIntersectEventType event,
                                                HyIntersectResult* result,
                                                HyDynamicsResponseInput* input) {
    forEach([&](HyIntersectSubscriber& subscriber) {
        if (!result
                 ->hasPairEnded()) // an earlier one may have removed a part: the contacts are gone
            subscriber.notifyIntersect(event, result, input);
    });
}

void HySubscriberListResponse::setAcceptNotification(const HyAcceptNotificationBase* accept) {
    mAcceptNotification.reset(accept ? accept->clone() : nullptr);
}

bool HySubscriberListResponse::accepts(const HyIntersectResult* result) const {
    return !mAcceptNotification || mAcceptNotification->accept(result);
}

void HySubscriberListResponse::notifyDisjoint(eIntersectEventType event,
                                              HyIntersectResult* result) {
    if (accepts(result))
        HyIntersectSubscriberList::notifyDisjoint(event, result);
}

void HySubscriberListResponse::notifyIntersect(eIntersectEventType event, HyIntersectResult* result,
                                               HyDynamicsResponseInput* input) {
    if (accepts(result))
        HyIntersectSubscriberList::notifyIntersect(event, result, input);
}

HySubscriberListResponseHandler::~HySubscriberListResponseHandler() = default;

void HySubscriberListResponseHandler::addIntersectSubscriber(int id1, int id2,
                                                             eIntersectEventType event,
                                                             HyIntersectSubscriber* subscriber,
                                                             unsigned priority) {
    constexpr int kMaxID = 1 << 12; // the table is a triangle
    if (!subscriber || id1 < 0 || id2 < 0 || id1 > kMaxID || id2 > kMaxID || event < 0 ||
        event >= kEventCount) {
        HyWarning(0,
                  "HyUniverse::addIntersectSubscriber: subscriber, ids and event must be valid.\n");
        return;
    }
    const std::size_t place = placeOf(id1, id2, event);
    if (mTable.size() <= place)
        mTable.resize(place + 1);
    if (!mTable[place]) {
        mTable[place] = std::make_unique<HySubscriberListResponse>(id1, id2, event);
        ++mListCount;
    }
    if (!mTable[place]->contain(subscriber))
        mTable[place]->insert(subscriber, priority);
}

bool HySubscriberListResponseHandler::removeIntersectSubscriber(int id1, int id2,
                                                                eIntersectEventType event,
                                                                HyIntersectSubscriber* subscriber) {
    if (id1 < 0 || id2 < 0 || event < 0 || event >= kEventCount)
        return false;
    HySubscriberListResponse* list = getIntersectSubscriberList(id1, id2, event);
    return list && list->remove(subscriber);
}

// The lists stay, emptied: one of them may be walked now.
void HySubscriberListResponseHandler::removeAllIntersectSubscriber() {
    for (auto& list : mTable)
        if (list)
            list->clear();
}

unsigned HySubscriberListResponseHandler::getIntersectSubscriberPriority(
    int id1, int id2, eIntersectEventType event, const HyIntersectSubscriber* s) const {
    const bool valid = id1 >= 0 && id2 >= 0 && event >= 0 && event < kEventCount;
    const HySubscriberListResponse* list =
        valid ? getIntersectSubscriberList(id1, id2, event) : nullptr;
    return list ? list->priority(s) : std::numeric_limits<unsigned>::max();
}

} // namespace Hy
