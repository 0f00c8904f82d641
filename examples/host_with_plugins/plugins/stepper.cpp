// A plug-in that takes part in each step: it counts them and adds up their time.
#include "StepCounter.h"

#include <Hy/HyPlugin.h>
#include <Hy/HyPluginStepperFactoryRegistry.h>
#include <Hy/IStepper.h>

using namespace Hy::HyPluginSystem;

namespace {

struct Counter : StepCounter {
    int getSteps() const override { return steps; }
    double getTime() const override { return time; }
    int steps = 0;
    double time = 0; // s
};
Counter counter;

struct Stepper : IStepper {
    void advanceDynamics(Hy::HyReal dt) override { counter.time += dt; }
    void postUpdate() override { ++counter.steps; }
};

struct Factory : Hy::HyPluginStepperFactory {
    Factory() : HyPluginStepperFactory("step counter") {}
    Hy::HyPluginStepper* create() override { return new Hy::HyPluginStepper(new Stepper); }
};
Factory factory;

} // namespace

int GetHyPluginSystemVersion() {
    return kHyPluginSystemVersion;
}

const char* GetPluginBuildInfo() {
    return HyPluginBuildInfo();
}

bool GetPluginInfo(HyPluginInfo& info) {
    info.setName("stepper");
    info.setDescription("counts the steps of the frame");
    info.setVersion({1, 2, 0});
    info.setCompatibilityVersion({1, 0, 0});
    return true;
}

bool InitializePlugin(HyPluginManager& manager, int, char**, std::string*) {
    manager.addObject(&counter);
    Hy::HyPluginStepperFactoryRegistry::instance().registerFactory(&factory);
    return true;
}

bool UninitializePlugin(HyPluginManager& manager, std::string*) {
    Hy::HyPluginStepperFactoryRegistry::instance().unregisterFactory(&factory);
    manager.removeObject(&counter);
    return true;
}
