#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitThread.h>

namespace Hy {

/// A thread's identifier in the system, made to look like a pointer; never dereferenced.
using HyThread = KitThread;
/// A mutex of recursive type: a thread may lock it again, and unlocks it as often.
struct HyThreadMutex;
/// A mutex of the system's default type; a condition variable waits on one of these.
using HyMutex = KitThreadMutex;
struct HyConditionVariable;

/// Starts a detached thread, which nobody joins. Null if the system has none to give, or for a null
/// function (with a warning).
HY_API HyThread* HyThreadCreate(void* (*function)(void*), void* argument);
/// Cancels a thread that still runs, at its next cancellation point; nothing for null.
HY_API void HyThreadKill(HyThread* thread);
/// Ends the calling thread.
[[noreturn]] HY_API void HyThreadExit();
[[nodiscard]] HY_API HyThread* HyThreadGetID();
/// Processors online, asked of the system once.
[[nodiscard]] HY_API int HyThreadGetCPUCount();
/// Sleeps up to 1000 ms exactly; beyond that whole seconds, so that 1500 ms sleeps 1 s.
HY_API void HyThreadSleep(unsigned milliseconds);
HY_API void HyThreadMicroSleep(unsigned microseconds);

// Creation takes memory of the allocator table and answers null if there is none. Destroying null
// does nothing; any other operation on null gives a warning, and a try fails.
[[nodiscard]] HY_API HyThreadMutex* HyThreadMutexCreate();
HY_API void HyThreadMutexDestroy(HyThreadMutex* mutex);
HY_API void HyThreadMutexLock(HyThreadMutex* mutex);
HY_API void HyThreadMutexUnlock(HyThreadMutex* mutex);
/// Whether it is locked by this thread now; never blocks.
[[nodiscard]] HY_API bool HyThreadMutexTryLock(HyThreadMutex* mutex);

[[nodiscard]] HY_API HyMutex* HyMutexCreate();
HY_API void HyMutexDestroy(HyMutex* mutex);
HY_API void HyMutexLock(HyMutex* mutex);
HY_API void HyMutexUnlock(HyMutex* mutex);
/// Whether it has become locked by this thread; never blocks.
[[nodiscard]] HY_API bool HyMutexTryLock(HyMutex* mutex);

[[nodiscard]] HY_API HyConditionVariable* HyConditionVariableCreate();
HY_API void HyConditionVariableDestroy(HyConditionVariable* variable);
/// Wakes one of the threads that wait.
HY_API void HyConditionVariableSignal(HyConditionVariable* variable);
/// Unlocks the mutex while it waits and holds it again on return. May return without a signal, so
/// call it in a loop that tests what is waited for.
HY_API void HyConditionVariableWait(HyConditionVariable* variable, HyMutex* mutex);

} // namespace Hy
