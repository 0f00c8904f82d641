#pragma once
#include <Dyn/DynJointType.h>
#include <Dync/DynBaseConstraint.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

struct DynBody;
struct KitPool;

// What all constraints have in common: life, bodies, attachments, softness, results. No constraint
// argument may be null, except where a function destroys. Slots, rows and coordinates out of range,
// and numbers that are not finite, are refused with a warning.

// Life.

/// A record of the type with this tag, without world and bodies, in its initial state. Null with a
/// warning for an unknown tag and for a pool whose elements are too small; null if it cannot grow.
[[nodiscard]] HY_API DynBaseConstraint* DynConstraintCreateInPool(KitPool* pool, int tag);
/// Disables it, takes it out of its world and gives it back to its pool. Not in a step of its world:
/// false then, with a warning, and the record stays where it is.
HY_API bool DynConstraintDestroy(DynBaseConstraint* constraint);
/// The initial state again, disabled and without bodies. The record keeps its world, the numbers of
/// its slots and rows, its serial and its link to the high layer.
HY_API void DynConstraintReset(DynBaseConstraint* constraint);
/// Every row as if it had never been relaxed, and without flags.
HY_API void BaseConstraintReset(DynBaseConstraint* constraint);

// Bodies. An enabled constraint acts; one needs a world, and a body in one of its first two slots.

/// Null for a slot out of range.
[[nodiscard]] HY_API DynBody* DynConstraintGetBody(const DynBaseConstraint* constraint, int slot);
/// Puts a body, or none, into a slot. The attachment stays where it is in the world. An enabled
/// constraint stays so while it can; a body of another world is then refused with a warning.
HY_API void DynConstraintSetBody(DynBaseConstraint* constraint, int slot, DynBody* body);
/// The same for the first two slots.
HY_API void DynConstraintSetBodies(DynBaseConstraint* constraint, DynBody* body0, DynBody* body1);
/// Answers whether the constraint is enabled now. Not in a step.
HY_API bool DynConstraintEnable(DynBaseConstraint* constraint);
HY_API void DynConstraintDisable(DynBaseConstraint* constraint);
[[nodiscard]] HY_API bool DynConstraintIsEnabled(const DynBaseConstraint* constraint);
/// Wakes the bodies that sleep.
HY_API void DynConstraintEnableBodies(DynBaseConstraint* constraint);
/// If one of its bodies is awake or kinematic, wakes all but the strongest.
HY_API void DynConstraintEnableBodiesIfMoving(DynBaseConstraint* constraint);
/// Lets the body act in this constraint as if nothing could move it; null ends that.
HY_API void DynConstraintSetBodySeenAsKinematic(DynBaseConstraint* constraint, DynBody* body);

// Attachments: a frame a slot, carried by its body. Axes are made orthonormal, the primary one stays;
// a zero primary axis is refused with a warning.

/// A vector, and a point, from the centre-of-mass frame of one body to that of another; null stands
/// for the world.
HY_API void DynConvertCOMVector(const DynBody* from, const DynBody* to, KitVector3 v);
HY_API void DynConvertCOMPositionVector(const DynBody* from, const DynBody* to, KitVector3 p);
/// Follows a change of a body's centre-of-mass frame, given as the old one seen from the new one; the
/// body does so itself for its enabled constraints.
HY_API void DynConstraintAdaptAttachments(DynBaseConstraint* constraint, const DynBody* body,
                                          const KitMatrix4 change);
/// In the world.
HY_API void DynConstraintBodySetPosition(DynBaseConstraint* constraint, int slot,
                                         const KitVector3 position);
/// In the body's frame.
HY_API void DynConstraintBodySetPositionRel(DynBaseConstraint* constraint, int slot,
                                            const KitVector3 position);
/// In the body's centre-of-mass frame.
HY_API void DynConstraintBodySetPositionCOMRel(DynBaseConstraint* constraint, int slot,
                                               const KitVector3 position);
HY_API void DynConstraintBodyGetPosition(const DynBaseConstraint* constraint, int slot,
                                         KitVector3 position);
HY_API void DynConstraintBodyGetPositionRel(const DynBaseConstraint* constraint, int slot,
                                            KitVector3 position);
/// World axes. A null secondary axis leaves its choice open: the same for the same primary axis.
HY_API void DynConstraintBodySetAxes(DynBaseConstraint* constraint, int slot,
                                     const KitVector3 primary, const KitVector3 secondary);
/// Axes in the body's frame.
HY_API void DynConstraintBodySetAxesRel(DynBaseConstraint* constraint, int slot,
                                        const KitVector3 primary, const KitVector3 secondary);
/// Axis 0, 1 or 2 of the frame in the world.
HY_API void DynConstraintBodyGetAxis(const DynBaseConstraint* constraint, int slot, int axis,
                                     KitVector3 v);
HY_API void DynConstraintBodyGetAxisRel(const DynBaseConstraint* constraint, int slot, int axis,
                                        KitVector3 v);
/// One world position, axis or pair of axes for the first two slots.
HY_API void DynConstraintSetPosition(DynBaseConstraint* constraint, const KitVector3 position);
HY_API void DynConstraintSetAxis(DynBaseConstraint* constraint, const KitVector3 axis);
HY_API void DynConstraintSetAxes(DynBaseConstraint* constraint, const KitVector3 primary,
                                 const KitVector3 secondary);

// Softness of the equations, by row. Stiffness in N/m or N m/rad, above 0, DBL_MAX for rigid;
// damping in N s/m or N m s/rad and velocity loss in m/(N s) or rad/(N m s), not negative.

/// Answers false, with a warning and no change, for a value out of range; so do those below.
HY_API bool DynConstraintRelaxConstraint(DynBaseConstraint* constraint, int row, KitReal stiffness,
                                         KitReal damping, KitReal loss);
HY_API bool DynConstraintSetRelaxConstraintStiffness(DynBaseConstraint* constraint, int row,
                                                     KitReal stiffness);
HY_API bool DynConstraintSetRelaxConstraintDamping(DynBaseConstraint* constraint, int row,
                                                   KitReal damping);
HY_API bool DynConstraintSetRelaxConstraintLoss(DynBaseConstraint* constraint, int row,
                                                KitReal loss);
/// Bounds of the row's force, in any order.
HY_API bool DynConstraintSetRelaxConstraintMinMaxForce(DynBaseConstraint* constraint, int row,
                                                       KitReal minForce, KitReal maxForce);
/// Lets the row take its own softness, or the global one.
HY_API bool DynConstraintEnableRelaxConstraint(DynBaseConstraint* constraint, int row, bool on);
[[nodiscard]] HY_API KitReal
DynConstraintGetRelaxConstraintStiffness(const DynBaseConstraint* constraint, int row);

/// Joins the two frames rigidly, by six rows instead of the joint's own. Answers 0, with a warning,
/// if the joint's type does not allow it.
HY_API int DynConstraintLockConstraint(DynBaseConstraint* constraint);
HY_API void DynConstraintUnlockConstraint(DynBaseConstraint* constraint);
[[nodiscard]] HY_API bool DynConstraintIsLockedConstraint(const DynBaseConstraint* constraint);

// Coordinates.

[[nodiscard]] HY_API int DynConstraintGetLimitCount(const DynBaseConstraint* constraint);
/// Null for an index out of range.
[[nodiscard]] HY_API DyncLimit* DynConstraintGetIndexedLimit(const DynBaseConstraint* constraint,
                                                             int index);
/// From the present poses and velocities, offset not counted; the coordinate stays as it is.
[[nodiscard]] HY_API KitReal DynConstraintComputeLimitPosition(const DynBaseConstraint* constraint,
                                                               const DyncLimit* limit);
[[nodiscard]] HY_API KitReal DynConstraintComputeLimitVelocity(DynBaseConstraint* constraint,
                                                               const DyncLimit* limit);
/// Moves stops and lock targets by their velocities for h seconds, which may be negative.
HY_API void DynConstraintUpdateKinematic(DynBaseConstraint* constraint, KitReal h);
/// A stop or a lock target has got a velocity.
HY_API void DynConstraintSetNeedKinematicUpdate(DynBaseConstraint* constraint);
/// Finds out whether anything is there that moves.
HY_API void DynConstraintResetNeedKinematicUpdate(DynBaseConstraint* constraint);

/// What a step that is given up takes away from the coordinates, and cannot be computed back.
struct DynConstraintCoordinates {
    struct Coordinate {
        KitReal position, previous_position;
        KitReal lock_position, lock_velocity;
        KitReal stops[2];
        DynConstraintControlState control;
        DynLimitState limitState;
    };
    Coordinate coordinates[6];
    KitReal frictionMaxForce[6]; ///< of proportional friction
    int frictionRow[6];
    int dynamic_flags[kDynsMaxConstraintRows];
};
HY_API void DynConstraintSaveCoordinates(const DynBaseConstraint* constraint,
                                         DynConstraintCoordinates* saved);
/// Gives a constraint without bodies, which is not enabled, the serial of one that it stands for.
HY_API void DynConstraintSetSerial(DynBaseConstraint* constraint, std::uint64_t serial);
HY_API void DynConstraintRestoreCoordinates(DynBaseConstraint* constraint,
                                            const DynConstraintCoordinates& saved);

// Results of the last step.

/// Forgets them, and takes the coordinates anew from the bodies.
HY_API void DynConstraintResetDynamics(DynBaseConstraint* constraint);
/// Force and torque on the body of a slot at its centre of mass, world axes.
HY_API void DynConstraintGetForce(const DynBaseConstraint* constraint, int slot, KitVector3 force);
HY_API void DynConstraintGetTorque(const DynBaseConstraint* constraint, int slot,
                                   KitVector3 torque);
/// Errors and multipliers by row; behind the last multiplier stands kDynLambdaEnd.
[[nodiscard]] HY_API const KitReal* DynConstraintGetPhi(const DynBaseConstraint* constraint);
[[nodiscard]] HY_API const KitReal* DynConstraintGetLambda(const DynBaseConstraint* constraint);
/// Multiplier of a row, N or N m; 0 for a row that was not there.
[[nodiscard]] HY_API KitReal DynConstraintGetRowForce(const DynBaseConstraint* constraint, int row);
/// Multiplier of an equation; 0 if friction had its row, or the lock of the whole joint.
[[nodiscard]] HY_API KitReal DynConstraintGetEquationForce(const DynBaseConstraint* constraint,
                                                           int row);
/// Force along a coordinate from motor, lock and stops.
[[nodiscard]] HY_API KitReal DynConstraintGetLimitForce(const DynBaseConstraint* constraint,
                                                        const DyncLimit* limit);
/// The parts of it that come from motor or lock, and from a stop.
[[nodiscard]] HY_API KitReal DynConstraintGetLimitControlForce(const DynBaseConstraint* constraint,
                                                               const DyncLimit* limit);
[[nodiscard]] HY_API KitReal DynConstraintGetLimitStopForce(const DynBaseConstraint* constraint,
                                                            const DyncLimit* limit);
/// Force of a friction entry, 0 to 5.
[[nodiscard]] HY_API KitReal DynConstraintGetFrictionForce(const DynBaseConstraint* constraint,
                                                           int entry);
/// 1 if the force of a row was at its upper bound, -1 at its lower one, else 0.
[[nodiscard]] HY_API int DynConstraintForceLimitReached(const DynBaseConstraint* constraint,
                                                        int row);
/// 1 if the global softness replaced that of the row, else 0.
[[nodiscard]] HY_API int DynConstraintComplianceOverride(const DynBaseConstraint* constraint,
                                                         int row);
