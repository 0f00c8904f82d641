#include <Kit/KitThreadPool.h>
#include <Kit/KitThread.h>
#include "KitTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using WorkUnit = KitThreadPool::WorkUnit;

/// Counts its runs and aborts, and runs a function if it has one.
class Unit : public WorkUnit {
public:
    Unit() = default;
    explicit Unit(std::function<void()> work) : mWork(std::move(work)) {}
    void process() override {
        if (mWork)
            mWork();
        ++runs;
    }
    void abort() override { ++aborts; }

    int runs = 0, aborts = 0; // plain: the pool must order runs, waits and the next batch

private:
    std::function<void()> mWork;
};

/// A worker that waits inside a unit until the gate opens.
struct Gate {
    KitSemaphore entered, open;
    Unit unit{[this] {
        entered.release();
        open.acquire();
    }};
};

TEST(KitThreadPoolTest, EachUnitOfABatchRunsOnce) {
    for (const unsigned threads : {0U, 1U, 2U, 5U}) {
        KitThreadPool pool(threads);
        EXPECT_EQ(pool.getThreadCount(), std::max(threads, 1U));
        for (const std::size_t count : {0U, 1U, 2U, 3U, 64U, 65U, 1000U}) {
            std::vector<Unit> units(count);
            constexpr int kBatches = 50;
            for (int batch = 0; batch < kBatches; ++batch)
                KitThreadPoolExecute(&pool, units);
            for (const Unit& unit : units)
                ASSERT_EQ(unit.runs, kBatches) << threads << " threads, " << count << " units";
            KitThreadPoolExecute(&pool, units.data(), count / 2); // the front of a larger array
            KitThreadPoolExecute<Unit>(nullptr, units);           // on this thread
            for (std::size_t i = 0; i < count; ++i)
                ASSERT_EQ(units[i].runs, kBatches + 1 + (i < count / 2 ? 1 : 0));
        }
    }
}

TEST(KitThreadPoolTest, UnitsOfABatchRunAtOnce) {
    KitThreadPool pool(3);
    std::atomic<int> inside{0};
    const auto meet = [&inside] { // returns only when three threads are here
        ++inside;
        while (inside < 3)
            std::this_thread::yield();
    };
    std::vector<Unit> units(3, Unit(meet));
    KitThreadPoolExecute(&pool, units);
    EXPECT_EQ(inside, 3);

    inside = 0; // added units too, on all three workers
    pool.add({&units[0], &units[1], nullptr, &units[2]});
    pool.add(nullptr);
    for (Unit& unit : units) {
        unit.wait();
        EXPECT_EQ(unit.runs, 2);
    }
}

TEST(KitThreadPoolTest, BatchesNestToAnyDepth) {
    for (const unsigned threads : {1U, 2U, 4U}) {
        KitThreadPool pool(threads);
        std::atomic<int> leaves{0};
        const std::function<void(int)> descend = [&](int depth) {
            if (depth == 0) {
                ++leaves;
                return;
            }
            std::vector<Unit> children(3, Unit([&, depth] { descend(depth - 1); }));
            KitThreadPoolExecute(&pool, children);
            Unit added([&, depth] { descend(depth - 1); });
            pool.add(&added);
            added.wait();
        };
        descend(4);
        EXPECT_EQ(leaves, 256) << threads;
    }
}

TEST(KitThreadPoolTest, AUnitThatStandsTwiceInABatchRunsTwice) {
    for (const unsigned threads : {1U, 2U}) {
        KitThreadPool pool(threads);
        Unit a, b;
        pool.add({&a, &b, &a, &a});
        a.wait();
        b.wait();
        EXPECT_EQ(a.runs, 3);
        EXPECT_EQ(b.runs, 1);

        const WorkUnit* const pointers[] = {&a, &b, &a};
        pool.execute({.first = pointers, .count = 3, .unit = [](const void* first, std::size_t i) {
                          return static_cast<WorkUnit* const*>(first)[i];
                      }});
        EXPECT_EQ(a.runs, 5);
    }
}

TEST(KitThreadPoolTest, ABusyUnitBlocksAddUntilItHasRun) {
    KitThreadPool pool(1);
    Gate gate;
    Unit unit;
    pool.add(&gate.unit);
    gate.entered.acquire();
    pool.add(&unit); // queued behind the gate
    std::atomic<bool> added{false};
    std::thread other([&] {
        pool.add(&unit);
        added = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_FALSE(added);
    gate.open.release();
    other.join();
    unit.wait();
    EXPECT_EQ(unit.runs, 2);
}

TEST(KitThreadPoolTest, AUnitMayWaitForOneBehindItself) {
    KitThreadPool pool(1);
    Gate gate;
    Unit behind;
    Unit waits([&] { behind.wait(); });
    Unit executes([&] {
        Unit* units =
            &behind; // queued at this moment: it runs for the queue and then for the batch
        KitThreadPoolExecute(&pool, units, 1);
    });
    pool.add(&gate.unit);
    gate.entered.acquire();
    pool.add({&waits, &behind});
    gate.open.release();
    waits.wait();
    EXPECT_EQ(behind.runs, 1);
    pool.add(&gate.unit);
    gate.entered.acquire();
    pool.add({&executes, &behind});
    gate.open.release();
    executes.wait();
    EXPECT_EQ(behind.runs, 3);
}

TEST(KitThreadPoolTest, AUnitThatNamesItselfGetsAWarning) {
    KitThreadPool pool(2);
    const WarningRecorder warnings;
    Unit* self = nullptr;
    Unit unit([&] {
        self->wait();
        pool.add(self);
        KitThreadPoolExecute(&pool, self, 1);
    });
    self = &unit;
    pool.add(&unit);
    unit.wait();
    EXPECT_EQ(unit.runs, 1);
    const std::string add = "0: KitThreadPool::add: a unit must not add itself.\n";
    EXPECT_EQ(
        warnings.take(),
        (std::vector<std::string>{
            "0: KitThreadPool::WorkUnit::wait: a unit must not wait for itself.\n", add, add}));
}

TEST(KitThreadPoolTest, DestructionAbortsWhatIsQueuedAndEndsWhatRuns) {
    auto pool = std::make_unique<KitThreadPool>(1);
    Unit late, nested;
    KitSemaphore entered, open;
    KitThreadPool* address = pool.get();
    Unit running([&] {
        entered.release();
        open.acquire();
        address->add(&late);                       // the pool is stopping
        KitThreadPoolExecute(address, &nested, 1); // needs no worker but this
    });
    pool->add(&running);
    entered.acquire();
    std::vector<Unit> queued(100);
    for (Unit& unit : queued)
        pool->add(&unit);
    std::thread destroyer([&] { pool.reset(); });
    for (Unit& unit : queued) {
        unit.wait();
        EXPECT_EQ(unit.aborts, 1);
        EXPECT_EQ(unit.runs, 0);
    }
    open.release();
    destroyer.join();
    EXPECT_EQ(running.runs, 1);
    EXPECT_EQ(late.aborts, 1);
    EXPECT_EQ(late.runs, 0);
    EXPECT_EQ(nested.runs, 1);
}

TEST(KitThreadPoolTest, AUnitMayDestroyItsPool) {
    for (int repeat = 0; repeat < 20; ++repeat) {
        auto* pool = new KitThreadPool(2);
        Unit unit([pool] { delete pool; });
        pool->add(&unit);
        unit.wait();
        EXPECT_EQ(unit.runs, 1);

        pool = new KitThreadPool(2);
        std::atomic<int> first{0};
        std::vector<Unit> units(2, Unit([&first, pool] {
                                    if (first++ == 0)
                                        delete pool;
                                }));
        KitThreadPoolExecute(pool, units);
        for (const Unit& each : units)
            EXPECT_EQ(each.runs + each.aborts, 1);
    }
}

// Several threads execute batches that share units with those of the others, in opposite orders,
// while units of add() pass through; a unit is deleted as soon as its wait is over.
TEST(KitThreadPoolTest, ManyCallersShareThePool) {
    KitThreadPool pool(3);
    std::vector<Unit> own(4 * 8);
    std::vector<Unit> shared(6);
    std::atomic<int> added{0};
    constexpr int kRounds = 300;
    const auto caller = [&](std::size_t index) {
        std::vector<WorkUnit*> batch;
        for (std::size_t i = 0; i < 8; ++i)
            batch.push_back(&own[8 * index + i]);
        for (std::size_t i = 0; i < shared.size(); ++i)
            batch.push_back(&shared[index % 2 ? i : shared.size() - 1 - i]);
        for (int round = 0; round < kRounds; ++round) {
            pool.execute({.first = batch.data(),
                          .count = batch.size(),
                          .unit = [](const void* first, std::size_t i) {
                              return static_cast<WorkUnit* const*>(first)[i];
                          }});
            auto brief = std::make_unique<Unit>([&added] { ++added; });
            pool.add(brief.get());
            brief->wait();
        }
    };
    std::vector<std::thread> callers;
    for (std::size_t i = 0; i < 4; ++i)
        callers.emplace_back(caller, i);
    for (std::thread& thread : callers)
        thread.join();
    for (const Unit& unit : own)
        EXPECT_EQ(unit.runs, kRounds);
    for (const Unit& unit : shared)
        EXPECT_EQ(unit.runs, 4 * kRounds);
    EXPECT_EQ(added, 4 * kRounds);
}

} // namespace
