#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyBaseUserData.h>
#include <Hy/HyCollisionRuleContainer.h>
#include <Hy/HyEulerAngles.h>
#include <Hy/HyMassProperties.h>
#include <Hy/HyTransform.h>
#include <Hy/HySafeWalk.h>

#include <memory>

struct DynBody;

namespace Hy {
class HyCollisionGeometry;
class FrictionDirectionSubscriber;
class HyConstraint;
class HyPartState;
class HyUniverse;

/// One rigid body of a universe.
///
/// A part is in the world where its frame is; its mass sits at its centre of mass, which may lie
/// elsewhere in that frame. Positions and vectors are "absolute" in world axes or "relative" in the
/// part's frame. Velocities and accelerations are those of the centre of mass unless a point is
/// named. Units: m, kg, s, N, rad. What is not finite is refused with a warning, and nothing changes.
///
/// Parts belong to the thread that steps the universe.
class HY_API HyPart : public HyClass<kHyPartClassId, HyBaseUserData>,
                      public HyCollisionRuleContainer {
public:
    /// Who moves the part.
    enum EntityControlTypeEnum {
        kControlAnimated = 0, ///< the application; it pushes others and is pushed by none
        kControlDynamic = 1,  ///< forces
        kControlStatic = 2    ///< nobody
    };

    using CollisionGeometries = HyWalkedObjects<HyCollisionGeometry>;

    // Life.

    /// An animated part at the origin, without mass.
    HyPart();
    /// A dynamic part of a mass in kg with an identity inertia tensor scaled by it. 0 makes an
    /// animated part; below 0 or not finite: a warning, and a dynamic part of no mass yet.
    explicit HyPart(HyReal mass);
    /// Leaves its universe.
    ~HyPart() override;
    [[nodiscard]] const char* getClassName() const override { return "HyPart"; }

    // Control. A change outside a universe waits until the first step in one.

    /// Stops the part and changes who moves it. In the middle of a step: a warning, and it does.
    void setControl(EntityControlTypeEnum control);
    /// The control asked for.
    [[nodiscard]] EntityControlTypeEnum getControl() const { return mControlType; }
    /// The control in force; static for a frozen part.
    [[nodiscard]] EntityControlTypeEnum getEffectiveControl() const { return mInternalControl; }
    /// Holds the part still without forgetting its control and velocity.
    void freeze(bool frozen);
    [[nodiscard]] bool isFrozen() const { return mFreezeState; }

    // Sleep. A dynamic part at rest falls asleep and costs nothing until something wakes it.

    /// Wakes a dynamic part or puts it to sleep. An animated part wakes what is connected to it,
    /// whatever the argument; on a static part: nothing.
    void wakeDynamics(bool awake);
    /// False for all but dynamic parts.
    [[nodiscard]] bool isDynamicsAwake() const;
    /// Steps since the part woke, -1 asleep.
    [[nodiscard]] int getEnabledSteps() const;
    /// Acts on a dynamic part that is awake.
    void setEnabledSteps(int steps);
    /// Whether a speed or an acceleration is above its threshold, or the part woke a moment ago.
    [[nodiscard]] bool isMoving() const;
    /// Zeroes velocities, accelerations and all loads.
    void resetDynamics();
    /// Below which the part may fall asleep.
    /// @param linearSpeed,linearAcceleration m/s, m/s²
    /// @param angularSpeed,angularAcceleration rad/s, rad/s²
    /// @param steps the part stays awake at least so long
    void setAutoSleepThreshold(HyReal linearSpeed, HyReal linearAcceleration, HyReal angularSpeed,
                               HyReal angularAcceleration, int steps);
    void setAutoSleepLinearSpeedThreshold(HyReal speed);
    void setAutoSleepLinearAccelerationThreshold(HyReal acceleration);
    void setAutoSleepAngularSpeedThreshold(HyReal speed);
    void setAutoSleepAngularAccelerationThreshold(HyReal acceleration);
    void setAutoSleepStepLiveThreshold(int steps);
    [[nodiscard]] HyReal getAutoSleepLinearSpeedThreshold() const;
    [[nodiscard]] HyReal getAutoSleepLinearAccelerationThreshold() const;
    [[nodiscard]] HyReal getAutoSleepAngularSpeedThreshold() const;
    [[nodiscard]] HyReal getAutoSleepAngularAccelerationThreshold() const;
    [[nodiscard]] int getAutoSleepStepLiveThreshold() const;
    /// Thresholds of the parts made from now on, in the order of setAutoSleepThreshold().
    static void setDefaultAutoSleepParameters(HyReal linearSpeed, HyReal linearAcceleration,
                                              HyReal angularSpeed, HyReal angularAcceleration,
                                              int steps);
    static void getDefaultAutoSleepParameters(HyReal& linearSpeed, HyReal& linearAcceleration,
                                              HyReal& angularSpeed, HyReal& angularAcceleration,
                                              int& steps);

    // Transform.

    /// Puts the part somewhere and wakes it. A transform equal to the present one but for rounding
    /// wakes nothing.
    void setTransform(const HyTransform& tm);
    /// Moves the part and gives it the velocities that reach the transform in dt seconds, and wakes
    /// what they move. With a dt of 0, outside a universe, or static: as setTransform(tm).
    void setTransform(const HyTransform& tm, HyReal dt);
    /// setTransform() with dt to a position; the orientation stays.
    void setPositionKinematic(const HyVector3& position, HyReal dt);
    void setPosition(const HyVector3& position);
    void setPosition(HyReal x, HyReal y, HyReal z) { setPosition(HyVector3(x, y, z)); }
    /// Normalises its argument, unless its squared norm is below 1e-7. Zero: a warning, no change.
    void setOrientationQuaternion(HyQuaternion& q);
    void setOrientationQuaternion(HyQuaternion&& q) { setOrientationQuaternion(q); }
    void setOrientationEulerAngles(const HyEulerAngles& angles);
    /// Valid and up to date as long as the part lives.
    [[nodiscard]] const HyTransform& getTransform() const;
    [[nodiscard]] const HyTransform* getTransformPtr() const { return &getTransform(); }
    [[nodiscard]] const HyVector3& getPosition() const { return getTransform().t(); }
    [[nodiscard]] HyQuaternion getOrientationQuaternion() const;
    [[nodiscard]] HyEulerAngles getOrientationEulerAngles() const;
    /// The transform that the part was set to last, or that it had before its last kinematic move.
    [[nodiscard]] const HyTransform& getPreviousTransform() const { return mPrevTransform; }

    // Velocity. Setting one has no other effect: it wakes nothing.

    void setLinearVelocity(const HyVector3& v);
    void setLinearVelocity(const HyReal v[3]);
    void setLinearVelocity(HyReal x, HyReal y, HyReal z);
    void setAngularVelocity(const HyVector3& w);
    void setAngularVelocity(const HyReal w[3]);
    void setAngularVelocity(HyReal x, HyReal y, HyReal z);
    [[nodiscard]] HyVector3 getLinearVelocity() const;
    [[nodiscard]] HyVector3 getAngularVelocity() const;
    /// Velocity of the material at a point.
    [[nodiscard]] HyVector3 getLinearVelocityAtAbsolutePosition(const HyVector3& position) const;
    [[nodiscard]] HyVector3 getLinearVelocityAtRelativePosition(const HyVector3& position) const;
    /// @param point absolute
    void getVelocityAtPoint(const HyReal point[3], HyReal velocity[3]) const;
    // Three numbers each, up to date as long as the part lives.
    [[nodiscard]] const HyReal* getLinearVelocityPtr() const;
    [[nodiscard]] const HyReal* getAngularVelocityPtr() const;
    void getVelocityPointers(const HyReal*& linear, const HyReal*& angular) const;
    /// About the centre of mass, kg m²/s, world axes.
    [[nodiscard]] HyVector3 getAngularMomentum() const;
    /// J, of translation and rotation.
    [[nodiscard]] HyReal getKineticEnergy() const;
    /// Force per velocity in N s/m, acting implicitly; not negative.
    void setLinearVelocityDamping(HyReal damping);
    /// Torque per angular velocity in N m s, likewise.
    void setAngularVelocityDamping(HyReal damping);
    [[nodiscard]] HyReal getLinearVelocityDamping() const;
    [[nodiscard]] HyReal getAngularVelocityDamping() const;

    // Acceleration in the last step.

    [[nodiscard]] HyVector3 getLinearAcceleration() const;
    [[nodiscard]] HyVector3 getAngularAcceleration() const;
    [[nodiscard]] HyVector3 getLinearAccelerationAtAbsolutePosition(const HyVector3& p) const;
    [[nodiscard]] HyVector3 getLinearAccelerationAtRelativePosition(const HyVector3& p) const;
    /// @param point absolute
    void getAccelerationAtPoint(const HyReal point[3], HyReal acceleration[3]) const;

    // Loads of the next step, world axes. They wake the part; no effect unless it is dynamic. An
    // impulse, in N s, acts as a force of impulse / step through one step.

    void addForce(const HyVector3& f);
    void addForce(const HyReal f[3]) { addForce(HyVector3(f)); }
    void addTorque(const HyVector3& t);
    void addTorque(const HyReal t[3]) { addTorque(HyVector3(t)); }
    void addImpulse(const HyVector3& impulse);
    void addImpulse(const HyReal impulse[3]) { addImpulse(HyVector3(impulse)); }
    void addForceAtAbsolutePosition(const HyVector3& f, const HyVector3& p);
    void addForceAtAbsolutePosition(const HyReal f[3], const HyReal p[3]);
    void addForceAtRelativePosition(const HyVector3& f, const HyVector3& p);
    void addForceAtRelativePosition(const HyReal f[3], const HyReal p[3]);
    /// At an absolute position.
    void addForceAtPosition(const HyVector3& f, const HyVector3& p);
    void addForceAtPosition(const HyReal f[3], const HyReal p[3]);
    /// At a relative position.
    void addForceAtLocalPosition(const HyVector3& f, const HyVector3& p);
    void addForceAtLocalPosition(const HyReal f[3], const HyReal p[3]);
    void addImpulseAtAbsolutePosition(const HyVector3& impulse, const HyVector3& p);
    void addImpulseAtAbsolutePosition(const HyReal impulse[3], const HyReal p[3]);
    void addImpulseAtRelativePosition(const HyVector3& impulse, const HyVector3& p);
    void addImpulseAtRelativePosition(const HyReal impulse[3], const HyReal p[3]);
    /// At an absolute position.
    void addImpulseAtPosition(const HyVector3& impulse, const HyVector3& p);
    void addImpulseAtPosition(const HyReal impulse[3], const HyReal p[3]);
    /// What has been added for the next step; impulses not counted.
    [[nodiscard]] HyVector3 getForce() const;
    [[nodiscard]] HyVector3 getTorque() const;
    /// Sum of added and constraint loads in the last step.
    [[nodiscard]] HyVector3 getLastForce() const;
    [[nodiscard]] HyVector3 getLastTorque() const;
    void getLastForceAndTorque(HyVector3& force, HyVector3& torque) const;

    // Mass. A value that is set is locked: geometry no longer overwrites it.

    /// Scales the inertia tensor along. A dynamic part only; above 0.
    void setMass(HyReal mass);
    [[nodiscard]] HyReal getMass() const { return mMassProperties.getMass(); }
    /// A dynamic part only. Mass and the three moments above 0, tensor positive definite.
    /// @param inertia about the centre of mass, part axes, kg m²
    void setMassAndInertia(HyReal mass, const HyReal inertia[3][3]);
    /// Takes mass properties and locks of another part, both being dynamic.
    void setMassFromPart(const HyPart* other);
    /// Takes mass, tensor and centre of mass. A dynamic part needs a mass and a positive definite
    /// tensor; this and the next two refuse less with a warning.
    void setMassProperties(const HyMassProperties& properties);
    /// Adds a body whose frame lies at tm in the part's.
    void addMassProperties(const HyMassProperties& properties, const HyTransform& tm);
    void subtractMassProperties(const HyMassProperties& properties, const HyTransform& tm);
    [[nodiscard]] const HyMassProperties& getMassProperties() const { return mMassProperties; }
    /// Moves the centre of mass to an absolute position.
    void setCOMPosition(const HyVector3& position);
    [[nodiscard]] HyVector3 getCOMPosition() const;
    /// Moves the centre of mass in the part. The material moves on as it did.
    void setCOMOffset(const HyVector3& offset);
    [[nodiscard]] HyVector3 getCOMOffset() const;
    /// Inertia tensor about the centre of mass in part axes, and in world axes.
    void getInertiaLocal(HyReal inertia[3][3]) const;
    void getInertiaAbsolute(HyReal inertia[3][3]) const;
    /// Principal moments, and the absolute frame that they belong to.
    void getOrthogonalInertia(HyVector3& moments, HyTransform& frame) const;
    /// A lock that opens lets the geometries decide again.
    void setLockMass(bool locked);
    void setLockCOM(bool locked);
    void setLockInertia(bool locked);
    [[nodiscard]] bool getLockMass() const { return mMassLocked; }
    [[nodiscard]] bool getLockCOM() const { return mCOMLocked; }
    [[nodiscard]] bool getLockInertia() const { return mInertiaLocked; }
    /// Locks all three.
    void lockMassProperties();
    /// Lets the tensor act as the mean of its diagonal about every axis.
    void setSphericalInertiaEnabled(bool enabled);
    [[nodiscard]] bool getSphericalInertiaEnabled() const;

    // Mass from geometries: what is not locked follows them, by their densities.

    /// Takes mass, tensor and centre of mass of one geometry, and locks all three.
    void setMassPropertiesFromGeometry(const HyCollisionGeometry* geometry);
    /// Takes the tensor, scaled to the part's mass, and the centre of mass, and locks the two.
    void setInertiaAndCOMFromGeometry(const HyCollisionGeometry* geometry);
    /// Opens all three locks.
    void resetMassPropertiesFromCollisionGeometry();
    /// Sum over the geometries that count for the mass, by their densities. False without any volume.
    bool getGeometryMassProperties(HyMassProperties& properties) const;

    // Geometries. They move with the part, are owned by it, and never touch each other.

    /// Takes a geometry, out of a composite, another part or universe if it is in one. False for
    /// null, one that is here, and a hole, which needs a composite and gets a warning.
    bool addCollisionGeometry(HyCollisionGeometry* geometry);
    /// Gives a geometry back to the caller; null if it was not here.
    HyCollisionGeometry* removeCollisionGeometry(HyCollisionGeometry* geometry);
    void destroyCollisionGeometry(HyCollisionGeometry* geometry);
    /// The mass properties stay as they are.
    void destroyCollisionGeometries();
    /// In the order of creation.
    [[nodiscard]] const CollisionGeometries& getCollisionGeometries() const {
        return mCollisionGeometries;
    }
    /// World box of all geometries; the part's position if there are none.
    void getBoundingBox(HyVector3& min, HyVector3& max) const;
    /// A world sphere around all geometries.
    void getBoundingSphere(HyVector3& centre, HyReal& radius) const;
    /// Brings the geometries' world transforms up to date.
    void updateTransform();
    /// Brings the space up to date with the geometries.
    void updateCollision();
    void dirtyCollisionGeometries();
    /// Follows the part along its path, so that it cannot jump through what is thin.
    void setFastMoving(bool on);
    [[nodiscard]] bool getFastMoving() const { return mFastMoving; }
    /// Whether parts are fast from when they become dynamic; off at first.
    static void setAutoFastMoving(bool on);
    [[nodiscard]] static bool getAutoFastMoving();

    // Fast spin: rotation about this axis is integrated by itself, exactly. An axis has any length;
    // zero stands for (1, 0, 0).

    void setFastSpinAxisEnabled(bool enabled);
    [[nodiscard]] bool getFastSpinAxisEnabled() const { return mFastSpinAxisEnabled; }
    void setFastSpinAxisRelative(const HyVector3& axis);
    void setFastSpinAxisAbsolute(const HyVector3& axis);
    [[nodiscard]] HyVector3 getFastSpinAxisRelative() const { return mFastSpinAxis; }
    [[nodiscard]] HyVector3 getFastSpinAxisAbsolute() const;
    void setFastSpinAxisRel(const HyVector3& axis) { setFastSpinAxisRelative(axis); }
    [[nodiscard]] HyVector3 getFastSpinAxisRel() const { return getFastSpinAxisRelative(); }
    /// Absolute.
    void setFastSpinAxis(const HyVector3& axis) { setFastSpinAxisAbsolute(axis); }
    [[nodiscard]] HyVector3 getFastSpinAxis() const { return getFastSpinAxisAbsolute(); }

    // Solver.

    /// Solver group, 0 at first; -1 for none. Its settings are made on demand in a universe.
    void setSolverGroup(int group);
    [[nodiscard]] int getSolverGroup() const { return mSolverGroup; }
    /// Partition of the last step, -1 asleep.
    [[nodiscard]] int getLastPartitionIndex() const;

    // Constraints.

    [[nodiscard]] int getConstraintCount() const {
        return static_cast<int>(mConstraintsArr.size());
    }
    /// The constraints that name the part, in the order in which they took it; null for an index out
    /// of range.
    [[nodiscard]] HyConstraint* getConstraint(int i) const;

    // Contacts.

    /// Lets a subscriber aim the friction of the part's contacts; null ends that. Of two parts in
    /// contact the first one's subscriber is asked, if it has one.
    /// @param subscriber owned by the part from now on; the one so far is deleted. Not from a response
    ///   or subscriber: a warning, no change, and it stays the caller's
    void setFrictionDirectionSubscriber(FrictionDirectionSubscriber* subscriber);
    [[nodiscard]] FrictionDirectionSubscriber* getFrictionDirectionSubscriber() const;

    // State.

    /// What restoreState() puts back. Owned by the caller.
    [[nodiscard]] HyPartState* createState();
    /// Brings the part to a captured state, so that it moves on from there to the same bits. False,
    /// and no change, for null and for the state of another part.
    bool restoreState(const HyPartState* state);
    /// The part of it that other changes of a universe undo: whether it sleeps, and how soon it may.
    void restoreActivity(const HyPartState& state);

    [[nodiscard]] HyUniverse* getUniverse() const { return mUniverse; }
    [[nodiscard]] DynBody* getDynBody() const { return mDynBodyID; }
    [[nodiscard]] int getCollisionRulePriority() const override;

    // For the universe.

    /// The part enters a universe, changes it, or leaves it (null).
    void setUniverse(HyUniverse* universe);
    /// What a part that asked for it does before a step: takes on the control asked for.
    void preStep();
    /// After the frame's step: what was added for it is gone.
    void postStep();

    // For geometries.

    /// Takes from the geometries what is not locked.
    void updateMassFromGeometries();

    // For constraints.

    /// A constraint names the part from now on, or in one slot less. Both wake it.
    void _addConstraint(HyConstraint* constraint);
    void _removeConstraint(HyConstraint* constraint);

private:
    void onCollisionRulesChanged() override;
    void init(EntityControlTypeEnum control);
    void _updateControl();
    void _applyControl(EntityControlTypeEnum control);
    void _freeze(bool frozen);
    void putToSleep();
    void leaveUniverse(HyUniverse& universe);
    void enterUniverse(HyUniverse& universe);
    void refreshTransform(const HyTransform& tm);
    void placeHeldPart(const HyTransform& tm);
    bool isDynamic() const { return mInternalControl == kControlDynamic; }
    /// Wakes a dynamic part for a load; false if the load is to be dropped.
    bool takesLoad(const char* operation, const HyVector3& load, const HyVector3& point);
    template <class Change>
    void changeMassProperties(Change change);
    bool takeMassProperties(const HyMassProperties& properties, const char* operation);
    void giveDefaultMass();
    void _postMassPropertiesChange();
    void _applyMassProperties(const HyMassProperties& properties);
    void _applyMass(const HyMassProperties& properties);
    void _applyInertia(const HyMassProperties& properties);
    void _applyCOMRelativeTM(const HyMassProperties& properties);
    void placeCentreOfMass(const HyTransform& tm);
    void updateConstraints();
    void applyFastSpinAxis();
    void setGeometriesStatic(bool on);
    void updateCollisionGeometryCOMOffset();

    HyTransform mPrevTransform;
    DynBody* mDynBodyID = nullptr; ///< from the pool of all parts
    HyMassProperties mMassProperties;
    HyVector3 mFastSpinAxis{0, 0, 1};       ///< relative
    HyArray<HyConstraint*> mConstraintsArr; ///< each once
    CollisionGeometries mCollisionGeometries;
    std::unique_ptr<FrictionDirectionSubscriber> mFrictionDirectionSubscriber;
    HyUniverse* mUniverse = nullptr;
    EntityControlTypeEnum mControlType = kControlAnimated;     ///< asked for
    EntityControlTypeEnum mInternalControl = kControlAnimated; ///< in force
    int mSolverGroup = 0;
    bool mControlTypeDirty = true; ///< not yet applied to the body
    bool mFreezeState = false;
    bool mFastMoving = false;
    bool mMassLocked = false;
    bool mCOMLocked = false;
    bool mInertiaLocked = false;
    bool mFastSpinAxisEnabled = false;
};

} // namespace Hy
