#pragma once
#include <Kit/KitApi.h>

#include <semaphore.h>

/// A counting semaphore of POSIX, private to the process.
///
/// A failure of the system is reported as a warning and printed through perror(); the call returns.
class HY_API KitSemaphore {
public:
    /// Starts with `value` permits.
    explicit KitSemaphore(unsigned value = 0);
    ~KitSemaphore();
    KitSemaphore(const KitSemaphore&) = delete;
    KitSemaphore& operator=(const KitSemaphore&) = delete;

    /// Takes a permit and blocks until there is one. Goes on after an interruption by a signal.
    void acquire();
    /// Takes a permit if there is one, and says whether it did.
    [[nodiscard]] bool tryAcquire();
    /// Gives a permit back. After this the owner may destroy the semaphore as soon as it has taken
    /// that permit.
    void release();
    /// Permits at the moment of asking.
    [[nodiscard]] int getValue() const;

private:
    mutable sem_t mImpl;
};
