#pragma once
#include <Dync/DynBaseConstraint.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

struct DynBody;
struct DynPartitionOutput;
struct DynPartitionParameters;
struct DynsBody;
struct DynsConstraints;
struct DyncConstraintParameters;
struct KitAssoc;
struct KitMemoryAPIStruct;

enum DynPartitionGrouping : int {
    kDynPartitionAutoGrouping = 0, ///< islands only
    kDynPartitionUserGrouping = 1, ///< islands cut at solver groups
};

/// Divides the bodies of the enabled list into partitions. It tells each body of a primary partition
/// its place (partitionIndex, and partition_index, localPartition and localIndex of its kiroBody).
using DynPartitionFn = void (*)(DynBody* enabledBodyList, DynPartitionOutput* output,
                                const DynPartitionParameters* parameters);
/// Called each time a primary partition, the last of the output, is closed. May take it off.
using DynPartitionEndCB = void (*)(DynPartitionOutput* output);

struct DynPartitionParameters {
    DynPartitionGrouping auto_grouping;
    int auto_disable;
    int secondaryPartitionMaxSize; ///< most constraints in a secondary partition, at least 1
    DynPartitionFn partitioner;
    DynPartitionEndCB end_callback;
    int cross_grouping_max_depth; ///< hops that a partition may reach into other groups
};

/// The partitions of one step, as parallel arrays by partition unless said otherwise. The arrays
/// only grow.
struct DynPartitionOutput {
    DynBaseConstraint** constraints;  ///< partition after partition
    DynBaseConstraint** sconstraints; ///< secondary constraints waiting for their partitions
    int nsconstraints;
    int* constraintsStart;
    int* constraintsSize;
    int* maxConstraintsRows; ///< rows that the constraints can produce at most
    int* refIndex;           ///< order of the partitions after sorting
    int* pgroupIndex;        ///< partition group, or kDynNoPartitionGroup
    int* sconstraintsSize;   ///< secondary constraints reaching the partition
    DynBody** bodies;        ///< partition after partition
    DynsBody** k_bodies;
    KitAssoc* indices; ///< pairs of body and local index, per partition slice
    int* bodiesStart;
    int* bodiesSize;
    int* partition_type; ///< 0 primary, 1 secondary
    int* forceAwake;     ///< a strong or kinematic neighbour is moving
    int* coupling_iterations;
    int nPartitions, maxPartition;
    int totalBodies, totalConstraints;
    int maxBodies, maxConstraints;
    DynBody** addedBodies; ///< whose graph data is reset at the end
    int nab;
    DynBaseConstraint** addedConstraints;
    int nac;
    DynBody** sorted_bodies; ///< work list of starting bodies
    int n_sorted_bodies;
    void* scratch1; ///< storage of the queue
    const KitMemoryAPIStruct* mem;
    struct DynWorld* world;
};

HY_API void DynPartitionUpdate(DynBody* enabledBodyList, DynPartitionOutput* output,
                               const DynPartitionParameters* parameters);
/// The default partitioner: islands, cut at solver groups, kinematic and stronger bodies.
HY_API void DynPartitionerExp(DynBody* enabledBodyList, DynPartitionOutput* output,
                              const DynPartitionParameters* parameters);
/// Every enabled body and constraint in partition 0.
HY_API void DynMakeSinglePartition(DynBody* enabledBodyList, DynPartitionOutput* output,
                                   DynPartitionEndCB endCallback);
HY_API void DynPartitionOutputInit(DynPartitionOutput* output, DynWorld* world, int maxBodies,
                                   int maxConstraints, const KitMemoryAPIStruct* mem);
HY_API void DynPartitionOutputDestroy(DynPartitionOutput* output);
/// Grows each group of arrays whose new capacity is larger; mem null means the stored one.
HY_API void DynPartitionOutputResize(DynPartitionOutput* output, int maxPartitions, int maxBodies,
                                     int maxConstraints, const KitMemoryAPIStruct* mem);
HY_API void DynPartitionParametersSetDefault(DynPartitionParameters* parameters);
HY_API void DynPartitionParametersSetGroupingMode(DynPartitionParameters*, DynPartitionGrouping);
[[nodiscard]] HY_API DynPartitionGrouping
DynPartitionParametersGetGroupingMode(const DynPartitionParameters*);
HY_API void DynPartitionParametersSetPartitioner(DynPartitionParameters*, DynPartitionFn);
[[nodiscard]] HY_API DynPartitionFn
DynPartitionParametersGetPartitioner(const DynPartitionParameters*);
HY_API void DynPartitionParametersSetEndCallback(DynPartitionParameters*, DynPartitionEndCB);
[[nodiscard]] HY_API DynPartitionEndCB
DynPartitionParametersGetEndCallback(const DynPartitionParameters*);
/// Also sets or clears the end callback.
HY_API void DynPartitionParametersSetAutoDisable(DynPartitionParameters*, int on);
[[nodiscard]] HY_API int DynPartitionParametersGetAutoDisable(const DynPartitionParameters*);
HY_API void DynPartitionParametersSetCrossGroupingDepth(DynPartitionParameters*, int depth);
[[nodiscard]] HY_API int DynPartitionParametersGetCrossGroupingDepth(const DynPartitionParameters*);

/// The body that acts as a wall in a constraint: the one seen as kinematic, else the first that is
/// not dynamic, else the first of the strictly greatest group strength, else null.
[[nodiscard]] HY_API DynBody* DynConstraintFindStrongestBody(const DynBaseConstraint* constraint);
HY_API void DynConstraintUpdateStrongestBody(DynBaseConstraint* constraint);

/// Loads the bodies of a primary partition and builds the rows of its constraints; answers the rows.
HY_API int DynPackPartition(DynPartitionOutput* output, int partitionindex, KitReal stepSize,
                            const struct DynWorldParams* params,
                            const DyncConstraintParameters* bcl_params,
                            DynsConstraints* constraints);
/// Gives the rows of a packed partition the last multipliers of its constraints, of those that have
/// as many rows as in the last step.
HY_API void DynWarmStartPartition(const DynPartitionOutput* output, int partitionindex,
                                  DynsConstraints* constraints);
/// Brings the results of a partition back into its constraints.
HY_API void DynUnpackPartition(DynsConstraints* constraints, int partitionindex,
                               DynPartitionOutput* output);
/// The default end callback: takes a resting partition off and puts its bodies to sleep.
HY_API void DynAutoDisableLastPartition(DynPartitionOutput* output);
