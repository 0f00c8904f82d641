#include <Hy/HyPluginStepperFactoryRegistry.h>

#include <Hy/HyFrame.h>
#include <Hy/HyMessage.h>

#include <algorithm>

namespace Hy {

// Factory.

void HyPluginStepperFactory::aboutToBeDestroyed(HyPluginStepper* stepper) {
    mInstances.eraseOnce(stepper);
}

// A factory that goes while it is registered must not be asked for more.
HyPluginStepperFactory::~HyPluginStepperFactory() {
    HyPluginStepperFactoryRegistry::instance().mFactories.eraseOnce(this);
    destroyAllInstances();
}

void HyPluginStepperFactory::addInstanceToHyFrame() {
    HyFrame* frame = HyFrame::currentInstance();
    if (!frame || frame->releasing())
        return;
    HyPluginStepper* stepper = create();
    if (!stepper)
        return;
    mInstances.addUnique(stepper);
    stepper->registerObserver(this);
    frame->addStepper(stepper);
}

void HyPluginStepperFactory::removeInstancesFromHyFrame() {
    if (HyFrame* frame = HyFrame::currentInstance())
        for (HyPluginStepper* stepper : mInstances)
            frame->removeStepper(stepper);
}

void HyPluginStepperFactory::destroyAllInstances() {
    removeInstancesFromHyFrame();
    const HyArray<HyPluginStepper*> instances = mInstances;
    for (HyPluginStepper* stepper : instances)
        if (std::find(mInstances.begin(), mInstances.end(), stepper) != mInstances.end())
            delete stepper; // which may have taken others along
}

// Registry.

// Never destroyed: a library may unload after this one's end has begun.
HyPluginStepperFactoryRegistry& HyPluginStepperFactoryRegistry::instance() {
    static auto& registry = *new HyPluginStepperFactoryRegistry;
    return registry;
}

void HyPluginStepperFactoryRegistry::registerFactory(HyPluginStepperFactory* factory) {
    if (!factory || !mFactories.addUnique(factory))
        return;
    HyInfo(0, "Registered stepper factory: %s\n", factory->getName().c_str());
    factory->addInstanceToHyFrame();
}

void HyPluginStepperFactoryRegistry::unregisterFactory(HyPluginStepperFactory* factory) {
    if (!factory || !mFactories.eraseOnce(factory))
        return;
    HyInfo(0, "Unregistered stepper factory: %s\n", factory->getName().c_str());
    factory->removeInstancesFromHyFrame();
}

void HyPluginStepperFactoryRegistry::addToHyFrame(const Factories& factories) {
    for (HyPluginStepperFactory* factory : factories)
        if (factory)
            factory->addInstanceToHyFrame();
}

} // namespace Hy
