#include "FrameFixture.h"

#include <Hy/HyFrameLock.h>
#include <Hy/HyThread.h>

#include <limits>

using namespace Hy;

namespace {

class HyFrameLockTest : public FrameFixture {
protected:
    HyFrameLock lock;
};

} // namespace

TEST_F(HyFrameLockTest, PacesTheLoop) {
    constexpr HyReal kPeriod = 0.02; // s
    const HyReal start = HyTimer::currentTimestamp();
    lock.init(0.01, 0.002, 0.01, 0.01);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(lock.doFrameLock(kPeriod), 0.01) << "equal limits keep the step";
    EXPECT_GE(HyTimer::currentTimestamp() - start, 0.95 * 3 * kPeriod);
}

// A turn needs what is not slept away beyond the wanted minimum: period − (spare − minimum).
TEST_F(HyFrameLockTest, StepFollowsTheLoad) {
    constexpr HyReal kFilter = 0.01F;
    // The first turn has its whole period to spare: the wanted step is the minimum of sleep.
    lock.init(0.02, 0.005, 0.001, 0.1);
    const HyReal relaxed = lock.doFrameLock(0.02);
    EXPECT_NEAR(relaxed, kFilter * 0.005 + (1 - kFilter) * 0.02, 1e-15);
    // Limits hold at both ends.
    lock.init(0.02, 0.005, 0.015, 0.1);
    HyThreadSleep(20);
    EXPECT_GE(lock.doFrameLock(0.01), kFilter * 0.015 + (1 - kFilter) * 0.02);
    lock.init(0.02, 0.005, 0.01, 0.025);
    HyThreadSleep(60);
    EXPECT_NEAR(lock.doFrameLock(0.02), kFilter * 0.025 + (1 - kFilter) * 0.02, 1e-15);
}

TEST_F(HyFrameLockTest, InconsistentLimitsAreWarnedOf) {
    lock.init(0.2, 0.001, 0.01, 0.1);
    EXPECT_TRUE(warned("HyFrameLock::init : bad frame rate consistency.\n"));
    EXPECT_LT(lock.doFrameLock(0), 0.2) << "stored all the same";
    lock.init(0.2, 0.001, 0.1, 0.1);
    EXPECT_TRUE(warnings().empty()) << "equal limits fit any step";
    lock.init(std::numeric_limits<HyReal>::quiet_NaN(), 0, 0, 0);
    EXPECT_TRUE(warned("HyFrameLock::init : bad frame rate consistency.\n"));
    EXPECT_EQ(lock.doFrameLock(std::numeric_limits<HyReal>::infinity()), 0.2);
    EXPECT_TRUE(warned("HyFrameLock::doFrameLock: "));
}
