#pragma once
#include <Hy/HyTimer.h>
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

#include <memory>

namespace Hy {

/// Paces a host's loop in real time and proposes the time step of its next frame.
///
/// Each turn of the loop calls doFrameLock() once and steps by what it answers. The call sleeps for
/// what is left of the turn's period. Where least and greatest step differ, the answer follows the
/// time that a turn really takes, through a low-pass filter.
class HY_API HyFrameLock {
public:
    enum TimeStepStatusEnum {
        kTimeStepInBound,
        kTimeStepOverEstimated,
        kTimeStepUnderEstimated,
    };

    HyFrameLock() = default;
    HyFrameLock(const HyFrameLock&) = delete;
    HyFrameLock& operator=(const HyFrameLock&) = delete;

    /// Sets the limits. A step outside of them is warned of and stored all the same; a value that is
    /// not finite is warned of and nothing is stored.
    /// @param timeStep step to begin with, s
    /// @param minSleepTime time that a turn should have to spare, s; with less, the step grows
    /// @param minTimeStep,maxTimeStep limits of the step, s; equal ones keep it constant
    void init(HyReal timeStep, HyReal minSleepTime, HyReal minTimeStep, HyReal maxTimeStep);

    /// Sleeps for the rest of the period that began with the last call.
    /// @param period wanted length of a turn, s; not finite: a warning, no sleep
    /// @return time step for the next turn, s
    HyReal doFrameLock(HyReal period);

private:
    void sleepFor(HyReal seconds);
    void followDuration(HyReal period, HyReal spare);

    HyReal m_FrameTimeLockRemains = 0; ///< error of the last sleep, s
    HyReal m_MinSleepTime = 0.002F;    ///< s
    HyReal m_MinTimeStep = 1.0F / 60;  ///< s
    HyReal m_MaxTimeStep = 0.05F;      ///< s
    HyReal m_TimeStep = 1.0 / 60;      ///< s
    HyReal m_OverAllTime = 0;          ///< time since the last call, s
    HyReal m_FilterTimeStep = 0.01F;   ///< weight of a new duration
    std::unique_ptr<HyTimer> m_Timer = std::make_unique<HyTimer>(false);
};

} // namespace Hy
