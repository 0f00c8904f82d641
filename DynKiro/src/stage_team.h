#pragma once
#include <Kit/KitThreadPool.h>

#include <atomic>
#include <cstdint>
#include <vector>

/// Work in stages, one after the other, each of chunks that may run at once and in any order.
class DynsStagedWork {
public:
    virtual ~DynsStagedWork() = default;
    /// Prepares the next stage once all chunks of the last one have run; answers how many chunks it
    /// has, below 2^20, or a negative number at the end of the work.
    virtual int beginStage() = 0;
    virtual void runChunk(int chunk) = 0;
};

/// Runs staged work on the threads of a pool. The thread that comes first leads: it begins the stages
/// and takes chunks like the others, which come when they can and are never waited for before they
/// have taken one. So the stages cost no lock and no sleep, and a pool that is busy delays nothing.
class DynsStageTeam {
public:
    DynsStageTeam() = default;
    DynsStageTeam(const DynsStageTeam&) = delete;
    DynsStageTeam& operator=(const DynsStageTeam&) = delete;

    /// @param pool null: on the calling thread alone
    void run(DynsStagedWork& work, KitThreadPool* pool);

private:
    class Member final : public KitThreadPool::WorkUnit {
    public:
        void process() override { team->takePart(); }
        DynsStageTeam* team = nullptr;
    };

    void takePart();
    void lead();
    void help();
    /// A chunk of the stage that the ticket tells; negative if none is left.
    int claim(std::uint64_t ticket);

    DynsStagedWork* mWork = nullptr;
    std::vector<Member> mMembers;
    std::atomic<bool> mHasLeader{false};
    // On lines of their own: all threads write them.
    alignas(64) std::atomic<std::uint64_t> mTicket{0}; ///< stage, its chunks, the next one to take
    alignas(64) std::atomic<int> mDone{0};             ///< chunks of the stage that have run
};
