#pragma once
#include <Kit/KitApi.h>

#include <atomic>

namespace Hy {

/// A thread that can be started, paused and stopped from outside.
class HY_API HyIThread {
public:
    enum eState { kStopped = 0, kRunning = 1, kPaused = 2 };

    /// Starts the thread unless it runs; answers whether it exists.
    virtual bool start() = 0;
    virtual void pause(bool on) = 0;
    virtual void stop() = 0;
    /// Whether the caller is this thread.
    virtual bool isCurrentThread() = 0;
    virtual ~HyIThread() = default;

    [[nodiscard]] eState getThreadState() const { return m_threadState; }

protected:
    HyIThread() = default;
    HyIThread(const HyIThread&) = delete;
    HyIThread& operator=(const HyIThread&) = delete;
    void setThreadState(eState state) { m_threadState = state; }

private:
    std::atomic<eState> m_threadState{kStopped};
};

} // namespace Hy
