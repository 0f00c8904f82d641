#pragma once
#include <Kit/KitApi.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

/// Where the time of a step goes. The engine marks its stages as zones; while profiling is on, each
/// thread keeps its last zones in a ring of its own, which costs two readings of the clock a zone and no
/// lock. Off, as at the start, a zone costs one test.
///
/// Names are kept by address: they are texts that never go, such as literals. What is not a zone is
/// called between steps, while no other thread is in a zone.

/// A zone that has ended.
struct KitProfileZone {
    const char* name = nullptr;
    std::int64_t start = 0, end = 0; ///< ns, of one clock for all threads
};

/// Is called on the thread of each zone, for a profiler of the application's own. Either may be null.
struct KitProfileHook {
    void (*begin)(const char* name) = nullptr;
    void (*end)(const char* name) = nullptr;
};

/// Zones that a ring holds; older ones are overwritten.
constexpr std::size_t KitProfileRingSize = 65536;

HY_API void KitProfileSetEnabled(bool on);
[[nodiscard]] HY_API bool KitProfileIsEnabled();
/// Works with the rings on or off. A hook with two null entries ends it.
HY_API void KitProfileSetHook(const KitProfileHook& hook);
/// Forgets all zones; the rings stay.
HY_API void KitProfileClear();
/// Rings made so far, in the order in which their threads began their first zone. The ring of a thread
/// that has ended is taken over by the next new one.
[[nodiscard]] HY_API std::size_t KitProfileGetThreadCount();
/// Zones of a ring; 0 for an index out of range.
[[nodiscard]] HY_API std::size_t KitProfileGetZoneCount(std::size_t thread);
/// A zone of a ring, in the order in which they ended; an empty one for an index out of range.
[[nodiscard]] HY_API KitProfileZone KitProfileGetZone(std::size_t thread, std::size_t index);
/// Writes all zones as a Chrome trace in JSON, a row a thread, which the trace viewers of browsers open.
/// Null, or a file that can't be written: a warning, and false.
HY_API bool KitProfileWriteTrace(const char* path);

/// Whether rings or hook want to know of zones.
extern HY_API std::atomic<bool> KitProfileActive;

/// A zone of this thread's time, from its construction to its end.
class HY_API KitProfileScope {
public:
    explicit KitProfileScope(const char* name) noexcept {
        if (KitProfileActive.load(std::memory_order_relaxed))
            begin(name);
    }
    KitProfileScope(const KitProfileScope&) = delete;
    KitProfileScope& operator=(const KitProfileScope&) = delete;
    ~KitProfileScope() {
        if (mName)
            end();
    }

private:
    void begin(const char* name) noexcept;
    void end() noexcept;

    const char* mName = nullptr; ///< null: nobody wanted to know when it began
    std::int64_t mStart = 0;
};
