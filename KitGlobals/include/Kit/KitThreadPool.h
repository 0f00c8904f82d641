#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitSemaphore.h>

#include <cstddef>
#include <memory>
#include <vector>

/// Workers that take work units from one queue, first in first out.
///
/// A stage of a step fills an array of units, hands it over with KitThreadPoolExecute() and goes on
/// when all have run; the end of the array is the stage's barrier. Units of a batch run at once and
/// in any order, so they must touch disjoint data. Any thread may call any operation.
///
/// A thread that runs a unit never waits for the queue behind itself: what it adds or executes runs
/// at once on that thread, however deep the nesting. A unit may even destroy its pool.
class HY_API KitThreadPool {
    struct State;

public:
    /// Work for the pool; its owner keeps it, alive and in place, until wait() has returned.
    ///
    /// A copy is a new idle unit, so that units may stand in a vector.
    class HY_API WorkUnit {
    public:
        WorkUnit() = default;
        WorkUnit(const WorkUnit& other);
        WorkUnit& operator=(const WorkUnit& other);
        virtual ~WorkUnit() = default;

        /// The work. Runs with no lock held, on a worker or on a thread that executes a batch.
        virtual void process() = 0;
        /// Called in place of process() if the pool is stopping. Does nothing by default.
        virtual void abort();

        /// Blocks until the unit is neither queued nor running; at once if it is idle. Any number of
        /// threads may wait. A unit that waits for itself gets a warning.
        void wait();

    private:
        friend class KitThreadPool;
        void acquire();
        void doProcessAndRelease(State* pool);
        void doAbortAndRelease();

        KitSemaphore mSemaphore{1};   ///< 1 while idle, 0 while queued or running
        const void* mBatch = nullptr; ///< which execute() queued it; null for add()
    };

    /// Units by index, wherever they lie; a view of the caller's storage.
    struct Batch {
        const void* first = nullptr; ///< handed to unit()
        std::size_t count = 0;
        WorkUnit* (*unit)(const void* first, std::size_t index) = nullptr; ///< may answer null
    };

    /// @param threadCount workers; 0 counts as 1, more than 1024 as 1024 with a warning
    explicit KitThreadPool(unsigned threadCount);
    /// Aborts what is queued, lets running units end, and joins the workers.
    ~KitThreadPool();
    KitThreadPool(const KitThreadPool&) = delete;
    KitThreadPool& operator=(const KitThreadPool&) = delete;

    [[nodiscard]] unsigned getThreadCount() const;
    /// Queues a unit and returns; nothing for null. A unit that is still queued or running blocks the
    /// caller until it has run; one that adds itself gets a warning. A stopping pool aborts the unit
    /// at once.
    void add(WorkUnit* unit);
    /// Queues the units under one lock. A unit that stands twice in the vector runs twice, one run
    /// after the other.
    void add(const std::vector<WorkUnit*>& units);
    /// Queues the units, takes part in running them, and returns when all have run. With one worker
    /// or one unit, or inside a unit, they run on the calling thread in their order.
    void execute(const Batch& batch);
    /// Runs the units on the calling thread in their order.
    static void executeInline(const Batch& batch);

private:
    std::shared_ptr<State>
        mState; ///< shared with the workers, which may outlive a destruction by a unit
};

/// Runs `count` units that lie in an array and returns when all have run; nothing for 0. The units
/// stay the caller's. Nothing is allocated once the pool's queue has grown to their number. Without
/// a pool they run on the calling thread.
template <class Unit>
void KitThreadPoolExecute(KitThreadPool* pool, Unit* units, std::size_t count) {
    const KitThreadPool::Batch batch{
        .first = units,
        .count = count,
        .unit = [](const void* first, std::size_t index) -> KitThreadPool::WorkUnit* {
            return const_cast<Unit*>(static_cast<const Unit*>(first)) + index;
        }};
    if (pool)
        pool->execute(batch);
    else
        KitThreadPool::executeInline(batch);
}

/// The same for all units of a vector.
template <class Unit>
void KitThreadPoolExecute(KitThreadPool* pool, std::vector<Unit>& units) {
    KitThreadPoolExecute(pool, units.data(), units.size());
}
