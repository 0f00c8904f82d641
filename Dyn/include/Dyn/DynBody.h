#pragma once
#include <Dync/DynBaseConstraint.h>
#include <Dyns/DynsBody.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

#include <cstdint>

struct DynWorld;
struct KitPool;
namespace Hy {
class HyPart;
}

/// When a body may fall asleep: below all four thresholds, and awake for at least alive_window steps.
struct DynAutoDisableParams {
    KitReal vel_thresh = 0.14;     ///< m/s
    KitReal velrot_thresh = 0.03;  ///< rad/s
    KitReal acc_thresh = 0.045;    ///< m/s^2
    KitReal accrot_thresh = 0.045; ///< rad/s^2
    int alive_window = 10;         ///< steps
};

enum DynGraphNodeColor : int {
    kDynGraphNodeWhite = 0,
    kDynGraphNodeGrey = 1,
    kDynGraphNodeBlack = 2,
};

/// What the partitioner knows of a body.
struct DynGraphNodeData {
    int color = kDynGraphNodeWhite;
    int distance = 0;
    int idx = -1;
    int special_add = 0;
};

/// Values of DynBody::stateFlags; 0 is a dynamic body.
enum DynBodyState : unsigned {
    kDynBodyFrozen = 1,
    kDynBodyKinematic = 2,
};

/// A pose to the last bit: frame, centre of mass and quaternion as the integrator left them.
struct DynBodyPose {
    KitMatrix4 bodyTM;
    KitMatrix4 comToBodyTM;
    KitMatrix4 tm;   ///< of the centre of mass
    KitVector4 qrot; ///< orientation of tm: w, x, y, z
};

/// Chooses a friction direction for a contact of the body.
using DynFrictionDirectionCB = void (*)(DynBaseConstraint* contact, DynBody* body, void* data);

/// A rigid body. kiroBody is what the solver reads; it comes first and lies on its own cache lines, and
/// what every walk over the enabled bodies asks for lies on the next one.
struct DynBody {
    DynsBody kiroBody;
    DynBody* enabledNext;
    DynBody** enabledTome;
    DynBody* rootParent;          ///< merge root, itself if not merged
    KitCListNode* constraintList; ///< slots of enabled constraints
    std::uint64_t solvedStep;     ///< the world step that solved it last
    KitReal mass;                 ///< kg
    int enabledTime;              ///< -1 disabled; otherwise steps since enabled
    unsigned stateFlags;          ///< DynBodyState
    int partitionIndex;
    bool processedByPartitioner;
    bool useBodyOffset;   ///< the centre of mass differs from the body frame
    bool impulseAdded;    ///< an impulse is waiting
    bool impulseConsumed; ///< the present step has taken the consumed impulses
    // Read in each step.
    KitMatrix4 bodyTM;                ///< transform of the body frame, world
    KitMatrix4 comToBodyTM;           ///< from the centre of mass to the body frame
    KitVector3 lastForce, lastTorque; ///< total load of the last finished step
    DynAutoDisableParams autoDisableParams;
    DynGraphNodeData node_data;
    std::uint64_t serial; ///< order of creation, never repeated in a process
    DynWorld* world;
    int enabledIndex;     ///< place in the world's array of enabled bodies, -1 if not there
    bool isUserLoadSaved; ///< the saved load below is not zero
    // Read when there is a load, or when the state changes.
    KitVector4 impulseLinear, impulseAngular; ///< waiting for the next step, N s, N m s
    KitVector3 savedForce, savedTorque;       ///< user load saved for substeps
    /// Impulses consumed by the present step, re-armed if it is reverted.
    KitVector3 consumedImpulseLinear, consumedImpulseAngular;
    KitPool* pool; ///< that it was made in
    DynBody* next;
    DynBody** tome;
    KitCListNode* holders; ///< slots of all constraints that hold it, enabled or not
    Hy::HyPart* mPart;     ///< back reference, may be null
    DynFrictionDirectionCB frictionDirectionCB;
    void* frictionDirectionCBData;
    KitReal safeTime; ///< s
};

// No body argument may be null, except where a function destroys. A vector or number that is not
// finite is refused with a warning.

/// Of the bodies made or reset from now on.
HY_API void DynBodySetDefaultAutoDisableParams(const DynAutoDisableParams& params);
[[nodiscard]] HY_API const DynAutoDisableParams& DynBodyGetDefaultAutoDisableParams();
/// A body in its initial state (mass 1 kg, sphere inertia 0.4, at the origin, dynamic, disabled) from
/// the world's pool, not yet inserted. Null if the pool cannot grow.
[[nodiscard]] HY_API DynBody* DynBodyCreate(DynWorld* world);
[[nodiscard]] HY_API DynBody* DynBodyCreateInPool(KitPool* pool);
/// Takes the body out of its world, its constraints and its forces, and gives it back to its pool.
HY_API void DynBodyDestroy(DynBody* body);
HY_API void DynBodyDestroyInPool(DynBody* body, KitPool* pool);
/// The initial state again. The body keeps its world, its constraints, its part and its serial.
HY_API void DynBodyReset(DynBody* body);
/// Not provided: a fatal error.
HY_API void DynBodyCopy(DynBody* to, const DynBody* from);
/// Zeroes velocities, accelerations, momenta and all loads; an enabled body counts its steps anew.
HY_API void DynBodyResetDynamics(DynBody* body);
/// Keeps the sum of user and constraint load as the last load, then zeroes both.
HY_API void DynBodyResetForces(DynBody* body);
HY_API void DynBodyResetVelocityAndAcceleration(DynBody* body);
/// Drops force and torque that were added for the next step.
HY_API void DynBodyClearUserForces(DynBody* body);
HY_API void DynBodySaveUserForces(DynBody* body);
/// Adds the saved load to the present one, so that what hooks have added meanwhile stays.
HY_API void DynBodyRestoreUserForces(DynBody* body);
/// Gives back the impulses that the present step consumed.
HY_API void DynBodyRearmImpulses(DynBody* body);

/// Wakes a dynamic body and starts its count of steps anew; no other body.
HY_API void DynBodyEnable(DynBody* body);
HY_API void DynBodyDisable(DynBody* body);
// The same without telling the collision geometries.
HY_API void DynBodyEnableNoCB(DynBody* body);
HY_API void DynBodyDisableNoCB(DynBody* body);
[[nodiscard]] HY_API bool DynBodyIsEnabled(const DynBody* body);
/// Enables a dynamic body; for another, every dynamic body that shares a constraint with it.
HY_API void DynBodyEnableConnectedBodies(DynBody* body);
/// Takes the body out of the dynamics, at rest or not; its constraints hold on to it as to a wall.
HY_API void DynBodyFreeze(DynBody* body);
HY_API void DynBodyUnFreeze(DynBody* body);
[[nodiscard]] HY_API bool DynBodyIsFrozen(const DynBody* body);
HY_API void DynBodyMakeDynamic(DynBody* body);
HY_API void DynBodyMakeKinematic(DynBody* body);
[[nodiscard]] HY_API bool DynBodyIsDynamic(const DynBody* body);
[[nodiscard]] HY_API bool DynBodyIsKinematic(const DynBody* body);
[[nodiscard]] HY_API bool DynBodyIsMovingTest(const DynBody* body);
/// Steps since the body was enabled, -1 for a disabled one.
[[nodiscard]] HY_API int DynBodyGetEnabledTime(const DynBody* body);
/// No effect on a disabled body.
HY_API void DynBodySetEnabledTime(DynBody* body, int steps);

// Transforms of the body frame, world axes. What is not finite is refused with a warning.
HY_API void DynBodySetTransform(DynBody* body, const KitMatrix4 tm);
/// Moves the body and keeps the attachments of its constraints where they stand in the world.
HY_API void DynBodySetTransformAndUpdateConstraintAttachments(DynBody* body, const KitMatrix4 tm);
HY_API void DynBodyGetTransform(const DynBody* body, KitMatrix4 tm);
HY_API void DynBodySetPosition(DynBody* body, const KitVector3 position);
HY_API void DynBodySetOrientation(DynBody* body, const KitMatrix3 rotation);
HY_API void DynBodySetQuaternion(DynBody* body, const KitVector4 q);
HY_API void DynBodyGetPosition(const DynBody* body, KitVector3 position);
HY_API void DynBodyGetOrientation(const DynBody* body, KitMatrix3 rotation);
HY_API void DynBodyGetQuaternion(const DynBody* body, KitVector4 q);
HY_API void DynBodyGetPose(const DynBody* body, DynBodyPose* pose);
/// Puts back what DynBodyGetPose gave, to the bit; nothing else of the body changes. If the centre
/// of mass has moved in the body since, its pose is derived anew.
HY_API void DynBodySetPose(DynBody* body, const DynBodyPose& pose);
/// Moves the body and gives it the velocities that reach the transform in dt seconds.
HY_API void DynBodyMoveTo(DynBody* body, const KitMatrix4 tm, KitReal dt);
/// Transform of the centre of mass in the body frame. Keeps the motion of the material: the linear
/// velocity becomes that of the new centre.
HY_API void DynBodySetCenterOfMassRelativeTransform(DynBody* body, const KitMatrix4 tm);
HY_API void DynBodyGetCenterOfMassRelativeTransform(const DynBody* body, KitMatrix4 tm);
HY_API void DynBodyGetCenterOfMassPosition(const DynBody* body, KitVector3 position);
[[nodiscard]] HY_API const KitMatrix4* DynBodyGetCenterOfMassTransformPtr(const DynBody* body);
/// Centre-of-mass transform and quaternion from the body transform.
HY_API void UpdateCOMTransform(DynBody* body);
/// Body transform from the centre-of-mass transform.
HY_API void UpdateBodyTransform(DynBody* body);

// Mass in kg, above 0; tensors about the centre of mass in body axes, kg m^2, positive definite.
// Anything else: a warning, and the old value stays.
HY_API void DynBodySetMass(DynBody* body, KitReal mass);
[[nodiscard]] HY_API KitReal DynBodyGetMass(const DynBody* body);
HY_API void DynBodySetMassAndScaleInertiaTensor(DynBody* body, KitReal mass);
/// Whether a tensor is finite, symmetric but for rounding, and positive definite.
[[nodiscard]] HY_API bool DynBodyIsValidInertiaTensor(const KitMatrix3 tensor);
HY_API void DynBodySetInertiaTensor(DynBody* body, const KitMatrix3 tensor);
HY_API void DynBodyGetInertiaTensor(const DynBody* body, KitMatrix3 tensor);
HY_API void DynBodySetSphericalInertiaTensor(DynBody* body, KitReal moment);
HY_API void DynBodySetSphericalInertiaFlag(DynBody* body, bool on);
[[nodiscard]] HY_API bool DynBodyIsSphericalInertiaFlagSet(const DynBody* body);

// Motion. Velocities are those of the centre of mass, world axes.
HY_API void DynBodySetLinearVelocity(DynBody* body, const KitVector3 v);
HY_API void DynBodySetAngularVelocity(DynBody* body, const KitVector3 w);
HY_API void DynBodyGetLinearVelocity(const DynBody* body, KitVector3 v);
HY_API void DynBodyGetAngularVelocity(const DynBody* body, KitVector3 w);
HY_API void DynBodyGetLinearAcceleration(const DynBody* body, KitVector3 a);
HY_API void DynBodyGetAngularAcceleration(const DynBody* body, KitVector3 a);
/// Those of the last step, for a body brought to a captured state.
HY_API void DynBodySetAccelerations(DynBody* body, const KitVector3 linear,
                                    const KitVector3 angular);
HY_API void DynBodySetLinearVelocityDamping(DynBody* body, KitReal damping);
HY_API void DynBodySetAngularVelocityDamping(DynBody* body, KitReal damping);
[[nodiscard]] HY_API KitReal DynBodyGetLinearVelocityDamping(const DynBody* body);
[[nodiscard]] HY_API KitReal DynBodyGetAngularVelocityDamping(const DynBody* body);
HY_API void DynBodyGetVelocityAtPoint(const DynBody* body, const KitVector3 point, KitVector3 v);
HY_API void DynBodyGetAccelerationAtPoint(const DynBody* body, const KitVector3 point,
                                          KitVector3 a);
[[nodiscard]] HY_API KitReal DynBodyGetKineticEnergy(const DynBody* body);
/// About the centre of mass, world axes, kg m^2/s.
HY_API void DynBodyGetAngularMomentum(const DynBody* body, KitVector3 L);
/// Axis in world axes; see DynBodySetFastSpinAxisRel for body axes.
HY_API void DynBodySetFastSpinAxis(DynBody* body, const KitVector3 axis);
HY_API void DynBodySetFastSpinAxisRel(DynBody* body, const KitVector3 axis);
HY_API void DynBodySetNoFastSpinAxis(DynBody* body);
[[nodiscard]] HY_API bool DynBodyIsFastSpinAxisSet(const DynBody* body);
/// In body axes.
HY_API void DynBodyGetFastSpinAxis(const DynBody* body, KitVector3 axis);

// Load of the next step, N and N m, world axes and positions unless local (body frame).
HY_API void DynBodyAddForce(DynBody* body, const KitVector3 f);
HY_API void DynBodyAddTorque(DynBody* body, const KitVector3 t);
HY_API void DynBodyAddImpulse(DynBody* body, const KitVector3 impulse);
HY_API void DynBodyAddForceAtPosition(DynBody* body, const KitVector3 f, const KitVector3 p);
HY_API void DynBodyAddForceAtLocalPosition(DynBody* body, const KitVector3 f, const KitVector3 p);
HY_API void DynBodyAddImpulseAtPosition(DynBody* body, const KitVector3 impulse,
                                        const KitVector3 p);
HY_API void DynBodyGetForce(const DynBody* body, KitVector3 f);
HY_API void DynBodyGetTorque(const DynBody* body, KitVector3 t);
HY_API void DynBodyGetLastForce(const DynBody* body, KitVector3 f);
HY_API void DynBodyGetLastTorque(const DynBody* body, KitVector3 t);
[[nodiscard]] HY_API KitReal DynBodyGetSafeTime(const DynBody* body);
HY_API void DynBodySetSafeTime(DynBody* body, KitReal t);

HY_API void DynBodySetFrictionDirectionCB(DynBody* body, DynFrictionDirectionCB cb, void* data);

HY_API void DynBodySetAutoDisableVelocityThreshold(DynBody* body, KitReal v);
HY_API void DynBodySetAutoDisableAngularVelocityThreshold(DynBody* body, KitReal v);
HY_API void DynBodySetAutoDisableAccelerationThreshold(DynBody* body, KitReal a);
HY_API void DynBodySetAutoDisableAngularAccelerationThreshold(DynBody* body, KitReal a);
HY_API void DynBodySetAutoDisableAliveWindow(DynBody* body, int steps);
[[nodiscard]] HY_API KitReal DynBodyGetAutoDisableVelocityThreshold(const DynBody* body);
[[nodiscard]] HY_API KitReal DynBodyGetAutoDisableAngularVelocityThreshold(const DynBody* body);
[[nodiscard]] HY_API KitReal DynBodyGetAutoDisableAccelerationThreshold(const DynBody* body);
[[nodiscard]] HY_API KitReal DynBodyGetAutoDisableAngularAccelerationThreshold(const DynBody* body);
[[nodiscard]] HY_API int DynBodyGetAutoDisableAliveWindow(const DynBody* body);

/// Calls fn for each enabled constraint of the body once, the newest first. fn may disable and
/// destroy any: the removed are skipped, and those made meanwhile are not visited.
HY_API void DynBodyForAllConstraints(DynBody* body, void (*fn)(DynBaseConstraint*, void*),
                                     void* data);
HY_API void DynBodyDisableConstraints(DynBody* body);
HY_API void DynBodyDestroyConstraints(DynBody* body);
HY_API void DynBodySetUserGroup(DynBody* body, int group);
[[nodiscard]] HY_API int DynBodyGetUserGroup(const DynBody* body);
[[nodiscard]] HY_API int DynBodyGetLastPartitionIndex(const DynBody* body);
[[nodiscard]] HY_API DynBody* DynBodyGetFirst(DynWorld* world);
[[nodiscard]] HY_API DynBody* DynBodyGetNext(DynBody* body);
