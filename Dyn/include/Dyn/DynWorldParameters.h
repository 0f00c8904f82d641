#pragma once
#include <Dyn/DynWorld.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

// Settings of a world's solver and partitioner. What the solver reads is stored in the world's
// parameters and in solver group 0, if it exists, which mirrors them. A value out of its range gets a
// warning and the old one stays.

// Boxed LCP: passes and tolerances, counts at least 1 unless said otherwise.
HY_API void DynWorldLCPSetMaxIterations(DynWorld* world, int n);
[[nodiscard]] HY_API int DynWorldLCPGetMaxIterations(const DynWorld* world);
/// Passes that change all rows at once before single pivoting starts.
HY_API void DynWorldLCPSetMaxBlockIterations(DynWorld* world, int n);
[[nodiscard]] HY_API int DynWorldLCPGetMaxBlockIterations(const DynWorld* world);
/// Solves again with bounds scaled by the normal forces just found; 0 keeps the first solve.
HY_API void DynWorldLCPSetMaxScaledBoxIterations(DynWorld* world, int n);
[[nodiscard]] HY_API int DynWorldLCPGetMaxScaledBoxIterations(const DynWorld* world);
/// Relative change of the forces at which scaling the bounds ends, not negative.
HY_API void DynWorldLCPSetScaledBoxTolerance(DynWorld* world, KitReal tolerance);
[[nodiscard]] HY_API KitReal DynWorldLCPGetScaledBoxTolerance(const DynWorld* world);
/// Stored only.
HY_API void DynWorldLCPSetDegeneracyFilter(DynWorld* world, KitReal scale);
[[nodiscard]] HY_API KitReal DynWorldLCPGetDegeneracyFilter(const DynWorld* world);
/// Violation that counts as none, not negative.
HY_API void DynWorldLCPSetTolerance(DynWorld* world, KitReal tolerance);
[[nodiscard]] HY_API KitReal DynWorldLCPGetTolerance(const DynWorld* world);
HY_API void DynWorldLCPSetSolverFunction(DynWorld* world, DynLCPSolverEnum solver);
[[nodiscard]] HY_API DynLCPSolverEnum DynWorldLCPGetSolverFunction(const DynWorld* world);

// Choice among the solver's models.
HY_API void DynWorldSetLinearSolver(DynWorld* world, DynLinearSolverEnum solver);
[[nodiscard]] HY_API DynLinearSolverEnum DynWorldGetLinearSolver(const DynWorld* world);
/// Stored only.
HY_API void DynWorldSetStepperOptions(DynWorld* world, DynStepperOptionsEnum options);
[[nodiscard]] HY_API DynStepperOptionsEnum DynWorldGetStepperOptions(const DynWorld* world);
HY_API void DynWorldSetIntegrationModel(DynWorld* world, DynStepperModelEnum model);
[[nodiscard]] HY_API DynStepperModelEnum DynWorldGetIntegrationModel(const DynWorld* world);
/// @param id of a kind in the registry of constraint solvers
HY_API void DynWorldSetConstraintSolver(DynWorld* world, unsigned id);
[[nodiscard]] HY_API unsigned DynWorldGetConstraintSolver(const DynWorld* world);

/// Upper limit of the coupling passes of every partition, not negative.
HY_API void DynWorldSetCouplingIterations(DynWorld* world, int n);
[[nodiscard]] HY_API int DynWorldGetCouplingIterations(const DynWorld* world);
/// For one frame of the present slice; the next step sets it anew.
HY_API void DynWorldSetFrameCouplingIterations(DynWorld* world, int frameID, int n);
/// 0 solves on the stepping thread alone.
HY_API void DynWorldSetSolverThreaded(DynWorld* world, int threaded);
[[nodiscard]] HY_API int DynWorldGetSolverThreaded(const DynWorld* world);

/// Most constraints in a secondary partition, at least 1.
HY_API void DynWorldSetPartitionerSecondaryMaxSize(DynWorld* world, int n);
[[nodiscard]] HY_API int DynWorldGetPartitionerSecondaryMaxSize(const DynWorld* world);
/// Hops that a partition may reach into other groups, not negative.
HY_API void DynWorldSetPartitionerCrossGroupingDepth(DynWorld* world, int depth);
[[nodiscard]] HY_API int DynWorldGetPartitionerCrossGroupingDepth(const DynWorld* world);
/// Whether resting partitions fall asleep.
HY_API void DynWorldSetAutoDisable(DynWorld* world, int on);
[[nodiscard]] HY_API int DynWorldGetAutoDisable(const DynWorld* world);
/// Null for none.
HY_API void DynWorldSetPartitionEndCallback(DynWorld* world, DynPartitionEndCB callback);
HY_API void DynWorldSetPartitioner(DynWorld* world, DynPartitionFn partitioner);
HY_API void DynWorldSetPartitionGroupingMode(DynWorld* world, DynPartitionGrouping mode);
[[nodiscard]] HY_API DynPartitionGrouping DynWorldGetPartitionGroupingMode(const DynWorld* world);
/// Back to user grouping.
HY_API void DynWorldSetDefaultPartitionGroupingMode(DynWorld* world);
/// The universe that owns the world; never followed here.
HY_API void DynWorldSetUniverse(DynWorld* world, Hy::HyUniverse* universe);

// When automatic splitting solves all partitions in one slice although they outnumber the frames.
// Process-wide.

/// The largest partition has more than this many times the rows of the second, at least 1; 128.
HY_API void DynWorldSetDynWorldOnePassPartitionSizeRatio(KitReal ratio);
[[nodiscard]] HY_API KitReal DynWorldGetDynWorldOnePassPartitionSizeRatio();
/// Or it has fewer rows than this; 128.
HY_API void DynWorldSetDynWorldOnePassPartitionSizeTreshold(int rows);
[[nodiscard]] HY_API int DynWorldGetDynWorldOnePassPartitionSizeTreshold();
/// Never from this number of partitions on, which is also the length of a slice of small ones; 100.
HY_API void DynWorldSetDynWorldOnePassPartitionCountTreshold(int partitions);
[[nodiscard]] HY_API int DynWorldGetDynWorldOnePassPartitionCountTreshold();
