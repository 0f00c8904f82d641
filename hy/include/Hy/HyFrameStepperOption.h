#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyTypes.h>
#include <Kit/KitApi.h>

#include <memory>

namespace Hy {
class HyCheckAcceleration;
class HyCheckContact;
class HyCheckFastMoving;
class HyCheckForceFrictionless;
class HyCheckForceKinematicPart;
class HyConstraint;
class HyFrameSettle;
class HyPart;
class HySolverParameters;
class HyUniverse;

/// Says which actions a step takes, and carries the checks that watch it. One object for the process,
/// independent of the life of the frame; a new frame starts it in kModeNormal.
class HY_API HyFrameStepperOption {
public:
    /// What each mode sets is told in HyFrameStepperOption.cpp's table, in the order of the actions:
    /// collision, dynamics, integration, checks, recovery.
    enum StepperModeEnum : int {
        kModeNormal = 0,                     ///< all but checks and recovery
        kModeCheck = 1,                      ///< all but recovery
        kModeSafe = 2,                       ///< all
        kModeDoNothing = 3,                  ///< none
        kModeCollisionOnly = 4,              ///< collision
        kModeCollisionAndDynamics = 5,       ///< collision, dynamics, checks
        kModeDynamicsAndIntegrationOnly = 6, ///< dynamics, integration, checks
        kModeManual = 7,                     ///< the actions were set one by one
    };

    /// An application's word on what a check has found.
    class HY_API CheckSubscriberCB {
    public:
        enum ReturnTypeEnum : int {
            kReturnTypeEnumAccept = 0, ///< it is a failure
            kReturnTypeEnumBreak = 1,  ///< it is a failure, and the check looks no further
            kReturnTypeEnumIgnore = 2, ///< it is none
        };

        virtual ~CheckSubscriberCB() = default;
        /// @param part null stands for the world
        /// @param description what was found
        virtual ReturnTypeEnum notifyCheckFailure(HyPart* part, const char* description);
        virtual ReturnTypeEnum notifyCheckFailure(HyConstraint* constraint,
                                                  const char* description);
    };

    /// A check: is called at fixed places of a step while it stands in getCheckSubscriberArray() and
    /// checks are on, always on the stepping thread. Aborts the step by HyFrame::setStepAborted().
    class HY_API CheckSubscriber {
    public:
        virtual ~CheckSubscriber() = default;
        // Each answers true to go on.
        /// Before the solve of all steppers.
        virtual bool preUpdateForceCheck() { return true; }
        /// After the solve of all steppers.
        virtual bool postUpdateForceCheck() { return true; }
        /// At the end of a step.
        virtual bool postStepCheck() { return true; }
        /// Reports the last finding.
        virtual void output() {}
        /// The step is cut at a time of impact, also while checks are off.
        /// @param time s from the start of the step
        virtual void timeOfImpactEvent(HyReal time) { (void)time; }

        void setPrintOutput(bool on) { mPrintOutput = on; }
        /// Whether the check may print its findings.
        [[nodiscard]] bool getPrintOutput() const { return mPrintOutput; }

        /// Not owned, null for none.
        void setCheckSubscriberCB(CheckSubscriberCB* callback) { mCheckSubscriberCB = callback; }
        [[nodiscard]] CheckSubscriberCB* getCheckSubscriberCB() const { return mCheckSubscriberCB; }

    private:
        bool mPrintOutput = false;
        CheckSubscriberCB* mCheckSubscriberCB = nullptr;
    };

    static HyFrameStepperOption& instance();
    HyFrameStepperOption(const HyFrameStepperOption&) = delete;
    HyFrameStepperOption& operator=(const HyFrameStepperOption&) = delete;

    /// Sets the actions of the mode; kModeManual leaves them. Not a mode: a warning, nothing changes.
    void setStepperMode(StepperModeEnum mode);
    [[nodiscard]] StepperModeEnum getStepperMode() const { return mStepperMode; }
    /// Back to kModeNormal, and no solver is forced.
    void resetStepperMode();

    // Single actions. Setting one makes the mode kModeManual.
    /// Off also disables the contacts that are there.
    void setUpdateActionCollision(bool on);
    void setUpdateActionDynamics(bool on);
    void setUpdateActionIntegrate(bool on);
    void setUpdateActionCheck(bool on);
    void setUpdateActionRecovery(bool on);
    [[nodiscard]] bool getUpdateActionCollision() const { return mUpdateActionCollision; }
    [[nodiscard]] bool getUpdateActionDynamics() const { return mUpdateActionDynamics; }
    [[nodiscard]] bool getUpdateActionIntegrate() const { return mUpdateActionIntegrate; }
    [[nodiscard]] bool getUpdateActionCheck() const { return mUpdateActionCheck; }
    [[nodiscard]] bool getUpdateActionRecovery() const { return mUpdateActionRecovery; }

    /// Number of substeps in which an aborted step is simulated again, at least 2. Less: a warning,
    /// nothing changes.
    void setRecoverySubstepCount(int count);
    [[nodiscard]] int getRecoverySubstepCount() const { return mRecoverySubstepCount; }

    /// Lets every solver group of every universe use the iterative solver, in each step for as long
    /// as the step lasts: each group has its own solver and number of sweeps back at its end. Groups
    /// that use the iterative solver by themselves keep their number of sweeps.
    void setForceIterativeSolver(bool on) { mForceIterativeSolver = on; }
    [[nodiscard]] bool getForceIterativeSolver() const { return mForceIterativeSolver; }
    /// Number of sweeps beyond the first in groups that are forced; 1 at the start. More than an int
    /// holds: a warning, nothing changes.
    void setForceIterativeSolverIterationCount(unsigned count);
    [[nodiscard]] unsigned getForceIterativeSolverIterationCount() const {
        return mForceIterativeSolverIterationCount;
    }

    // Built-in checks (see HyStepChecks.h): off at first. They act while checks are on. One that is
    // switched on is called after those that are; its settings stay while it is off.

    void setSettle(bool on);
    [[nodiscard]] bool getSettle() const;
    void setCheckFastMoving(bool on);
    [[nodiscard]] bool getCheckFastMoving() const;
    void setCheckContactPenetration(bool on);
    [[nodiscard]] bool getCheckContactPenetration() const;
    void setCheckAcceleration(bool on);
    [[nodiscard]] bool getCheckAcceleration() const;
    void setCheckForceFrictionless(bool on);
    [[nodiscard]] bool getCheckForceFrictionless() const;
    /// Off also takes it back in constraints.
    void setCheckForceKinematicPart(bool on);
    [[nodiscard]] bool getCheckForceKinematicPart() const;

    void setSettlingFactor(HyReal factor);
    [[nodiscard]] HyReal getSettlingFactor();
    /// Ratio of masses.
    void setCheckForceKinematicPartMassThreshold(HyReal ratio);
    [[nodiscard]] HyReal getCheckForceKinematicPartMassThreshold();
    /// m
    void setCheckContactPenetrationThreshold(HyReal penetration);
    [[nodiscard]] HyReal getCheckContactPenetrationThreshold();
    /// m/s^2; its square is stored.
    void setCheckAccelerationLinearThreshold(HyReal acceleration);
    [[nodiscard]] HyReal getCheckAccelerationLinearThreshold();
    /// rad/s^2; its square is stored.
    void setCheckAccelerationAngularThreshold(HyReal acceleration);
    [[nodiscard]] HyReal getCheckAccelerationAngularThreshold();

    /// HyUniverse::verifyDynamics() and verifyUniverseContent() of each universe.
    void staticCheck() const;

    /// Lets all active checks print or not, and built-in ones that are switched on later.
    void setVerbose(bool on);
    [[nodiscard]] bool getVerbose() const { return mVerbose; }

    /// The active checks, in the order in which they are called. Not owned: an application adds its
    /// own here and takes them out before they go, also from inside a check.
    [[nodiscard]] HyArray<CheckSubscriber*>& getCheckSubscriberArray() {
        return mCheckSubscriberArray;
    }

private:
    friend class HyFrame; // calls the hooks

    /// What forcing has changed in a solver group.
    struct SolverData {
        unsigned mSolverType = 0;
        int mIterativeSolverIterationCount = 1;
        HySolverParameters* mGroup = nullptr; ///< null once its universe has left
    };

    HyFrameStepperOption();
    ~HyFrameStepperOption();
    void preUpdateForce();
    void postUpdateForce();
    void postStep();
    void timeOfImpactEvent(HyReal time);
    template <typename Call>
    void forEachCheck(Call call);
    template <class Check>
    Check& need(std::unique_ptr<Check>& check);
    void setActive(CheckSubscriber& check, bool on);
    [[nodiscard]] bool isActive(const CheckSubscriber* check) const;
    static void disableContacts();
    void forceIterativeSolverPre();
    void forceIterativeSolverPost();
    bool restoreSolvers(HyUniverse& universe, std::size_t& next);
    void universeLeaves(HyUniverse& universe);

    StepperModeEnum mStepperMode = kModeNormal;
    bool mUpdateActionCollision = true;
    bool mUpdateActionDynamics = true;
    bool mUpdateActionIntegrate = true;
    bool mUpdateActionCheck = false;
    bool mUpdateActionRecovery = false;
    bool mVerbose = false;
    bool mForceIterativeSolver = false;
    bool mForceIterativeSolverNeedPost = false;
    unsigned mForceIterativeSolverIterationCount = 1;
    int mRecoverySubstepCount = 10;
    HyArray<SolverData> mSolverDataArray; ///< in the order of universes and groups
    std::size_t mSolverDataCount = 0;     ///< entries of this step
    HyArray<CheckSubscriber*> mCheckSubscriberArray;
    std::unique_ptr<HyFrameSettle> mFrameSettle;
    std::unique_ptr<HyCheckFastMoving> mCheckFastMoving;
    std::unique_ptr<HyCheckContact> mCheckContact;
    std::unique_ptr<HyCheckAcceleration> mCheckAcceleration;
    std::unique_ptr<HyCheckForceFrictionless> mCheckForceFrictionless;
    std::unique_ptr<HyCheckForceKinematicPart> mCheckForceKinematicPart;
    HyArray<CheckSubscriber*> mCheckWalk; ///< the checks of the hook that runs
};

} // namespace Hy
