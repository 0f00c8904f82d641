#pragma once
#include <Hy/HyIThread.h>
#include <Hy/HyThread.h>
#include <Kit/KitApi.h>

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace Hy {

/// A thread that calls runStep() over and over until it is stopped.
///
/// A derived class stops the thread in its own destructor, or is deleted through destroy(): the
/// thread must not call runStep() on what is left of it. Any thread may call any operation.
class HY_API HySmartThread : public HyIThread {
public:
    HySmartThread() = default;

    /// Returns when the thread runs; true at once if it does already.
    bool start() override;
    /// true holds the thread between two steps, and returns when no step is under way; false lets it
    /// go on. Nothing if it is stopped or already so. A step that pauses its own thread ends first.
    void pause(bool on) override;
    /// Ends the thread, paused or not, and returns when it has left its last step. A step that stops
    /// its own thread goes on to its end, and is the last.
    void stop() override;
    bool isCurrentThread() override;
    /// Stops when all else is gone.
    ~HySmartThread() override;

    /// Null while there is no thread.
    [[nodiscard]] HyThread* getThreadId() const;
    /// Stops the thread and deletes this. Called from its own step, it deletes this when the thread
    /// ends.
    void destroy();

protected:
    /// One turn of the loop. False ends the thread, and so does an exception, which is reported as a
    /// warning and goes no further.
    virtual bool runStep() = 0;

private:
    static void* threadEntry(void* thread);
    void run();
    [[nodiscard]] bool enterStep();
    [[nodiscard]] bool guardedStep();
    void leaveStep(bool goOn);
    void finish();
    /// Waits as one of those whom finish() lets go before it deletes this.
    template <class Condition>
    void waitFor(std::unique_lock<std::mutex>& lock, Condition condition);

    std::mutex m_mutex;                ///< guards what follows, and changes of the state
    std::condition_variable m_changed; ///< of any of it
    bool m_exitThread = true;          ///< the present step is the last
    bool m_starting = false;           ///< the thread is made and does not run yet
    bool m_inStep = false;             ///< runStep() is under way
    bool m_deleteAtEnd = false;        ///< the thread itself has called destroy()
    unsigned m_endCount = 0;           ///< threads that have ended
    int m_waiting = 0;                 ///< callers inside waitFor()
    std::atomic<HyThread*> m_thread{nullptr};
};

} // namespace Hy
