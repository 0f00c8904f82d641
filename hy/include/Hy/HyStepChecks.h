#pragma once
#include <Hy/HyFrameStepperOption.h>

#include <optional>

namespace Hy {
class HyConstraint;
class HyDynamicsContact;
class HyPart;

// The checks that HyFrameStepperOption offers. They look at the parts, contacts and constraints that are
// awake, in all universes of the frame.

/// Slows all parts down, each step by the same factor: an unsettled scene comes to rest.
class HY_API HyFrameSettle : public HyFrameStepperOption::CheckSubscriber {
public:
    bool preUpdateForceCheck() override;
    /// Of the velocities that is left each step. Not finite: a warning, no change.
    void setSettlingFactor(HyReal factor);
    [[nodiscard]] HyReal getSettlingFactor() const { return mSettlingFactor; }

private:
    HyReal mSettlingFactor = 0.5;
};

/// Has parts followed along their path (HyPart::setFastMoving) which would move by more than a share of
/// their size in a step. A part without geometries has no size, and passes.
class HY_API HyCheckFastMoving : public HyFrameStepperOption::CheckSubscriber {
public:
    bool preUpdateForceCheck() override;
    void output() override;
    /// The part found last in the present step, or null.
    [[nodiscard]] HyPart* getFailedPart() const { return mFailedPart; }

private:
    bool isAccepted(HyPart& part);
    bool mIsBroken = false;
    const HyReal mCheckFastMovingRatio = 0.25;
    HyPart* mFailedPart = nullptr;
};

/// Limits the penetration that the solver sees, so that parts which begin deep in each other are not
/// shot apart.
class HY_API HyCheckContact : public HyFrameStepperOption::CheckSubscriber {
public:
    bool preUpdateForceCheck() override;
    void output() override;
    /// m. Not finite, or negative: a warning, no change.
    void setPenetrationThreshold(HyReal threshold);
    [[nodiscard]] HyReal getPenetrationThreshold() const { return mContactPenetrationThreshold; }

private:
    /// False if the answer of the call-back is to end the search.
    bool limit(HyDynamicsContact& contact);
    HyReal mContactPenetrationThreshold = 0.1;
    HyPart *mPart0 = nullptr, *mPart1 = nullptr;
};

/// Aborts a step whose solve gave a part an acceleration beyond the limits.
class HY_API HyCheckAcceleration : public HyFrameStepperOption::CheckSubscriber {
public:
    bool postUpdateForceCheck() override;
    void output() override;
    /// m/s^2 and rad/s^2. Not finite, or negative: a warning, no change.
    void setLinearThreshold(HyReal acceleration);
    void setAngularThreshold(HyReal acceleration);
    [[nodiscard]] HyReal getLinearThreshold() const;
    [[nodiscard]] HyReal getAngularThreshold() const;
    /// The part found last in the present step, or null.
    [[nodiscard]] HyPart* getFailedPart() const { return mFailedPart; }

private:
    [[nodiscard]] bool isBeyond(const HyPart& part) const;
    /// False if the search ends.
    bool look(HyPart& part);
    HyReal mCheckAccelerationLinear = 100000; ///< squared
    HyReal mCheckAccelerationAngular = 10000; ///< squared
    HyPart* mFailedPart = nullptr;
};

/// Lets no contact rub; materials stay as they are.
class HY_API HyCheckForceFrictionless : public HyFrameStepperOption::CheckSubscriber {
public:
    bool preUpdateForceCheck() override;
};

/// Lets the heavier of two dynamic parts act, in their contacts and constraints, as if the lighter one
/// could not move it.
class HY_API HyCheckForceKinematicPart : public HyFrameStepperOption::CheckSubscriber {
public:
    bool preUpdateForceCheck() override;
    /// Ratio of masses above which that holds. Not finite, or not above 0: a warning, no change.
    void setMassThreshold(HyReal ratio);
    [[nodiscard]] HyReal getMassThreshold() const { return mMassThreshold; }
    /// Takes it back in the constraints of two parts.
    static void clearResponses();

private:
    [[nodiscard]] std::optional<int> heavierOf(const HyPart* first, const HyPart* second) const;
    HyReal mMassThreshold = 50;
};

} // namespace Hy
