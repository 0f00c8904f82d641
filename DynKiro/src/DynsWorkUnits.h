#pragma once
#include "StepperData.h"

#include <Kit/KitThreadPool.h>

#include <cstddef>
#include <vector>

/// Up to 16 partitions that one thread takes through a stage, one after the other.
class BasePartitionWorkUnit : public KitThreadPool::WorkUnit {
public:
    static constexpr int kMaxPartitions = 16;
    /// A partition with more bodies travels alone.
    static constexpr int kMaxSharedBodies = 3;

    /// Runs the stage on each entry and empties the unit.
    void process() final;
    [[nodiscard]] bool accepts(const StepperData& data) const;
    void add(StepperData* data, int index);

    int partitionIndex[kMaxPartitions]; ///< place in the slice
    StepperData* stepperData[kMaxPartitions];
    int count = 0;

private:
    virtual void run(StepperData& data, int index) = 0;
};

class SetupPartitionWorkUnit final : public BasePartitionWorkUnit {
    void run(StepperData& data, int index) override;
};
class PreAndUpdatePartitionWorkUnit final : public BasePartitionWorkUnit {
    void run(StepperData& data, int index) override;
};
class UpdatePartitionWorkUnit final : public BasePartitionWorkUnit {
    void run(StepperData& data, int index) override;
};
class AccelerationPartitionWorkUnit final : public BasePartitionWorkUnit {
    void run(StepperData& data, int index) override;
};
class CleanUpPartitionWorkUnit final : public BasePartitionWorkUnit {
    void run(StepperData& data, int index) override;
};
/// All stages of partitions that no secondary one couples: no barrier stands between them.
class SolvePartitionWorkUnit final : public BasePartitionWorkUnit {
    void run(StepperData& data, int index) override;
};

enum class PartitionChoice {
    kAll,
    kShared,       ///< those that any one thread may solve
    kActiveShared, ///< those that one thread solves and that take another pass
};

/// Takes partitions from steppers[index] on into the unit: a large one alone, small ones together,
/// and of these only the chosen ones. Leaves index on the last one taken or passed over.
void fillWorkUnit(BasePartitionWorkUnit& unit, StepperData* const* steppers, int& index, int end,
                  PartitionChoice choice);

/// Deals the partitions into units, of which as many are kept as a stage has ever needed, and runs
/// them on the pool; without a pool on the calling thread.
template <class Unit>
void runStage(std::vector<Unit>& units, StepperData* const* steppers, int n, PartitionChoice choice,
              KitThreadPool* pool) {
    std::size_t used = 0;
    for (int index = 0; index < n; ++index) {
        if (used == units.size())
            units.emplace_back();
        fillWorkUnit(units[used], steppers, index, n, choice);
        used += units[used].count > 0;
    }
    KitThreadPoolExecute(pool, units.data(), used);
}
