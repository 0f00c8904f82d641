#pragma once
#include "DynBuffer.h"
#include "ProcessPartitionWorkUnit.h"

#include <Dyn/DynWorld.h>
#include <Kit/KitPool.h>

#include <cstdint>
#include <vector>

/// A walk over the enabled constraints that is under way. What is taken off the list meanwhile
/// becomes null here; what is added is not visited.
struct DynConstraintWalk {
    struct Entry {
        std::uint64_t serial;
        DynBaseConstraint* constraint;
    };
    DynBuffer<Entry> entries; ///< in the order of creation
    DynConstraintWalk* outer; ///< the walk that was under way when this one began
};

/// What waits for a sleeping body, while a body force is updated.
struct DynRestingLoad {
    DynBody* body;
    bool impulseAdded;
    KitVector3 force, torque, impulseLinear, impulseAngular;
};

/// Pools, and buffers that live from step to step; DynWorld::scratch.
struct DynWorldScratch {
    KitPool bodies, constraints, constraintNodes, bodyForces, groupings;
    DynConstraintWalk* walk = nullptr; ///< the innermost one
    std::uint64_t nodeRemovals = 0;    ///< from the bodies' lists of constraints, since creation
    bool stepping = false;
    int couplingGroup = -1; ///< solver group of all secondaries in this step, or negative
    std::vector<ProcessPartitionWorkUnit> units;
    DynBuffer<DynBody*> enabledBodies; ///< those of the enabled list, in any order
    DynBuffer<int> groupIsMoving;      ///< by partition group
    DynBuffer<DynRestingLoad> restingLoads;
    DynBuffer<char> stiffensBodies; ///< by partition: its group has geometric_stiffness
};

/// Whether a step is under way; if so, warns in the name of the function.
[[nodiscard]] bool DynWorldRefusesDuringStep(const DynWorld* world, const char* function);

/// Group i if it exists, else null.
[[nodiscard]] DynGrouping* DynGroupingFind(const DynWorld* world, int i);
/// Group of a body, or null: it has none, or none was made under its number.
[[nodiscard]] const DynGrouping* DynGroupingOfBody(const DynBody* body);
void DynGroupingDestroyAll(DynWorld* world);

/// Takes a constraint that leaves the enabled list out of the walks under way.
void DynConstraintWalkForget(DynWorld* world, const DynBaseConstraint* constraint);

/// Calls fn(DynsParameters&) on the world's solver parameters and on those of group 0, its mirror.
template <class Fn>
void DynWorldForSolverParameters(DynWorld* world, Fn fn) {
    fn(world->params.k_params);
    if (DynGrouping* group = DynGroupingFind(world, 0))
        fn(group->k_params);
}

// The one-pass tuning of DynWorldParameters.h.
extern KitReal sDynWorldOnePassRatio;
extern int sDynWorldOnePassPartitionSizeTreshold;  ///< rows
extern int sDynWorldOnePassPartitionCountTreshold; ///< partitions

/// Fills thread_data with the partitions in the order of their slices, and refIndex with that order.
/// Answers whether all of them form one slice.
[[nodiscard]] bool DynWorldOrderPartitions(DynWorld* world);
/// End of the slice that begins with entry `start` of thread_data.
[[nodiscard]] int DynWorldSliceEnd(const DynWorld* world, int start, bool onePass);
/// Secondary partitions, which stand at the end of the slice.
[[nodiscard]] int DynWorldCountSecondaries(const DynWorld* world, int start, int end);

/// Packs, solves and unpacks slice after slice. False if the step was aborted.
bool DynWorldSolve(DynWorld* world);

/// Runs fn on the entries [start, end) of thread_data, on the thread pool if the world solves with
/// threads. fn touches its own partition alone.
void process_all_threads(DynWorld* world, ProcessPartitionWorkUnit::Function fn, int start,
                         int end);
/// Packs a partition into its frame and gives the frame its parameters.
void pre_process_partition(DynWorldThreadData* data);
/// Takes the results of a partition back.
void post_process_partition(DynWorldThreadData* data);

/// Puts to sleep the partition groups of which no body moves.
void TestSleepingPartitionGroup(DynWorld* world);
