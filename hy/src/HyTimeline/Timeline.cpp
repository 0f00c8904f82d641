#include <Hy/HyTimeline.h>

#include <chrono>
#include <unistd.h>
#include <utility>

namespace Hy::HyTimeline {
namespace {

// A clock that no change of the system's time moves.
const std::chrono::steady_clock::time_point kStart = std::chrono::steady_clock::now();

} // namespace

Timestamp now() {
    return std::chrono::duration<Timestamp>(std::chrono::steady_clock::now() - kStart).count();
}

Event::Event() : mTimestamp(now()) {
    mMetaData.integers["thread"] = gettid();
}

Marker* Event::asMarker() {
    return getType() == kMarker ? static_cast<Marker*>(this) : nullptr;
}

Interval* Event::asInterval() {
    return getType() == kInterval ? static_cast<Interval*>(this) : nullptr;
}

// Never destroyed: threads may record while the process ends.
Timeline& Timeline::instance() {
    static Timeline& timeline = *new Timeline;
    return timeline;
}

Marker* Timeline::addMarker() {
    if (!mRecording)
        return nullptr;
    auto* marker = new Marker;
    addEvent(marker);
    return marker;
}

Interval* Timeline::addInterval() {
    if (!mRecording)
        return nullptr;
    auto* interval = new Interval;
    addEvent(interval);
    return interval;
}

Event* Timeline::first() const {
    const std::lock_guard lock(mMutex);
    return mFirst;
}

Event* Timeline::last() const {
    const std::lock_guard lock(mMutex);
    return mLast;
}

void Timeline::clear() {
    const std::lock_guard lock(mMutex);
    mLast = nullptr;
    while (mFirst)
        delete std::exchange(mFirst, mFirst->next());
}

void Timeline::addEvent(Event* event) {
    const std::lock_guard lock(mMutex);
    event->mPrevious = mLast;
    if (mLast)
        mLast->mNext = event;
    else
        mFirst = event;
    mLast = event;
}

} // namespace Hy::HyTimeline
