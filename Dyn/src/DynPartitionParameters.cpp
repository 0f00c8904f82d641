#include <Dyn/DynPartition.h>
#include <Kit/KitMessage.h>

namespace {

constexpr int kSecondaryMaxSize = 10;

} // namespace

void DynPartitionParametersSetDefault(DynPartitionParameters* parameters) {
    *parameters = {.auto_grouping = kDynPartitionUserGrouping,
                   .auto_disable = 1,
                   .secondaryPartitionMaxSize = kSecondaryMaxSize,
                   .partitioner = DynPartitionerExp,
                   .end_callback = DynAutoDisableLastPartition,
                   .cross_grouping_max_depth = 0};
}

void DynPartitionParametersSetGroupingMode(DynPartitionParameters* parameters,
                                           DynPartitionGrouping mode) {
    if (mode != kDynPartitionAutoGrouping && mode != kDynPartitionUserGrouping) {
        KitWarning(12, "DynPartitionParametersSetGroupingMode: no such mode : %d.\n", mode);
        return;
    }
    parameters->auto_grouping = mode;
}

DynPartitionGrouping
DynPartitionParametersGetGroupingMode(const DynPartitionParameters* parameters) {
    return parameters->auto_grouping;
}

void DynPartitionParametersSetPartitioner(DynPartitionParameters* parameters,
                                          DynPartitionFn partitioner) {
    if (!partitioner) {
        KitWarning(12, "DynPartitionParametersSetPartitioner: the function must not be null.\n");
        return;
    }
    parameters->partitioner = partitioner;
}

DynPartitionFn DynPartitionParametersGetPartitioner(const DynPartitionParameters* parameters) {
    return parameters->partitioner;
}

void DynPartitionParametersSetEndCallback(DynPartitionParameters* parameters,
                                          DynPartitionEndCB callback) {
    parameters->end_callback = callback;
}

DynPartitionEndCB DynPartitionParametersGetEndCallback(const DynPartitionParameters* parameters) {
    return parameters->end_callback;
}

void DynPartitionParametersSetAutoDisable(DynPartitionParameters* parameters, int on) {
    parameters->auto_disable = on != 0;
    parameters->end_callback = on ? DynAutoDisableLastPartition : nullptr;
}

int DynPartitionParametersGetAutoDisable(const DynPartitionParameters* parameters) {
    return parameters->auto_disable;
}

void DynPartitionParametersSetCrossGroupingDepth(DynPartitionParameters* parameters, int depth) {
    if (depth < 0) {
        KitWarning(12, "DynPartitionParametersSetCrossGroupingDepth: the depth must not be "
                       "negative.\n");
        return;
    }
    parameters->cross_grouping_max_depth = depth;
}

int DynPartitionParametersGetCrossGroupingDepth(const DynPartitionParameters* parameters) {
    return parameters->cross_grouping_max_depth;
}
