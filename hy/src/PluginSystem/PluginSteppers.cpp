#include "PluginSteppers.h"

#include "PluginImage.h"

#include <Hy/HyFrame.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPluginStepperFactoryRegistry.h>
#include <Hy/IStepper.h>

namespace Hy::HyPluginSystem {
namespace {

void dropFactories(const PluginImage& image) {
    auto& registry = HyPluginStepperFactoryRegistry::instance();
    for (HyPluginStepperFactory* factory : registry.getRegisteredFactories())
        if (image.isClassOf(factory)) {
            HyWarning(0,
                      "HyPluginManager::unload: %s has left a stepper factory behind, which is "
                      "dropped.\n",
                      image.getPath().c_str());
            registry.unregisterFactory(factory);
        }
}

/// Whether a factory of the library owns the stepper and so takes it along.
bool goesWithLibrary(const HyPluginStepper& stepper, const PluginImage& image) {
    const auto& observers = stepper.getObservers();
    for (std::size_t i = 0; i < observers.size(); ++i)
        if (image.isClassOf(observers.at(i)))
            return true;
    return false;
}

bool dropFromFrame(const PluginImage& image) {
    HyFrame* frame = HyFrame::currentInstance();
    if (!frame)
        return true;
    bool areAllKnown = true;
    for (int i = frame->getStepperCount() - 1; i >= 0; --i) {
        HyStepperBase* stepper = frame->getStepper(i);
        const auto* wrapper = stepper->isOfExactClassType(kHyPluginStepperClassId)
                                  ? static_cast<const HyPluginStepper*>(stepper)
                                  : nullptr;
        if (!image.isClassOf(stepper) && !(wrapper && image.isClassOf(wrapper->getInstance())))
            continue;
        HyWarning(0, "HyPluginManager::unload: %s has left a stepper behind, which is dropped.\n",
                  image.getPath().c_str());
        frame->removePsStepper(stepper);
        areAllKnown = areAllKnown && wrapper;
    }
    return areAllKnown;
}

} // namespace

bool dropSteppers(const PluginImage& image) {
    dropFactories(image);
    bool areAllGone = dropFromFrame(image);
    const HyFrame* frame = HyFrame::currentInstance();
    const bool isStepping = frame && frame->isStepping(); // perhaps by a call into the library
    for (const HyPluginStepper* stepper : HyLivePluginSteppers())
        if ((image.isClassOf(stepper) || image.isClassOf(stepper->getInstance())) &&
            (isStepping || !goesWithLibrary(*stepper, image)))
            areAllGone = false;
    return areAllGone;
}

} // namespace Hy::HyPluginSystem
