#include "stage_team.h"

#include <algorithm>
#include <cstddef>
#include <thread>

namespace {

// A ticket holds the number of the stage, how many chunks it has and which is the next: one compare
// and swap takes a chunk of just that stage.
constexpr int kCountBits = 20;
constexpr std::uint64_t kCountMask = (1U << kCountBits) - 1;
constexpr std::uint64_t kStageMask = (1U << 23) - 1;
constexpr std::uint64_t kEnd = ~std::uint64_t{0};
/// Polls before the processor is offered to other threads.
constexpr int kSpins = 1000;

std::uint64_t ticketOf(std::uint64_t stage, int chunks) {
    return (stage & kStageMask) << (2 * kCountBits) | static_cast<std::uint64_t>(chunks)
                                                          << kCountBits;
}

class Waiting {
public:
    void pause() {
        if (++mSpins < kSpins) {
#if defined(__x86_64__)
            __builtin_ia32_pause();
#endif
            return;
        }
        mSpins = 0;
        std::this_thread::yield();
    }
    void reset() {
        mSpins = 0;
    }

private:
    int mSpins = 0;
};

} // namespace

void DynsStageTeam::run(DynsStagedWork& work, KitThreadPool* pool) {
    mWork = &work;
    mTicket.store(0, std::memory_order_relaxed);
    mHasLeader.store(false, std::memory_order_relaxed);
    const std::size_t threads = pool ? pool->getThreadCount() : 1;
    if (threads < 2) {
        lead();
        return;
    }
    mMembers.resize(std::max(mMembers.size(), threads));
    for (Member& member : mMembers)
        member.team = this;
    KitThreadPoolExecute(pool, mMembers.data(), threads);
}

void DynsStageTeam::takePart() {
    if (mHasLeader.exchange(true, std::memory_order_relaxed))
        help();
    else
        lead();
}

void DynsStageTeam::lead() {
    mHasLeader.store(true, std::memory_order_relaxed);
    std::uint64_t stage = 0;
    for (int chunks; (chunks = mWork->beginStage()) >= 0;) {
        const std::uint64_t ticket = ticketOf(++stage, chunks);
        mDone.store(0, std::memory_order_relaxed);
        mTicket.store(ticket, std::memory_order_release);
        for (int chunk; (chunk = claim(mTicket.load(std::memory_order_relaxed))) >= 0;) {
            mWork->runChunk(chunk);
            mDone.fetch_add(1, std::memory_order_relaxed);
        }
        for (Waiting waiting; mDone.load(std::memory_order_acquire) < chunks;)
            waiting.pause();
    }
    mTicket.store(kEnd, std::memory_order_release);
}

void DynsStageTeam::help() {
    Waiting waiting;
    for (std::uint64_t ticket; (ticket = mTicket.load(std::memory_order_acquire)) != kEnd;) {
        const int chunk = claim(ticket);
        if (chunk < 0) {
            waiting.pause();
            continue;
        }
        waiting.reset();
        mWork->runChunk(chunk);
        mDone.fetch_add(1, std::memory_order_release);
    }
}

int DynsStageTeam::claim(std::uint64_t ticket) {
    for (;;) {
        const std::uint64_t next = ticket & kCountMask, chunks = ticket >> kCountBits & kCountMask;
        if (ticket == kEnd || next >= chunks)
            return -1;
        if (mTicket.compare_exchange_weak(ticket, ticket + 1, std::memory_order_acquire))
            return static_cast<int>(next);
    }
}
