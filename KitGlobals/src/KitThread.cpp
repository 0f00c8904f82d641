#include <Kit/KitThread.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <cstdint>
#include <new>
#include <unistd.h>

namespace {

KitThread* asPointer(pthread_t thread) {
    static_assert(sizeof(pthread_t) == sizeof(KitThread*));
    return reinterpret_cast<KitThread*>(thread);
}

bool refuseNull(const KitThreadMutex* mutex, const char* function) {
    if (!mutex)
        KitWarning(0, "%s: mutex must not be null.\n", function);
    return !mutex;
}

/// usleep() takes no more than this.
constexpr unsigned kLongestMicroSleep = 1000; // ms

} // namespace

KitThread* KitThreadCreate(void* (*function)(void*), void* argument) {
    if (!function) {
        KitWarning(0, "KitThreadCreate: function must not be null.\n");
        return nullptr;
    }
    pthread_t thread;
    if (pthread_create(&thread, nullptr, function, argument) != 0)
        return nullptr;
    pthread_detach(thread);
    return asPointer(thread);
}

void KitThreadExit() {
    pthread_exit(nullptr);
}

KitThread* KitThreadGetID() {
    return asPointer(pthread_self());
}

void KitThreadSleep(unsigned milliseconds) {
    if (milliseconds <= kLongestMicroSleep)
        usleep(milliseconds * 1000);
    else
        sleep(milliseconds / 1000);
}

KitThreadMutex* KitThreadMutexCreate() {
    void* memory = KitMemoryAPI_create(sizeof(KitThreadMutex));
    if (!memory)
        return nullptr;
    auto* mutex = new (memory) KitThreadMutex;
    pthread_mutex_init(&mutex->handle, nullptr);
    return mutex;
}

void KitThreadMutexDestroy(KitThreadMutex* mutex) {
    if (!mutex)
        return;
    pthread_mutex_destroy(&mutex->handle);
    KitMemoryAPI_destroy(mutex);
}

void KitThreadMutexLock(KitThreadMutex* mutex) {
    if (!refuseNull(mutex, "KitThreadMutexLock"))
        pthread_mutex_lock(&mutex->handle);
}

void KitThreadMutexUnlock(KitThreadMutex* mutex) {
    if (!refuseNull(mutex, "KitThreadMutexUnlock"))
        pthread_mutex_unlock(&mutex->handle);
}

bool KitThreadMutexTryLock(KitThreadMutex* mutex) {
    return !refuseNull(mutex, "KitThreadMutexTryLock") &&
           pthread_mutex_trylock(&mutex->handle) == 0;
}
