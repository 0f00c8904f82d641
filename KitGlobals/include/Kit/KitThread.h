#pragma once
#include <Kit/KitApi.h>

#include <pthread.h>

/// A thread's identifier in the system, made to look like a pointer; never dereferenced.
struct KitThread;
/// A mutex of the system's default type: locking it twice from one thread blocks for ever.
struct KitThreadMutex {
    pthread_mutex_t handle;
};

/// Starts a detached thread, which nobody joins. Null if the system has none to give, or for a null
/// function (with a warning).
HY_API KitThread* KitThreadCreate(void* (*function)(void*), void* argument);
/// Ends the calling thread.
[[noreturn]] HY_API void KitThreadExit();
[[nodiscard]] HY_API KitThread* KitThreadGetID();
/// Sleeps up to 1000 ms exactly; beyond that whole seconds, so that 1500 ms sleeps 1 s.
HY_API void KitThreadSleep(unsigned milliseconds);

/// A mutex in memory of the allocator table; null if there is none.
[[nodiscard]] HY_API KitThreadMutex* KitThreadMutexCreate();
/// Nothing for null.
HY_API void KitThreadMutexDestroy(KitThreadMutex* mutex);
// A null mutex gives a warning and nothing else.
HY_API void KitThreadMutexLock(KitThreadMutex* mutex);
HY_API void KitThreadMutexUnlock(KitThreadMutex* mutex);
/// Whether it has become locked by this thread; never blocks.
[[nodiscard]] HY_API bool KitThreadMutexTryLock(KitThreadMutex* mutex);
