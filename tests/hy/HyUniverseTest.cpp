#include "FrameFixture.h"

#include <Hy/HyBallAndSocket.h>
#include <Hy/HyHinge.h>
#include <Hy/HyPart.h>
#include <Hy/HySolverParameters.h>
#include <Hy/HyUniverseObserver.h>
#include <Hy/HyUniverseState.h>

#include <cstdio>
#include <fstream>
#include <memory>

using namespace Hy;

namespace {

class RecordingObserver : public HyUniverseObserver {
public:
    explicit RecordingObserver(StepLog& stepLog, std::string name = {})
        : log(stepLog), mName(std::move(name)) {}
    void onUniverseAboutToBeDestroyed() override { add("end"); }
    void onStateRestored() override { add("restored"); }
    void onPartAdded(HyPart* part) override { add("+", part); }
    void onPartRemoved(HyPart* part) override { add("-", part); }
    void onConstraintAdded(HyConstraint*) override { add("+c"); }
    void onConstraintRemoved(HyConstraint*) override { add("-c"); }
    std::function<void(HyPart*)> onCall;
    StepLog& log;

private:
    void add(const std::string& word, HyPart* part = nullptr) {
        log.add(mName + word + (part ? part->getName() : ""));
        if (onCall)
            onCall(part);
    }
    std::string mName;
};

class HyUniverseTest : public FrameFixture {
protected:
    void SetUp() override {
        FrameFixture::SetUp();
        universe = &frame->getUniverse();
        frame->setTimeStep(0.01);
    }
    HyPart* addPart(const char* name, HyUniverse* to = nullptr) {
        auto* part = new HyPart(1);
        part->setName(name);
        (to ? to : universe)->addPart(part);
        return part;
    }
    /// Names of the awake parts in the order of the visit.
    template <typename Visit>
    std::string visit(Visit onVisit) {
        StepLog visited;
        for (auto part = universe->dynamicPartBegin(); part != universe->dynamicPartEnd(); ++part) {
            visited.add(part->getName());
            onVisit(*part);
        }
        return visited.take();
    }
    std::string visit() {
        return visit([](HyPart*) {});
    }

    HyUniverse* universe = nullptr;
    StepLog log;
};

class CountingSubscriber : public HyUniverse::UpdateSubscriber {
public:
    void update(HyUniverse* universe) override {
        ++updates;
        if (onUpdate)
            onUpdate(universe);
    }
    void reset() override { ++resets; }
    std::function<void(HyUniverse*)> onUpdate;
    int updates = 0, resets = 0;
};

} // namespace

TEST_F(HyUniverseTest, PartsMoveBetweenUniverses) {
    auto other = std::make_unique<HyUniverse>(2, 2, nullptr);
    RecordingObserver here(log, "1"), there(log, "2");
    universe->registerObserver(&here, false);
    other->registerObserver(&there, false);
    HyPart* part = addPart("a");
    EXPECT_EQ(log.take(), "1+a");
    EXPECT_FALSE(universe->addPart(part));
    EXPECT_FALSE(universe->addPart(nullptr));
    EXPECT_EQ(other->removePart(part), nullptr);
    EXPECT_EQ(other->removePart(nullptr), nullptr);
    other->destroyPart(part);
    EXPECT_EQ(log.take(), "") << "nothing has happened";

    here.onCall = [&](HyPart* p) { EXPECT_TRUE(other->getParts().contains(p)); };
    EXPECT_TRUE(other->addPart(part));
    EXPECT_EQ(log.take(), "1-a 2+a");
    EXPECT_EQ(part->getUniverse(), other.get());
    EXPECT_TRUE(universe->getParts().empty());
    EXPECT_EQ(other->removePart(part), part);
    EXPECT_EQ(part->getUniverse(), nullptr);
    delete part;
}

TEST_F(HyUniverseTest, ObserversMayLeaveAndDeleteWhatTheyAreToldOf) {
    RecordingObserver a(log, "a"), b(log, "b");
    universe->registerObserver(&a, false);
    universe->registerObserver(&b, false);
    a.onCall = [&](HyPart*) { universe->unregisterObserver(&a, false); };
    HyPart* part = addPart("1");
    EXPECT_EQ(log.take(), "a+1 b+1");

    universe->registerObserver(&a, false);
    b.onCall = [](HyPart* p) { delete p; };
    a.onCall = nullptr;
    EXPECT_EQ(universe->removePart(part), nullptr) << "deleted on its way out";
    EXPECT_EQ(log.take(), "b-1");

    HyUniverse other(2, 2, nullptr);
    b.onCall = nullptr;
    part = addPart("2");
    b.onCall = [](HyPart* p) { delete p; };
    EXPECT_FALSE(other.addPart(part)) << "deleted on its way over";
    EXPECT_TRUE(other.getParts().empty());
    EXPECT_EQ(log.take(), "b+2 a+2 b-2");
}

TEST_F(HyUniverseTest, AnObserverMayTakeAMovingPartElsewhere) {
    HyUniverse second(2, 2, nullptr), third(2, 2, nullptr);
    RecordingObserver observer(log);
    HyPart* part = addPart("a");
    universe->registerObserver(&observer, false);
    observer.onCall = [&](HyPart* p) { third.addPart(p); };
    EXPECT_FALSE(second.addPart(part));
    EXPECT_TRUE(second.getParts().empty());
    EXPECT_EQ(part->getUniverse(), &third);
    EXPECT_TRUE(third.getParts().contains(part));

    third.registerObserver(&observer, false);
    observer.onCall = [&](HyPart* p) { second.removePart(p); };
    EXPECT_FALSE(second.addPart(part));
    EXPECT_EQ(part->getUniverse(), nullptr);
    delete part;
}

TEST_F(HyUniverseTest, ObserversAreToldOfContentsOnRequest) {
    addPart("1");
    addPart("2");
    universe->addConstraint(new HyBallAndSocket);
    {
        RecordingObserver gone(log);
        universe->registerObserver(&gone, true);
        universe->registerObserver(&gone, true);
        EXPECT_EQ(log.take(), "+1 +2 +c");
        universe->unregisterObserver(&gone, true);
        universe->unregisterObserver(&gone, true);
        EXPECT_EQ(log.take(), "-1 -2 -c");
        universe->registerObserver(&gone, false);
    }
    RecordingObserver observer(log, "o");
    auto* other = new HyUniverse(2, 2, nullptr);
    universe->registerObserver(&observer, false);
    other->registerObserver(&observer, false);
    EXPECT_EQ(observer.getObservedUniverse(), other);
    universe->destroyParts();
    EXPECT_EQ(log.take(), "") << "who observes another universe hears nothing of this one";
    addPart("3", other);
    delete other;
    EXPECT_EQ(log.take(), "o+3 oend o-3");
    EXPECT_EQ(observer.getObservedUniverse(), nullptr);
}

TEST_F(HyUniverseTest, VisitsAwakePartsWhileTheyChange) {
    HyPart *a = addPart("a"), *b = addPart("b"), *c = addPart("c");
    addPart("still")->setControl(HyPart::kControlAnimated);
    frame->step(); // controls are applied
    EXPECT_EQ(visit(), "c b a");
    EXPECT_EQ(visit([&](HyPart* part) { part->wakeDynamics(part != b); }), "c b a")
        << "the present part falls asleep";
    EXPECT_EQ(visit(), "c a");
    b->wakeDynamics(true);
    EXPECT_EQ(visit([&](HyPart* part) { a->wakeDynamics(part != c); }), "b c");
    ASSERT_FALSE(a->isDynamicsAwake());
    a->wakeDynamics(true);
    EXPECT_EQ(visit([&](HyPart*) { delete std::exchange(b, nullptr); }), "a c")
        << "the next part is deleted";
    addPart("d");
    frame->step();
    EXPECT_EQ(visit([](HyPart* part) { delete part; }), "d a c") << "each part is deleted";
    EXPECT_TRUE(warnings().empty());

    for (const char* name : {"1", "2", "3"})
        addPart(name);
    frame->step();
    EXPECT_EQ(visit([&](HyPart*) { universe->destroyParts(); }), "3");
    EXPECT_TRUE(
        warned("HyUniverse::DynamicPartIterator: part should not be disabled or removed from "
               "the universe while iterating them. Visit is aborted\n"));
    EXPECT_EQ(visit(), "");
}

TEST_F(HyUniverseTest, VisitEndsThoughPartsKeepChangingPlaces) {
    HyPart *a = addPart("a"), *b = addPart("b");
    frame->step();
    visit([&](HyPart* part) {
        HyPart* other = part == a ? b : a;
        other->wakeDynamics(false);
        other->wakeDynamics(true);
    });
}

TEST_F(HyUniverseTest, IteratorsOutliveTheirUniverse) {
    auto other = std::make_unique<HyUniverse>(2, 2, nullptr);
    addPart("a", other.get());
    frame->addUniverse(other.get());
    frame->step();
    auto place = other->dynamicPartBegin();
    auto copy = place;
    EXPECT_EQ((*copy)->getName(), "a");
    other.reset();
    EXPECT_EQ(*place, nullptr);
    EXPECT_EQ(*++copy, nullptr);
}

TEST_F(HyUniverseTest, UpdateSubscribersRunInEachDetection) {
    CountingSubscriber a, b, late;
    universe->addUpdateSubscriber(&a);
    universe->addUpdateSubscriber(&b);
    universe->addUpdateSubscriber(&a);
    universe->addUpdateSubscriber(nullptr);
    EXPECT_EQ(universe->getUpdateSubscriberCount(), 2U);
    EXPECT_EQ(universe->getUpdateSubscriber(1), &b);
    EXPECT_EQ(universe->getUpdateSubscriber(2), nullptr);
    a.onUpdate = [&](HyUniverse* u) {
        EXPECT_TRUE(u->isStepping());
        u->removeUpdateSubscriber(&a);
        u->addUpdateSubscriber(&late);
    };
    frame->step();
    EXPECT_EQ(a.updates, 1);
    EXPECT_EQ(b.updates, 1);
    EXPECT_EQ(late.updates, 0);
    EXPECT_FALSE(universe->isStepping());
    frame->step();
    EXPECT_EQ(a.updates, 1);
    EXPECT_EQ(late.updates, 1);
    EXPECT_FALSE(universe->containsUpdateSubscriber(&a));
    EXPECT_TRUE(universe->containsUpdateSubscriber(&late));
    EXPECT_EQ(universe->getUpdateSubscriber(0), &b);
}

TEST_F(HyUniverseTest, ContentsChangedWhileSteppingAreWarnedOfAndDoChange) {
    CountingSubscriber subscriber;
    HyPart* old = addPart("old");
    subscriber.onUpdate = [&](HyUniverse*) {
        if (subscriber.updates == 1) {
            addPart("new");
            delete old;
        }
    };
    universe->addUpdateSubscriber(&subscriber);
    frame->step();
    EXPECT_EQ(warnings()[0], "HyUniverse insert part: cannot be called while stepping (check "
                             "intersect subscribers).\n");
    EXPECT_TRUE(warned("HyUniverse remove part: cannot be called while stepping (check intersect "
                       "subscribers).\n"));
    ASSERT_EQ(universe->getParts().size(), 1U);
    frame->step();
    EXPECT_EQ(visit(), "new");
}

TEST_F(HyUniverseTest, StateBringsBackPartsGravityAndSleep) {
    HyPart *a = addPart("a"), *b = addPart("b"), *asleep = addPart("asleep");
    frame->step();
    asleep->wakeDynamics(false);
    universe->setAutoSleep(false);
    const std::unique_ptr<HyUniverseState> state(universe->createState());
    const HyVector3 position = a->getPosition(), gravity = universe->getGravity();

    RecordingObserver observer(log);
    CountingSubscriber subscriber;
    universe->registerObserver(&observer, false);
    universe->addUpdateSubscriber(&subscriber);
    universe->setGravity(1, 2, 3);
    universe->setAutoSleep(true);
    frame->step();
    delete b;
    HyUniverse other(2, 2, nullptr);
    other.restoreState(state.get());
    EXPECT_TRUE(warned("HyUniverse::restoreState: "));
    log.take();
    state->restore();
    EXPECT_EQ(log.take(), "restored");
    EXPECT_EQ(subscriber.resets, 1);
    EXPECT_EQ(a->getPosition()[2], position[2]);
    EXPECT_EQ(universe->getGravity()[2], gravity[2]);
    EXPECT_FALSE(universe->getAutoSleep());
    EXPECT_FALSE(asleep->isDynamicsAwake());
    EXPECT_TRUE(a->isDynamicsAwake());
    universe->restoreState(nullptr);

    delete universe;
    EXPECT_EQ(state->getInstance(), nullptr);
    state->restore();
}

TEST_F(HyUniverseTest, ReportsWhatLooksUnstable) {
    const auto report = [this] {
        testing::internal::CaptureStderr();
        universe->verifyUniverseContent();
        return testing::internal::GetCapturedStderr();
    };
    HyPart* still = new HyPart;
    universe->addPart(still);
    EXPECT_EQ(report(), "");
    HyPart* light = addPart("light");
    HyPart* heavy = addPart("heavy");
    heavy->setMass(1000);
    EXPECT_EQ(report(), "");
    heavy->setMass(2000);
    const std::string masses =
        "HyUniverse::verifyUniverseContent: Ratio of max mass on min mass is very large "
        "(2000.000000)\n"
        "   and might cause unstability. Suggested max ratio is 1000.000000.\n";
    EXPECT_EQ(report(), masses);

    HyPart* const ends[][2] = {{heavy, light}, {heavy, nullptr}, {light, still}};
    for (auto [first, second] : ends) {
        auto* joint = new HyBallAndSocket(first, second, HyVector3(0, 0, 0));
        joint->setName("joint");
        universe->addConstraint(joint);
        const bool isUneven = first == heavy && second == light;
        EXPECT_EQ(report(),
                  masses + (isUneven
                                ? "HyUniverse::verifyUniverseContent: constraint joint (between "
                                  "parts heavy and light) has high ratio \n"
                                  "   between its parts' masses which might cause unstability. "
                                  "Suggested max ratio is 1000.000000.\n"
                                : ""));
        universe->destroyConstraint(joint);
    }

    heavy->setMass(1);
    const HyReal flat[3][3] = {{1, 0, 0}, {0, 1e5, 0}, {0, 0, 1e5}};
    light->setMassAndInertia(1, flat);
    EXPECT_EQ(report(),
              "HyUniverse::verifyUniverseContent: part (light) has high ratio of value in "
              "its inertia tensor\n"
              "   which might cause unstability. Suggested max ratio is 10000.000000.\n");
}

TEST_F(HyUniverseTest, PrintsItsContent) {
    addPart("falling")->freeze(true);
    auto* hinge = new HyHinge(addPart("resting"), nullptr, HyVector3(1, 0, 0), HyVector3(0, 1, 0));
    hinge->setName("hinge");
    universe->addConstraint(hinge);
    universe->addConstraint(new HyBallAndSocket(nullptr, nullptr, HyVector3(0, 0, 0)));
    hinge->setMotorParameters(0, 3, 7, 0);
    hinge->setControl(0, HyConstraint::kControlMotorized);
    hinge->enable(true);
    universe->getSolverParameters(1)->setConstraintSolver(1);
    frame->step();
    const std::string name = testing::TempDir() + "HyUniverseContent.txt";
    universe->printContent(name.c_str());
    std::ifstream file(name);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    for (const char* part :
         {"part falling\n", "part resting\n", "constraint hinge (HyHinge)\n",
          "attachment 0 to resting\n",
          "attachment 1 to the world\n  position = (1, 0, 0)\n  primary axis = (0, 1, 0)\n",
          "control = motorized", "motor velocity = 3, force from -7 to 7\n",
          "dynamic part count = 2\n", "frozen part count = 1\n", "asleep part count = 0\n",
          "enabled constraint count = 1\n\n", "gravity = (0, 0, -9.8066",
          "solver group 0\n  constraint solver = Std",
          "solver group 1\n  constraint solver = Iterative"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "in:\n" << text;
    std::remove(name.c_str());
    for (const char* bad : {static_cast<const char*>(nullptr), "/no/such/folder/file"}) {
        universe->printContent(bad);
        EXPECT_TRUE(warned("HyUniverse::printContent: "));
    }
}

TEST_F(HyUniverseTest, SolverSettingsReachTheWorldOrAreRefused) {
    universe->setPartitionerCrossGroupingDepth(3);
    EXPECT_EQ(universe->getPartitionerCrossGroupingDepth(), 3);
    universe->setPartitionerCrossGroupingDepth(-1);
    EXPECT_EQ(universe->getPartitionerCrossGroupingDepth(), -1);
    universe->setSolverMaxCouplingIteration(7);
    universe->setPartitionerMaxSecondarySize(4);
    universe->setMaxSimultaneousSolverCount(6);
    universe->setSolverPartitionSplitting(HyUniverse::kPartitionSplittingGroup);
    universe->setDynamicsMultithreaded(true);
    universe->setGravity(1, 2, 3);
    EXPECT_TRUE(warnings().empty());

    universe->setPartitionerCrossGroupingDepth(-2);
    EXPECT_TRUE(warned("HyUniverse::setPartitionerCrossGroupingDepth: "));
    universe->setSolverMaxCouplingIteration(-1);
    EXPECT_TRUE(warned("HyUniverse::setSolverMaxCouplingIteration: "));
    universe->setPartitionerMaxSecondarySize(0);
    EXPECT_TRUE(warned("HyUniverse::setPartitionerMaxSecondarySize: "));
    universe->setSolverPartitionSplitting(static_cast<HyUniverse::PartitionSplitting>(3));
    EXPECT_TRUE(warned("HyUniverse::setSolverPartitionSplitting: "));
    universe->setMaxSimultaneousSolverCount(0);
    universe->setGravity(std::numeric_limits<HyReal>::quiet_NaN(), 0, 0);
    EXPECT_TRUE(warned("gravity must be finite"));

    EXPECT_EQ(universe->getPartitionerCrossGroupingDepth(), -1);
    EXPECT_EQ(universe->getSolverMaxCouplingIteration(), 7);
    EXPECT_EQ(universe->getPartitionerMaxSecondarySize(), 4);
    EXPECT_EQ(universe->getMaxSimultaneousSolverCount(), 6);
    EXPECT_EQ(universe->getSolverPartitionSplitting(), HyUniverse::kPartitionSplittingGroup);
    EXPECT_TRUE(universe->getDynamicsMultithreaded());
    EXPECT_EQ(universe->getGravity()[2], 3);
    EXPECT_EQ(universe->getSolverParametersCount(), 1);
    EXPECT_EQ(universe->getGlobalCouplingSolverGroup(), -1);
}
