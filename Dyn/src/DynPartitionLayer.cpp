#include "DynPartitionInternal.h"

#include <Dyn/DynWorld.h>

// A partition grows breadth first, body by body. Each constraint of a body is either kept inside
// (primary) and pulls its other bodies in, or left for the coupling of partitions (secondary).

namespace {

void pushPlace(DynBodyIDQueue& queue, int place, int distance) {
    if (distance >= queue.tail) {
        queue.buckets.resize(distance + 1);
        for (; queue.tail <= distance; ++queue.tail)
            queue.buckets[queue.tail] = {-1, -1};
    }
    queue.Q.reserve(place + 1);
    queue.Q[place] = -1;
    DynBodyIDQueue::Bucket& bucket = queue.buckets[distance];
    if (bucket.head < 0)
        bucket.head = place;
    else
        queue.Q[bucket.tail] = place;
    bucket.tail = place;
    queue.head = std::min(queue.head, distance);
    ++queue.length;
}

int popPlace(DynBodyIDQueue& queue) {
    while (queue.buckets[queue.head].head < 0)
        ++queue.head;
    DynBodyIDQueue::Bucket& bucket = queue.buckets[queue.head];
    const int place = bucket.head;
    bucket.head = queue.Q[place];
    --queue.length;
    return place;
}

void enableIfNeeded(DynBody* body) {
    if (!DynBodyIsEnabled(body))
        DynBodyEnable(body);
}

// Answers the place of the body in the output.
int addBody(const DynPartitionFill& fill, DynBody* body, int distance) {
    DynPartitionOutput* output = fill.output;
    const int p = fill.partition;
    enableIfNeeded(body);
    body->node_data.distance = distance;
    body->node_data.color = kDynGraphNodeGrey;
    body->node_data.idx = output->bodiesSize[p];
    body->partitionIndex = body->kiroBody.partition_index = p;
    body->kiroBody.localPartition = p;
    body->kiroBody.localIndex = output->bodiesSize[p];
    DynPartitionAppendBody(output, p, body);
    if (output->nab >= output->maxBodies)
        DynPartitionOutputReserve(output, output->nab + 1, 0);
    output->addedBodies[output->nab++] = body;
    return output->totalBodies - 1;
}

// Makes sure that a body starts a partition of its own unless another one reaches it first.
void enlist(DynPartitionOutput* output, DynBody* body) {
    if (body->processedByPartitioner || body->rootParent != body)
        return;
    body->processedByPartitioner = true;
    enableIfNeeded(body);
    if (output->n_sorted_bodies >= output->maxBodies)
        DynPartitionOutputReserve(output, output->n_sorted_bodies + 1, 0);
    output->sorted_bodies[output->n_sorted_bodies++] = body;
}

bool isFaster(const KitVector4 v, KitReal threshold) {
    return v[0] * v[0] + v[1] * v[1] + v[2] * v[2] > threshold * threshold;
}

void watchWall(const DynPartitionFill& fill, const DynBody& wall) {
    int& forceAwake = fill.output->forceAwake[fill.partition];
    if (!forceAwake && (isFaster(wall.kiroBody.vel, wall.autoDisableParams.vel_thresh) ||
                        isFaster(wall.kiroBody.velrot, wall.autoDisableParams.velrot_thresh)))
        forceAwake = 1;
}

bool hasBody(const DynBaseConstraint& c) {
    for (int slot = 0; slot < c.bclH.n_bodies; ++slot)
        if (c.body[slot])
            return true;
    return false;
}

struct Vote {
    bool primary;
    int step; ///< how much further away the constraint's other bodies are
};

// Lets the other bodies of a constraint vote. One of the partition's own group ends the vote and
// brings the depth back to 0 for the rest of root's constraints.
Vote vote(const DynPartitionFill& fill, const DynBody* root, const DynBaseConstraint& c,
          int& depth) {
    if (fill.parameters->auto_grouping == kDynPartitionAutoGrouping || !hasBody(c))
        return {true, 0};
    const DynBody* strongest = DynStrongestRoot(c);
    Vote result{false, 0};
    bool counted = false;
    for (int slot = 0; slot < c.bclH.n_bodies; ++slot) {
        DynBody* body = c.body[slot];
        if (!body)
            continue;
        if (body == strongest || body->stateFlags == kDynBodyKinematic) {
            watchWall(fill, *body);
            continue;
        }
        if (!c.bclH.b[slot] || body == root || body->stateFlags != 0)
            continue;
        enlist(fill.output, body);
        counted = true;
        if (fill.maxBodies > 0 && fill.output->bodiesSize[fill.partition] >= fill.maxBodies)
            continue;
        if (body->kiroBody.user_group == fill.initialGroupIndex) {
            result = {true, 0};
            depth = 0;
            break;
        }
        if (depth < fill.maxDepth)
            result = {true, 1};
        else if (body->node_data.color == kDynGraphNodeGrey)
            result.primary = true;
    }
    if (!counted)
        result.primary = true;
    else if (c.weak)
        result.primary = false;
    return result;
}

void takePrimary(const DynPartitionFill& fill, const DynBody* root, DynBaseConstraint& c,
                 int distance) {
    c.edge_data.type = kDynGraphEdgePrimary;
    c.edge_data.partitionIDs[0] = fill.partition;
    DynPartitionAppendConstraint(fill.output, fill.partition, &c);
    DynForMovedBodies(c, [&](DynBody* body) {
        if (body != root && body->node_data.color == kDynGraphNodeWhite)
            pushPlace(*fill.queue, addBody(fill, body, distance), distance);
    });
}

void leaveSecondary(const DynPartitionFill& fill, DynBaseConstraint& c) {
    DynPartitionOutput* output = fill.output;
    if (output->nsconstraints >= output->maxConstraints)
        DynPartitionOutputReserve(output, 0, output->nsconstraints + 1);
    output->sconstraints[output->nsconstraints++] = &c;
    ++output->sconstraintsSize[fill.partition];
    c.edge_data.type = kDynGraphEdgeSecondary;
    c.edge_data.partitionIDs[0] = fill.partition;
    c.edge_data.e_pgroup_index = fill.partition;
    // The vote on a weak constraint may have ended before it came to all bodies.
    DynForMovedBodies(c, [&](DynBody* body) { enlist(output, body); });
}

void reachSecondary(const DynPartitionFill& fill, DynBaseConstraint& c) {
    int* ids = c.edge_data.partitionIDs;
    if (ids[0] == fill.partition || ids[1] == fill.partition)
        return;
    if (ids[1] < 0)
        ids[1] = fill.partition;
    ++fill.output->sconstraintsSize[fill.partition];
}

void enlistNeighbours(const DynPartitionFill& fill, const DynBody* strong,
                      const DynBaseConstraint& c) {
    for (int slot = 0; slot < c.bclH.n_bodies; ++slot) {
        DynBody* body = c.body[slot];
        if (body && body != strong && body->stateFlags == 0)
            enlist(fill.output, body);
    }
}

void visitConstraint(const DynPartitionFill& fill, const DynBody* root, DynBaseConstraint& c,
                     int& depth) {
    DynPartitionPrepare(fill.output->world, c);
    const bool strong = DynStrongestRoot(c) == root;
    if (c.merged && !strong)
        return;
    if (strong) {
        enlistNeighbours(fill, root, c);
        return;
    }
    if (c.edge_data.type == kDynGraphEdgeSecondary)
        reachSecondary(fill, c);
    if (c.edge_data.type != kDynGraphEdgeUnseen)
        return;
    const Vote result = vote(fill, root, c, depth);
    if (result.primary)
        takePrimary(fill, root, c, depth + result.step);
    else
        leaveSecondary(fill, c);
}

} // namespace

void FillPartitionLayer(const DynPartitionFill& fill, DynBody* root, int depth) {
    if (root->node_data.color == kDynGraphNodeWhite)
        addBody(fill, root, depth);
    for (const KitCListNode* node = root->constraintList; node; node = node->next)
        visitConstraint(fill, root, *node->constraint, depth);
    root->node_data.color = kDynGraphNodeBlack;
}

void DynPartitionFillFrom(const DynPartitionFill& fill, DynBody* start) {
    DynBodyIDQueue& queue = *fill.queue;
    queue.head = queue.tail = queue.length = 0;
    FillPartitionLayer(fill, start, 0);
    while (queue.length > 0) {
        DynBody* next = fill.output->bodies[popPlace(queue)];
        FillPartitionLayer(fill, next, next->node_data.distance);
    }
}
