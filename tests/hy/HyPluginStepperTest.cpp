#include <Hy/HyPluginStepperFactoryRegistry.h>

#include <Hy/IStepper.h>

#include "FrameFixture.h"

namespace Hy {
namespace {

struct Stepper : HyPluginSystem::IStepper {
    explicit Stepper(std::string& text) : log(text) {}
    Stepper(std::string& text, int priority) : IStepper(priority), log(text) {}
    ~Stepper() override { log += "x"; }
    void preUpdate() override { log += "p"; }
    void detectCollisions(HyReal dt) override { log += "c" + std::to_string(int(dt)); }
    void advanceKinematics(HyReal dt) override { log += "k" + std::to_string(int(dt)); }
    void solveDynamics(HyReal dt) override { log += "s" + std::to_string(int(dt)); }
    void revertDynamics() override { log += "r"; }
    void advanceDynamics(HyReal dt) override { log += "a" + std::to_string(int(dt)); }
    void postUpdate() override { log += "u"; }
    std::string& log;
};

struct Factory : HyPluginStepperFactory {
    explicit Factory(std::string& text) : HyPluginStepperFactory("test"), log(text) {}
    HyPluginStepper* create() override {
        return fails ? nullptr : new HyPluginStepper(new Stepper(log));
    }
    std::string& log;
    bool fails = false;
};

class HyPluginStepperTest : public FrameFixture {
protected:
    HyPluginStepperFactoryRegistry& registry = HyPluginStepperFactoryRegistry::instance();
    std::string log;
};

TEST_F(HyPluginStepperTest, ForwardsEachPhase) {
    frame->addStepper(new HyPluginStepper(new Stepper(log, 7)));
    auto* first = new HyPluginStepper(new HyPluginSystem::IStepper);
    frame->addStepper(first);
    EXPECT_EQ(frame->getStepper(0), first);
    EXPECT_EQ(first->getPriority(), 5);
    frame->step();
    EXPECT_EQ(std::exchange(log, {}), "pc1k1s1a1u");
    frame->getStepper(1)->revertDynamics();
    EXPECT_EQ(std::exchange(log, {}), "r");
    delete frame->getStepper(1);
    EXPECT_EQ(log, "x");
    EXPECT_EQ(frame->getStepperCount(), 1);
    frame->addStepper(new HyPluginStepper(nullptr));
    EXPECT_TRUE(warned("mInstance != __null"));
    frame->step();
}

TEST_F(HyPluginStepperTest, FactoriesGiveEachFrameOneStepper) {
    HyFrame::release();
    Factory factory(log);
    registry.registerFactory(&factory);
    registry.registerFactory(&factory);
    registry.registerFactory(nullptr);
    EXPECT_EQ(registry.getRegisteredFactories().size(), 1U);
    EXPECT_TRUE(factory.getInstances().empty()) << "without a frame";
    EXPECT_EQ(HyFrame::instance()->getStepperCount(), 1);
    EXPECT_EQ(factory.getInstances().size(), 1U);
    HyFrame::release();
    EXPECT_TRUE(factory.getInstances().empty()) << "the frame owned it";
    frame = HyFrame::instance();
    EXPECT_EQ(frame->getStepperCount(), 1);

    registry.unregisterFactory(&factory);
    EXPECT_EQ(frame->getStepperCount(), 0);
    ASSERT_EQ(factory.getInstances().size(), 1U) << "the factory owns it now";
    delete factory.getInstances()[0];
    EXPECT_TRUE(factory.getInstances().empty());
    factory.fails = true;
    registry.registerFactory(&factory);
    EXPECT_TRUE(factory.getInstances().empty());
    EXPECT_EQ(frame->getStepperCount(), 0);
    factory.fails = false;
    factory.addInstanceToHyFrame();
    factory.addInstanceToHyFrame();
    log.clear();
    factory.destroyAllInstances();
    EXPECT_EQ(log, "xx");
    EXPECT_EQ(frame->getStepperCount(), 0);
}

TEST_F(HyPluginStepperTest, AFactoryTakesItsSteppersAlong) {
    {
        Factory factory(log);
        registry.registerFactory(&factory);
        EXPECT_EQ(frame->getStepperCount(), 1);
    }
    EXPECT_EQ(log, "x");
    EXPECT_EQ(frame->getStepperCount(), 0);
    EXPECT_TRUE(registry.getRegisteredFactories().empty());
    HyPluginStepperFactoryRegistry::addToHyFrame({nullptr});
}

} // namespace
} // namespace Hy
