#pragma once
#include <Dyn/DynPartition.h>
#include <Dync/DyncConstraintParameters.h>
#include <Dyns/DynsParameters.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

#include <cstdint>

struct DynBody;
struct DynBodyForce;
struct DynsConstraintFrames;
struct KitCListNode;
struct KitCPUResources;
struct KitPool;
class KitThreadPool;
namespace Hy {
class HyUniverse;
}

using DynWorldID = DynWorld*;

/// How a world reaches what the layers above own; filled by them, null entries are allowed. All are
/// called on the stepping thread.
struct DynWorldHost {
    void* owner = nullptr;
    /// Tells the collision geometries of a body that it rests (true) or moves.
    void (*setGeometriesStatic)(DynBody* body, bool isStatic) = nullptr;
    /// True once the present step is to be given up.
    bool (*stepAborted)(void* owner) = nullptr;
    /// Around the solve of the slice of partitions [start, end).
    void (*preUpdateForce)(void* owner, DynWorld* world, int start, int end) = nullptr;
    void (*postUpdateForce)(void* owner, DynWorld* world, int start, int end) = nullptr;
    KitThreadPool* (*threadPool)(void* owner) = nullptr;
    /// Solver group of all secondary partitions, negative for that of their first body.
    int (*globalCouplingSolverGroup)(void* owner) = nullptr;
};

struct DynWorldParams {
    KitReal timeStep = 1.0 / 60;       ///< s
    KitVector4 gravity = {0, 0, 0, 0}; ///< m/s^2
    DynsParameters k_params;
    DyncConstraintParameters bcl_params;
};

/// One partition on its way through packing, solving and unpacking.
struct DynWorldThreadData {
    DynWorld* w;
    int partitionID;
    int frameID;
};

/// Settings of one solver group. Its address is stable for the life of the world.
struct DynGrouping {
    DynWorld* world;
    int id;
    int secondaryid; ///< group whose settings secondary partitions of this group take
    int partition;
    int cross_grouping_depth; ///< -1: the world's
    int strength;
    int max_partition_bodies; ///< -1: no limit
    DynsParameters k_params;
    DyncConstraintParameters bcl_params;
};

enum DynSolverPartitionSplitting : int {
    kDynPartitionSplittingAutomatic = 0,
    kDynPartitionSplittingOnePass = 1,
    kDynPartitionSplittingGroup = 2,
};

/// Highest number of a solver group.
constexpr int kDynMaxGrouping = 65535;

/// The bodies, constraints and body forces of a universe, with the settings of their solve.
struct DynWorld {
    DynBody* bodyHead;
    DynBaseConstraint* constraintHead;
    DynBaseConstraint* enabledConstraintHead;
    DynBaseConstraint** kineticConstraintHead; ///< constraints that need a kinematic update
    int nKineticConstraints, maxKineticConstraints;
    DynBody* enabledBodyHead;
    DynBodyForce* forceHead;
    DynBodyForce* enabledForceHead;
    KitCPUResources* cpu_resources;
    int maxBodies, nBodies, nEnabledBodies;
    KitPool* bodyPool;
    int maxConstraints, nEnabledConstraints, nConstraints;
    KitPool* constraintPool;
    KitPool* cNodePool;
    KitPool* bodyForcePool;
    DynsConstraintFrames* constraint_frames;
    DynWorldThreadData* thread_data;
    int max_thread_data;
    int finalSlicedStep;
    DynSolverPartitionSplitting mSolverPartitionSplitting;
    DynPartitionOutput partitionOutput;
    DynWorldParams params;
    DynPartitionParameters partition_parameters;
    int resize; ///< bodies and constraints added since the last step
    KitPool* groupings_pool;
    DynGrouping** groupings;
    int n_groupings, max_groupings;
    int maxKiroFrames; ///< most partitions solved in one slice
    Hy::HyUniverse* universe;
    DynWorldHost host;
    std::uint64_t forceListVersion;  ///< rises whenever the list of enabled forces changes
    std::uint64_t stepCount;         ///< number of the present step, see DynBody::solvedStep
    struct DynWorldScratch* scratch; ///< buffers that live from step to step
};

// No world argument may be null, but where a function says or destroys. What must not be called from
// within a step (destroying, removing, stepping) warns and does nothing.

/// A world with room for so many bodies and constraints, each at least 1; it grows by itself.
[[nodiscard]] HY_API DynWorld* DynWorldCreate(int maxBodies, int maxConstraints);
/// Lets the bodies and the constraints go, destroys the forces, and frees the pools with all records
/// that were drawn from them. Such a record that is in no world may not hold, or be held by, one that
/// outlives it.
HY_API void DynWorldDestroy(DynWorld* world);
/// Gravity and all parameters back to their defaults; the contents stay.
HY_API void DynWorldReset(DynWorld* world);
/// Raises the capacities to at least these.
HY_API void DynWorldResize(DynWorld* world, int maxBodies, int maxConstraints);
HY_API void DynWorldSetHost(DynWorld* world, const DynWorldHost& host);
/// Takes in a body that is in no world; one that is enabled and dynamic is stepped from now on.
HY_API void DynWorldInsertBody(DynWorld* world, DynBody* body);
HY_API void DynWorldRemoveBody(DynWorld* world, DynBody* body);
/// Takes in a constraint that is in no world; it acts once it is enabled.
HY_API void DynWorldInsertConstraint(DynWorld* world, DynBaseConstraint* constraint);
/// The constraint must be disabled.
HY_API void DynWorldRemoveConstraint(DynWorld* world, DynBaseConstraint* constraint);
HY_API void DynWorldAddKinematicConstraint(DynWorld* world, DynBaseConstraint* constraint);
HY_API void DynWorldRemoveKinematicConstraint(DynWorld* world, DynBaseConstraint* constraint);
/// Moves the kinematic constraints by dt, which may be negative.
HY_API void DynWorldUpdateKinematicConstraint(DynWorld* world, KitReal dt);
/// Calls fn for each enabled constraint in the order of creation. fn may disable and destroy any:
/// the removed are skipped, the added are not visited.
HY_API void DynWorldForAllConstraints(DynWorld* world, void (*fn)(DynBaseConstraint*, void*),
                                      void* data);
/// Solves a step of dt seconds, above 0: accelerations and constraint forces; moves nothing. A null
/// world is ignored.
HY_API void DynWorldStep(DynWorld* world, KitReal dt);
/// Solves a step of the stored time step.
HY_API void DynWorldStepOne(DynWorld* world);
/// Moves the bodies that the last DynWorldStep solved by its step, and resets the loads of all
/// enabled ones. After an aborted step it only resets the loads.
HY_API void DynWorldIntegrate(DynWorld* world);
/// Also wakes every dynamic body.
HY_API void DynWorldSetGravity(DynWorld* world, const KitVector3 gravity);
HY_API void DynWorldGetGravity(const DynWorld* world, KitVector3 gravity);
HY_API void DynWorldSetTimeStep(DynWorld* world, KitReal dt);
[[nodiscard]] HY_API KitReal DynWorldGetTimeStep(const DynWorld* world);
HY_API void DynWorldResetForces(DynWorld* world);
// DynBodySaveUserForces, DynBodyRestoreUserForces and DynBodyClearUserForces on each enabled body.
HY_API void DynWorldSaveUserForces(DynWorld* world);
HY_API void DynWorldRestoreUserForces(DynWorld* world);
HY_API void DynWorldClearUserForces(DynWorld* world);
/// Takes the loads of a solve back that is not integrated: DynBodyResetForces and
/// DynBodyRearmImpulses on each enabled body.
HY_API void DynWorldRevertLoads(DynWorld* world);
HY_API void DynWorldResetDynamics(DynWorld* world);

/// Group i, created with all below it on demand; null for an index below 0 or above
/// kDynMaxGrouping. A group that this call creates starts with the parameters of group 0.
HY_API DynGrouping* DynGroupingGet(DynWorld* world, int i);
[[nodiscard]] HY_API int DynGroupingCount(const DynWorld* world);
