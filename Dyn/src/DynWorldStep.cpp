#include "DynEnabledBodies.h"
#include "DynPartitionInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynBodyForce.h>
#include <Dyn/DynPartition.h>
#include <Kit/KitMessage.h>
#include <Kit/KitProfile.h>

#include <cmath>

namespace {

void DynWorldUpdateConstraintParameters(DynWorld* world) {
    const KitReal h = world->params.timeStep;
    DyncUpdateConstraintParameters(&world->params.bcl_params, -1, 0, 0, 0, h);
    for (int i = 0; i < world->n_groupings; ++i)
        DyncUpdateConstraintParameters(&world->groupings[i]->bcl_params, i, 0, 0, 0, h);
}

void resizeIfNeeded(DynWorld* world) {
    if (world->resize == 0)
        return;
    world->resize = 0;
    if (world->nBodies > world->maxBodies || world->nConstraints > world->maxConstraints)
        DynWorldResize(world, world->nBodies, world->nConstraints);
}

// The default partitioner prepares what it meets, so that what sleeps costs nothing.
void prepareForOtherPartitioner(DynWorld* world) {
    if (world->partition_parameters.partitioner == DynPartitionerExp)
        return;
    for (DynBaseConstraint* c = world->enabledConstraintHead; c; c = c->enabledNext)
        DynPartitionPrepare(world, *c);
}

void sumRows(DynPartitionOutput& output) {
    for (int p = 0; p < output.nPartitions; ++p) {
        int rows = 0;
        for (int i = 0; i < output.constraintsSize[p]; ++i)
            rows += output.constraints[output.constraintsStart[p] + i]->bclH.max_rows;
        output.maxConstraintsRows[p] = rows;
    }
}

void updatePartitions(DynWorld* world) {
    const KitProfileScope zone("dynamics: partition");
    DynPartitionUpdate(world->enabledBodyHead, &world->partitionOutput,
                       &world->partition_parameters);
}

void solveStep(DynWorld* world) {
    DynWorldUpdateConstraintParameters(world);
    resizeIfNeeded(world);
    prepareForOtherPartitioner(world);
    updatePartitions(world);
    DynBodyForceUpdateEnabled(world);
    sumRows(world->partitionOutput);
    if (DynWorldSolve(world) && world->partition_parameters.auto_disable)
        TestSleepingPartitionGroup(world);
}

bool isSolved(const DynWorld* world, const DynBody* body) {
    return body->solvedStep == world->stepCount;
}

} // namespace

void DynWorldStep(DynWorld* world, KitReal dt) {
    if (!world)
        return;
    if (DynWorldRefusesDuringStep(world, "DynWorldStep"))
        return;
    world->finalSlicedStep = 0;
    ++world->stepCount; // also where nothing is solved: then nothing is integrated
    world->partitionOutput.nPartitions = 0;
    if (!(dt > 0) || !std::isfinite(dt)) {
        KitWarning(12, "DynWorldStep: the step must be finite and above 0.\n");
        return;
    }
    if (!world->enabledBodyHead)
        return;
    world->params.timeStep = dt;
    world->scratch->stepping = true;
    solveStep(world);
    world->scratch->stepping = false;
    world->finalSlicedStep = 0;
}

void DynWorldStepOne(DynWorld* world) {
    if (world)
        DynWorldStep(world, world->params.timeStep);
}

void DynWorldIntegrate(DynWorld* world) {
    if (!world)
        return;
    if (DynWorldRefusesDuringStep(world, "DynWorldIntegrate"))
        return;
    const DynWorldHost& host = world->host;
    const bool aborted = host.stepAborted && host.stepAborted(host.owner);
    DynForEachEnabledBody(world, [world, aborted](DynBody* body) {
        if (!aborted && isSolved(world, body)) {
            DynsBodyIntegrate(&body->kiroBody, world->params.timeStep);
            UpdateBodyTransform(body);
            body->impulseConsumed = false;
        }
        DynBodyResetForces(body);
    });
}
