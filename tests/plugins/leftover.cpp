// A plug-in that takes nothing back: the manager has to.
#include "Config.h"

#include <Hy/HyFrame.h>
#include <Hy/HyPluginStepperFactoryRegistry.h>
#include <Hy/IStepper.h>

#include <cstdlib>

using namespace Hy::HyPluginSystem;

namespace {

struct Object : HyPluginObject {
} object;

struct Listener : HyPluginManagerListener {
    void onPluginsChanged() override {}
};

struct Stepper : IStepper {
    void preUpdate() override {}
};

struct Factory : Hy::HyPluginStepperFactory {
    Factory() : HyPluginStepperFactory("leftover") {}
    Hy::HyPluginStepper* create() override { return new Hy::HyPluginStepper(new Stepper); }
} factory;

} // namespace

/// With the argument "stepper" also one that nobody knows how to delete.
bool InitializePlugin(HyPluginManager& manager, int argc, char** argv, std::string*) {
    manager.addObject(&object);
    static Listener listener;
    Hy::HyPluginStepperFactoryRegistry::instance().registerFactory(&factory);
    if (argc > 0 && std::string_view(argv[0]) == "stepper")
        Hy::HyFrame::instance()->addStepper(new Hy::HyPluginStepper(new Stepper));
    return true;
}

bool UninitializePlugin(HyPluginManager&, std::string*) {
    return true;
}
