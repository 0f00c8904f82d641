#include <Hy/HyTimer.h>
#include <Kit/KitMessage.h>

#include <ctime>

namespace Hy {

namespace {

void warnUnlessRunning(bool running) {
    if (!running)
        KitWarning(0, "HyTimer: Timer is not running.\n");
}

} // namespace

HyTimer::HyTimer(bool startNow) {
    if (startNow)
        start();
}

void HyTimer::reset() {
    *this = HyTimer();
}

void HyTimer::start() {
    if (mRunning)
        KitWarning(0, "HyTimer: Timer already running.\n");
    mRunning = true;
    mStarted = currentTimestamp();
}

KitReal HyTimer::stop() {
    mStopped = currentTimestamp();
    warnUnlessRunning(mRunning);
    mRunning = false;
    mTotal += getLastTime();
    return getLastTime();
}

KitReal HyTimer::getLastTime() const {
    return mStopped - mStarted;
}

KitReal HyTimer::getTotalTime() const {
    return mTotal;
}

KitReal HyTimer::getTime() const {
    warnUnlessRunning(mRunning);
    return currentTimestamp() - mStarted;
}

bool HyTimer::isRunning() const {
    return mRunning;
}

KitReal HyTimer::currentTimestamp() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    constexpr KitReal kNanosecond = 1e-9;
    return static_cast<KitReal>(now.tv_sec) + static_cast<KitReal>(now.tv_nsec) * kNanosecond;
}

KitReal HyTimer::difference(KitReal a, KitReal b) {
    return a - b;
}

KitReal HyTimer::sum(KitReal a, KitReal b) {
    return a + b;
}

KitReal HyTimer::toSeconds(KitReal t) {
    return t;
}

} // namespace Hy
