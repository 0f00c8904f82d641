#include <Kit/KitProfile.h>

#include <Kit/KitMessage.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

std::atomic<bool> KitProfileActive{false};

namespace {

constexpr std::int64_t kNanosecondsPerMicrosecond = 1000;

/// Written by one thread alone.
struct Ring {
    std::unique_ptr<KitProfileZone[]> zones; ///< KitProfileRingSize of them
    std::size_t count = 0;                   ///< written since the last clearing
    bool hasThread = true;

    [[nodiscard]] std::size_t size() const { return std::min(count, KitProfileRingSize); }
    [[nodiscard]] const KitProfileZone& at(std::size_t index) const {
        return zones[(count - size() + index) % KitProfileRingSize];
    }
};

struct Profile {
    std::mutex mutex; ///< of the list; each ring is its thread's
    std::vector<std::unique_ptr<Ring>> rings;
    std::atomic<bool> enabled{false};
    KitProfileHook hook;
};

// Never destroyed: threads may end after the statics.
Profile& profile() {
    static auto* const instance = new Profile;
    return *instance;
}

Ring* takeRing() noexcept {
    Profile& all = profile();
    const std::lock_guard lock(all.mutex);
    for (const auto& ring : all.rings)
        if (!ring->hasThread) {
            ring->hasThread = true;
            return ring.get();
        }
    try {
        auto ring = std::make_unique<Ring>();
        ring->zones = std::make_unique<KitProfileZone[]>(KitProfileRingSize);
        all.rings.push_back(std::move(ring));
        return all.rings.back().get();
    } catch (const std::bad_alloc&) {
        return nullptr; // the thread goes without
    }
}

/// The ring of this thread; gives it back at the thread's end.
class RingOfThread {
public:
    RingOfThread() = default;
    RingOfThread(const RingOfThread&) = delete;
    RingOfThread& operator=(const RingOfThread&) = delete;
    ~RingOfThread() {
        if (!mRing)
            return;
        const std::lock_guard lock(profile().mutex);
        mRing->hasThread = false;
    }
    void add(const KitProfileZone& zone) noexcept {
        if (!mRing)
            mRing = takeRing();
        if (mRing)
            mRing->zones[mRing->count++ % KitProfileRingSize] = zone;
    }

private:
    Ring* mRing = nullptr;
};

thread_local RingOfThread ringOfThread;

std::int64_t now() noexcept {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void updateActive() {
    const Profile& all = profile();
    KitProfileActive = all.enabled || all.hook.begin || all.hook.end;
}

const Ring* ringAt(std::size_t thread) {
    const Profile& all = profile();
    return thread < all.rings.size() ? all.rings[thread].get() : nullptr;
}

std::int64_t earliestStart() {
    std::int64_t start = INT64_MAX;
    for (const auto& ring : profile().rings)
        for (std::size_t i = 0; i < ring->size(); ++i)
            start = std::min(start, ring->at(i).start);
    return start;
}

void writeText(std::FILE* file, const char* text) {
    for (; *text; ++text)
        if (const auto c = static_cast<unsigned char>(*text); c == '"' || c == '\\')
            std::fprintf(file, "\\%c", *text);
        else if (c < ' ')
            std::fprintf(file, "\\u%04x", static_cast<unsigned>(c));
        else
            std::fputc(*text, file);
}

// Microseconds with three digits behind the point lose nothing.
void writeTime(std::FILE* file, const char* key, std::int64_t nanoseconds) {
    std::fprintf(file, ",\"%s\":%lld.%03d", key,
                 static_cast<long long>(nanoseconds / kNanosecondsPerMicrosecond),
                 static_cast<int>(nanoseconds % kNanosecondsPerMicrosecond));
}

void writeRow(std::FILE* file, std::size_t row, std::int64_t origin) {
    const Ring& ring = *profile().rings[row];
    std::fprintf(file,
                 "%s\n{\"ph\":\"M\",\"name\":\"thread_name\",\"pid\":0,\"tid\":%zu,"
                 "\"args\":{\"name\":\"thread %zu\"}}",
                 row > 0 ? "," : "", row, row);
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const KitProfileZone& zone = ring.at(i);
        std::fprintf(file, ",\n{\"ph\":\"X\",\"pid\":0,\"tid\":%zu,\"name\":\"", row);
        writeText(file, zone.name);
        std::fputc('"', file);
        writeTime(file, "ts", zone.start - origin);
        writeTime(file, "dur", zone.end - zone.start);
        std::fputc('}', file);
    }
}

} // namespace

void KitProfileSetEnabled(bool on) {
    profile().enabled = on;
    updateActive();
}

bool KitProfileIsEnabled() {
    return profile().enabled;
}

void KitProfileSetHook(const KitProfileHook& hook) {
    profile().hook = hook;
    updateActive();
}

void KitProfileClear() {
    const std::lock_guard lock(profile().mutex);
    for (const auto& ring : profile().rings)
        ring->count = 0;
}

std::size_t KitProfileGetThreadCount() {
    const std::lock_guard lock(profile().mutex);
    return profile().rings.size();
}

std::size_t KitProfileGetZoneCount(std::size_t thread) {
    const std::lock_guard lock(profile().mutex);
    const Ring* ring = ringAt(thread);
    return ring ? ring->size() : 0;
}

KitProfileZone KitProfileGetZone(std::size_t thread, std::size_t index) {
    const std::lock_guard lock(profile().mutex);
    const Ring* ring = ringAt(thread);
    return ring && index < ring->size() ? ring->at(index) : KitProfileZone();
}

bool KitProfileWriteTrace(const char* path) {
    std::FILE* file = path ? std::fopen(path, "w") : nullptr;
    if (!file) {
        KitWarning(0, "KitProfileWriteTrace: %s can't be written.\n", path ? path : "null");
        return false;
    }
    const std::lock_guard lock(profile().mutex);
    const std::int64_t origin = earliestStart();
    std::fputs("{\"traceEvents\":[", file);
    for (std::size_t row = 0; row < profile().rings.size(); ++row)
        writeRow(file, row, origin);
    std::fputs("\n]}\n", file);
    const bool failed = std::ferror(file) != 0;
    if (std::fclose(file) != 0 || failed) {
        KitWarning(0, "KitProfileWriteTrace: %s can't be written.\n", path);
        return false;
    }
    return true;
}

void KitProfileScope::begin(const char* name) noexcept {
    mName = name;
    if (const auto hook = profile().hook.begin)
        hook(name);
    mStart = now();
}

void KitProfileScope::end() noexcept {
    const Profile& all = profile();
    if (all.enabled.load(std::memory_order_relaxed))
        ringOfThread.add({mName, mStart, now()});
    if (all.hook.end)
        all.hook.end(mName);
}
