#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyPluginStepperFactory.h>

namespace Hy {

/// The factories of steppers. Each gives the frame one stepper: when it is registered, or when the
/// frame is made, whichever comes later.
class HY_API HyPluginStepperFactoryRegistry {
public:
    using Factories = HyArray<HyPluginStepperFactory*>;

    static HyPluginStepperFactoryRegistry& instance();
    HyPluginStepperFactoryRegistry(const HyPluginStepperFactoryRegistry&) = delete;
    HyPluginStepperFactoryRegistry& operator=(const HyPluginStepperFactoryRegistry&) = delete;

    /// Adds a factory, not owned. Null, and one that is here already: nothing.
    void registerFactory(HyPluginStepperFactory* factory);
    /// Takes a factory out, and its steppers out of the frame; it goes on to own them. Null, and one
    /// that is not here: nothing.
    void unregisterFactory(HyPluginStepperFactory* factory);
    /// A copy of the list, in the order of registering.
    [[nodiscard]] Factories getRegisteredFactories() const { return mFactories; }
    /// Lets each factory give the frame a stepper; null ones are passed over.
    static void addToHyFrame(const Factories& factories);

private:
    friend class HyPluginStepperFactory;
    HyPluginStepperFactoryRegistry() = default;
    ~HyPluginStepperFactoryRegistry() = default;

    Factories mFactories;
};

} // namespace Hy
