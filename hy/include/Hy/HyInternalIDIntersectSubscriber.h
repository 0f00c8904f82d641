#pragma once
#include <Hy/HyIntersectSubscriberList.h>

#include <map>
#include <utility>

namespace Hy {

/// Tells others of pairs by the ids of the two geometries, see HyCollisionGeometry::collisionGeometryID():
/// first those of the first id, then those of the second if it is another one, then those of the pair.
/// It hears of what it is itself subscribed to.
class HY_API HyInternalIDIntersectSubscriber : public HyIntersectSubscriber {
public:
    /// For pairs with a geometry of an id, from 0. Nothing for one that is there already, for null, and
    /// for an id or event out of range. Not owned.
    void addIntersectSubscriber(int id, eIntersectEventType event,
                                HyIntersectSubscriber* subscriber);
    /// For pairs of two ids, in either order.
    void addIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                HyIntersectSubscriber* subscriber);
    /// Whether it was there.
    bool removeIntersectSubscriber(int id, eIntersectEventType event,
                                   HyIntersectSubscriber* subscriber);
    bool removeIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                   HyIntersectSubscriber* subscriber);
    /// Null if nobody ever subscribed.
    [[nodiscard]] HyIntersectSubscriberList* getSubscriberList(int id, eIntersectEventType event);
    [[nodiscard]] HyIntersectSubscriberList* getSubscriberList(int id1, int id2,
                                                               eIntersectEventType event);

    void notifyDisjoint(eIntersectEventType event, HyIntersectResult* result) override;
    void notifyIntersect(eIntersectEventType event, HyIntersectResult* result,
                         HyDynamicsResponseInput* input) override;

private:
    template <class Call>
    void forEachList(eIntersectEventType event, const HyIntersectResult* result, Call call);

    // Lists stay where they are once they are made: one may be under way.
    std::map<int, HyIntersectSubscriberList> mSingleIDSubscribers[kEventCount];
    std::map<std::pair<int, int>, HyIntersectSubscriberList> mPairIDSubscribers[kEventCount];
};

} // namespace Hy
