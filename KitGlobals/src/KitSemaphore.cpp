#include <Kit/KitSemaphore.h>
#include <Kit/KitMessage.h>

#include <cerrno>
#include <cstdio>

namespace {

void reportFailure(const char* call, const char* message) {
    std::perror(call);
    KitWarning(0, "%s", message);
}

} // namespace

KitSemaphore::KitSemaphore(unsigned value) {
    if (sem_init(&mImpl, 0, value) != 0)
        reportFailure("sem_init", "HySemaphore: sem_init failed\n");
}

KitSemaphore::~KitSemaphore() {
    sem_destroy(&mImpl);
}

void KitSemaphore::acquire() {
    while (sem_wait(&mImpl) != 0) {
        if (errno != EINTR) {
            reportFailure("sem_wait", "HySemaphore::acquire(): sem_wait failed\n");
            return;
        }
    }
}

bool KitSemaphore::tryAcquire() {
    while (sem_trywait(&mImpl) != 0) {
        if (errno != EINTR)
            return false;
    }
    return true;
}

void KitSemaphore::release() {
    if (sem_post(&mImpl) != 0)
        reportFailure("sem_post", "HySempahore::release(): sem_post failed\n");
}

int KitSemaphore::getValue() const {
    int value = 0;
    sem_getvalue(&mImpl, &value);
    return value;
}
