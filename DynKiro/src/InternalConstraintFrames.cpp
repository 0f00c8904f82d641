#include "InternalConstraintFrames.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/WorldStepper.h>
#include <Kit/KitMessage.h>
#include <Kit/KitThreadPool.h>

#include <algorithm>

namespace {

/// Rows of a partition that is worth several threads.
constexpr int kLargeRows = 300;

} // namespace

InternalConstraintFrames::~InternalConstraintFrames() {
    cleanup();
}

void InternalConstraintFrames::cleanup() {
    for (auto* pool : {&mStepperPrimary, &mStepperSecondary}) {
        for (const auto& data : *pool)
            data->destroy(mem);
        pool->clear();
    }
    mSteppers.clear();
    mCountPrimary = mCountSecondary = 0;
}

void InternalConstraintFrames::resize(int primaries, int secondaries) {
    mCountPrimary = primaries;
    mCountSecondary = secondaries;
    while (mStepperPrimary.size() < static_cast<std::size_t>(primaries))
        mStepperPrimary.push_back(std::make_unique<StepperData>());
    while (mStepperSecondary.size() < static_cast<std::size_t>(secondaries))
        mStepperSecondary.push_back(std::make_unique<StepperData>());
    mSteppers.clear();
}

void InternalConstraintFrames::step(bool finalSlice) {
    if (finalSlice && ++steps == 1)
        KitInfo(0, threaded > 0 ? "DynsStep: Using threaded version.\n"
                                : "DynsStep: Not using threaded version.\n");
    work(poolForSlice());
}

/// Null where the slice is for the calling thread alone.
KitThreadPool* InternalConstraintFrames::poolForSlice() const {
    int rows = 0;
    for (const StepperData* data : primaries())
        rows += data->c->n_constraint_rows;
    const bool worthIt = mCountPrimary > 1 ? rows >= kDynsMinSharedRows : rows >= kLargeRows;
    return threaded > 0 && worthIt && host.threadPool ? host.threadPool(host.owner) : nullptr;
}

/// A partition that is more than one thread's share of the slice takes all threads, before the others
/// are dealt out.
void InternalConstraintFrames::spreadLargePartitions(KitThreadPool* pool) {
    const double threads = pool ? pool->getThreadCount() : 1;
    double rows = 0;
    for (const StepperData* data : primaries())
        rows += data->c->n_constraint_rows;
    for (StepperData* data : mSteppers)
        data->spreadOver(nullptr);
    if (threads < 2)
        return;
    for (StepperData* data : primaries())
        if (const int own = data->c->n_constraint_rows; own >= kLargeRows && own * threads > rows)
            data->spreadOver(pool);
}

void InternalConstraintFrames::work(KitThreadPool* pool) {
    if (mCountPrimary == 0)
        return;
    for (StepperData* data : mSteppers)
        data->chooseSolvers();
    spreadLargePartitions(pool);
    if (mCountSecondary == 0)
        solveIndependent(pool);
    else
        solveCoupled(pool);
    countFailures();
}

void InternalConstraintFrames::solveIndependent(KitThreadPool* pool) {
    for (int i = 0; i < mCountPrimary; ++i)
        if (StepperData* data = mSteppers[static_cast<std::size_t>(i)]; !pool || !data->isShared())
            data->solveAlone(i);
    if (pool)
        runStage(solve_work_units, mSteppers.data(), mCountPrimary, PartitionChoice::kShared, pool);
}

// Each partition is solved with the others' forces on its bodies as loads, a fixed number of times.
// What writes cf and ct of bodies that two partitions share stays on the calling thread.
void InternalConstraintFrames::solveCoupled(KitThreadPool* pool) {
    StepperData* const* all = mSteppers.data();
    runStage(setup_work_units, all, mCountPrimary, PartitionChoice::kAll, pool);
    for (int i = 0; i < mCountSecondary; ++i) // reads what the primaries have set up
        secondaries()[static_cast<std::size_t>(i)]->setUp(mCountPrimary + i);
    mColours.build(secondaries());

    int maxIter = 1;
    for (const StepperData* data : primaries())
        maxIter = std::max(maxIter, data->max_iteration);
    for (int pass = 0; pass < maxIter; ++pass) {
        passSecondaries(pool);
        passPrimaries(pool);
    }

    runStage(accel_work_units, all, mCountPrimary, PartitionChoice::kAll, pool);
    runStage(cleanup_work_units, all, mCountPrimary, PartitionChoice::kAll, pool);
    for (StepperData* data : secondaries())
        data->model->cleanup();
}

// Partitions of one colour share no body; those of the next one see what these have added.
void InternalConstraintFrames::passSecondaries(KitThreadPool* pool) {
    for (int colour = 0; colour < mColours.count(); ++colour) {
        const std::span<StepperData* const> same = mColours.ofColour(colour);
        for (StepperData* data : same)
            if (data->isActive())
                data->model->pre_sync_forces();
        runStage(update_work_units, same.data(), static_cast<int>(same.size()),
                 PartitionChoice::kActiveShared, same.size() > 1 ? pool : nullptr);
        for (StepperData* data : same)
            if (data->isActive())
                data->postSync();
    }
}

void InternalConstraintFrames::passPrimaries(KitThreadPool* pool) {
    if (!pool) {
        for (StepperData* data : primaries())
            if (data->isActive())
                data->runPass();
        return;
    }
    for (StepperData* data : primaries())
        if (data->usesAllThreads && data->isActive()) {
            data->model->pre_sync_forces();
            data->model->get_forces();
        }
    runStage(pre_and_update_work_units, mSteppers.data(), mCountPrimary,
             PartitionChoice::kActiveShared, pool);
    for (StepperData* data : primaries())
        if (data->isActive())
            data->postSync();
}

void InternalConstraintFrames::countFailures() {
    for (const StepperData* data : mSteppers) {
        unconverged += data->c->unconverged_solves > 0;
        fallbacks += data->c->fallback_solves > 0;
    }
}

std::span<StepperData* const> InternalConstraintFrames::primaries() const {
    return {mSteppers.data(), static_cast<std::size_t>(mCountPrimary)};
}

std::span<StepperData* const> InternalConstraintFrames::secondaries() const {
    return {mSteppers.data() + mCountPrimary, static_cast<std::size_t>(mCountSecondary)};
}
