#pragma once
#include <Hy/HyCallbackList.h>
#include <Hy/HyStepperBase.h>

namespace Hy {
namespace HyPluginSystem {
class IStepper;
}

/// Lets the implementation of a plug-in take part in the frame's steps.
class HY_API HyPluginStepper : public HyClass<kHyPluginStepperClassId, HyStepperBase> {
public:
    /// Is told before a stepper goes.
    class HY_API Observer {
    public:
        virtual void aboutToBeDestroyed(HyPluginStepper* stepper) = 0;

    protected:
        ~Observer() = default;
    };

    /// @param instance owned from now on; gives the priority. Null: a warning, and one stands in that
    /// does nothing.
    explicit HyPluginStepper(HyPluginSystem::IStepper* instance);
    /// Tells the observers, then deletes the implementation.
    ~HyPluginStepper() override;
    [[nodiscard]] const char* getClassName() const override { return "HyPluginStepper"; }

    /// Not owned; null and one that is here already: nothing. It may leave from inside its call.
    void registerObserver(Observer* observer) { mObservers.add(observer); }
    void unregisterObserver(Observer* observer) { mObservers.remove(observer); }
    [[nodiscard]] const HyCallbackList<Observer>& getObservers() const { return mObservers; }
    /// Never null.
    [[nodiscard]] const HyPluginSystem::IStepper* getInstance() const { return mInstance; }

protected:
    // Each calls the operation of the same name of the implementation.
    void preUpdateImpl() override;
    void detectCollisionsImpl(HyReal dt) override;
    void advanceKinematicsImpl(HyReal dt) override;
    void solveDynamicsImpl(HyReal dt) override;
    void revertDynamicsImpl() override;
    void advanceDynamicsImpl(HyReal dt) override;
    void postUpdateImpl() override;

private:
    HyPluginSystem::IStepper* const mInstance; ///< owned
    HyCallbackList<Observer> mObservers;
};

} // namespace Hy
