#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyBaseUserData.h>
#include <Hy/HyConstraintAttachment.h>
#include <Hy/HyConstraintFriction.h>

#include <array>
#include <initializer_list>
#include <limits>

struct DynBaseConstraint;
struct DyncLimit;
struct KitPool;

namespace Hy {
class ConstraintCoordinate;
class ConstraintEquation;
class ConstraintPartAttachment;
class HyConstraintState;
class HyUniverse;

/// Ties parts together. A null part stands for the world.
///
/// A constraint has equations, which always hold unless relaxed to springs, and coordinates: the
/// degrees of freedom that it leaves, each free, driven by a motor or locked, with optional stops. Both
/// compare the attachments, a frame on each part. It acts once it is enabled, in a universe, and all
/// of its parts are there too.
///
/// Units: m, N, kg, s, or rad, N m for what turns; the largest double stands for infinity. Indices
/// out of range, values that are not finite, and negative stiffness, damping and loss are refused
/// with a warning; reads then give 0. Constraints belong to the thread that steps their universe.
class HY_API HyConstraint : public HyClass<kHyConstraintClassId, HyBaseUserData> {
public:
    enum CoordinateTypeEnum {
        kCoordinateLinear = 0,
        kCoordinateAngular = 1,
        kCoordinateDistance = 2
    };
    /// Not the numbers that the record has for them.
    enum CoordinateControlEnum { kControlFree = 0, kControlMotorized = 1, kControlLocked = 2 };
    enum LimitEnum { kLimitLower = 0, kLimitUpper = 1 };

    static constexpr HyReal sDefaultStiffness = std::numeric_limits<HyReal>::max();
    static constexpr HyReal sDefaultDamping = 0;

    static constexpr const char* sEquationNameA0 = "Primary axis orientation";
    static constexpr const char* sEquationNameA1 = "Secondary axis orientation";
    static constexpr const char* sEquationNameA2 = "Third axis orientation";
    static constexpr const char* sEquationNameP0 = "Primary axis position";
    static constexpr const char* sEquationNameP1 = "Secondary axis position";
    static constexpr const char* sEquationNameP2 = "Third axis position";
    static constexpr const char* sEquationNameD = "Distance";
    static constexpr const char* sEquationNameW0 = "Primary axis angular velocity";

    /// What a class of joints says of one of its equations.
    struct EquationType {
        const char* name; ///< not owned
        int row;          ///< its index in the operations below
        int friction;     ///< friction entry that acts along the row, -1 for none
    };

    /// Leaves its universe and its parts.
    ~HyConstraint() override;
    [[nodiscard]] const char* getClassName() const override { return "HyConstraint"; }

    // Parts and attachments. Positions and axes are in the world, or in the part's frame ("Rel").
    // Axes are made orthonormal, the primary one stays. A part's own motion takes its attachment along.

    /// Puts a part, or none, into a slot. The attachment stays where it is in the world.
    virtual void setPart(int i, HyPart* part);
    virtual void setPartAttachmentPosition(int i, const HyReal position[3]);
    virtual void setPartAttachmentPosition(int i, HyReal x, HyReal y, HyReal z);
    virtual void getPartAttachmentPosition(int i, HyReal position[3]) const;
    virtual void setPartAttachmentAxis(int i, const HyVector3& primary);
    virtual void setPartAttachmentAxes(int i, const HyVector3& primary, const HyVector3& secondary);
    virtual void getPartAttachmentAxes(int i, HyVector3& primary, HyVector3& secondary) const;
    virtual void setPartAttachmentAxesRel(int i, const HyVector3& primary,
                                          const HyVector3& secondary);
    virtual void setPartAttachmentAxisRel(int i, const HyVector3& primary);
    /// Part whose attachment carries the axis of a coordinate. Where the joint leaves no choice: a
    /// warning, no change.
    virtual void setCoordinateReferencePartIndex(int i, int part);

    void setPartAttachmentPosition(int i, const HyVector3& position) {
        setPartAttachmentPosition(i, position.v);
    }
    [[nodiscard]] HyVector3 getPartAttachmentPosition(int i) const;
    /// The first two slots.
    void setParts(HyPart* part1, HyPart* part2);
    [[nodiscard]] HyPart* getPart(int i) const;
    /// Slots that hold a part.
    [[nodiscard]] int getPartCount() const;
    /// Slots.
    [[nodiscard]] int getMaxPartCount() const { return static_cast<int>(mPartList.size()); }
    /// @param secondary null leaves its choice open
    void setPartAndAttachment(int i, HyPart* part, const HyVector3& position,
                              const HyVector3& primary, const HyVector3* secondary);
    void setPartAndAttachmentRel(int i, HyPart* part, const HyVector3& position,
                                 const HyVector3& primary, const HyVector3* secondary);
    void setPartAttachmentPositionRel(int i, const HyVector3& position);
    [[nodiscard]] HyVector3 getPartAttachmentPositionRel(int i) const;
    /// From the part's centre of mass.
    void setPartAttachmentPositionCOMRel(int i, const HyVector3& offset);
    [[nodiscard]] HyVector3 getPartAttachmentPositionCOMRel(int i) const;
    [[nodiscard]] HyVector3 getPartAttachmentAxis(int i) const;
    [[nodiscard]] HyVector3 getPartAttachmentAxisRel(int i) const;
    void getPartAttachmentAxesRel(int i, HyVector3& primary, HyVector3& secondary) const;
    /// Takes part and frame of an attachment, and keeps a copy.
    void setAttachment(int i, const HyConstraintAttachment& attachment);
    /// The copy that was taken last.
    void getAttachment(int i, HyConstraintAttachment& attachment) const;
    /// Empties the copy.
    void resetAttachment(int i);
    /// Brings the copy up to date with part and frame as they are.
    void updateAttachmentFromPart(int i);
    [[nodiscard]] const HyArray<ConstraintPartAttachment*>& getPartAttachments() const {
        return mPartAttachments;
    }

    // Coordinates.

    [[nodiscard]] int getCoordinateCount() const;
    /// Whether motor and lock apply to it.
    [[nodiscard]] bool isCoordinateControllable(int i) const;
    [[nodiscard]] CoordinateTypeEnum getCoordinateType(int i) const;
    [[nodiscard]] bool isAngular(int i) const { return getCoordinateType(i) == kCoordinateAngular; }
    /// Goes free instead if the motor, or the lock, has no force. Wakes the parts. Answers whether the
    /// control has changed.
    bool setControl(int i, CoordinateControlEnum control);
    [[nodiscard]] CoordinateControlEnum getControl(int i) const;
    /// With offset; angles count turns. While stops are active it is that of the last step.
    [[nodiscard]] HyReal getCoordinateCurrentPosition(int i) const;
    /// Gives the present position another number by the offset; moves nothing.
    void setCoordinateCurrentPosition(int i, HyReal position);
    /// Takes the position anew from the parts, and answers it.
    HyReal recalculateCoordinateCurrentPosition(int i);
    [[nodiscard]] HyReal getCoordinateVelocity(int i) const;
    /// Keeps the position up to date in each step even if nothing acts on it.
    void setForceCalculateCoordinatePosition(int i, bool force);
    [[nodiscard]] HyReal getCoordinateOffset(int i) const;
    void setCoordinateOffset(int i, HyReal offset);
    /// Without offset, turns included.
    void setCoordinateInternalPosition(int i, HyReal position);
    [[nodiscard]] HyReal getCoordinateInternalPosition(int i) const;
    [[nodiscard]] int getCoordinateReferencePartIndex(int i) const;
    /// In the last step, on the first part along the coordinate: of motor, lock and stop together,
    /// of motor or lock, of the stop.
    [[nodiscard]] HyReal getCoordinateForce(int i) const;
    [[nodiscard]] HyReal getCoordinateControlForce(int i) const;
    [[nodiscard]] HyReal getCoordinateLimitForce(int i) const;
    [[nodiscard]] const HyArray<ConstraintCoordinate*>& getCoordinates() const {
        return mCoordinates;
    }

    // Motor: drives at a velocity with a force between two bounds. Loss is the velocity lost per force.

    void setMotorParameters(int i, HyReal velocity, HyReal maxForce, HyReal loss);
    void setMotorDesiredVelocity(int i, HyReal velocity);
    /// Bounds -f and f.
    void setMotorMaximumForce(int i, HyReal maxForce);
    void setMotorMinimumAndMaximumForce(int i, HyReal minForce, HyReal maxForce);
    void setMotorLoss(int i, HyReal loss);
    /// Lets the motor turn into a lock when it passes the lock position.
    void setMotorStopAtLock(int i, bool stop);
    [[nodiscard]] HyReal getMotorDesiredVelocity(int i) const;
    [[nodiscard]] HyReal getMotorMaximumForce(int i) const;
    [[nodiscard]] HyReal getMotorMinimumForce(int i) const;
    [[nodiscard]] HyReal getMotorLoss(int i) const;
    [[nodiscard]] bool getMotorStopAtLock(int i) const;
    [[nodiscard]] bool isMotorized(int i) const { return getControl(i) == kControlMotorized; }

    // Lock: holds a position, with offset, which may move, by a spring or rigidly.

    void setLockParameters(int i, HyReal position, HyReal maxForce,
                           HyReal stiffness = sDefaultStiffness, HyReal damping = sDefaultDamping,
                           HyReal velocity = 0);
    void setLockPosition(int i, HyReal position);
    void setLockVelocity(int i, HyReal velocity);
    /// Bounds -f and f.
    void setLockMaximumForce(int i, HyReal maxForce);
    void setLockMinimumAndMaximumForce(int i, HyReal minForce, HyReal maxForce);
    void setLockStiffness(int i, HyReal stiffness);
    void setLockDamping(int i, HyReal damping);
    void setLockStiffnessAndDamping(int i, HyReal stiffness, HyReal damping);
    [[nodiscard]] HyReal getLockPosition(int i) const;
    [[nodiscard]] HyReal getLockVelocity(int i) const;
    [[nodiscard]] HyReal getLockMaximumForce(int i) const;
    [[nodiscard]] HyReal getLockMinimumForce(int i) const;
    [[nodiscard]] HyReal getLockStiffness(int i) const;
    [[nodiscard]] HyReal getLockDamping(int i) const;
    [[nodiscard]] bool isLocked(int i) const { return getControl(i) == kControlLocked; }

    // Stops, with offset. One that crosses the other drags it along; the lock position is clamped
    // into both. They act while active.

    void setLowerLimit(int i, HyReal position, HyReal velocity = 0, HyReal restitution = 0,
                       HyReal stiffness = sDefaultStiffness, HyReal damping = sDefaultDamping);
    void setUpperLimit(int i, HyReal position, HyReal velocity = 0, HyReal restitution = 0,
                       HyReal stiffness = sDefaultStiffness, HyReal damping = sDefaultDamping);
    void setLimitPositions(int i, HyReal lower, HyReal upper);
    void setLimitPosition(int i, LimitEnum limit, HyReal position);
    void setLimitVelocity(int i, LimitEnum limit, HyReal velocity);
    /// Clamped to [0, 1].
    void setLimitRestitution(int i, LimitEnum limit, HyReal restitution);
    /// Above 0.
    void setLimitMaximumForce(int i, LimitEnum limit, HyReal force);
    void setLimitStiffness(int i, LimitEnum limit, HyReal stiffness);
    void setLimitDamping(int i, LimitEnum limit, HyReal damping);
    [[nodiscard]] HyReal getLimitPosition(int i, LimitEnum limit) const;
    [[nodiscard]] HyReal getLimitVelocity(int i, LimitEnum limit) const;
    [[nodiscard]] HyReal getLimitRestitution(int i, LimitEnum limit) const;
    [[nodiscard]] HyReal getLimitMaximumForce(int i, LimitEnum limit) const;
    [[nodiscard]] HyReal getLimitStiffness(int i, LimitEnum limit) const;
    [[nodiscard]] HyReal getLimitDamping(int i, LimitEnum limit) const;
    void setLimitsActive(int i, bool active);
    [[nodiscard]] bool getLimitsActive(int i) const;
    /// Whether the coordinate was beyond a stop in the last step.
    [[nodiscard]] bool isLimitExceeded(int i) const;
    /// Whether the stop is active and the position beyond it, or nearer than the tolerance.
    [[nodiscard]] bool isLimitReached(int i, LimitEnum limit, HyReal tolerance) const;

    // Equations, by row. A relaxed one acts as a spring with damper within force bounds.

    [[nodiscard]] int getConstraintEquationCount() const {
        return static_cast<int>(mEquations.size());
    }
    void setRelaxationParameters(int e, HyReal stiffness, HyReal damping, HyReal loss, bool enable);
    void getRelaxationParameters(int e, HyReal& stiffness, HyReal& damping, HyReal& loss,
                                 bool& enabled) const;
    void setRelaxationStiffnessAndDamping(int e, HyReal stiffness, HyReal damping);
    void setRelaxationStiffness(int e, HyReal stiffness);
    void setRelaxationDamping(int e, HyReal damping);
    void setRelaxationLoss(int e, HyReal loss);
    void enableRelaxation(int e, bool enable);
    [[nodiscard]] bool getRelaxationEnabled(int e) const;
    void setRelaxationMinMaxForce(int e, HyReal minForce, HyReal maxForce);
    void getRelaxationMinMaxForce(int e, HyReal& minForce, HyReal& maxForce) const;
    /// In the last step; 0 for an equation that had no row, and while the whole joint is locked.
    [[nodiscard]] HyReal getConstraintEquationForce(int e) const;
    /// In the order of their rows.
    [[nodiscard]] const HyArray<ConstraintEquation*>& getConstraintEquations() const {
        return mEquations;
    }

    // Friction. Null where the joint has none.

    [[nodiscard]] HyConstraintFriction* getCoordinateFriction(int i) const;
    [[nodiscard]] HyConstraintFriction* getConstraintEquationFriction(int e) const;
    /// Along (linear) or about axis i, 0 to 2, of the reference attachment.
    [[nodiscard]] HyConstraintFriction* getFriction(int i, bool linear) const;
    [[nodiscard]] HyReal getCoordinateFrictionForceLastFrame(int i) const;
    [[nodiscard]] HyReal getConstraintEquationFrictionForceLastFrame(int e) const;
    [[nodiscard]] bool getCoordinateFrictionAvailable(int i) const;
    [[nodiscard]] bool getConstraintEquationFrictionAvailable(int e) const;

    // State.

    void enable(bool on);
    /// What enable() asked for.
    [[nodiscard]] bool isEnabled() const { return mEnabled; }
    /// Whether it acts.
    [[nodiscard]] bool isEnabledInternal() const { return mEnabledInternal; }
    /// Forgets the last step's forces, and takes the coordinates anew from the parts.
    void resetDynamics();
    /// Joins the parts rigidly, attachment on attachment. Answers whether the joint can do that.
    bool lockAll(bool on);
    [[nodiscard]] bool isLockedAll() const;
    /// A weak constraint may be solved after the others, to keep groups of parts apart.
    void setWeak(bool weak);
    [[nodiscard]] bool getWeak() const;
    /// Ends with the next step.
    void setWeakOneFrame(bool weak);
    [[nodiscard]] bool getWeakOneFrame() const;
    /// Lets one of the parts act as if this constraint could not move it; null for none.
    void setForcePartKinematicResponse(HyPart* part);
    /// The same by slot, -1 for none.
    void setForcePartKinematicResponseIndex(int i);
    [[nodiscard]] int getForcePartKinematicResponseIndex() const { return mKinematicPartIndex; }
    /// 1 if the force of a row reached its upper bound in the last step, -1 its lower one, else 0.
    [[nodiscard]] int forceLimitReached(int row) const;
    /// 1 if the solver group's softness replaced that of the row in the last step, else 0.
    [[nodiscard]] int complianceOverride(int row) const;
    /// On a part in the last step at its centre of mass, world axes.
    [[nodiscard]] HyVector3 getPartForce(int i) const;
    [[nodiscard]] HyVector3 getPartTorque(int i) const;
    /// What restoreState() puts back. Owned by the caller.
    [[nodiscard]] HyConstraintState* createState();
    /// False, and no change, for null and for the state of another constraint.
    bool restoreState(const HyConstraintState* state);

    [[nodiscard]] HyUniverse* getUniverse() const { return mUniverse; }
    [[nodiscard]] DynBaseConstraint* getDynConstraint() const { return mConstraint; }

    // For universe and parts.

    /// The constraint enters a universe, changes it, or leaves it (null).
    void setUniverse(HyUniverse* universe);
    /// Acts from now on, or no more, as universe and parts allow.
    void updateEnableInternal();
    /// The part is about to be destroyed.
    void forgetPart(HyPart* part);
    /// Whether a slot holds the part.
    [[nodiscard]] bool hasPart(const HyPart* part) const;

protected:
    /// Pool of the records of all constraints; made for the first of them.
    [[nodiscard]] static KitPool* getConstraintPool();
    /// Takes over a record from that pool, with the number of its slots.
    explicit HyConstraint(DynBaseConstraint* record);

    void addEquations(std::initializer_list<EquationType> equations);
    /// One name a coordinate of the record; not owned.
    void addCoordinates(std::initializer_list<const char*> names);
    void wakeParts() const;
    /// Both of the first two attachments, in the world.
    void setBothPositions(const HyVector3& position);
    void setBothAxes(const HyVector3& primary, const HyVector3* secondary);
    /// The coordinate, or null with a warning.
    [[nodiscard]] DyncLimit* coordinateAt(int i, const char* operation) const;

    [[nodiscard]] virtual HyConstraintState* createStateImpl();
    virtual void restoreStateImpl(const HyConstraintState& state);
    /// Takes all parts out, and brings the record to its initial state.
    virtual void _reset();
    /// False for an equation without friction.
    [[nodiscard]] virtual bool getConstraintEquationFrictionIndex(int e, int& index) const;
    [[nodiscard]] bool getCoordinateFrictionIndex(int i, int& index) const;

private:
    [[nodiscard]] bool isPartIndex(int i) const;
    [[nodiscard]] bool isEquation(int e, const char* operation) const;
    [[nodiscard]] const ConstraintEquation* findEquation(int e) const;
    [[nodiscard]] DyncLimit* silentCoordinateAt(int i) const;
    [[nodiscard]] bool mayAct() const;
    [[nodiscard]] bool measuresCoordinates() const;
    [[nodiscard]] bool tracksPosition(const DyncLimit& limit) const;
    void wakePartsIf(bool inUse) const;
    void noteVelocity(HyReal velocity);
    void replacePart(int i, HyPart* part);
    void followKinematicPart();
    template <class Set>
    void changeMotor(int i, const char* operation, Set set);
    template <class Set>
    void changeLock(int i, const char* operation, Set set);
    template <class Set>
    void changeStop(int i, LimitEnum limit, const char* operation, Set set);
    template <class Set>
    void changeEquation(int e, const char* operation, Set set);
    void restoreCoordinates(const HyConstraintState& state);
    void restoreAttachments(const HyConstraintState& state);

    int mKinematicPartIndex = -1;
    DynBaseConstraint* mConstraint; ///< from the pool of all constraints
    HyUniverse* mUniverse = nullptr;
    HyArray<HyPart*> mPartList; ///< a slot each
    HyArray<HyConstraintAttachment> mAttachmentListRef;
    HyArray<ConstraintPartAttachment*> mPartAttachments; ///< owned, as the next two
    HyArray<ConstraintEquation*> mEquations;
    HyArray<ConstraintCoordinate*> mCoordinates;
    mutable std::array<HyConstraintFriction, 6> mFriction;
    bool mEnabled = false;         ///< asked for
    bool mEnabledInternal = false; ///< in force
};

} // namespace Hy
