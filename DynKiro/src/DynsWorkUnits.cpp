#include "DynsWorkUnits.h"

#include <Dyns/WorldStepper.h>

void BasePartitionWorkUnit::process() {
    for (int i = 0; i < count; ++i)
        run(*stepperData[i], partitionIndex[i]);
    count = 0;
}

bool BasePartitionWorkUnit::accepts(const StepperData& data) const {
    return count == 0 || (count < kMaxPartitions && stepperData[0]->nb <= kMaxSharedBodies &&
                          data.nb <= kMaxSharedBodies);
}

void BasePartitionWorkUnit::add(StepperData* data, int index) {
    stepperData[count] = data;
    partitionIndex[count] = index;
    ++count;
}

void SetupPartitionWorkUnit::run(StepperData& data, int index) {
    data.setUp(index);
}

void PreAndUpdatePartitionWorkUnit::run(StepperData& data, int /*index*/) {
    data.model->pre_sync_forces();
    data.model->get_forces();
}

void UpdatePartitionWorkUnit::run(StepperData& data, int /*index*/) {
    data.model->get_forces();
}

void AccelerationPartitionWorkUnit::run(StepperData& data, int /*index*/) {
    data.model->computeAcceleration();
}

void CleanUpPartitionWorkUnit::run(StepperData& data, int /*index*/) {
    data.model->cleanup();
}

void SolvePartitionWorkUnit::run(StepperData& data, int index) {
    data.solveAlone(index);
}

void fillWorkUnit(BasePartitionWorkUnit& unit, StepperData* const* steppers, int& index, int end,
                  PartitionChoice choice) {
    int i = index;
    for (; i < end; ++i) {
        StepperData* data = steppers[i];
        if ((choice == PartitionChoice::kShared && !data->isShared()) ||
            (choice == PartitionChoice::kActiveShared &&
             (data->usesAllThreads || !data->isActive())))
            continue;
        if (!unit.accepts(*data))
            break;
        unit.add(data, i);
    }
    index = i - 1;
}
