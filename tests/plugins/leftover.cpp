// A plug-in that takes nothing back: the manager has to.
#include "Config.h"

#include <Hy/HyDynamicsExtensionFactory.h>
#include <Hy/HyFrame.h>
#include <Hy/HyPluginStepperFactoryRegistry.h>
#include <Hy/HyUniverse.h>
#include <Hy/IStepper.h>

#include <cstdio>
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

struct Extension : Hy::HyDynamicsExtension {
    ~Extension() override { std::printf("extension ends\n"); }
    void preStep() override { std::printf("extension steps\n"); }
};

} // namespace

/// With the argument "stepper" also one that nobody knows how to delete.
bool InitializePlugin(HyPluginManager& manager, int argc, char** argv, std::string*) {
    manager.addObject(&object);
    static Listener listener;
    Hy::HyPluginStepperFactoryRegistry::instance().registerFactory(&factory);
    static Hy::HyDynamicsExtensionFactoryImpl<Extension> extensions("leftover");
    if (Hy::HyFrame* frame = Hy::HyFrame::currentInstance())
        frame->getUniverse().addExtension(extensions.createExtension());
    if (argc > 0 && std::string_view(argv[0]) == "stepper")
        Hy::HyFrame::instance()->addStepper(new Hy::HyPluginStepper(new Stepper));
    return true;
}

bool UninitializePlugin(HyPluginManager&, std::string*) {
    return true;
}
