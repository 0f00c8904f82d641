#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyCallbackList.h>
#include <Hy/HyStepperBase.h>
#include <Hy/HyThreadPool.h>
#include <Hy/HyTimer.h>
#include <Hy/SortedVector.h>

#include <cstdint>
#include <memory>

namespace Hy {
class HyFrameStepperOption;
class HyUniverse;

/// The one entry of the library: owns the steppers, the time step, the thread pool and the logic of
/// a step. There is one at a time; instance() makes it, release() destroys it with all its steppers.
///
/// step() simulates one frame. Everything happens on the calling thread, but for the work that stages
/// of a step hand to the thread pool and wait for. Nothing of the frame may be changed by another
/// thread meanwhile.
class HY_API HyFrame : public HyClass<kHyFrameClassId, HyBase> {
public:
    /// Is told when universes come and go. Not owned; may unregister itself or others while told.
    class HY_API Observer {
    public:
        virtual ~Observer() = default;
        virtual void universeAboutToBeAdded(HyUniverse&) {}
        virtual void universeAdded(HyUniverse&) {}
        virtual void universeAboutToBeRemoved(HyUniverse&) {}
        virtual void universeRemoved(HyUniverse&) {}
    };

    // Life.

    /// The frame, made on first use.
    static HyFrame* instance();
    /// The frame or null; makes none.
    static HyFrame* currentInstance();
    /// Destroys the frame and its steppers. Inside a step: a warning, nothing happens.
    static void release();
    /// True from the start of the frame's destruction.
    [[nodiscard]] bool releasing() const { return mReleasing; }
    /// Deletes the steppers. release() is the way to get here.
    ~HyFrame() override;
    [[nodiscard]] const char* getClassName() const override { return "HyFrame"; }

    // Time step, s.

    /// Sets the step of the next frames, 1/60 s at the start. 0 stops dynamics, not collision
    /// detection. Below 0: turns on the automatic step between 0.0125 and 0.05 s with a weight of
    /// 0.9, but inside a step it is warned of and ignored. Not finite: a warning, nothing changes.
    void setTimeStep(HyReal dt);
    [[nodiscard]] HyReal getTimeStep() const { return mTimeStep; }
    /// Lets the step follow the time between two steps, or stops it. The step is filtered as
    /// delta * old + (1 - delta) * measured and then limited; it begins with the minimum.
    /// @param on off keeps the step where it is
    /// @param minimum,maximum limits, s; not finite or negative: a warning, nothing changes
    /// @param delta weight of the old step; outside of [0, 1] it becomes 0.1
    void setAutomaticTimeStep(bool on, HyReal minimum, HyReal maximum, HyReal delta);
    [[nodiscard]] bool getAutomaticTimeStep() const { return mAutomaticTimeStep; }
    [[nodiscard]] HyReal getMinTimeStep() const { return mMinTimeStep; }
    [[nodiscard]] HyReal getMaxTimeStep() const { return mMaxTimeStep; }
    [[nodiscard]] HyReal getTimeStepDelta() const { return mTimeStepDelta; }

    // Stepping.

    /// Simulates one frame. Called from inside a step it warns and does nothing.
    void step();
    /// Runs the plain pipeline over the steppers of addPsStepper(): each phase once, with no guard,
    /// no substep and no recovery.
    void stepPs();
    /// Whether a step is under way.
    [[nodiscard]] bool isStepping() const { return mInsideStep; }
    /// Number of steps that step() has finished.
    [[nodiscard]] std::uint64_t getFrameNumber() const { return mFrameNumber; }
    /// Sum over the steppers of the last step().
    [[nodiscard]] const HyStepperBase::Timings& getTimings() const { return mTimings; }
    /// Sum over the steppers of the last stepPs().
    [[nodiscard]] const HyStepperBase::Timings& getPsTimings() const { return mPsTimings; }
    /// Gives the present solve up: the rest of it is skipped, and the frame recovers if that is on
    /// (see HyFrameStepperOption). Cleared when the next step begins.
    void setStepAborted() { mStepAborted = true; }
    [[nodiscard]] bool getStepAborted() const { return mStepAborted; }
    /// Cuts a step at times of impact.
    void setContinuousCollisionDetection(bool on) { mContinuousCollisionDetection = on; }
    [[nodiscard]] bool getContinuousCollisionDetection() const {
        return mContinuousCollisionDetection;
    }
    /// Greatest number of cuts in one step, 10 at the start. Below 2 is warned of and stored.
    void setContinuousCollisionDetectionMaxSubStepCount(unsigned count);
    [[nodiscard]] unsigned getContinuousCollisionDetectionMaxSubStepCount() const {
        return mContinuousCollisionDetectionMaxSubStepCount;
    }
    /// Earliest time of impact that the universes have found in this substep, s; at most the time
    /// step, and the whole of it while collision is off.
    [[nodiscard]] HyReal getCollisionSafeTime() const;
    /// Gives the steppers' bodies back the user's loads of this frame.
    void restoreExternalForcesForSubstepping();

    // Wall clock, s.

    /// Time since the last automatic step, or since the frame was made.
    [[nodiscard]] HyReal getTime() const;
    /// Time since the frame was made.
    [[nodiscard]] HyReal getAbsoluteTime() const;
    /// getAbsoluteTime() at the start of the last step.
    [[nodiscard]] HyReal getAbsolutTimeOfCurrentStep() const { return mAbsStepTime; }

    // Steppers. The frame owns those that it has; a null argument is ignored and answers false.

    /// Puts a stepper in its place by priority, behind those of the same. Nothing if it is there.
    void addStepper(HyStepperBase* stepper);
    /// Takes a stepper out; the caller owns it again. Answers whether it was there.
    bool removeStepper(HyStepperBase* stepper);
    [[nodiscard]] bool hasStepper(const HyStepperBase* stepper) const;
    [[nodiscard]] int getStepperCount() const;
    /// Null for an index out of range.
    [[nodiscard]] HyStepperBase* getStepper(int index) const;
    /// Adds a stepper to the plain pipeline and, as addStepper() does, to the other.
    void addPsStepper(HyStepperBase* stepper);
    /// Takes a stepper out of both; answers what removeStepper() answers.
    bool removePsStepper(HyStepperBase* stepper);
    [[nodiscard]] int getPsStepperCount() const;
    /// Null for an index out of range.
    [[nodiscard]] HyStepperBase* getPsStepper(int index) const;

    // Universes: addStepper() and removeStepper() between the calls of the observers.

    /// Null: a warning, nothing happens.
    void addUniverse(HyUniverse* universe);
    /// The caller owns it again. Null: a warning, and false.
    bool removeUniverse(HyUniverse* universe);
    [[nodiscard]] int getUniverseCount() const;
    /// In the order of adding; null for an index out of range.
    [[nodiscard]] HyUniverse* getUniverse(int index) const;
    /// The first universe, made and added if there is none.
    HyUniverse& getUniverse();
    /// Null: a warning, nothing happens. One that is there already is not added again.
    void registerObserver(Observer* observer);
    void unregisterObserver(Observer* observer);

    // Threads and others.

    /// Made on the first call, with getMaxThreadCount() threads.
    [[nodiscard]] HyThreadPool* getThreadPool();
    [[nodiscard]] int getMaxThreadCount() const { return mMaxThreadCount; }
    /// Size of the pool that getThreadPool() will make; one that exists keeps its size. 0 counts as
    /// 1; negative: a warning, nothing changes.
    void setMaxThreadCount(int count);
    /// Warnings up to this code are shown.
    void setWarningLevel(int level);
    [[nodiscard]] HyFrameStepperOption& getStepperOption() const { return mStepperOption; }
    /// Stored for the application; nothing depends on it.
    void setEnableHideFloatingPointException(bool on) { mEnableHideFloatingPointException = on; }
    [[nodiscard]] bool getEnableHideFloatingPointException() const {
        return mEnableHideFloatingPointException;
    }
    /// First of n numbers that no other call of this frame gives, from 1 on. n below 1 or past the
    /// range of int: a warning, and 0.
    int getNewInternalID(int n);
    /// Ends the process at once through abort.
    [[noreturn]] static void crash();

    // Memory tracking: which objects are alive. Knows those made while it was on.

    /// Off: all are forgotten, as their end would no longer be seen.
    void setEnableMemoryTracking(bool on);
    [[nodiscard]] bool getEnableMemoryTracking() const { return mEnableMemoryTracking; }
    /// Called by each object as it begins; nothing unless tracking is on.
    void addHyBaseInstance(HyBase* object);
    /// Called by each object as it ends; answers whether it was known, false unless tracking is on.
    bool removeHyBaseInstance(HyBase* object);
    /// Whether the object is known and alive; the pointer itself may be of a dead one.
    [[nodiscard]] bool isHyBaseValid(const HyBase* object) const;

private:
    HyFrame();
    struct StepGuard;

    void followWallClock();
    bool refuseInsideStep(const char* operation) const;

    template <typename Call>
    void forEachStepper(const Call& call);
    void doStepperPreStep();
    void doStepperDetectCollisions(HyReal dt);
    void doStepperAdvanceKinematics(HyReal dt);
    void doStepperSolveDynamics(HyReal dt);
    void doStepperRevertDynamics();
    void doStepperAdvanceDynamics(HyReal dt);
    void doStepperPostStep();
    [[nodiscard]] bool dynamicsRuns() const;

    void stepUpdate();
    HyReal simulateInOnePass();
    HyReal simulateBetweenImpacts();
    void detectWithoutImpacts(HyReal dt);
    void handleAbort(HyReal frameStep, HyReal remaining);
    void recover(HyReal frameStep, HyReal remaining);
    [[nodiscard]] static HyStepperBase::Timings
    sumOfTimings(const HyArray<HyStepperBase*>& steppers);

    HyArray<HyStepperBase*> mSteppers;     ///< by ascending priority
    HyArray<HyStepperBase*> mUniverseArr;  ///< those that are universes, in the order of adding
    HyArray<HyStepperBase*> mPsStepperArr; ///< of the plain pipeline, in the order of adding
    HyArray<HyStepperBase*> mStepperWalk;  ///< steppers of the running step; null: it has left
    SortedVector<HyBase*> mHyBaseList;     ///< by address, for look-up only
    HyCallbackList<Observer> mObservers;
    HyFrameStepperOption& mStepperOption;

    HyReal mTimeStep = 1.0 / 60;
    HyReal mMinTimeStep = 0.0125F;
    HyReal mMaxTimeStep = 0.05F;
    HyReal mTimeStepDelta = 0.9F;
    HyReal mAbsStepTime = 0;
    std::unique_ptr<HyTimer> mTimer;    ///< between two automatic steps
    std::unique_ptr<HyTimer> mAbsTimer; ///< from creation, never stopped
    std::unique_ptr<HyThreadPool> mThreadPool;
    HyStepperBase::Timings mTimings;
    HyStepperBase::Timings mPsTimings;
    std::uint64_t mFrameNumber = 0;
    int mMaxThreadCount;
    int mInternalIDStart = 1;
    unsigned mContinuousCollisionDetectionMaxSubStepCount = 10;
    bool mAutomaticTimeStep = false;
    bool mContinuousCollisionDetection = false;
    bool mEnableMemoryTracking = false;
    bool mEnableHideFloatingPointException = false;
    bool mStepAborted = false;
    bool mInsideStep = false;
    bool mReleasing = false;
};

} // namespace Hy
