#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynPartition.h>
#include <Dyns/DynsConstraintFrames.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitMatrix4.h>
#include <Kit/KitProfile.h>

#include <algorithm>

// One slice after the other: pack in parallel, solve, unpack in parallel, with the host's hooks
// around the solve.

namespace {

int secondaryGroupOf(const DynBody* first) {
    const DynGrouping* group = first ? DynGroupingOfBody(first) : nullptr;
    return group ? group->secondaryid : -1;
}

// Number of the solver group whose settings the partition takes, negative for the world's.
int solverGroupOf(const DynWorld* world, int p) {
    const DynPartitionOutput& output = world->partitionOutput;
    const DynBody* first =
        output.bodiesSize[p] > 0 ? output.bodies[output.bodiesStart[p]] : nullptr;
    if (output.partition_type[p] == 0)
        return first ? first->kiroBody.user_group : -1;
    return world->scratch->couplingGroup >= 0 ? world->scratch->couplingGroup
                                              : secondaryGroupOf(first);
}

// What belongs to the frame stays with the frame.
void giveParameters(DynsParameters* frame, const DynsParameters& group, KitReal step) {
    DynsParameters parameters = group;
    parameters.stepsize = step;
    parameters.kiro_frame = frame->kiro_frame;
    parameters.memory_pool = frame->memory_pool;
    parameters.memory_pool_handler = frame->memory_pool_handler;
    parameters.memory_pool_size = frame->memory_pool_size;
    parameters.memory_pool_needed = frame->memory_pool_needed;
    *frame = parameters;
}

void makeRoom(DynWorld* world, int start, int end) {
    DynPartitionOutput& output = world->partitionOutput;
    DynsConstraintFramesResizeIfNeeded(world->constraint_frames, start, end, output.constraintsSize,
                                       output.bodiesSize, output.maxConstraintsRows,
                                       output.k_bodies, output.bodiesStart, output.refIndex,
                                       DynWorldCountSecondaries(world, start, end));
    for (int i = start; i < end; ++i) // frames are counted from the start of the slice
        world->thread_data[i].frameID = i - start;
}

bool isAborted(const DynWorld* world) {
    return world->host.stepAborted && world->host.stepAborted(world->host.owner);
}

bool runHook(DynWorld* world, void (*hook)(void*, DynWorld*, int, int), int start, int end) {
    if (hook)
        hook(world->host.owner, world, start, end);
    return !isAborted(world);
}

// From the centre of mass of the slot's body to its attachment, world axes.
void attachmentArm(const DynBaseConstraint& c, int slot, KitVector3 arm) {
    const KitVector4& position = c.bclH.ref[slot][3];
    const KitMatrix4& tm = *c.bclH.r[slot];
    for (int i = 0; i < 3; ++i)
        arm[i] = position[0] * tm[0][i] + position[1] * tm[1][i] + position[2] * tm[2][i];
}

void stiffenBodies(const DynWorld* world, const DynBaseConstraint& c) {
    if (c.bclH.tag == kDynTagContact)
        return;
    const DynPartitionOutput& output = world->partitionOutput;
    for (int slot = 0; slot < c.bclH.n_bodies; ++slot) {
        DynsBody* body = c.bclH.b[slot];
        if (!body || !c.bclH.r[slot] || body->partition_index < 0 ||
            body->partition_index >= output.nPartitions ||
            !world->scratch->stiffensBodies[body->partition_index])
            continue;
        KitVector3 arm;
        attachmentArm(c, slot, arm);
        DynsBodyAddGeometricStiffness(body, c.resultForce[slot], arm);
    }
}

// Joint forces stiffen the bodies of the groups that want it. Partitions share bodies, so the sums
// are taken here, in the order of the slice.
void addGeometricStiffness(DynWorld* world, int start, int end) {
    DynPartitionOutput& output = world->partitionOutput;
    DynBuffer<char>& wanted = world->scratch->stiffensBodies;
    wanted.resize(output.nPartitions);
    std::fill_n(wanted.data(), output.nPartitions, char{0}); // a body may be of another slice
    bool any = false;
    for (int i = start; i < end; ++i) {
        const DynWorldThreadData& data = world->thread_data[i];
        const bool on =
            DynsConstraintFramesGetKiroParameters(world->constraint_frames, data.frameID)
                ->geometric_stiffness != 0;
        wanted[data.partitionID] = on;
        any = any || on;
    }
    for (int i = any ? start : end; i < end; ++i) {
        const int p = world->thread_data[i].partitionID;
        for (int k = 0; k < output.constraintsSize[p]; ++k)
            stiffenBodies(world, *output.constraints[output.constraintsStart[p] + k]);
    }
}

// False if the step was aborted.
bool solveSlice(DynWorld* world, int start, int end) {
    makeRoom(world, start, end);
    world->finalSlicedStep = end == world->partitionOutput.nPartitions;
    process_all_threads(world, pre_process_partition, start, end);
    if (!runHook(world, world->host.preUpdateForce, start, end))
        return false;
    DynsStep(world->constraint_frames, world->finalSlicedStep);
    process_all_threads(world, post_process_partition, start, end);
    addGeometricStiffness(world, start, end);
    return runHook(world, world->host.postUpdateForce, start, end);
}

} // namespace

void pre_process_partition(DynWorldThreadData* data) {
    const KitProfileScope zone("dynamics: pack");
    DynWorld* world = data->w;
    DynPartitionOutput& output = world->partitionOutput;
    const int p = data->partitionID;
    const DynWorldParams& params = world->params;
    int& iterations = output.coupling_iterations[p];
    iterations = std::min(iterations, params.k_params.coupling_iterations);
    DynsConstraintFramesSetFrameCouplingIterations(world->constraint_frames, data->frameID,
                                                   iterations);
    DynsConstraints* constraints =
        DynsConstraintFramesGetFrame(world->constraint_frames, data->frameID);
    DynsConstraintsSetType(constraints, output.partition_type[p]);
    const DynGrouping* group = DynGroupingFind(world, solverGroupOf(world, p));
    const bool grouped =
        group && world->partition_parameters.auto_grouping == kDynPartitionUserGrouping;
    DynPackPartition(&output, p, params.timeStep, &params,
                     grouped ? &group->bcl_params : &params.bcl_params, constraints);
    const DynsParameters& solver = group ? group->k_params : params.k_params;
    giveParameters(DynsConstraintFramesGetKiroParameters(world->constraint_frames, data->frameID),
                   solver, params.timeStep);
    if (solver.iterative_warm_start)
        DynWarmStartPartition(&output, p, constraints);
}

void post_process_partition(DynWorldThreadData* data) {
    const KitProfileScope zone("dynamics: unpack");
    DynWorld* world = data->w;
    DynPartitionOutput& output = world->partitionOutput;
    const int p = data->partitionID;
    DynUnpackPartition(DynsConstraintFramesGetFrame(world->constraint_frames, data->frameID), p,
                       &output);
    if (output.partition_type[p] != 0)
        return;
    for (int i = 0; i < output.bodiesSize[p]; ++i)
        output.bodies[output.bodiesStart[p] + i]->solvedStep = world->stepCount;
}

bool DynWorldSolve(DynWorld* world) {
    const DynWorldHost& host = world->host;
    world->scratch->couplingGroup =
        host.globalCouplingSolverGroup ? host.globalCouplingSolverGroup(host.owner) : -1;
    const bool onePass = DynWorldOrderPartitions(world);
    for (int start = 0; start < world->partitionOutput.nPartitions;) {
        const int end = DynWorldSliceEnd(world, start, onePass);
        if (!solveSlice(world, start, end))
            return false;
        start = end;
    }
    return true;
}
