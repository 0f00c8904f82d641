#include <Hy/HyUniverse.h>

#include <Hy/HyMessage.h>

#include <Dyn/DynWorld.h>
#include <Dyns/DynsConstraintFrames.h>

// Settings of the solver that hold for the whole world.

namespace Hy {

// Group 0 mirrors the world's own settings.
void HyUniverse::setSolverMaxCouplingIteration(int count) {
    if (count < 0) {
        HyWarning(0, "HyUniverse::setSolverMaxCouplingIteration: count must not be negative.\n");
        return;
    }
    mWorld->params.k_params.coupling_iterations = count;
    DynGroupingGet(mWorld, 0)->k_params.coupling_iterations = count;
}

int HyUniverse::getSolverMaxCouplingIteration() const {
    return mWorld->params.k_params.coupling_iterations;
}

void HyUniverse::setDynamicsMultithreaded(bool on) {
    DynsConstraintFramesSetThreaded(mWorld->constraint_frames, on);
}

bool HyUniverse::getDynamicsMultithreaded() const {
    return DynsConstraintFramesGetThreaded(mWorld->constraint_frames) > 0;
}

void HyUniverse::setMaxSimultaneousSolverCount(int count) {
    if (count > 0)
        mWorld->maxKiroFrames = count;
}

int HyUniverse::getMaxSimultaneousSolverCount() const {
    return mWorld->maxKiroFrames;
}

void HyUniverse::setSolverPartitionSplitting(PartitionSplitting splitting) {
    if (splitting < kPartitionSplittingAutomatic || splitting > kPartitionSplittingGroup) {
        HyWarning(0, "HyUniverse::setSolverPartitionSplitting: splitting must be one of "
                     "PartitionSplitting.\n");
        return;
    }
    mWorld->mSolverPartitionSplitting = static_cast<DynSolverPartitionSplitting>(splitting);
}

HyUniverse::PartitionSplitting HyUniverse::getSolverPartitionSplitting() const {
    return static_cast<PartitionSplitting>(mWorld->mSolverPartitionSplitting);
}

void HyUniverse::setPartitionerMaxSecondarySize(int count) {
    if (count < 1) {
        HyWarning(0, "HyUniverse::setPartitionerMaxSecondarySize: count must be at least 1.\n");
        return;
    }
    mWorld->partition_parameters.secondaryPartitionMaxSize = count;
}

int HyUniverse::getPartitionerMaxSecondarySize() const {
    return mWorld->partition_parameters.secondaryPartitionMaxSize;
}

void HyUniverse::setPartitionerCrossGroupingDepth(int depth) {
    if (depth < -1) {
        HyWarning(0, "HyUniverse::setPartitionerCrossGroupingDepth: depth must be at least -1.\n");
        return;
    }
    DynPartitionParameters* parameters = &mWorld->partition_parameters;
    DynPartitionParametersSetGroupingMode(parameters, depth == -1 ? kDynPartitionAutoGrouping
                                                                  : kDynPartitionUserGrouping);
    if (depth != -1)
        DynPartitionParametersSetCrossGroupingDepth(parameters, depth);
}

int HyUniverse::getPartitionerCrossGroupingDepth() const {
    const DynPartitionParameters* parameters = &mWorld->partition_parameters;
    return DynPartitionParametersGetGroupingMode(parameters) == kDynPartitionAutoGrouping
               ? -1
               : DynPartitionParametersGetCrossGroupingDepth(parameters);
}

} // namespace Hy
