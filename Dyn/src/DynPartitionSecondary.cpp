#include "DynPartitionInternal.h"
#include "DynWorldInternal.h"

#include <algorithm>
#include <climits>

// Secondary constraints tie primaries into partition groups and are solved in small partitions of
// their own, by coupling passes against the primaries of the group.

namespace {

int couplingIterationsOf(const DynPartitionOutput* output, const DynBody* body) {
    if (const DynGrouping* group = DynGroupingOfBody(body))
        return group->k_params.coupling_iterations;
    return output->world ? output->world->params.k_params.coupling_iterations : 0;
}

void findCouplingIterations(DynPartitionOutput* output) {
    for (int i = 0; i < output->nsconstraints; ++i) {
        DynBaseConstraint& c = *output->sconstraints[i];
        int least = INT_MAX;
        DynForMovedBodies(c, [&](const DynBody* body) {
            least = std::min(least, couplingIterationsOf(output, body));
        });
        c.edge_data.coupling_iteration = least == INT_MAX ? 0 : std::max(least, 0);
    }
}

bool isPrimary(const DynPartitionOutput* output, int partition) {
    return partition >= 0 && partition < output->nPartitions;
}

// An entry of pgroupIndex below its own index links to the group's smaller partitions.
int findRoot(int* links, int partition) {
    int root = partition;
    while (links[root] < root)
        root = links[root];
    while (links[partition] < partition) { // shorten the chain for the next walk
        const int next = links[partition];
        links[partition] = root;
        partition = next;
    }
    return root;
}

template <class Fn>
void forPartitions(const DynPartitionOutput* output, const DynBaseConstraint& c, Fn fn) {
    if (isPrimary(output, c.edge_data.e_pgroup_index))
        fn(c.edge_data.e_pgroup_index);
    DynForMovedBodies(c, [&](const DynBody* body) {
        if (isPrimary(output, body->kiroBody.partition_index))
            fn(body->kiroBody.partition_index);
    });
}

// Each partition that a secondary constraint touches gets the smallest index of its group.
void groupPartitions(DynPartitionOutput* output) {
    int* links = output->pgroupIndex;
    for (int i = 0; i < output->nsconstraints; ++i) {
        const DynBaseConstraint& c = *output->sconstraints[i];
        int smallest = kDynNoPartitionGroup;
        forPartitions(output, c, [&](int p) { smallest = std::min(smallest, findRoot(links, p)); });
        forPartitions(output, c, [&](int p) { links[findRoot(links, p)] = smallest; });
    }
    for (int p = 0; p < output->nPartitions; ++p)
        if (links[p] != kDynNoPartitionGroup)
            links[p] = findRoot(links, p);
    for (int i = 0; i < output->nsconstraints; ++i) {
        DynGraphEdgeData& edge = output->sconstraints[i]->edge_data;
        if (isPrimary(output, edge.e_pgroup_index))
            edge.e_pgroup_index = links[edge.e_pgroup_index];
    }
}

void sortSecondaries(DynPartitionOutput* output) {
    std::sort(output->sconstraints, output->sconstraints + output->nsconstraints,
              [](const DynBaseConstraint* a, const DynBaseConstraint* b) {
                  const DynGraphEdgeData &x = a->edge_data, &y = b->edge_data;
                  if (x.e_pgroup_index != y.e_pgroup_index)
                      return x.e_pgroup_index < y.e_pgroup_index;
                  if (x.coupling_iteration != y.coupling_iteration)
                      return x.coupling_iteration < y.coupling_iteration;
                  return a->serial < b->serial;
              });
}

void addSecondary(DynPartitionOutput* output, int p, DynBaseConstraint* c) {
    DynForMovedBodies(*c, [&](DynBody* body) {
        const int mark = p + 1; // 0 is nobody's
        if (body->node_data.special_add == mark)
            return;
        body->node_data.special_add = mark;
        DynPartitionAppendBody(output, p, body);
    });
    DynPartitionAppendConstraint(output, p, c);
}

// The partitions of the bodies go on coupling for as long as the secondary does.
void findSecondaryPartitionCouplingIteration(DynPartitionOutput* output, int p) {
    int* iterations = output->coupling_iterations;
    for (int i = 0; i < output->constraintsSize[p]; ++i) {
        const DynBaseConstraint& c = *output->constraints[output->constraintsStart[p] + i];
        const int n = c.edge_data.coupling_iteration;
        iterations[p] = std::max(iterations[p], n);
        DynForMovedBodies(c, [&](const DynBody* body) {
            const int partition = body->kiroBody.partition_index;
            if (isPrimary(output, partition))
                iterations[partition] = std::max(iterations[partition], n);
        });
    }
}

bool belongTogether(const DynGraphEdgeData& a, const DynGraphEdgeData& b) {
    return a.e_pgroup_index == b.e_pgroup_index && a.coupling_iteration == b.coupling_iteration;
}

void cutSecondaries(DynPartitionOutput* output, int maxSize) {
    for (int i = 0; i < output->nsconstraints;) {
        const int p = DynPartitionOpen(output);
        const DynGraphEdgeData& first = output->sconstraints[i]->edge_data;
        do
            addSecondary(output, p, output->sconstraints[i++]);
        while (i < output->nsconstraints && output->constraintsSize[p] < maxSize &&
               belongTogether(first, output->sconstraints[i]->edge_data));
        output->pgroupIndex[p] = first.e_pgroup_index;
        findSecondaryPartitionCouplingIteration(output, p);
        output->partition_type[p] = 1;
        ++output->nPartitions;
    }
}

} // namespace

void DynPartitionMakeSecondaries(DynPartitionOutput* output,
                                 const DynPartitionParameters* parameters) {
    findCouplingIterations(output);
    groupPartitions(output);
    sortSecondaries(output);
    cutSecondaries(output, std::max(parameters->secondaryPartitionMaxSize, 1));
}
