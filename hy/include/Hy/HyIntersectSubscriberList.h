#pragma once
#include <Hy/HyIntersectSubscriber.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace Hy {

/// Subscribers in the order of calling. A walk takes a snapshot: one removed meanwhile is skipped, one
/// added meanwhile is not called.
class HY_API HyIntersectSubscriberList : public HyIntersectSubscriber {
public:
    /// Puts a subscriber at an index, at the end if the list is shorter. Not owned; null: nothing.
    void insert(HyIntersectSubscriber* subscriber, unsigned priority);
    [[nodiscard]] bool contain(const HyIntersectSubscriber* subscriber) const;
    /// Whether it was there.
    bool remove(HyIntersectSubscriber* subscriber);
    /// Index in the list, the largest number if it is not there.
    [[nodiscard]] unsigned priority(const HyIntersectSubscriber* subscriber) const;
    void clear() { mList.clear(); }
    [[nodiscard]] bool empty() const { return mList.empty(); }
    [[nodiscard]] std::size_t size() const { return mList.size(); }

    void notifyDisjoint(eIntersectEventType event, HyIntersectResult* result) override;
    void notifyIntersect(eIntersectEventType event, HyIntersectResult* result,
                         HyDynamicsResponseInput* input) override;

private:
    template <class Call>
    void forEach(Call call);

    std::vector<HyIntersectSubscriber*> mList;
    std::vector<HyIntersectSubscriber*> mSnapshot; ///< of the walk under way
    bool mWalking = false;
};

/// The subscribers of one event of two response ids.
class HY_API HySubscriberListResponse : public HyIntersectSubscriberList {
public:
    HySubscriberListResponse(int id1, int id2, eIntersectEventType event)
        : mResponseID1(id1), mResponseID2(id2), mEventID(event) {}

    [[nodiscard]] int getResponseID1() const { return mResponseID1; }
    [[nodiscard]] int getResponseID2() const { return mResponseID2; }
    [[nodiscard]] eIntersectEventType getEventID() const { return mEventID; }
    /// Asks before anybody is told; null for nobody. Keeps a copy.
    void setAcceptNotification(const HyAcceptNotificationBase* accept);

    void notifyDisjoint(eIntersectEventType event, HyIntersectResult* result) override;
    void notifyIntersect(eIntersectEventType event, HyIntersectResult* result,
                         HyDynamicsResponseInput* input) override;

private:
    [[nodiscard]] bool accepts(const HyIntersectResult* result) const;

    int mResponseID1, mResponseID2;
    eIntersectEventType mEventID;
    std::unique_ptr<HyAcceptNotificationBase> mAcceptNotification;
};

/// The lists of all response ids and events, found by a table.
class HY_API HySubscriberListResponseHandler {
public:
    HySubscriberListResponseHandler() = default;
    HySubscriberListResponseHandler(const HySubscriberListResponseHandler&) = delete;
    HySubscriberListResponseHandler& operator=(const HySubscriberListResponseHandler&) = delete;
    virtual ~HySubscriberListResponseHandler();

    /// Adds a subscriber unless it is there. The ids in either order. Not owned.
    virtual void addIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                        HyIntersectSubscriber* subscriber, unsigned priority);
    /// Whether it was there.
    virtual bool removeIntersectSubscriber(int id1, int id2, eIntersectEventType event,
                                           HyIntersectSubscriber* subscriber);
    virtual void removeAllIntersectSubscriber();
    /// Index in its list, the largest number if it is not there.
    [[nodiscard]] unsigned getIntersectSubscriberPriority(int id1, int id2,
                                                          eIntersectEventType event,
                                                          const HyIntersectSubscriber* s) const;
    /// Null if nobody ever subscribed.
    [[nodiscard]] HySubscriberListResponse*
    getIntersectSubscriberList(int id1, int id2, eIntersectEventType event) const {
        const std::size_t place = placeOf(id1, id2, event);
        return place < mTable.size() ? mTable[place].get() : nullptr;
    }
    [[nodiscard]] bool hasSubscriberLists() const { return mListCount > 0; }

private:
    /// Triangle of pairs of ids, kEventCount lists each; grows with the larger id.
    [[nodiscard]] static std::size_t placeOf(int id1, int id2, eIntersectEventType event) {
        const auto low = static_cast<std::size_t>(id1 < id2 ? id1 : id2);
        const auto high = static_cast<std::size_t>(id1 < id2 ? id2 : id1);
        return (high * (high + 1) / 2 + low) * kEventCount + static_cast<std::size_t>(event);
    }

    std::vector<std::unique_ptr<HySubscriberListResponse>> mTable;
    std::size_t mListCount = 0;
};

} // namespace Hy
