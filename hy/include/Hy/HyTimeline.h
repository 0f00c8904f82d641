#pragma once
#include <Kit/KitApi.h>

#include <atomic>
#include <map>
#include <mutex>
#include <string>

/// A recorder of events in time, one for the process, for profiling and diagnostics:
///
///     Interval* interval = Timeline::instance().addInterval(); // null while it does not record
///     work();
///     if (interval)
///         interval->end();
namespace Hy::HyTimeline {
class Interval;
class Marker;
class Timeline;

/// A time, s since the process loaded the library. Single precision: to 1 ms after 4 hours.
using Timestamp = float;
/// The present time.
[[nodiscard]] HY_API Timestamp now();

/// Values that an event carries, by name and type.
struct HY_API MetaData {
    std::map<std::string, std::string> strings;
    std::map<std::string, bool> booleans;
    std::map<std::string, int> integers;
    std::map<std::string, double> reals;
};

/// Something that happened, an element of the timeline. Its contents belong to the thread that made
/// it.
class HY_API Event {
public:
    enum Type : int {
        kMarker = 0,   ///< an instant
        kInterval = 1, ///< from a start to an end
    };

    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    virtual ~Event() = default;
    [[nodiscard]] virtual Type getType() const = 0;

    /// When it was made.
    [[nodiscard]] Timestamp getTime() const { return mTimestamp; }
    /// Holds from the start the integer "thread", the system's number of the thread that made it.
    [[nodiscard]] MetaData& getMetaData() { return mMetaData; }
    [[nodiscard]] const MetaData& getMetaData() const { return mMetaData; }
    /// The event made before, null for the first. Not while the timeline may be cleared.
    [[nodiscard]] Event* previous() const { return mPrevious; }
    /// The event made behind, null for the last. Not while the timeline may be cleared.
    [[nodiscard]] Event* next() const { return mNext; }
    /// The event as what it is, else null.
    [[nodiscard]] Marker* asMarker();
    [[nodiscard]] Interval* asInterval();

protected:
    Event();

private:
    friend class Timeline;

    const Timestamp mTimestamp;
    MetaData mMetaData;
    Event* mPrevious = nullptr;
    std::atomic<Event*> mNext{nullptr}; ///< set by whoever adds the next event
};

/// An instant.
class HY_API Marker final : public Event {
public:
    [[nodiscard]] Type getType() const override { return kMarker; }

private:
    friend class Timeline;
    Marker() = default;
};

/// A span of time.
class HY_API Interval final : public Event {
public:
    [[nodiscard]] Type getType() const override { return kInterval; }

    /// Ends the interval now; again moves the end.
    void end() { mEndTimestamp = now(); }
    /// 0 until end().
    [[nodiscard]] Timestamp getEnd() const { return mEndTimestamp; }
    /// From the start to the end, s; not above 0 until end().
    [[nodiscard]] float getDuration() const { return mEndTimestamp - getTime(); }

private:
    friend class Timeline;
    Interval() = default;

    Timestamp mEndTimestamp = 0;
};

/// The events in the order of making. Any thread may add some; the timeline owns them.
class HY_API Timeline {
public:
    /// The timeline of the process; it is there to the end.
    static Timeline& instance();
    Timeline(const Timeline&) = delete;
    Timeline& operator=(const Timeline&) = delete;

    /// Whether events are taken; false at the start.
    [[nodiscard]] bool isRecording() const { return mRecording; }
    void setRecording(bool on) { mRecording = on; }

    /// A new event, null while it does not record. Valid until clear().
    Marker* addMarker();
    Interval* addInterval();
    /// Null if there are no events.
    [[nodiscard]] Event* first() const;
    [[nodiscard]] Event* last() const;
    /// Deletes all events.
    void clear();

private:
    Timeline() = default;
    ~Timeline() = default;
    void addEvent(Event* event);

    mutable std::mutex mMutex; ///< guards the list
    std::atomic<bool> mRecording{false};
    Event* mFirst = nullptr;
    Event* mLast = nullptr;
};

} // namespace Hy::HyTimeline
