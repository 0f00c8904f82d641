#include <Hy/HyInternalIDIntersectSubscriber.h>

#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyIntersectResult.h>
#include <Hy/HyMessage.h>

#include <algorithm>

namespace Hy {
namespace {

bool isInRange(int id, eIntersectEventType event, const char* operation) {
    if (id >= 0 && event >= 0 && event < kEventCount)
        return true;
    HyWarning(0,
              "HyInternalIDIntersectSubscriber::%s: ids must not be negative and the event be one "
              "of a pair.\n",
              operation);
    return false;
}

void add(HyIntersectSubscriberList& list, HyIntersectSubscriber* subscriber) {
    if (!list.contain(subscriber))
        list.insert(subscriber, 0);
}

} // namespace

void HyInternalIDIntersectSubscriber::addIntersectSubscriber(int id, eIntersectEventType event,
                                                             HyIntersectSubscriber* subscriber) {
    if (subscriber && isInRange(id, event, "addIntersectSubscriber"))
        add(mSingleIDSubscribers[event][id], subscriber);
}

void HyInternalIDIntersectSubscriber::addIntersectSubscriber(int id1, int id2,
                                                             eIntersectEventType event,
                                                             HyIntersectSubscriber* subscriber) {
    if (subscriber && isInRange(std::min(id1, id2), event, "addIntersectSubscriber"))
        add(mPairIDSubscribers[event][std::minmax(id1, id2)], subscriber);
}

bool HyInternalIDIntersectSubscriber::removeIntersectSubscriber(int id, eIntersectEventType event,
                                                                HyIntersectSubscriber* subscriber) {
    HyIntersectSubscriberList* list = getSubscriberList(id, event);
    return list && list->remove(subscriber);
}

bool HyInternalIDIntersectSubscriber::removeIntersectSubscriber(int id1, int id2,
                                                                eIntersectEventType event,
                                                                HyIntersectSubscriber* subscriber) {
    HyIntersectSubscriberList* list = getSubscriberList(id1, id2, event);
    return list && list->remove(subscriber);
}

HyIntersectSubscriberList*
HyInternalIDIntersectSubscriber::getSubscriberList(int id, eIntersectEventType event) {
    if (!isInRange(id, event, "getSubscriberList"))
        return nullptr;
    const auto place = mSingleIDSubscribers[event].find(id);
    return place == mSingleIDSubscribers[event].end() ? nullptr : &place->second;
}

HyIntersectSubscriberList*
HyInternalIDIntersectSubscriber::getSubscriberList(int id1, int id2, eIntersectEventType event) {
    if (!isInRange(std::min(id1, id2), event, "getSubscriberList"))
        return nullptr;
    const auto place = mPairIDSubscribers[event].find(std::minmax(id1, id2));
    return place == mPairIDSubscribers[event].end() ? nullptr : &place->second;
}

template <class Call>
void HyInternalIDIntersectSubscriber::forEachList(eIntersectEventType event,
                                                  const HyIntersectResult* result, Call call) {
    HyCollisionGeometry *g1 = nullptr, *g2 = nullptr;
    if (result)
        result->getCollisionGeometryPair(g1, g2);
    if (!g1 || !g2)
        return;
    const int i = g1->collisionGeometryID(), j = g2->collisionGeometryID();
    const bool ended = result->hasPairEnded();
    const auto notify = [&](HyIntersectSubscriberList* list) {
        if (list && result->hasPairEnded() == ended) // an earlier one may have removed a geometry
            call(*list);
    };
    notify(getSubscriberList(i, event));
    if (j != i)
        notify(getSubscriberList(j, event));
    notify(getSubscriberList(i, j, event));
}

void HyInternalIDIntersectSubscriber::notifyDisjoint(eIntersectEventType event,
                                                     HyIntersectResult* result) {
    forEachList(event, result,
                [&](HyIntersectSubscriberList& list) { list.notifyDisjoint(event, result); });
}

void HyInternalIDIntersectSubscriber::notifyIntersect(eIntersectEventType event,
                                                      HyIntersectResult* result,
                                                      HyDynamicsResponseInput* input) {
    forEachList(event, result, [&](HyIntersectSubscriberList& list) {
        list.notifyIntersect(event, result, input);
    });
}

} // namespace Hy
