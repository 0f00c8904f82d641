#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyPluginStepper.h>

#include <string>

namespace Hy {

/// Makes steppers for a frame, one each time it is asked, and knows those that live. A plug-in
/// registers one with HyPluginStepperFactoryRegistry.
class HY_API HyPluginStepperFactory : public HyPluginStepper::Observer {
public:
    explicit HyPluginStepperFactory(const std::string& name) : mName(name) {}
    HyPluginStepperFactory(const HyPluginStepperFactory&) = delete;
    HyPluginStepperFactory& operator=(const HyPluginStepperFactory&) = delete;

    /// Takes a stepper that goes off the list.
    void aboutToBeDestroyed(HyPluginStepper* stepper) override;
    /// Leaves the registry and deletes the steppers.
    virtual ~HyPluginStepperFactory();
    /// A new stepper, or null for none.
    virtual HyPluginStepper* create() = 0;

protected:
    // Room for later operations, so that plug-ins built against them work with this library.
    virtual void dummy30() {}
    virtual void dummy29() {}
    virtual void dummy28() {}
    virtual void dummy27() {}
    virtual void dummy26() {}
    virtual void dummy25() {}
    virtual void dummy24() {}
    virtual void dummy23() {}
    virtual void dummy22() {}
    virtual void dummy21() {}
    virtual void dummy20() {}
    virtual void dummy19() {}
    virtual void dummy18() {}
    virtual void dummy17() {}
    virtual void dummy16() {}
    virtual void dummy15() {}
    virtual void dummy14() {}
    virtual void dummy13() {}
    virtual void dummy12() {}
    virtual void dummy11() {}
    virtual void dummy10() {}
    virtual void dummy09() {}
    virtual void dummy08() {}
    virtual void dummy07() {}
    virtual void dummy06() {}
    virtual void dummy05() {}
    virtual void dummy04() {}
    virtual void dummy03() {}
    virtual void dummy02() {}
    virtual void dummy01() {}

public:
    [[nodiscard]] const std::string& getName() const { return mName; }
    /// Makes a stepper and adds it to the frame, if there is one.
    void addInstanceToHyFrame();
    /// Takes the steppers out of the frame, if there is one; they live on and stay on the list.
    void removeInstancesFromHyFrame();
    /// Takes the steppers out of the frame and deletes them.
    void destroyAllInstances();
    /// A copy of the list, in the order of making.
    [[nodiscard]] HyArray<HyPluginStepper*> getInstances() const { return mInstances; }

private:
    std::string mName;
    HyArray<HyPluginStepper*> mInstances;
};

} // namespace Hy
