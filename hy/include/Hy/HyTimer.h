#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

namespace Hy {

/// A stopwatch on the system's real-time clock: a change of the system's time shows up in readings.
class HY_API HyTimer {
public:
    explicit HyTimer(bool startNow = false);

    /// Stops, and sets all readings to 0.
    void reset();
    /// Starts now, with a warning if it is running.
    void start();
    /// Adds the time since start() to the total and returns it, s. Not running: a warning, and the
    /// time since the last start is added all the same.
    KitReal stop();
    /// Length of the last run, s.
    [[nodiscard]] KitReal getLastTime() const;
    /// Length of all runs since the last reset, s.
    [[nodiscard]] KitReal getTotalTime() const;
    /// Time since start(), s, with a warning if it is not running.
    [[nodiscard]] KitReal getTime() const;
    [[nodiscard]] bool isRunning() const;

    /// Seconds since the epoch.
    [[nodiscard]] static KitReal currentTimestamp();
    /// a - b
    [[nodiscard]] static KitReal difference(KitReal a, KitReal b);
    [[nodiscard]] static KitReal sum(KitReal a, KitReal b);
    /// Timestamps are seconds.
    [[nodiscard]] static KitReal toSeconds(KitReal t);

private:
    KitReal mStarted = 0; ///< s since the epoch
    KitReal mStopped = 0; ///< s since the epoch
    KitReal mTotal = 0;   ///< s
    bool mRunning = false;
};

} // namespace Hy
