#pragma once
#include "DynBuffer.h"

#include <Dyn/DynBody.h>
#include <Dyn/DynPartition.h>

#include <cstdint>

struct DynWorld;

/// Bodies of the partition that wait for their turn, nearest first, in the order of arrival among
/// equals: one list a distance, linked through the places of the bodies in the output.
struct DynBodyIDQueue {
    struct Bucket {
        int head, tail; ///< places, -1 if empty
    };
    DynBuffer<int> Q;          ///< place: the next place of the same distance, -1 at the end
    DynBuffer<Bucket> buckets; ///< by distance
    int head = 0;              ///< no bucket below is filled
    int tail = 0;              ///< buckets in use
    int length = 0;            ///< waiting bodies
};

/// A starting body with its place in the order of work.
struct DynPartitionStart {
    int group;
    std::uint64_t serial;
    DynBody* body;
};

/// Buffers of the partitioner; DynPartitionOutput::scratch1.
struct DynPartitionScratch {
    DynBodyIDQueue queue;
    DynBuffer<DynPartitionStart> starts, mergedStarts;
    DynBuffer<int> runs;
};

/// The partition that is being filled.
struct DynPartitionFill {
    DynPartitionOutput* output;
    const DynPartitionParameters* parameters;
    DynBodyIDQueue* queue;
    int partition;
    int initialGroupIndex; ///< user group of the starting body
    int maxDepth;          ///< hops that it may reach into other groups
    int maxBodies;         ///< no more bodies vote for it from this size on, if above 0
};

/// Clears the notes of earlier steps on a constraint and finds its strongest body, once in a step of
/// the world, which may be null.
void DynPartitionPrepare(const DynWorld* world, DynBaseConstraint& c);

/// Raises the capacities to at least these, at least doubling one that is too small.
void DynPartitionOutputReserve(DynPartitionOutput* output, int bodies, int constraints);
/// Begins the partition behind the last one; it counts once nPartitions is raised.
int DynPartitionOpen(DynPartitionOutput* output);
void DynPartitionAppendBody(DynPartitionOutput* output, int p, DynBody* body);
void DynPartitionAppendConstraint(DynPartitionOutput* output, int p, DynBaseConstraint* constraint);

/// Adds the body to the partition if it is white, and assigns its constraints.
void FillPartitionLayer(const DynPartitionFill& fill, DynBody* root, int depth);
/// Fills the partition outward from a body, nearest first.
void DynPartitionFillFrom(const DynPartitionFill& fill, DynBody* start);

/// Groups the partitions that secondary constraints join, and makes secondary partitions of these.
void DynPartitionMakeSecondaries(DynPartitionOutput* output,
                                 const DynPartitionParameters* parameters);

[[nodiscard]] inline DynBody* DynStrongestRoot(const DynBaseConstraint& c) {
    return c.bclH.strongestBody ? c.bclH.strongestBody->rootParent : nullptr;
}

/// Calls fn with each dynamic body whose slot takes part, the strongest one left out.
template <class Fn>
void DynForMovedBodies(const DynBaseConstraint& c, Fn fn) {
    const DynBody* strongest = DynStrongestRoot(c);
    for (int slot = 0; slot < c.bclH.n_bodies; ++slot) {
        DynBody* body = c.body[slot];
        if (body && c.bclH.b[slot] && body->stateFlags == 0 && body != strongest)
            fn(body);
    }
}
