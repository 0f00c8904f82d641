#include "FrameFixture.h"

#include <Hy/HyThread.h>

#include <cmath>
#include <limits>

using namespace Hy;
using Option = HyFrameStepperOption;

namespace {

/// A universe whose times of impact come from a script.
class ScriptedUniverse : public HyUniverse {
public:
    ScriptedUniverse() : HyUniverse(2, 2, nullptr) {}
    [[nodiscard]] HyReal getCollisionSafeTime() const override { return safeTime; }
    HyReal safeTime = 0;
};

class RecordingCheck : public Option::CheckSubscriber {
public:
    explicit RecordingCheck(StepLog& stepLog) : log(stepLog) {}
    bool preUpdateForceCheck() override { return add("pre"); }
    bool postUpdateForceCheck() override { return add("post"); }
    bool postStepCheck() override { return add("end"); }
    void timeOfImpactEvent(HyReal time) override { log.add("T", time); }
    std::function<void()> onCall;
    StepLog& log;

private:
    bool add(const char* word) {
        log.add(word);
        if (onCall)
            onCall();
        return true;
    }
};

class HyFrameStepTest : public FrameFixture {
protected:
    void SetUp() override {
        FrameFixture::SetUp();
        stepper = new RecordingStepper(log);
        frame->addStepper(stepper);
    }
    [[nodiscard]] Option& option() { return frame->getStepperOption(); }
    void check() { option().getCheckSubscriberArray().push_back(&recordingCheck); }
    /// Turns impacts on; the flag is noted at each detection, "c" on, "-" off.
    void detectImpacts(HyReal safeTime, unsigned maximum) {
        auto* universe = new ScriptedUniverse;
        universe->safeTime = safeTime;
        frame->addStepper(universe);
        frame->setContinuousCollisionDetection(true);
        frame->setContinuousCollisionDetectionMaxSubStepCount(maximum);
        stepper->onPhase = [this](const std::string& phase) {
            if (phase == "D")
                flags += frame->getContinuousCollisionDetection() ? 'c' : '-';
        };
    }
    /// Aborts the step in its nth solve.
    void abortInSolve(int n) {
        stepper->onPhase = [this, n, old = stepper->onPhase](const std::string& phase) {
            if (old)
                old(phase);
            if (phase == "S" && ++solves == n)
                frame->setStepAborted();
        };
    }
    [[nodiscard]] std::string logOfStep() {
        log.take();
        frame->step();
        return log.take();
    }

    StepLog log;
    RecordingStepper* stepper = nullptr;
    RecordingCheck recordingCheck{log};
    std::string flags;
    int solves = 0;
};

} // namespace

TEST_F(HyFrameStepTest, EachPhaseHasItsOwnGuard) {
    struct Case {
        Option::StepperModeEnum mode;
        HyReal timeStep;
        const char* log;
    };
    const Case cases[] = {
        {Option::kModeNormal, 1, "P D(1) K(1) S(1) A(1) Q"},
        {Option::kModeCheck, 1, "P D(1) K(1) pre S(1) post A(1) Q end"},
        {Option::kModeSafe, 1, "P D(1) K(1) pre S(1) post A(1) Q end"},
        {Option::kModeDoNothing, 1, "P K(1) Q"},
        {Option::kModeCollisionOnly, 1, "P D(1) K(1) Q"},
        {Option::kModeCollisionAndDynamics, 1, "P D(1) K(1) pre S(1) post Q end"},
        {Option::kModeDynamicsAndIntegrationOnly, 1, "P K(1) pre S(1) post A(1) Q end"},
        {Option::kModeNormal, 0, "P D(0) K(0) Q"},
        {Option::kModeSafe, 0, "P D(0) K(0) Q end"},
    };
    check();
    for (const Case& c : cases) {
        option().setStepperMode(c.mode);
        frame->setTimeStep(c.timeStep);
        EXPECT_EQ(logOfStep(), c.log) << "mode " << c.mode << ", step " << c.timeStep;
    }
    EXPECT_EQ(frame->getFrameNumber(), std::size(cases));
}

TEST_F(HyFrameStepTest, ImpactsCutTheStep) {
    struct Case {
        const char* name;
        HyReal safe;
        unsigned maximum;
        const char* log;
        const char* flags; // of each detection
    };
    const Case cases[] = {
        {"cut twice", 0.3, 2,
         "P D(1) T(0.3) K(0.3) S(0.3) A(0.3) D(0.7) T(0.6) K(0.3) R S(0.3) A(0.3) "
         "D(0.4) K(0.4) R S(0.4) A(0.4) Q",
         "cc-"},
        {"no cut allowed", 0.3, 0, "P D(1) K(1) S(1) A(1) Q", "-"},
        {"nothing safe", 0, 10, "P D(1) K(1) S(1) A(1) Q", "c"},
        {"safe throughout", 1, 10, "P D(1) K(1) S(1) A(1) Q", "c"},
        {"a rest of 1% is dropped", 0.995, 10, "P D(1) T(0.995) K(0.995) S(0.995) A(0.995) Q", "c"},
        {"half and half", 0.5, 10,
         "P D(1) T(0.5) K(0.5) S(0.5) A(0.5) D(0.5) K(0.5) R S(0.5) A(0.5) Q", "cc"},
    };
    check();
    option().setStepperMode(Option::kModeNormal);
    detectImpacts(0, 0);
    auto* universe = static_cast<ScriptedUniverse*>(frame->getUniverse(0));
    for (const Case& c : cases) {
        universe->safeTime = c.safe;
        frame->setContinuousCollisionDetectionMaxSubStepCount(c.maximum);
        flags.clear();
        EXPECT_EQ(logOfStep(), c.log) << c.name;
        EXPECT_EQ(flags, c.flags) << c.name;
        EXPECT_EQ(frame->getTimeStep(), 1) << c.name;
        EXPECT_TRUE(frame->getContinuousCollisionDetection()) << c.name;
    }
}

TEST_F(HyFrameStepTest, SubstepsKeepAutomaticStepAndSafeTimeNeedsCollision) {
    frame->setAutomaticTimeStep(true, 1, 1, 1);
    detectImpacts(0.5, 10);
    frame->step();
    EXPECT_TRUE(frame->getAutomaticTimeStep());
    EXPECT_EQ(frame->getTimeStep(), 1);

    option().setUpdateActionCollision(false);
    EXPECT_EQ(frame->getCollisionSafeTime(), 1);
    EXPECT_EQ(logOfStep(), "P K(1) S(1) A(1) Q");
}

TEST_F(HyFrameStepTest, RecoveryTakesTheFailedStepBackAndRepeatsItInParts) {
    check();
    option().setStepperMode(Option::kModeSafe);
    option().setRecoverySubstepCount(2);
    abortInSolve(1);
    const std::string part = " D(0.5) K(0.5) R S(0.5) A(0.5)";
    EXPECT_EQ(logOfStep(), "P D(1) K(1) pre S(1) post K(-1) V" + part + part + " Q end");
    EXPECT_TRUE(warned("substepping\n"));
    EXPECT_EQ(option().getStepperMode(), Option::kModeSafe);
    EXPECT_TRUE(option().getUpdateActionCheck());
    EXPECT_FALSE(frame->getStepAborted());
    EXPECT_EQ(logOfStep(), "P D(1) K(1) pre S(1) post A(1) Q end");
}

TEST_F(HyFrameStepTest, RecoveryRepeatsWhatImpactsHaveLeftOfTheStep) {
    struct Case {
        const char* name;
        HyReal safe;
        int abortIn, parts;
        std::string log; // from the failed solve on
        HyReal part;
    };
    const Case cases[] = {
        // The third substep has failed: what remained before it, 0.5, is simulated again.
        {"third substep", 0.25, 3, 10, "S(0.25) K(-0.25) V", 0.05},
        // A tenth of the remaining 0.05 would be shorter than a hundredth of the step.
        {"short rest", 0.95, 2, 5, "S(0.05) K(-0.05) V", 0.01},
    };
    option().setStepperMode(Option::kModeSafe);
    detectImpacts(0, 10);
    auto* universe = static_cast<ScriptedUniverse*>(frame->getUniverse(0));
    const auto flagOfDetection = stepper->onPhase;
    for (const Case& c : cases) {
        universe->safeTime = c.safe;
        stepper->onPhase = flagOfDetection;
        solves = 0;
        flags.clear();
        abortInSolve(c.abortIn);
        std::ostringstream expected;
        expected << c.log;
        for (int i = 0; i < c.parts; ++i)
            expected << " D(" << c.part << ") K(" << c.part << ") R S(" << c.part << ") A("
                     << c.part << ')';
        expected << " Q";
        const std::string whole = logOfStep();
        const std::string recovery =
            whole.substr(std::min(whole.size(), whole.find("V") - (c.log.size() - 1)));
        EXPECT_EQ(recovery, expected.str()) << c.name << ": " << whole;
        const auto parts = static_cast<std::size_t>(c.parts);
        EXPECT_EQ(flags.substr(flags.size() - parts), std::string(parts, '-')) << c.name;
        EXPECT_EQ(frame->getTimeStep(), 1) << c.name;
        EXPECT_TRUE(frame->getContinuousCollisionDetection()) << c.name;
    }
}

TEST_F(HyFrameStepTest, WithoutRecoveryAnAbortStopsIntegration) {
    option().setStepperMode(Option::kModeCheck);
    abortInSolve(1);
    EXPECT_EQ(logOfStep(), "P D(1) K(1) S(1) Q");
    EXPECT_TRUE(warned("HyFrame::step: Stability problem detected in stepper mode switched to "
                       "kModeCollisionAndDynamics\n"));
    EXPECT_EQ(option().getStepperMode(), Option::kModeCollisionAndDynamics);
    EXPECT_EQ(logOfStep(), "P D(1) K(1) S(1) Q");
    EXPECT_FALSE(frame->getStepAborted());
}

TEST_F(HyFrameStepTest, AbortInDetectionSkipsTheRestOfTheStep) {
    stepper->onPhase = [this](const std::string& phase) {
        if (phase == "D")
            frame->setStepAborted();
    };
    EXPECT_EQ(logOfStep(), "P D(1) K(1) Q");
}

TEST_F(HyFrameStepTest, RecoveryInManualModeLeavesTheChecksOff) {
    option().setStepperMode(Option::kModeSafe);
    option().setUpdateActionDynamics(true);
    abortInSolve(1);
    frame->step();
    EXPECT_EQ(option().getStepperMode(), Option::kModeManual);
    EXPECT_FALSE(option().getUpdateActionCheck());
    EXPECT_TRUE(option().getUpdateActionRecovery());
}

TEST_F(HyFrameStepTest, AStepInsideAStepIsRefused) {
    stepper->onPhase = [this](const std::string& phase) {
        if (phase != "S")
            return;
        frame->step();
        frame->stepPs();
        HyFrame::release();
        frame->setTimeStep(-1);
    };
    EXPECT_EQ(logOfStep(), "P D(1) K(1) S(1) A(1) Q");
    ASSERT_EQ(HyFrame::currentInstance(), frame);
    ASSERT_EQ(warnings().size(), 4U);
    EXPECT_EQ(warnings()[0], "HyFrame::step: must not be called inside a step.\n");
    EXPECT_EQ(warnings()[2], "HyFrame::release: must not be called inside a step.\n");
    EXPECT_FALSE(frame->getAutomaticTimeStep());
    EXPECT_EQ(frame->getTimeStep(), 1);
    EXPECT_EQ(frame->getFrameNumber(), 1U);
}

TEST_F(HyFrameStepTest, PlainPipelineRunsInItsOwnOrderWithoutGuards) {
    frame->removeStepper(stepper);
    delete stepper;
    auto* late = new RecordingStepper(log, 9, "9");
    auto* early = new RecordingStepper(log, 1, "1");
    frame->addPsStepper(late);
    frame->addPsStepper(early);
    frame->addPsStepper(late);
    EXPECT_EQ(frame->getPsStepperCount(), 2);
    EXPECT_EQ(frame->getPsStepper(0), late);
    EXPECT_EQ(frame->getPsStepper(2), nullptr);
    option().setStepperMode(Option::kModeDoNothing);
    frame->stepPs();
    EXPECT_EQ(log.take(), "P9 P1 D9(1) D1(1) K9(1) K1(1) S9(1) S1(1) A9(1) A1(1) Q9 Q1");
    EXPECT_EQ(logOfStep(), "P1 P9 K1(1) K9(1) Q1 Q9");
    const HyReal sum = late->getTimings().getTotal() + early->getTimings().getTotal();
    EXPECT_NEAR(frame->getTimings().getTotal(), sum, 1e-12);
    EXPECT_TRUE(frame->removePsStepper(late));
    EXPECT_FALSE(frame->removePsStepper(late));
    delete late;
    EXPECT_EQ(frame->getStepperCount(), 1);
}

TEST_F(HyFrameStepTest, SteppersComeAndGoDuringAStep) {
    frame->addStepper(new RecordingStepper(log, 7, "7"));
    HyStepperBase* victim = frame->getStepper(1);
    RecordingStepper* added = nullptr;
    stepper->onPhase = [&](const std::string& phase) {
        if (phase == "K") {
            delete std::exchange(victim, nullptr);
            if (!added)
                frame->addStepper(added = new RecordingStepper(log, 1, "1"));
        }
    };
    EXPECT_EQ(logOfStep(), "P P7 D(1) D7(1) K(1) S(1) A(1) Q");
    EXPECT_EQ(logOfStep(), "P1 P D1(1) D(1) K1(1) K(1) S1(1) S(1) A1(1) A(1) Q1 Q");
}

TEST_F(HyFrameStepTest, ChecksComeAndGoWhileTheyAreCalled) {
    StepLog otherLog;
    RecordingCheck other(otherLog), late(otherLog);
    check();
    option().getCheckSubscriberArray().push_back(&other);
    option().setStepperMode(Option::kModeCheck);
    recordingCheck.onCall = [&] {
        option().getCheckSubscriberArray().clear();
        option().getCheckSubscriberArray().push_back(&late);
    };
    EXPECT_EQ(logOfStep(), "P D(1) K(1) pre S(1) A(1) Q");
    EXPECT_EQ(otherLog.take(), "post end"); // the late one; the other was never called
}

TEST_F(HyFrameStepTest, TimeStepRefusesWhatItCannotBe) {
    constexpr HyReal kNan = std::numeric_limits<HyReal>::quiet_NaN();
    constexpr HyReal kInfinity = std::numeric_limits<HyReal>::infinity();
    for (const HyReal bad : {kNan, kInfinity, -kInfinity}) {
        frame->setTimeStep(bad);
        EXPECT_TRUE(warned("HyFrame::setTimeStep: "));
        frame->setAutomaticTimeStep(true, bad, 1, 0.5);
        EXPECT_TRUE(warned("HyFrame::setAutomaticTimeStep: "));
        frame->setAutomaticTimeStep(true, 0, bad, 0.5);
        EXPECT_TRUE(warned("HyFrame::setAutomaticTimeStep: "));
    }
    EXPECT_EQ(frame->getTimeStep(), 1);
    EXPECT_FALSE(frame->getAutomaticTimeStep());

    frame->setTimeStep(-1);
    EXPECT_TRUE(frame->getAutomaticTimeStep());
    EXPECT_EQ(frame->getTimeStep(), 0.012500000186264515);
    EXPECT_EQ(frame->getMaxTimeStep(), 0.05000000074505806);
    EXPECT_EQ(frame->getTimeStepDelta(), 0.8999999761581421);
    for (const HyReal badDelta : {1.5, -0.1, kNan}) {
        frame->setAutomaticTimeStep(false, 1, 2, badDelta);
        EXPECT_EQ(frame->getTimeStepDelta(), 0.10000000149011612) << badDelta;
    }
    EXPECT_EQ(frame->getTimeStep(), 0.012500000186264515); // off keeps it
}

TEST_F(HyFrameStepTest, AutomaticStepFollowsTheClockWithinItsLimits) {
    const auto stepAfter = [this](unsigned milliseconds) {
        HyThreadSleep(milliseconds);
        frame->step();
        return frame->getTimeStep();
    };
    frame->setAutomaticTimeStep(true, 0.25, 1, 1); // the clock has no weight
    EXPECT_EQ(stepAfter(0), 0.25);
    frame->setAutomaticTimeStep(true, 0.001, 0.002, 0); // nothing else has
    EXPECT_EQ(stepAfter(10), 0.002);
    frame->setAutomaticTimeStep(true, 1e3, 2e3, 0);
    EXPECT_EQ(stepAfter(0), 1e3);
    frame->setAutomaticTimeStep(true, 0, 1e6, 0);
    frame->step();
    const HyReal measured = stepAfter(20);
    EXPECT_GE(measured, 0.02);
    EXPECT_LT(measured, 1e3);
    EXPECT_GE(frame->getAbsoluteTime(), frame->getAbsolutTimeOfCurrentStep());
    EXPECT_GT(frame->getAbsolutTimeOfCurrentStep(), 0.03);
}
