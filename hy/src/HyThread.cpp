#include <Hy/HyThread.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <new>
#include <pthread.h>
#include <unistd.h>

namespace Hy {

struct HyThreadMutex {
    pthread_mutex_t handle;
};

struct HyConditionVariable {
    pthread_cond_t handle;
};

namespace {

bool refuseNull(const void* object, const char* function) {
    if (!object)
        KitWarning(0, "%s: argument must not be null.\n", function);
    return !object;
}

template <class T>
T* allocate() {
    void* memory = KitMemoryAPI_create(sizeof(T));
    return memory ? new (memory) T : nullptr;
}

} // namespace

HyThread* HyThreadCreate(void* (*function)(void*), void* argument) {
    return KitThreadCreate(function, argument);
}

void HyThreadKill(HyThread* thread) {
    if (thread)
        pthread_cancel(reinterpret_cast<pthread_t>(thread));
}

void HyThreadExit() {
    KitThreadExit();
}

HyThread* HyThreadGetID() {
    return KitThreadGetID();
}

int HyThreadGetCPUCount() {
    static const int count = std::max(1, static_cast<int>(sysconf(_SC_NPROCESSORS_ONLN)));
    return count;
}

void HyThreadSleep(unsigned milliseconds) {
    KitThreadSleep(milliseconds);
}

void HyThreadMicroSleep(unsigned microseconds) {
    usleep(microseconds);
}

HyThreadMutex* HyThreadMutexCreate() {
    auto* mutex = allocate<HyThreadMutex>();
    if (!mutex)
        return nullptr;
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&mutex->handle, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return mutex;
}

void HyThreadMutexDestroy(HyThreadMutex* mutex) {
    if (!mutex)
        return;
    pthread_mutex_destroy(&mutex->handle);
    KitMemoryAPI_destroy(mutex);
}

void HyThreadMutexLock(HyThreadMutex* mutex) {
    if (!refuseNull(mutex, "HyThreadMutexLock"))
        pthread_mutex_lock(&mutex->handle);
}

void HyThreadMutexUnlock(HyThreadMutex* mutex) {
    if (!refuseNull(mutex, "HyThreadMutexUnlock"))
        pthread_mutex_unlock(&mutex->handle);
}

bool HyThreadMutexTryLock(HyThreadMutex* mutex) {
    return !refuseNull(mutex, "HyThreadMutexTryLock") && pthread_mutex_trylock(&mutex->handle) == 0;
}

HyMutex* HyMutexCreate() {
    return KitThreadMutexCreate();
}

void HyMutexDestroy(HyMutex* mutex) {
    KitThreadMutexDestroy(mutex);
}

void HyMutexLock(HyMutex* mutex) {
    KitThreadMutexLock(mutex);
}

void HyMutexUnlock(HyMutex* mutex) {
    KitThreadMutexUnlock(mutex);
}

bool HyMutexTryLock(HyMutex* mutex) {
    return KitThreadMutexTryLock(mutex);
}

HyConditionVariable* HyConditionVariableCreate() {
    auto* variable = allocate<HyConditionVariable>();
    if (variable)
        pthread_cond_init(&variable->handle, nullptr);
    return variable;
}

void HyConditionVariableDestroy(HyConditionVariable* variable) {
    if (!variable)
        return;
    pthread_cond_destroy(&variable->handle);
    KitMemoryAPI_destroy(variable);
}

void HyConditionVariableSignal(HyConditionVariable* variable) {
    if (!refuseNull(variable, "HyConditionVariableSignal"))
        pthread_cond_signal(&variable->handle);
}

void HyConditionVariableWait(HyConditionVariable* variable, HyMutex* mutex) {
    if (refuseNull(variable, "HyConditionVariableWait") ||
        refuseNull(mutex, "HyConditionVariableWait"))
        return;
    pthread_cond_wait(&variable->handle, &mutex->handle);
}

} // namespace Hy
