#include "DynMergeSort.h"
#include "DynPartitionInternal.h"
#include "DynWorldInternal.h"

#include <Kit/KitMessage.h>

#include <algorithm>

namespace {

DynPartitionScratch& scratchOf(DynPartitionOutput* output) {
    return *static_cast<DynPartitionScratch*>(output->scratch1);
}

void clearCounts(DynPartitionOutput* output) {
    output->nPartitions = output->totalBodies = output->totalConstraints = 0;
    output->nsconstraints = output->nab = output->nac = output->n_sorted_bodies = 0;
}

// The order of work: by user group, if these count, then by creation. The result of a step must not
// depend on the order in which the bodies were enabled.
DynPartitionStart startOf(DynBody* body, const DynPartitionParameters* parameters) {
    const bool byGroup = parameters->auto_grouping == kDynPartitionUserGrouping;
    return {byGroup ? body->kiroBody.user_group : 0, body->serial, body};
}

// Sorts the gathered starts into the work list from a place on.
void writeStarts(DynPartitionOutput* output, int from) {
    DynPartitionScratch& scratch = scratchOf(output);
    DynMergeSort(scratch.starts, scratch.mergedStarts, scratch.runs,
                 [](const DynPartitionStart& a, const DynPartitionStart& b) {
                     return a.group != b.group ? a.group < b.group : a.serial < b.serial;
                 });
    output->n_sorted_bodies = from + scratch.starts.size();
    if (output->n_sorted_bodies > output->maxBodies)
        DynPartitionOutputReserve(output, output->n_sorted_bodies, 0);
    for (const DynPartitionStart& start : scratch.starts)
        output->sorted_bodies[from++] = start.body;
}

void DynPartitionOutputInitialize(DynBody* enabledBodyList, DynPartitionOutput* output,
                                  const DynPartitionParameters* parameters) {
    clearCounts(output);
    if (output->world)
        DynPartitionOutputReserve(output, output->world->nBodies, output->world->nConstraints);
    DynBuffer<DynPartitionStart>& starts = scratchOf(output).starts;
    starts.clear();
    for (DynBody* body = enabledBodyList; body; body = body->enabledNext)
        if (body->rootParent == body) {
            body->processedByPartitioner = true;
            starts.push_back(startOf(body, parameters));
        }
    writeStarts(output, 0);
}

// Sorts what the last pass has appended.
void sortAppended(DynPartitionOutput* output, int from, const DynPartitionParameters* parameters) {
    DynBuffer<DynPartitionStart>& starts = scratchOf(output).starts;
    starts.clear();
    for (int i = from; i < output->n_sorted_bodies; ++i)
        starts.push_back(startOf(output->sorted_bodies[i], parameters));
    writeStarts(output, from);
}

bool isInside(const DynBaseConstraint& c, int partition) {
    bool inside = true;
    DynForMovedBodies(c, [&](const DynBody* body) {
        inside = inside && body->node_data.color != kDynGraphNodeWhite &&
                 body->kiroBody.partition_index == partition;
    });
    return inside;
}

// What was left for coupling before its bodies had all come in is internal after all. Weak
// constraints stay secondary.
void promote(DynPartitionOutput* output, int partition, int firstSecondary) {
    for (int i = firstSecondary; i < output->nsconstraints;) {
        DynBaseConstraint* c = output->sconstraints[i];
        if (c->weak || !isInside(*c, partition)) {
            ++i;
            continue;
        }
        c->edge_data.type = kDynGraphEdgePrimary;
        c->edge_data.partitionIDs[0] = partition;
        DynPartitionAppendConstraint(output, partition, c);
        --output->sconstraintsSize[partition];
        output->sconstraints[i] = output->sconstraints[--output->nsconstraints];
    }
}

void closePartition(DynPartitionOutput* output, int partition, DynPartitionEndCB callback) {
    output->partition_type[partition] = 0;
    ++output->nPartitions;
    if (callback)
        callback(output);
}

void makePartition(DynBody* start, DynPartitionOutput* output,
                   const DynPartitionParameters* parameters) {
    const int partition = DynPartitionOpen(output);
    const DynGrouping* group = DynGroupingOfBody(start);
    const bool ownDepth = group && group->cross_grouping_depth >= 0;
    const DynPartitionFill fill{
        .output = output,
        .parameters = parameters,
        .queue = &scratchOf(output).queue,
        .partition = partition,
        .initialGroupIndex = start->kiroBody.user_group,
        .maxDepth = ownDepth ? group->cross_grouping_depth : parameters->cross_grouping_max_depth,
        .maxBodies = group ? group->max_partition_bodies : -1,
    };
    const int firstSecondary = output->nsconstraints;
    DynPartitionFillFrom(fill, start);
    promote(output, partition, firstSecondary);
    closePartition(output, partition, parameters->end_callback);
}

bool canStart(const DynBody* body) {
    return body->node_data.color == kDynGraphNodeWhite && body->stateFlags == 0 &&
           DynBodyIsEnabled(body);
}

// A body without constraints is met once only, so that what the walk noted on it can go while it is
// in the cache.
void forgetLoneBody(DynPartitionOutput* output, int start) {
    DynBody* body = output->sorted_bodies[start];
    output->sorted_bodies[start] = nullptr;
    --output->nab;
    body->node_data = {};
    body->processedByPartitioner = false;
}

// White bodies and unseen constraints for the next step.
void cleanUp(DynPartitionOutput* output) {
    for (int i = 0; i < output->nac; ++i) {
        output->addedConstraints[i]->flag = 0;
        output->addedConstraints[i]->edge_data = {};
    }
    for (int i = 0; i < output->nsconstraints; ++i) // those whose partitions were taken off
        output->sconstraints[i]->edge_data = {};
    for (int i = 0; i < output->nab; ++i)
        output->addedBodies[i]->node_data = {};
    for (int i = 0; i < output->n_sorted_bodies; ++i)
        if (output->sorted_bodies[i])
            output->sorted_bodies[i]->processedByPartitioner = false;
}

} // namespace

void DynPartitionUpdate(DynBody* enabledBodyList, DynPartitionOutput* output,
                        const DynPartitionParameters* parameters) {
    if (!output || !parameters || !parameters->partitioner) {
        KitWarning(12,
                   "DynPartitionUpdate: output, parameters and partitioner must not be null.\n");
        return;
    }
    parameters->partitioner(enabledBodyList, output, parameters);
}

void DynPartitionerExp(DynBody* enabledBodyList, DynPartitionOutput* output,
                       const DynPartitionParameters* parameters) {
    DynPartitionOutputInitialize(enabledBodyList, output, parameters);
    for (int from = 0, end = output->n_sorted_bodies; from < end;
         from = end, end = output->n_sorted_bodies) {
        if (from > 0)
            sortAppended(output, from, parameters);
        for (int i = from; i < end; ++i) {
            DynBody* start = output->sorted_bodies[i];
            if (!canStart(start))
                continue;
            const bool lone = !start->constraintList;
            makePartition(start, output, parameters);
            if (lone)
                forgetLoneBody(output, i);
        }
    }
    if (output->nsconstraints > 0)
        DynPartitionMakeSecondaries(output, parameters);
    cleanUp(output);
}

void DynMakeSinglePartition(DynBody* enabledBodyList, DynPartitionOutput* output,
                            DynPartitionEndCB endCallback) {
    clearCounts(output);
    const int p = DynPartitionOpen(output);
    DynBuffer<DynPartitionStart>& starts = scratchOf(output).starts;
    starts.clear();
    for (DynBody* body = enabledBodyList; body; body = body->enabledNext)
        if (body->rootParent == body)
            starts.push_back({0, body->serial, body});
    writeStarts(output, 0);
    for (int i = 0; i < output->n_sorted_bodies; ++i) {
        DynBody* body = output->sorted_bodies[i];
        body->partitionIndex = body->kiroBody.partition_index = p;
        body->kiroBody.localPartition = p;
        body->kiroBody.localIndex = i;
        DynPartitionAppendBody(output, p, body);
    }
    for (DynBaseConstraint* c = output->world ? output->world->enabledConstraintHead : nullptr; c;
         c = c->enabledNext)
        if (!c->merged)
            DynPartitionAppendConstraint(output, p, c);
    std::sort(output->constraints, output->constraints + output->totalConstraints,
              [](const DynBaseConstraint* a, const DynBaseConstraint* b) {
                  return a->serial < b->serial;
              });
    closePartition(output, p, endCallback);
}
