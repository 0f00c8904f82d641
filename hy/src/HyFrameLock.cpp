#include <Hy/HyFrameLock.h>

#include <Hy/HyMessage.h>
#include <Hy/HyThread.h>

#include <algorithm>
#include <cmath>

namespace Hy {
namespace {

/// Limits that differ by less leave the step constant, s.
constexpr HyReal kMinStepRange = 1e-5F;
/// A shorter rest of a period is not worth a sleep, s.
constexpr HyReal kMinWait = 1e-9F;
/// Longest single sleep, s, so that its microseconds fit an integer.
constexpr HyReal kMaxWait = 1000;

} // namespace

void HyFrameLock::init(HyReal timeStep, HyReal minSleepTime, HyReal minTimeStep,
                       HyReal maxTimeStep) {
    const bool finite = std::isfinite(timeStep) && std::isfinite(minSleepTime) &&
                        std::isfinite(minTimeStep) && std::isfinite(maxTimeStep);
    const bool inside = minTimeStep <= timeStep && timeStep <= maxTimeStep;
    if (!finite || (minTimeStep != maxTimeStep && !inside))
        HyWarning(0, "HyFrameLock::init : bad frame rate consistency.\n");
    if (!finite)
        return;
    m_TimeStep = timeStep;
    m_MinSleepTime = minSleepTime;
    m_MinTimeStep = minTimeStep;
    m_MaxTimeStep = maxTimeStep;
    m_OverAllTime = 0;
}

HyReal HyFrameLock::doFrameLock(HyReal period) {
    if (!std::isfinite(period)) {
        HyWarning(0, "HyFrameLock::doFrameLock: period must be finite.\n");
        return m_TimeStep;
    }
    m_OverAllTime = m_Timer->isRunning() ? m_Timer->stop() : 0;
    const HyReal wait = period - m_OverAllTime + m_FrameTimeLockRemains;
    if (wait > kMinWait)
        sleepFor(wait);
    else
        m_FrameTimeLockRemains = 0;
    if (std::abs(m_MaxTimeStep - m_MinTimeStep) >= kMinStepRange)
        followDuration(period, wait);
    m_Timer->start();
    return m_TimeStep;
}

void HyFrameLock::sleepFor(HyReal seconds) {
    m_Timer->start();
    HyThreadMicroSleep(static_cast<unsigned>(std::min(seconds, kMaxWait) * 1e6));
    m_FrameTimeLockRemains = seconds - m_Timer->stop();
}

// The step follows the time that the turn needed: shorter than the period by what it had to spare
// beyond the wanted sleep, longer by what it lacked.
void HyFrameLock::followDuration(HyReal period, HyReal spare) {
    HyReal duration = period;
    if (spare > m_MinSleepTime)
        duration = std::max(period - (spare - m_MinSleepTime), m_MinTimeStep);
    else if (m_MinSleepTime > spare)
        duration = std::min(period + (m_MinSleepTime - spare), m_MaxTimeStep);
    m_TimeStep = m_FilterTimeStep * duration + (1 - m_FilterTimeStep) * m_TimeStep;
}

} // namespace Hy
