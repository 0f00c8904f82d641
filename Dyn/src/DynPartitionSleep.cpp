#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynPartition.h>
#include <Dyn/DynWorld.h>

namespace {

void putToSleep(DynBody* body) {
    DynBodyDisable(body);
    DynBodyResetForces(body);
    DynBodyResetVelocityAndAcceleration(body);
    body->impulseConsumed = false;
}

bool isMoving(const DynPartitionOutput* output, int p) {
    DynBody* const* bodies = output->bodies + output->bodiesStart[p];
    for (int i = 0; i < output->bodiesSize[p]; ++i)
        if (DynBodyIsMovingTest(bodies[i]))
            return true;
    return false;
}

void putBodiesToSleep(const DynPartitionOutput* output, int p) {
    DynBody* const* bodies = output->bodies + output->bodiesStart[p];
    for (int i = 0; i < output->bodiesSize[p]; ++i)
        if (bodies[i]->partitionIndex == p)
            putToSleep(bodies[i]);
}

bool isGroupedPrimary(const DynPartitionOutput* output, int p) {
    return output->partition_type[p] == 0 && output->pgroupIndex[p] != kDynNoPartitionGroup;
}

} // namespace

void DynAutoDisableLastPartition(DynPartitionOutput* output) {
    const int p = output->nPartitions - 1;
    if (p < 0 || output->forceAwake[p] || output->sconstraintsSize[p] != 0 || isMoving(output, p))
        return;
    const int first = output->constraintsStart[p];
    for (int i = 0; i < output->constraintsSize[p]; ++i)
        --output->constraints[first + i]->bclH.gflag;
    putBodiesToSleep(output, p);
    --output->nPartitions;
    output->totalBodies -= output->bodiesSize[p];
    output->totalConstraints -= output->constraintsSize[p];
}

void TestSleepingPartitionGroup(DynWorld* world) {
    const DynPartitionOutput* output = &world->partitionOutput;
    DynBuffer<int>& moving = world->scratch->groupIsMoving;
    moving.resize(output->nPartitions);
    for (int p = 0; p < output->nPartitions; ++p)
        moving[p] = 0;
    for (int p = 0; p < output->nPartitions; ++p)
        if (isGroupedPrimary(output, p) && !moving[output->pgroupIndex[p]])
            moving[output->pgroupIndex[p]] = output->forceAwake[p] || isMoving(output, p);
    for (int p = 0; p < output->nPartitions; ++p)
        if (isGroupedPrimary(output, p) && !moving[output->pgroupIndex[p]])
            putBodiesToSleep(output, p);
}
