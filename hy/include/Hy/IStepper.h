#pragma once
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

namespace Hy::HyPluginSystem {

/// What a plug-in implements to take part in the frame's steps; it needs to know no other class. The
/// operations are the phases of a step (see HyStepperBase) and do nothing unless overridden.
class HY_API IStepper {
public:
    static constexpr int kDefaultPriority = 5;

    /// @param priority place in the frame's order: lower runs first
    explicit IStepper(int priority = kDefaultPriority) : mPriority(priority) {}
    IStepper(const IStepper&) = delete;
    IStepper& operator=(const IStepper&) = delete;
    virtual ~IStepper() = default;

    /// Once at the start of a step.
    virtual void preUpdate() {}
    /// The argument is the length of the coming substep, s.
    virtual void detectCollisions(HyReal /*dt*/) {}
    /// By a time in s, negative to take a failed substep back.
    virtual void advanceKinematics(HyReal /*dt*/) {}
    /// Over a time in s.
    virtual void solveDynamics(HyReal /*dt*/) {}
    /// Forgets the result of a failed solve.
    virtual void revertDynamics() {}
    /// Over a time in s.
    virtual void advanceDynamics(HyReal /*dt*/) {}
    /// Once at the end of a step.
    virtual void postUpdate() {}

    [[nodiscard]] int getPriority() const { return mPriority; }

protected:
    // Room for later operations, so that plug-ins built against them work with this library.
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

private:
    const int mPriority;
};

} // namespace Hy::HyPluginSystem
