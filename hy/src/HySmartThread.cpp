#include <Hy/HySmartThread.h>
#include <Kit/KitMessage.h>

#include <exception>

namespace Hy {

template <class Condition>
void HySmartThread::waitFor(std::unique_lock<std::mutex>& lock, Condition condition) {
    ++m_waiting;
    m_changed.wait(lock, condition);
    if (--m_waiting == 0)
        m_changed.notify_all();
}

bool HySmartThread::start() {
    std::unique_lock lock(m_mutex);
    waitFor(lock, [this] { return !m_starting; });
    if (getThreadState() != kStopped)
        return true;
    m_starting = true;
    m_exitThread = false;
    if (!HyThreadCreate(threadEntry, this)) {
        m_starting = false;
        m_exitThread = true;
        m_changed.notify_all();
        return false;
    }
    waitFor(lock, [this] { return !m_starting; });
    return true;
}

void HySmartThread::pause(bool on) {
    std::unique_lock lock(m_mutex);
    if (getThreadState() != (on ? kRunning : kPaused))
        return;
    setThreadState(on ? kPaused : kRunning);
    m_changed.notify_all();
    if (on && !isCurrentThread())
        waitFor(lock, [this] { return !m_inStep || getThreadState() != kPaused; });
}

void HySmartThread::stop() {
    std::unique_lock lock(m_mutex);
    if (getThreadState() == kStopped)
        return;
    m_exitThread = true;
    setThreadState(kRunning);
    m_changed.notify_all();
    if (!isCurrentThread())
        waitFor(lock, [this, before = m_endCount] { return m_endCount != before; });
}

bool HySmartThread::isCurrentThread() {
    return m_thread == HyThreadGetID();
}

HySmartThread::~HySmartThread() {
    HySmartThread::stop();
}

HyThread* HySmartThread::getThreadId() const {
    return m_thread;
}

void HySmartThread::destroy() {
    if (isCurrentThread()) {
        const std::scoped_lock lock(m_mutex);
        m_exitThread = true;
        m_deleteAtEnd = true;
        return;
    }
    stop();
    delete this;
}

// The thread

void* HySmartThread::threadEntry(void* thread) {
    static_cast<HySmartThread*>(thread)->run();
    return nullptr;
}

void HySmartThread::run() {
    // A step may end its thread by itself, and another thread may cancel it.
    struct Finish {
        ~Finish() { thread->finish(); }
        HySmartThread* thread;
    };
    const Finish finishAtEnd{this};
    {
        const std::scoped_lock lock(m_mutex);
        m_thread = HyThreadGetID();
        m_starting = false;
        setThreadState(kRunning);
        m_changed.notify_all();
    }
    while (enterStep())
        leaveStep(guardedStep());
}

bool HySmartThread::enterStep() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return getThreadState() != kPaused || m_exitThread; });
    m_inStep = !m_exitThread;
    return m_inStep;
}

bool HySmartThread::guardedStep() {
    try {
        return runStep();
    } catch (const std::exception& exception) {
        KitWarning(0, "HySmartThread exception thrown in thread: %s\n", exception.what());
    } catch (...) {
        if (!std::current_exception())
            throw; // no exception: the thread is being ended
        KitWarning(0, "HySmartThread unknown exception thrown in thread\n");
    }
    return false;
}

void HySmartThread::leaveStep(bool goOn) {
    const std::scoped_lock lock(m_mutex);
    m_inStep = false;
    if (!goOn)
        m_exitThread = true;
    m_changed.notify_all();
}

void HySmartThread::finish() {
    bool deleteNow = false;
    {
        std::unique_lock lock(m_mutex);
        m_thread = nullptr;
        m_inStep = false;
        m_exitThread = true;
        ++m_endCount;
        setThreadState(kStopped);
        m_changed.notify_all();
        deleteNow = m_deleteAtEnd;
        if (deleteNow)
            m_changed.wait(lock, [this] { return m_waiting == 0; });
    }
    if (deleteNow)
        delete this;
}

} // namespace Hy
