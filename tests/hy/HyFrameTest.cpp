#include "FrameFixture.h"

#include <Hy/HyThreadPool.h>

using namespace Hy;

namespace {

class HyFrameTest : public FrameFixture {
protected:
    StepLog log;
};

class RecordingObserver : public HyFrame::Observer {
public:
    RecordingObserver(StepLog& stepLog, std::string name) : log(stepLog), mName(std::move(name)) {}
    void universeAboutToBeAdded(HyUniverse& u) override { add("+?", u); }
    void universeAdded(HyUniverse& u) override { add("+", u); }
    void universeAboutToBeRemoved(HyUniverse& u) override { add("-?", u); }
    void universeRemoved(HyUniverse& u) override { add("-", u); }
    std::function<void()> onCall;
    StepLog& log;

private:
    void add(const std::string& event, const HyUniverse& universe) {
        const bool isHere = HyFrame::currentInstance()->hasStepper(&universe);
        log.add(mName + event + (isHere ? "!" : ""));
        if (onCall)
            onCall();
    }
    std::string mName;
};

} // namespace

TEST_F(HyFrameTest, TimingsAddAndScaleFieldByField) {
    HyStepperBase::Timings t;
    t.preUpdate = 100;
    EXPECT_EQ(t.getTotal(), 0);
    t.detectCollisions = 1;
    t.advanceKinematics = 2;
    t.solveDynamics = 4;
    t.revertDynamics = 8;
    t.advanceDynamics = 16;
    t.postUpdate = 32;
    EXPECT_EQ(t.getTotal(), 63);
    const HyStepperBase::Timings sum = t * 2 + t;
    EXPECT_EQ(sum.getTotal(), 189);
    EXPECT_EQ(sum.preUpdate, 300);
    EXPECT_EQ(sum.advanceKinematics, 6);
}

TEST_F(HyFrameTest, SteppersStandByPriorityThenByAdding) {
    const int priorities[] = {5, 2, 5, 1, 5, 2};
    std::vector<HyStepperBase*> added;
    for (const int priority : priorities)
        frame->addStepper(added.emplace_back(new RecordingStepper(log, priority)));
    frame->addStepper(added[0]);
    frame->addStepper(nullptr);
    const std::size_t order[] = {3, 1, 5, 0, 2, 4};
    ASSERT_EQ(frame->getStepperCount(), 6);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(frame->getStepper(i), added[order[i]]) << i;
    EXPECT_EQ(frame->getStepper(-1), nullptr);
    EXPECT_EQ(frame->getStepper(6), nullptr);

    EXPECT_TRUE(frame->removeStepper(added[0]));
    EXPECT_FALSE(frame->removeStepper(added[0]));
    delete added[0];
    delete added[5]; // leaves by itself
    EXPECT_EQ(frame->getStepperCount(), 4);
    EXPECT_FALSE(frame->hasStepper(added[5]));
}

TEST_F(HyFrameTest, ReleaseDeletesSteppersAlsoThoseThatDeleteEachOther) {
    struct Chained : RecordingStepper {
        Chained(StepLog& stepLog, HyStepperBase* other) : RecordingStepper(stepLog), next(other) {}
        ~Chained() override {
            log.add(HyFrame::currentInstance()->releasing() ? "releasing" : "?");
            delete next;
        }
        HyStepperBase* next;
    };
    auto* last = new Chained(log, nullptr);
    frame->addStepper(new Chained(log, last));
    frame->addPsStepper(last);
    HyFrame::release();
    EXPECT_EQ(log.take(), "releasing releasing");
    EXPECT_EQ(HyFrame::currentInstance(), nullptr);
    HyFrame::release();
    frame = HyFrame::instance();
    EXPECT_EQ(frame, HyFrame::currentInstance());
    EXPECT_FALSE(frame->releasing());
    EXPECT_EQ(frame->getName(), "Frame");
}

TEST_F(HyFrameTest, ObserversFollowUniverses) {
    RecordingObserver a(log, "a"), b(log, "b");
    frame->registerObserver(&a);
    frame->registerObserver(&b);
    frame->registerObserver(&a);
    auto* universe = new HyUniverse(2, 2, nullptr);
    frame->addUniverse(universe);
    EXPECT_EQ(log.take(), "a+? b+? a+! b+!");
    EXPECT_TRUE(frame->removeUniverse(universe));
    EXPECT_EQ(log.take(), "a-?! b-?! a- b-");
    EXPECT_FALSE(frame->removeUniverse(universe));
    log.take();

    a.onCall = [&] { frame->unregisterObserver(&b); };
    frame->addUniverse(universe);
    EXPECT_EQ(log.take(), "a+? a+!") << "who has left is not called";
    delete universe;
    EXPECT_EQ(log.take(), "a-?! a-") << "a universe that goes leaves its frame";
    EXPECT_EQ(frame->getUniverseCount(), 0);

    EXPECT_TRUE(warnings().empty());
    frame->addUniverse(nullptr);
    EXPECT_TRUE(warned("pHyUniverse != __null"));
    EXPECT_FALSE(frame->removeUniverse(nullptr));
    EXPECT_TRUE(warned("pHyUniverse != __null"));
    frame->registerObserver(nullptr);
    EXPECT_TRUE(warned("observer != __null"));
    frame->unregisterObserver(nullptr);
    EXPECT_TRUE(warned("observer != __null"));
}

TEST_F(HyFrameTest, MakesItsFirstUniverseOnDemand) {
    HyUniverse& universe = frame->getUniverse();
    EXPECT_EQ(&frame->getUniverse(), &universe);
    EXPECT_EQ(frame->getUniverse(0), &universe);
    EXPECT_EQ(frame->getUniverse(1), nullptr);
    EXPECT_EQ(universe.getCollisionGeometryMaxCount(), 2000U);
    EXPECT_EQ(HyUniverse(3, 1, nullptr).getCollisionGeometryMaxCount(), 4U);
    EXPECT_EQ(frame->getUniverseCount(), 1);
    EXPECT_EQ(frame->getStepperCount(), 1);
}

TEST_F(HyFrameTest, KnowsTheObjectsMadeWhileTracking) {
    auto* before = new RecordingStepper(log);
    frame->setEnableMemoryTracking(true);
    auto* tracked = new RecordingStepper(log);
    frame->addHyBaseInstance(tracked);
    EXPECT_FALSE(frame->isHyBaseValid(before));
    EXPECT_TRUE(frame->isHyBaseValid(tracked));
    delete tracked;
    EXPECT_FALSE(frame->isHyBaseValid(tracked));
    EXPECT_FALSE(frame->removeHyBaseInstance(before));
    delete before;

    tracked = new RecordingStepper(log);
    frame->setEnableMemoryTracking(false);
    delete tracked;
    EXPECT_FALSE(frame->isHyBaseValid(tracked)) << "whose end nobody has seen";
}

TEST_F(HyFrameTest, SmallSettings) {
    EXPECT_EQ(frame->getNewInternalID(5), 1);
    EXPECT_EQ(frame->getNewInternalID(1), 6);
    EXPECT_EQ(frame->getNewInternalID(0), 0);
    EXPECT_EQ(frame->getNewInternalID(std::numeric_limits<int>::max()), 0);
    EXPECT_EQ(frame->getNewInternalID(1), 7);
    warnings().clear();

    frame->setMaxThreadCount(-1);
    EXPECT_TRUE(warned("HyFrame::setMaxThreadCount: "));
    frame->setMaxThreadCount(2);
    HyThreadPool* pool = frame->getThreadPool();
    frame->setMaxThreadCount(3);
    EXPECT_EQ(frame->getThreadPool(), pool);
    EXPECT_EQ(pool->getThreadCount(), 2U);

    frame->setContinuousCollisionDetectionMaxSubStepCount(1);
    EXPECT_TRUE(warned("HyFrame::setContinuousCollisionDetectionMaxSubStepCount: cound >= 2"));
    EXPECT_EQ(frame->getContinuousCollisionDetectionMaxSubStepCount(), 1U);

    const int level = getHyWarningLevel();
    frame->setWarningLevel(3);
    EXPECT_EQ(setHyWarningLevel(level), 3);
}

TEST_F(HyFrameTest, StepperOptionKeepsModeAndActionsInStep) {
    using Option = HyFrameStepperOption;
    Option& option = frame->getStepperOption();
    option.setStepperMode(Option::kModeSafe);
    option.setUpdateActionIntegrate(false);
    EXPECT_EQ(option.getStepperMode(), Option::kModeManual);
    EXPECT_TRUE(option.getUpdateActionCollision() && option.getUpdateActionDynamics() &&
                option.getUpdateActionCheck() && option.getUpdateActionRecovery());
    EXPECT_FALSE(option.getUpdateActionIntegrate());
    option.setStepperMode(Option::kModeCollisionOnly);
    option.setStepperMode(Option::kModeManual);
    EXPECT_TRUE(option.getUpdateActionCollision());
    EXPECT_FALSE(option.getUpdateActionDynamics());
    option.setStepperMode(static_cast<Option::StepperModeEnum>(99));
    EXPECT_EQ(option.getStepperMode(), Option::kModeManual);
    warnings().clear();

    option.setRecoverySubstepCount(1);
    EXPECT_TRUE(
        warned("HyFrameStepperOption::setRecoverySubstepCount: @cout must be superior to 1."));
    EXPECT_EQ(option.getRecoverySubstepCount(), 10);

    Option::CheckSubscriber check;
    option.getCheckSubscriberArray().push_back(nullptr);
    option.getCheckSubscriberArray().push_back(&check);
    option.setVerbose(true);
    EXPECT_TRUE(check.getPrintOutput());
    option.setVerbose(false);
    EXPECT_FALSE(check.getPrintOutput());

    HyFrame::release();
    frame = HyFrame::instance();
    EXPECT_EQ(option.getStepperMode(), Option::kModeNormal) << "a new frame starts it anew";
}
