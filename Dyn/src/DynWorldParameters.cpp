#include <Dyn/DynWorldParameters.h>

#include "DynWorldInternal.h"

#include <Dyn/DynPartition.h>
#include <Dyns/DynsConstraintFrames.h>
#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Kit/KitMessage.h>

#include <cmath>

namespace {

bool isAtLeast(int n, int least, const char* function) {
    if (n >= least)
        return true;
    KitWarning(12, "%s: the number must be at least %d.\n", function, least);
    return false;
}

bool isTolerance(KitReal tolerance, const char* function) {
    if (tolerance >= 0 && std::isfinite(tolerance))
        return true;
    KitWarning(12, "%s: the value must be finite and not negative.\n", function);
    return false;
}

template <class T>
void setLCP(DynWorld* world, T DynsLCPSolverParameters::*field, T value) {
    DynWorldForSolverParameters(
        world, [=](DynsParameters& k_params) { k_params.lcp_parameters.*field = value; });
}

// Stores a choice of which the solver knows the range.
template <class Set>
void setChecked(DynWorld* world, Set set) {
    DynsParameters candidate = world->params.k_params;
    candidate.kiro_frame = nullptr;
    set(candidate);
    if (DynsValidateKiroParameters(&candidate))
        DynWorldForSolverParameters(world, set);
}

} // namespace

void DynWorldLCPSetMaxIterations(DynWorld* world, int n) {
    if (isAtLeast(n, 1, "DynWorldLCPSetMaxIterations"))
        setLCP(world, &DynsLCPSolverParameters::max_iterations, n);
}

int DynWorldLCPGetMaxIterations(const DynWorld* world) {
    return world->params.k_params.lcp_parameters.max_iterations;
}

void DynWorldLCPSetMaxBlockIterations(DynWorld* world, int n) {
    if (isAtLeast(n, 1, "DynWorldLCPSetMaxBlockIterations"))
        setLCP(world, &DynsLCPSolverParameters::max_block_iterations, n);
}

int DynWorldLCPGetMaxBlockIterations(const DynWorld* world) {
    return world->params.k_params.lcp_parameters.max_block_iterations;
}

void DynWorldLCPSetMaxScaledBoxIterations(DynWorld* world, int n) {
    if (isAtLeast(n, 0, "DynWorldLCPSetMaxScaledBoxIterations"))
        setLCP(world, &DynsLCPSolverParameters::max_scaled_box_iterations, n);
}

int DynWorldLCPGetMaxScaledBoxIterations(const DynWorld* world) {
    return world->params.k_params.lcp_parameters.max_scaled_box_iterations;
}

void DynWorldLCPSetScaledBoxTolerance(DynWorld* world, KitReal tolerance) {
    if (isTolerance(tolerance, "DynWorldLCPSetScaledBoxTolerance"))
        setLCP(world, &DynsLCPSolverParameters::scaled_box_tolerance, tolerance);
}

KitReal DynWorldLCPGetScaledBoxTolerance(const DynWorld* world) {
    return world->params.k_params.lcp_parameters.scaled_box_tolerance;
}

void DynWorldLCPSetDegeneracyFilter(DynWorld* world, KitReal scale) {
    if (isTolerance(scale, "DynWorldLCPSetDegeneracyFilter"))
        setLCP(world, &DynsLCPSolverParameters::filter_scale, scale);
}

KitReal DynWorldLCPGetDegeneracyFilter(const DynWorld* world) {
    return world->params.k_params.lcp_parameters.filter_scale;
}

void DynWorldLCPSetTolerance(DynWorld* world, KitReal tolerance) {
    if (isTolerance(tolerance, "DynWorldLCPSetTolerance"))
        setLCP(world, &DynsLCPSolverParameters::tolerance, tolerance);
}

KitReal DynWorldLCPGetTolerance(const DynWorld* world) {
    return world->params.k_params.lcp_parameters.tolerance;
}

void DynWorldLCPSetSolverFunction(DynWorld* world, DynLCPSolverEnum solver) {
    setChecked(world, [=](DynsParameters& k) { k.lcp_parameters.solver_function = solver; });
}

DynLCPSolverEnum DynWorldLCPGetSolverFunction(const DynWorld* world) {
    return world->params.k_params.lcp_parameters.solver_function;
}

void DynWorldSetLinearSolver(DynWorld* world, DynLinearSolverEnum solver) {
    setChecked(world, [=](DynsParameters& k) { k.linear_solver = solver; });
}

DynLinearSolverEnum DynWorldGetLinearSolver(const DynWorld* world) {
    return world->params.k_params.linear_solver;
}

void DynWorldSetStepperOptions(DynWorld* world, DynStepperOptionsEnum options) {
    if (options != kDynStepperDefaultOptions && options != kDynStepperOneStageCollisions) {
        KitWarning(12, "DynWorldSetStepperOptions: no such options : %d.\n", options);
        return;
    }
    setChecked(world, [=](DynsParameters& k) { k.stepper_options = options; });
}

DynStepperOptionsEnum DynWorldGetStepperOptions(const DynWorld* world) {
    return world->params.k_params.stepper_options;
}

void DynWorldSetIntegrationModel(DynWorld* world, DynStepperModelEnum model) {
    setChecked(world, [=](DynsParameters& k) { k.stepper_model = model; });
}

DynStepperModelEnum DynWorldGetIntegrationModel(const DynWorld* world) {
    return world->params.k_params.stepper_model;
}

void DynWorldSetConstraintSolver(DynWorld* world, unsigned id) {
    if (id >= DynsConstraintSolverRegistry::kMaxCount ||
        !DynsConstraintSolverRegistry::instance().isIdValid(id)) {
        KitWarning(12, "DynWorldSetConstraintSolver: no such constraint solver : %u.\n", id);
        return;
    }
    DynWorldForSolverParameters(world, [=](DynsParameters& k) { k.ct_solver = id; });
}

unsigned DynWorldGetConstraintSolver(const DynWorld* world) {
    return world->params.k_params.ct_solver;
}

void DynWorldSetCouplingIterations(DynWorld* world, int n) {
    if (isAtLeast(n, 0, "DynWorldSetCouplingIterations"))
        DynWorldForSolverParameters(world, [=](DynsParameters& k) { k.coupling_iterations = n; });
}

int DynWorldGetCouplingIterations(const DynWorld* world) {
    return world->params.k_params.coupling_iterations;
}

void DynWorldSetFrameCouplingIterations(DynWorld* world, int frameID, int n) {
    if (isAtLeast(frameID, 0, "DynWorldSetFrameCouplingIterations") &&
        isAtLeast(n, 0, "DynWorldSetFrameCouplingIterations"))
        DynsConstraintFramesSetFrameCouplingIterations(world->constraint_frames, frameID, n);
}

void DynWorldSetSolverThreaded(DynWorld* world, int threaded) {
    DynsConstraintFramesSetThreaded(world->constraint_frames, threaded);
}

int DynWorldGetSolverThreaded(const DynWorld* world) {
    return DynsConstraintFramesGetThreaded(world->constraint_frames);
}

void DynWorldSetPartitionerSecondaryMaxSize(DynWorld* world, int n) {
    if (isAtLeast(n, 1, "DynWorldSetPartitionerSecondaryMaxSize"))
        world->partition_parameters.secondaryPartitionMaxSize = n;
}

int DynWorldGetPartitionerSecondaryMaxSize(const DynWorld* world) {
    return world->partition_parameters.secondaryPartitionMaxSize;
}

void DynWorldSetPartitionerCrossGroupingDepth(DynWorld* world, int depth) {
    DynPartitionParametersSetCrossGroupingDepth(&world->partition_parameters, depth);
}

int DynWorldGetPartitionerCrossGroupingDepth(const DynWorld* world) {
    return DynPartitionParametersGetCrossGroupingDepth(&world->partition_parameters);
}

void DynWorldSetAutoDisable(DynWorld* world, int on) {
    DynPartitionParametersSetAutoDisable(&world->partition_parameters, on);
}

int DynWorldGetAutoDisable(const DynWorld* world) {
    return DynPartitionParametersGetAutoDisable(&world->partition_parameters);
}

void DynWorldSetPartitionEndCallback(DynWorld* world, DynPartitionEndCB callback) {
    DynPartitionParametersSetEndCallback(&world->partition_parameters, callback);
}

void DynWorldSetPartitioner(DynWorld* world, DynPartitionFn partitioner) {
    DynPartitionParametersSetPartitioner(&world->partition_parameters, partitioner);
}

void DynWorldSetPartitionGroupingMode(DynWorld* world, DynPartitionGrouping mode) {
    DynPartitionParametersSetGroupingMode(&world->partition_parameters, mode);
}

DynPartitionGrouping DynWorldGetPartitionGroupingMode(const DynWorld* world) {
    return DynPartitionParametersGetGroupingMode(&world->partition_parameters);
}

void DynWorldSetDefaultPartitionGroupingMode(DynWorld* world) {
    DynPartitionParameters defaults;
    DynPartitionParametersSetDefault(&defaults);
    world->partition_parameters.auto_grouping = defaults.auto_grouping;
}

void DynWorldSetUniverse(DynWorld* world, Hy::HyUniverse* universe) {
    world->universe = universe;
}

void DynWorldSetDynWorldOnePassPartitionSizeRatio(KitReal ratio) {
    if (!(ratio >= 1) || !std::isfinite(ratio)) {
        KitWarning(12, "DynWorldSetDynWorldOnePassPartitionSizeRatio: the ratio must be at least "
                       "1.\n");
        return;
    }
    sDynWorldOnePassRatio = ratio;
}

KitReal DynWorldGetDynWorldOnePassPartitionSizeRatio() {
    return sDynWorldOnePassRatio;
}

void DynWorldSetDynWorldOnePassPartitionSizeTreshold(int rows) {
    if (isAtLeast(rows, 0, "DynWorldSetDynWorldOnePassPartitionSizeTreshold"))
        sDynWorldOnePassPartitionSizeTreshold = rows;
}

int DynWorldGetDynWorldOnePassPartitionSizeTreshold() {
    return sDynWorldOnePassPartitionSizeTreshold;
}

void DynWorldSetDynWorldOnePassPartitionCountTreshold(int partitions) {
    if (isAtLeast(partitions, 1, "DynWorldSetDynWorldOnePassPartitionCountTreshold"))
        sDynWorldOnePassPartitionCountTreshold = partitions;
}

int DynWorldGetDynWorldOnePassPartitionCountTreshold() {
    return sDynWorldOnePassPartitionCountTreshold;
}
