#pragma once
#include <Kit/KitApi.h>

struct DynBaseConstraint;
struct DynBody;
struct DynWorld;

namespace Hy {
class HyConstraint;
class HyPart;
class HyUniverse;

template <class Record, class Object>
class HyEnabledListIterator;

/// The visits to one of the world's lists of enabled records that are under way.
template <class Record, class Object>
class HyEnabledListVisits {
public:
    /// A record leaves the world.
    void leaves(const Record* record);
    /// The world goes: all visits end.
    void end();

private:
    friend class HyEnabledListIterator<Record, Object>;
    HyEnabledListIterator<Record, Object>* mNewest = nullptr;
};

/// Place of a visit to the objects of a universe that are enabled in its world. Known to the
/// universe, so that it passes over objects that leave while it holds them; null then, and after the
/// last. Stays valid when the universe goes.
template <class Record, class Object>
class HY_API HyEnabledListIterator {
public:
    HyEnabledListIterator(const HyEnabledListIterator& other);
    HyEnabledListIterator& operator=(const HyEnabledListIterator& other);
    ~HyEnabledListIterator();

    /// The present object; null once it has left the universe.
    [[nodiscard]] Object* operator*() const;
    [[nodiscard]] Object* operator->() const { return **this; }
    /// Goes on to the next object. If the present and the next one have both been disabled, or have
    /// left, the visit ends with a warning.
    HyEnabledListIterator& operator++();
    [[nodiscard]] bool operator==(const HyEnabledListIterator& other) const {
        return mRecord == other.mRecord;
    }

private:
    friend class HyUniverse;
    friend class HyEnabledListVisits<Record, Object>;
    using Visits = HyEnabledListVisits<Record, Object>;

    HyEnabledListIterator() = default;
    /// Begins at the head of the list.
    HyEnabledListIterator(Visits& visits, const DynWorld& world);

    [[nodiscard]] static bool isVisited(const Record* record);
    [[nodiscard]] static Record* firstFrom(Record* record);
    void copyPlace(const HyEnabledListIterator& other);
    void join(Visits* visits);
    void leave();
    void recordLeaves(const Record* record);

    Visits* mVisits = nullptr;
    Record* mRecord = nullptr;
    Record* mNextRecord = nullptr;
    int mRemaining = 0;     ///< bounds the visit where records keep changing places
    bool mNextLost = false; ///< the next object has left
    HyEnabledListIterator* mNewer = nullptr;
    HyEnabledListIterator* mOlder = nullptr;
};

} // namespace Hy
