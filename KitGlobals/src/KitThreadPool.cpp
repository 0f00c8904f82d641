#include <Kit/KitThreadPool.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <pthread.h>
#include <unistd.h>

namespace {

using WorkUnit = KitThreadPool::WorkUnit;

constexpr unsigned kMaxThreadCount = 1024;
/// Stages of a step follow one another within this time; waking a parked thread costs about as much.
constexpr std::chrono::microseconds kSpinTime{20};
constexpr int kSpinsPerClockRead = 16;

void relaxProcessor() {
#if defined(__x86_64__)
    __builtin_ia32_pause();
#elif defined(__aarch64__)
    asm volatile("yield");
#endif
}

/// Whether polling would keep the only processor from those waited for.
bool isOnlyProcessor() {
    static const bool only = sysconf(_SC_NPROCESSORS_ONLN) < 2;
    return only;
}

/// Polls for a short while.
template <class Condition>
bool spinUntil(Condition condition) {
    if (condition())
        return true;
    if (isOnlyProcessor())
        return false;
    const auto end = std::chrono::steady_clock::now() + kSpinTime;
    do {
        for (int i = 0; i < kSpinsPerClockRead; ++i) {
            relaxProcessor();
            if (condition())
                return true;
        }
    } while (std::chrono::steady_clock::now() < end);
    return false;
}

/// A mutex that is held for moments: who finds it taken tries again before the system puts it to sleep,
/// which would cost more than a unit's work.
class BriefMutex {
public:
    void lock() {
        for (int i = 0; i < kTries && !isOnlyProcessor(); ++i) {
            if (mMutex.try_lock())
                return;
            relaxProcessor();
        }
        mMutex.lock();
    }
    void unlock() { mMutex.unlock(); }

private:
    static constexpr int kTries = 200;
    std::mutex mMutex;
};

/// Ring of units, first in first out, which keeps its capacity. A unit taken out of turn leaves a
/// null behind. Guarded by the pool's mutex, except size().
class UnitRing {
public:
    /// Slots in use; a hint where the mutex is not held.
    [[nodiscard]] std::size_t size() const { return mSize.load(std::memory_order_relaxed); }

    void push(WorkUnit* unit) {
        if (size() == mSlots.size())
            grow();
        slot(size()) = unit;
        setSize(size() + 1);
    }

    [[nodiscard]] WorkUnit* front() {
        while (size() > 0 && !slot(0))
            dropFront();
        return size() > 0 ? slot(0) : nullptr;
    }

    [[nodiscard]] WorkUnit* pop() {
        WorkUnit* unit = front();
        if (unit)
            dropFront();
        return unit;
    }

    [[nodiscard]] WorkUnit* back() {
        while (size() > 0 && !slot(size() - 1))
            setSize(size() - 1);
        return size() > 0 ? slot(size() - 1) : nullptr;
    }

    void dropBack() { setSize(size() - 1); }

    [[nodiscard]] bool remove(const WorkUnit* unit) {
        for (std::size_t i = 0; i < size(); ++i) {
            if (slot(i) == unit) {
                slot(i) = nullptr;
                return true;
            }
        }
        return false;
    }

private:
    WorkUnit*& slot(std::size_t i) { return mSlots[(mHead + i) & (mSlots.size() - 1)]; }
    void setSize(std::size_t size) { mSize.store(size, std::memory_order_relaxed); }
    void dropFront() {
        mHead = (mHead + 1) & (mSlots.size() - 1);
        setSize(size() - 1);
    }
    void grow() {
        std::rotate(mSlots.begin(), mSlots.begin() + static_cast<std::ptrdiff_t>(mHead),
                    mSlots.end());
        mHead = 0;
        mSlots.resize(std::max<std::size_t>(64, 2 * mSlots.size()), nullptr);
    }

    std::vector<WorkUnit*> mSlots; ///< a power of two
    std::size_t mHead = 0;
    std::atomic<std::size_t> mSize{0};
};

WorkUnit* unitOfPointers(const void* first, std::size_t index) {
    return static_cast<WorkUnit* const*>(first)[index];
}

} // namespace

struct KitThreadPool::State {
    /// The units that a thread is running, innermost first.
    struct Running {
        const WorkUnit* unit;
        State* pool; ///< null without a pool
        const Running* outer;
    };
    static thread_local const Running* sRunning;

    KitSemaphore mSemTodo{0}; ///< a permit for each worker that is to leave its park
    BriefMutex mMutex;        ///< guards mTodo, mParked and writes of mStop
    UnitRing mTodo;
    std::size_t mParked = 0; ///< workers that have no permit yet
    std::atomic<bool> mStop{false};
    unsigned mThreadCount = 0;
    std::vector<pthread_t> mWorkers; ///< those that the system could start

    static bool isRunningHere(const WorkUnit* unit);
    static void runHere(State* pool, const Batch& batch, bool abortWhenStopping);
    static void acquireHere(State* pool, WorkUnit* unit);

    void add(const Batch& batch);
    void queue(const Batch& batch, const void* tag, std::size_t keepParked);
    void send(const Batch& batch, std::size_t begin, std::size_t end, const void* tag,
              std::size_t keepParked);
    void help(const void* tag);
    [[nodiscard]] WorkUnit* takeOfBatch(const void* tag);
    [[nodiscard]] bool runQueued(WorkUnit* unit);

    void start(const std::shared_ptr<State>& self, unsigned threadCount);
    void stop();
    [[nodiscard]] WorkUnit* takeOrPark();
    static void* threadMain(void* argument);

    /// Takes workers off the park; wake() lets them go once the mutex is free.
    [[nodiscard]] std::size_t unpark(std::size_t wanted, std::size_t keep = 0) {
        const std::size_t count = mParked > keep ? std::min(wanted, mParked - keep) : 0;
        mParked -= count;
        return count;
    }
    void wake(std::size_t count) {
        for (; count > 0; --count)
            mSemTodo.release();
    }
};

thread_local const KitThreadPool::State::Running* KitThreadPool::State::sRunning = nullptr;

// Work units

WorkUnit::WorkUnit(const WorkUnit&) {}

WorkUnit& WorkUnit::operator=(const WorkUnit&) {
    return *this;
}

void WorkUnit::abort() {}

void WorkUnit::wait() {
    if (State::isRunningHere(this)) {
        KitWarning(0, "KitThreadPool::WorkUnit::wait: a unit must not wait for itself.\n");
        return;
    }
    const State::Running* running = State::sRunning;
    if (running && running->pool && mSemaphore.getValue() == 0 && running->pool->runQueued(this))
        return;
    acquire();
    mSemaphore.release();
}

void WorkUnit::acquire() {
    if (!spinUntil([this] { return mSemaphore.tryAcquire(); }))
        mSemaphore.acquire();
}

void WorkUnit::doProcessAndRelease(State* pool) {
    // An exception or the end of the thread must not leave the waiters behind.
    struct Scope {
        ~Scope() {
            State::sRunning = running.outer;
            semaphore.release(); // the owner may delete the unit from here on
        }
        KitSemaphore& semaphore;
        State::Running running;
    };
    const Scope scope{.semaphore = mSemaphore,
                      .running = {.unit = this, .pool = pool, .outer = State::sRunning}};
    State::sRunning = &scope.running;
    process();
}

void WorkUnit::doAbortAndRelease() {
    abort();
    mSemaphore.release();
}

// Running on the calling thread

bool KitThreadPool::State::isRunningHere(const WorkUnit* unit) {
    for (const Running* running = sRunning; running; running = running->outer) {
        if (running->unit == unit)
            return true;
    }
    return false;
}

void KitThreadPool::State::acquireHere(State* pool, WorkUnit* unit) {
    if (unit->mSemaphore.tryAcquire())
        return;
    // This thread may be the only one that could run it.
    if (sRunning && pool)
        static_cast<void>(pool->runQueued(unit));
    unit->acquire();
}

void KitThreadPool::State::runHere(State* pool, const Batch& batch, bool abortWhenStopping) {
    for (std::size_t i = 0; i < batch.count; ++i) {
        WorkUnit* unit = batch.unit(batch.first, i);
        if (!unit)
            continue;
        if (isRunningHere(unit)) {
            KitWarning(0, "KitThreadPool::add: a unit must not add itself.\n");
            continue;
        }
        acquireHere(pool, unit);
        if (abortWhenStopping && pool && pool->mStop)
            unit->doAbortAndRelease();
        else
            unit->doProcessAndRelease(pool);
    }
}

// Queueing

void KitThreadPool::State::add(const Batch& batch) {
    if (sRunning || mWorkers.empty())
        runHere(this, batch, true);
    else
        queue(batch, nullptr, 0);
}

void KitThreadPool::State::queue(const Batch& batch, const void* tag, std::size_t keepParked) {
    std::size_t begin = 0;
    for (std::size_t i = 0; i < batch.count; ++i) {
        WorkUnit* unit = batch.unit(batch.first, i);
        if (!unit || unit->mSemaphore.tryAcquire())
            continue;
        // The units before it go first: it may be one of them, or another thread may hold it and
        // wait for one of them.
        send(batch, begin, i, tag, 0);
        begin = i;
        unit->acquire();
    }
    send(batch, begin, batch.count, tag, keepParked);
}

void KitThreadPool::State::send(const Batch& batch, std::size_t begin, std::size_t end,
                                const void* tag, std::size_t keepParked) {
    std::size_t woken = 0;
    bool stopping = false;
    {
        const std::scoped_lock lock(mMutex);
        stopping = mStop;
        std::size_t count = 0;
        for (std::size_t i = begin; i < end && !stopping; ++i) {
            if (WorkUnit* unit = batch.unit(batch.first, i)) {
                unit->mBatch = tag;
                mTodo.push(unit);
                ++count;
            }
        }
        woken = unpark(count, keepParked);
    }
    wake(woken);
    for (std::size_t i = begin; i < end && stopping; ++i) {
        if (WorkUnit* unit = batch.unit(batch.first, i))
            unit->doAbortAndRelease();
    }
}

bool KitThreadPool::State::runQueued(WorkUnit* unit) {
    {
        const std::scoped_lock lock(mMutex);
        if (!mTodo.remove(unit))
            return false;
    }
    unit->doProcessAndRelease(this);
    return true;
}

// Helping with a batch

void KitThreadPool::State::help(const void* tag) {
    // A fatal error must not run exit handlers under the workers' feet.
    const bool wasWorker = KitIsWorkerThread();
    KitSetWorkerThread(true);
    while (WorkUnit* unit = takeOfBatch(tag))
        unit->doProcessAndRelease(this);
    KitSetWorkerThread(wasWorker);
}

/// The newest unit, if it is of the batch: workers begin at the other end, so that in stage after stage
/// a thread meets much of what its processor has in its cache. Work of other callers is left to the
/// workers, since it may be long: where that remains, the worker that was kept for the caller's sake
/// gets up.
WorkUnit* KitThreadPool::State::takeOfBatch(const void* tag) {
    std::size_t woken = 0;
    {
        const std::scoped_lock lock(mMutex);
        WorkUnit* newest = mTodo.back();
        if (newest && newest->mBatch == tag) {
            mTodo.dropBack();
            return newest;
        }
        if (newest)
            woken = unpark(1);
    }
    wake(woken);
    return nullptr;
}

// Workers

void KitThreadPool::State::start(const std::shared_ptr<State>& self, unsigned threadCount) {
    mThreadCount = threadCount;
    mWorkers.reserve(threadCount);
    for (unsigned i = 0; i < threadCount; ++i) {
        auto argument = std::make_unique<std::shared_ptr<State>>(self);
        pthread_t worker;
        if (pthread_create(&worker, nullptr, threadMain, argument.get()) != 0) {
            KitWarning(0, "KitThreadPool::KitThreadPool: only %u of %u threads could be started.\n",
                       i, threadCount);
            return;
        }
        static_cast<void>(argument.release()); // the worker deletes it
        mWorkers.push_back(worker);
    }
}

void KitThreadPool::State::stop() {
    std::size_t woken = 0;
    {
        const std::scoped_lock lock(mMutex);
        mStop = true;
        woken = unpark(mParked);
    }
    wake(woken);
    const auto pop = [this] {
        const std::scoped_lock lock(mMutex);
        return mTodo.pop();
    };
    while (WorkUnit* unit = pop())
        unit->doAbortAndRelease();
    for (const pthread_t worker : mWorkers) {
        if (pthread_equal(worker, pthread_self()))
            pthread_detach(worker);
        else
            pthread_join(worker, nullptr);
    }
}

/// The next unit, or null when the pool stops. Polls for a while before it parks.
WorkUnit* KitThreadPool::State::takeOrPark() {
    for (;;) {
        spinUntil([this] { return mTodo.size() > 0 || mStop; });
        {
            const std::scoped_lock lock(mMutex);
            if (mStop)
                return nullptr;
            if (WorkUnit* unit = mTodo.pop())
                return unit;
            ++mParked;
        }
        mSemTodo.acquire();
    }
}

void* KitThreadPool::State::threadMain(void* argument) {
    auto* owner = static_cast<std::shared_ptr<State>*>(argument);
    const std::shared_ptr<State> pool = std::move(*owner);
    delete owner;
    KitSetWorkerThread(true);
    while (WorkUnit* unit = pool->takeOrPark())
        unit->doProcessAndRelease(pool.get());
    return nullptr;
}

// The pool

KitThreadPool::KitThreadPool(unsigned threadCount) : mState(std::make_shared<State>()) {
    if (threadCount > kMaxThreadCount)
        KitWarning(0, "KitThreadPool::KitThreadPool: threadCount must be at most %u.\n",
                   kMaxThreadCount);
    mState->start(mState, std::clamp(threadCount, 1U, kMaxThreadCount));
}

KitThreadPool::~KitThreadPool() {
    mState->stop();
}

unsigned KitThreadPool::getThreadCount() const {
    return mState->mThreadCount;
}

void KitThreadPool::add(WorkUnit* unit) {
    mState->add({.first = &unit, .count = 1, .unit = unitOfPointers});
}

void KitThreadPool::add(const std::vector<WorkUnit*>& units) {
    mState->add({.first = units.data(), .count = units.size(), .unit = unitOfPointers});
}

void KitThreadPool::execute(const Batch& batch) {
    const std::shared_ptr<State> pool = mState; // a unit may destroy this
    if (State::sRunning || batch.count < 2 || pool->mWorkers.size() < 2) {
        State::runHere(pool.get(), batch, false);
        return;
    }
    // The caller stands in for one worker.
    pool->queue(batch, &batch, 1);
    pool->help(&batch);
    for (std::size_t i = 0; i < batch.count; ++i) {
        if (WorkUnit* unit = batch.unit(batch.first, i))
            unit->wait();
    }
}

void KitThreadPool::executeInline(const Batch& batch) {
    State::runHere(nullptr, batch, false);
}
