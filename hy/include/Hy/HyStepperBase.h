#pragma once
#include <Hy/HyBase.h>
#include <Hy/HyTimer.h>
#include <Hy/HyTypes.h>

namespace Hy {

/// What takes part in a frame's step: seven phases, each called for all steppers of the frame before
/// the next one begins. HyUniverse is the stepper that carries the physics.
///
/// A frame owns the steppers that were added to it and deletes them when it is released. A stepper
/// that is destroyed before leaves its frame.
class HY_API HyStepperBase : public HyClass<kHyStepperBaseClassId, HyBase> {
public:
    /// Time spent in each phase of the last step, s. Substeps add up.
    struct HY_API Timings {
        HyReal preUpdate = 0;
        HyReal detectCollisions = 0;
        HyReal advanceKinematics = 0;
        HyReal solveDynamics = 0;
        HyReal revertDynamics = 0;
        HyReal advanceDynamics = 0;
        HyReal postUpdate = 0;

        Timings& operator+=(const Timings& other);
        Timings& operator*=(HyReal factor);
        [[nodiscard]] Timings operator+(const Timings& other) const;
        [[nodiscard]] Timings operator*(HyReal factor) const;
        /// Sum of the phases from detectCollisions to postUpdate, s; preUpdate is not in it.
        [[nodiscard]] HyReal getTotal() const;
    };

    static constexpr int kDefaultPriority = 5;

    /// @param priority place in the frame's order: lower runs first, equal ones in the order of adding
    explicit HyStepperBase(int priority = kDefaultPriority);
    ~HyStepperBase() override;
    [[nodiscard]] const char* getClassName() const override { return "HyStepperBase"; }

    /// Gives the bodies back the user's loads of this frame, of which a substep has consumed the
    /// present ones. Called before the solve of each further substep.
    virtual void restoreExternalForcesForSubstepping();
    /// Writes a readable report of the stepper's contents into a file.
    virtual void printContent(const char* fileName);

protected:
    /// Once at the start of a step.
    virtual void preUpdateImpl() = 0;
    /// @param dt length of the coming substep, s
    virtual void detectCollisionsImpl(HyReal dt) = 0;
    /// Moves what moves by prescription. @param dt s, negative to take a failed substep back
    virtual void advanceKinematicsImpl(HyReal dt) = 0;
    /// Finds forces and accelerations and moves nothing. @param dt s
    virtual void solveDynamicsImpl(HyReal dt) = 0;
    /// Forgets the result of a failed solve.
    virtual void revertDynamicsImpl() = 0;
    /// Moves what was solved. @param dt s
    virtual void advanceDynamicsImpl(HyReal dt) = 0;
    /// Once at the end of a step.
    virtual void postUpdateImpl() = 0;

public:
    // The phases, measured. preUpdate() begins the timings of a new step.
    void preUpdate();
    void detectCollisions(HyReal dt);
    void advanceKinematics(HyReal dt);
    void solveDynamics(HyReal dt);
    void revertDynamics();
    void advanceDynamics(HyReal dt);
    void postUpdate();

    [[nodiscard]] int getPriority() const { return mPriority; }
    [[nodiscard]] const Timings& getTimings() const { return mTimings; }

private:
    template <typename Phase>
    void measure(HyReal& seconds, Phase phase);

    const int mPriority;
    HyTimer mTimer{false};
    Timings mTimings;
};

} // namespace Hy
