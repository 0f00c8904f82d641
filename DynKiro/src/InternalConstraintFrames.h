#pragma once
#include "DynsWorkUnits.h"
#include "SecondaryColours.h"

#include <Dyns/DynsConstraintFrames.h>

#include <memory>
#include <span>
#include <vector>

class KitThreadPool;

struct DynsConstraintFrames {
    virtual ~DynsConstraintFrames() = default;

    // Pools that only grow. Primaries and secondaries keep frames of their own, as their sizes differ.
    std::vector<std::unique_ptr<StepperData>> mStepperPrimary, mStepperSecondary;
    std::vector<StepperData*> mSteppers; ///< of the present slice: primaries, then secondaries
    int mCountPrimary = 0, mCountSecondary = 0;
    const KitMemoryAPIStruct* mem = nullptr;
};

/// The order in which the partitions of a slice are solved.
struct InternalConstraintFrames final : DynsConstraintFrames {
    ~InternalConstraintFrames() override;

    void cleanup();
    /// Frames for this many partitions, and an empty slice.
    void resize(int primaries, int secondaries);
    void step(bool finalSlice);

    int threaded = 1;
    KitReal coupling_tolerance = 0; ///< stored only
    long long steps = 0;            ///< world steps ended
    long long unconverged = 0, fallbacks = 0;
    DynsHost host;

private:
    void work(KitThreadPool* pool);
    [[nodiscard]] KitThreadPool* poolForSlice() const;
    void spreadLargePartitions(KitThreadPool* pool);
    void solveIndependent(KitThreadPool* pool);
    void solveCoupled(KitThreadPool* pool);
    void passSecondaries(KitThreadPool* pool);
    void passPrimaries(KitThreadPool* pool);
    void countFailures();
    [[nodiscard]] std::span<StepperData* const> primaries() const;
    [[nodiscard]] std::span<StepperData* const> secondaries() const;

    SecondaryColours mColours;
    std::vector<SolvePartitionWorkUnit> solve_work_units;
    std::vector<SetupPartitionWorkUnit> setup_work_units;
    std::vector<PreAndUpdatePartitionWorkUnit> pre_and_update_work_units;
    std::vector<UpdatePartitionWorkUnit> update_work_units;
    std::vector<AccelerationPartitionWorkUnit> accel_work_units;
    std::vector<CleanUpPartitionWorkUnit> cleanup_work_units;
};

[[nodiscard]] inline InternalConstraintFrames& DynsInternal(DynsConstraintFrames* frames) {
    return static_cast<InternalConstraintFrames&>(*frames);
}
[[nodiscard]] inline const InternalConstraintFrames&
DynsInternal(const DynsConstraintFrames* frames) {
    return static_cast<const InternalConstraintFrames&>(*frames);
}
