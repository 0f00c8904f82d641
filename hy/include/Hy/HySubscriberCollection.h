#pragma once
#include <Hy/HyArray.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>

namespace Hy {

/// Subscribers in the order of adding, duplicates and all. May change while it is walked.
/// @tparam S class of the subscribers; they are not owned
template <class S>
class HySubscriberList {
public:
    class Walk;

    void add(S* subscriber) { mSubscribers.push_back(subscriber); }

    /// Removes the first match, if there is one.
    void removeOnce(S* subscriber) {
        if (mWalks == 0) {
            mSubscribers.eraseOnce(subscriber);
            return;
        }
        // Walks go by index: the place must stay until they have ended.
        const auto found = std::find(mSubscribers.begin(), mSubscribers.end(), subscriber);
        if (found != mSubscribers.end())
            *found = nullptr;
    }

    [[nodiscard]] bool contains(const S* subscriber) const {
        return subscriber && std::find(mSubscribers.begin(), mSubscribers.end(), subscriber) !=
                                 mSubscribers.end();
    }

private:
    HyArray<S*> mSubscribers; ///< null stands for one that was removed during a walk
    int mWalks = 0;           ///< walks under way
};

/// Goes through the subscribers that a list holds now. Those removed meanwhile are skipped, those
/// added meanwhile are not visited. The list outlives the walk.
template <class S>
class HySubscriberList<S>::Walk {
public:
    /// @param list null for an empty walk
    explicit Walk(HySubscriberList* list) : mList(list) {
        if (!mList)
            return;
        ++mList->mWalks;
        mEnd = mList->mSubscribers.size();
    }
    Walk(const Walk&) = delete;
    Walk& operator=(const Walk&) = delete;
    ~Walk() {
        if (mList && --mList->mWalks == 0)
            mList->mSubscribers.eraseAll(nullptr);
    }

    /// The next subscriber, null at the end.
    [[nodiscard]] S* next() {
        while (mNext < mEnd)
            if (S* const subscriber = mList->mSubscribers[mNext++])
                return subscriber;
        return nullptr;
    }

private:
    HySubscriberList* const mList;
    std::size_t mNext = 0;
    std::size_t mEnd = 0;
};

/// Subscribers of single events and of all events. Lists are made on first need.
/// @tparam E enumeration of the events, values 0 to N − 1
/// @tparam S class of the subscribers, with notify(event, object); they are not owned
/// @tparam N number of events
template <class E, class S, std::size_t N>
class HySubscriberCollection {
public:
    /// Appends to the subscribers of one event; no test for a duplicate.
    void addSubscriber(E event, S* subscriber) {
        if (!mFilteredSubscriberList)
            mFilteredSubscriberList = std::make_unique<std::array<HySubscriberList<S>, N>>();
        (*mFilteredSubscriberList)[index(event)].add(subscriber);
    }

    /// Appends to the subscribers of all events; no test for a duplicate.
    void addSubscriber(S* subscriber) {
        if (!mSubscriberList)
            mSubscriberList = std::make_unique<HySubscriberList<S>>();
        mSubscriberList->add(subscriber);
    }

    /// Removes the first match from the subscribers of one event.
    void removeSubscriber(E event, S* subscriber) {
        if (mFilteredSubscriberList)
            (*mFilteredSubscriberList)[index(event)].removeOnce(subscriber);
    }

    /// Removes the first match from the subscribers of all events and from those of each event.
    void removeSubscriber(S* subscriber) {
        if (mSubscriberList)
            mSubscriberList->removeOnce(subscriber);
        if (mFilteredSubscriberList)
            for (HySubscriberList<S>& list : *mFilteredSubscriberList)
                list.removeOnce(subscriber);
    }

    /// Whether it is among the subscribers of this one event.
    [[nodiscard]] bool containSubscriber(E event, const S* subscriber) const {
        return mFilteredSubscriberList &&
               (*mFilteredSubscriberList)[index(event)].contains(subscriber);
    }

    /// Whether it is among the subscribers of all events or of any event.
    [[nodiscard]] bool containSubscriber(const S* subscriber) const {
        if (mSubscriberList && mSubscriberList->contains(subscriber))
            return true;
        return mFilteredSubscriberList &&
               std::any_of(mFilteredSubscriberList->begin(), mFilteredSubscriberList->end(),
                           [&](const auto& list) { return list.contains(subscriber); });
    }

    /// Tells the subscribers of the event, then the subscribers of all events.
    template <class Object>
    void notify(E event, Object* object) {
        using Walk = typename HySubscriberList<S>::Walk;
        Walk filtered(mFilteredSubscriberList ? &(*mFilteredSubscriberList)[index(event)]
                                              : nullptr);
        Walk general(mSubscriberList.get());
        while (S* subscriber = filtered.next())
            subscriber->notify(event, object);
        while (S* subscriber = general.next())
            subscriber->notify(event, object);
    }

private:
    static constexpr std::size_t index(E event) { return static_cast<std::size_t>(event); }

    std::unique_ptr<std::array<HySubscriberList<S>, N>> mFilteredSubscriberList;
    std::unique_ptr<HySubscriberList<S>> mSubscriberList;
};

} // namespace Hy
