#include <Hy/HySmartThread.h>
#include <Hy/HyThread.h>
#include <Hy/HyTimer.h>

#include "MessageCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <pthread.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

using namespace Hy;

namespace {

class Loop : public HySmartThread {
public:
    explicit Loop(std::function<bool(Loop&)> step) : mStep(std::move(step)) {}
    ~Loop() override { stop(); }
    std::atomic<int> steps{0};
    std::atomic<bool>* deleted = nullptr;

protected:
    bool runStep() override {
        ++steps;
        return mStep(*this);
    }

private:
    std::function<bool(Loop&)> mStep;
};

bool goOn(Loop&) {
    std::this_thread::yield();
    return true;
}

void waitForSteps(const Loop& loop, int more) {
    const int wanted = loop.steps + more;
    while (loop.steps < wanted)
        std::this_thread::yield();
}

void waitUntilStopped(const Loop& loop) {
    while (loop.getThreadState() != HyIThread::kStopped)
        std::this_thread::yield();
}

TEST(HySmartThreadTest, StartsPausesAndStops) {
    Loop loop(goOn);
    EXPECT_EQ(loop.getThreadState(), HyIThread::kStopped);
    EXPECT_EQ(loop.getThreadId(), nullptr);
    loop.pause(true); // nothing to pause
    loop.stop();
    for (int round = 0; round < 50; ++round) {
        ASSERT_TRUE(loop.start());
        ASSERT_TRUE(loop.start());
        ASSERT_EQ(loop.getThreadState(), HyIThread::kRunning);
        ASSERT_NE(loop.getThreadId(), nullptr);
        ASSERT_FALSE(loop.isCurrentThread());
        waitForSteps(loop, 2);
        loop.pause(true);
        loop.pause(true);
        ASSERT_EQ(loop.getThreadState(), HyIThread::kPaused);
        const int before = loop.steps;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        ASSERT_EQ(loop.steps, before);
        if (round % 2) { // else it is stopped while it pauses
            loop.pause(false);
            waitForSteps(loop, 2);
        }
        loop.stop();
        ASSERT_EQ(loop.getThreadState(), HyIThread::kStopped);
        ASSERT_EQ(loop.getThreadId(), nullptr);
    }
}

// The work of a step is plain data: after pause(true) it is the caller's.
TEST(HySmartThreadTest, NoStepIsUnderWayWhilePaused) {
    int data = 0;
    Loop loop([&data](Loop&) {
        data = 1;
        std::this_thread::sleep_for(std::chrono::microseconds(50));
        data = 0;
        return true;
    });
    loop.start();
    for (int i = 0; i < 50; ++i) {
        loop.pause(true);
        ASSERT_NE(data, 1);
        data = 7;
        loop.pause(false);
    }
    loop.stop();
    EXPECT_EQ(loop.getThreadState(), HyIThread::kStopped);
}

TEST(HySmartThreadTest, AStepMayEndItsThread) {
    MessageCapture messages;
    struct Case {
        const char* name;
        std::function<bool(Loop&)> step;
        const char* warning;
    };
    const Case cases[] = {
        {"answers false", [](Loop&) { return false; }, ""},
        {"stops",
         [](Loop& loop) {
             EXPECT_TRUE(loop.isCurrentThread());
             loop.stop();
             return true;
         },
         ""},
        {"throws", [](Loop&) -> bool { throw std::runtime_error("out of cheese"); },
         "HyWarning{0}: HySmartThread exception thrown in thread: out of cheese\n"},
        {"throws a number", [](Loop&) -> bool { throw 7; },
         "HyWarning{0}: HySmartThread unknown exception thrown in thread\n"},
        {"leaves", [](Loop&) -> bool { HyThreadExit(); }, ""},
    };
    for (const Case& c : cases) {
        Loop loop(c.step);
        for (int round = 1; round <= 3; ++round) {
            ASSERT_TRUE(loop.start()) << c.name;
            waitUntilStopped(loop);
            EXPECT_EQ(loop.steps, round) << c.name;
            EXPECT_EQ(messages.take(), c.warning) << c.name;
        }
    }
}

TEST(HySmartThreadTest, AStepThatPausesItsThreadIsTheLastUntilResumed) {
    Loop loop([](Loop& self) {
        self.pause(true);
        return true;
    });
    loop.start();
    for (int round = 1; round <= 5; ++round) {
        while (loop.getThreadState() != HyIThread::kPaused)
            std::this_thread::yield();
        loop.pause(false);
    }
    loop.stop();
    EXPECT_GE(loop.steps, 5);
}

TEST(HySmartThreadTest, DestroyDeletesFromOutsideAndFromAStep) {
    static std::atomic<int> alive{0};
    struct Counted : Loop {
        using Loop::Loop;
        ~Counted() override { --alive; }
    };
    const auto make = [](std::function<bool(Loop&)> step) {
        ++alive;
        return new Counted(std::move(step));
    };
    make(goOn)->destroy();
    Loop* running = make(goOn);
    running->start();
    waitForSteps(*running, 3);
    running->destroy();
    EXPECT_EQ(alive, 0);
    for (int round = 0; round < 50; ++round) {
        Loop* own = make([](Loop& self) {
            self.destroy();
            return true;
        });
        EXPECT_TRUE(own->start()); // the thread may be gone by now, but start() was let out first
        while (alive > 0)
            std::this_thread::yield();
    }
}

TEST(HySmartThreadTest, AKilledThreadIsStopped) {
    Loop loop([](Loop&) {
        pthread_testcancel(); // a blocking call would do, but a sanitizer loses track there
        std::this_thread::yield();
        return true;
    });
    loop.start();
    HyThreadKill(loop.getThreadId());
    waitUntilStopped(loop);
    EXPECT_EQ(loop.getThreadId(), nullptr);
    HyThreadKill(nullptr);
}

TEST(HyThreadTest, RecursiveMutexMayBeLockedAgainAPlainOneMayNot) {
    HyThreadMutex* recursive = HyThreadMutexCreate();
    HyMutex* plain = HyMutexCreate();
    HyThreadMutexLock(recursive);
    EXPECT_TRUE(HyThreadMutexTryLock(recursive));
    HyThreadMutexUnlock(recursive);
    HyMutexLock(plain);
    EXPECT_FALSE(HyMutexTryLock(plain));
    std::thread([&] { EXPECT_FALSE(HyThreadMutexTryLock(recursive)); }).join();
    HyThreadMutexUnlock(recursive);
    HyMutexUnlock(plain);
    std::thread([&] {
        EXPECT_TRUE(HyThreadMutexTryLock(recursive));
        HyThreadMutexUnlock(recursive);
        EXPECT_TRUE(HyMutexTryLock(plain));
        HyMutexUnlock(plain);
    }).join();
    HyThreadMutexDestroy(recursive);
    HyMutexDestroy(plain);
}

TEST(HyThreadTest, ConditionVariablePassesATurn) {
    struct Table {
        HyMutex* mutex = HyMutexCreate();
        HyConditionVariable* changed = HyConditionVariableCreate();
        int turn = 0;
    } table;
    const auto answer = [](void* argument) -> void* {
        auto* t = static_cast<Table*>(argument);
        HyMutexLock(t->mutex);
        for (int i = 1; i < 100; i += 2) {
            while (t->turn != i)
                HyConditionVariableWait(t->changed, t->mutex);
            ++t->turn;
            HyConditionVariableSignal(t->changed);
        }
        HyMutexUnlock(t->mutex);
        return nullptr;
    };
    EXPECT_NE(HyThreadCreate(answer, &table), nullptr);
    HyMutexLock(table.mutex);
    for (int i = 0; i < 100; i += 2) {
        while (table.turn != i)
            HyConditionVariableWait(table.changed, table.mutex);
        ++table.turn;
        HyConditionVariableSignal(table.changed);
    }
    while (table.turn != 100)
        HyConditionVariableWait(table.changed, table.mutex);
    HyMutexUnlock(table.mutex);
    HyMutexLock(table.mutex); // the other has left its last call
    HyMutexUnlock(table.mutex);
    HyConditionVariableDestroy(table.changed);
    HyMutexDestroy(table.mutex);
}

TEST(HyThreadTest, NullGivesAWarning) {
    MessageCapture messages;
    HyThreadMutexLock(nullptr);
    HyThreadMutexUnlock(nullptr);
    EXPECT_FALSE(HyThreadMutexTryLock(nullptr));
    HyMutexLock(nullptr);
    HyMutexUnlock(nullptr);
    EXPECT_FALSE(HyMutexTryLock(nullptr));
    HyConditionVariableSignal(nullptr);
    HyConditionVariableWait(nullptr, nullptr);
    const std::string text = messages.take();
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 8) << text;
    HyThreadMutexDestroy(nullptr);
    HyMutexDestroy(nullptr);
    HyConditionVariableDestroy(nullptr);
    EXPECT_EQ(messages.take(), "");
    EXPECT_GE(HyThreadGetCPUCount(), 1);
}

TEST(HyThreadTest, SleepDropsTheRemainderOfASecond) {
    HyTimer timer(true);
    HyThreadSleep(1500);
    const double slept = timer.stop();
    EXPECT_GE(slept, 0.999); // s; the upper bound of 1.5 would depend on the machine's load
    timer.start();
    HyThreadSleep(20);
    HyThreadMicroSleep(3000);
    EXPECT_GE(timer.stop(), 0.0229);
}

TEST(HyTimerTest, AddsUpRunsAndWarnsOutOfOrder) {
    MessageCapture messages;
    HyTimer timer;
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.getTotalTime(), 0);
    timer.start();
    EXPECT_TRUE(timer.isRunning());
    HyThreadMicroSleep(2000);
    EXPECT_GE(timer.getTime(), 0.0019);
    const double first = timer.stop();
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.getLastTime(), first);
    timer.start();
    const double second = timer.stop();
    EXPECT_DOUBLE_EQ(timer.getTotalTime(), first + second);
    EXPECT_EQ(messages.take(), "");

    HyThreadMicroSleep(2000);
    const double again = timer.stop(); // counted from the last start
    EXPECT_GE(again, second + 0.0019);
    EXPECT_DOUBLE_EQ(timer.getTotalTime(), first + second + again);
    EXPECT_GE(timer.getTime(), again);
    EXPECT_EQ(messages.take(), "HyWarning{0}: HyTimer: Timer is not running.\n"
                               "HyWarning{0}: HyTimer: Timer is not running.\n");
    timer.start();
    timer.start();
    EXPECT_EQ(messages.take(), "HyWarning{0}: HyTimer: Timer already running.\n");
    timer.reset();
    EXPECT_FALSE(timer.isRunning());
    EXPECT_EQ(timer.getLastTime(), 0);
    EXPECT_EQ(timer.getTotalTime(), 0);

    EXPECT_TRUE(HyTimer(true).isRunning());
    const double now = HyTimer::currentTimestamp();
    EXPECT_NEAR(now, static_cast<double>(std::time(nullptr)), 5);
    EXPECT_EQ(HyTimer::difference(5, 3), 2);
    EXPECT_EQ(HyTimer::sum(5, 3), 8);
    EXPECT_EQ(HyTimer::toSeconds(2.5), 2.5);
}

} // namespace
