#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Dyns/DynsConstraintFrames.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>

// The order of the partitions and their division into slices, each of which has a solver frame a
// partition. Partitions that are coupled share a slice.

KitReal sDynWorldOnePassRatio = 128;
int sDynWorldOnePassPartitionSizeTreshold = 128;
int sDynWorldOnePassPartitionCountTreshold = 100;

namespace {

// Each comparison is a total order: ties go by partition, which follows the creation of bodies.

struct ComparePartitionsMaxRows {
    const DynPartitionOutput& output;

    bool operator()(const DynWorldThreadData& a, const DynWorldThreadData& b) const {
        const int p = a.partitionID, q = b.partitionID;
        if (output.partition_type[p] != output.partition_type[q])
            return output.partition_type[p] < output.partition_type[q];
        if (output.maxConstraintsRows[p] != output.maxConstraintsRows[q])
            return output.maxConstraintsRows[p] > output.maxConstraintsRows[q];
        return p < q;
    }
};

struct ComparePartitionGroupAndSize {
    const DynPartitionOutput& output;

    // Within a group: coupled primaries, then secondaries, which must end the slice.
    [[nodiscard]] int rank(int p) const {
        if (output.partition_type[p] != 0)
            return 1;
        return output.sconstraintsSize[p] != 0 ? 2 : 0;
    }

    bool operator()(const DynWorldThreadData& a, const DynWorldThreadData& b) const {
        const int p = a.partitionID, q = b.partitionID;
        if (output.pgroupIndex[p] != output.pgroupIndex[q])
            return output.pgroupIndex[p] < output.pgroupIndex[q];
        if (const int rp = rank(p), rq = rank(q); rp != rq)
            return rp > rq;
        if (output.maxConstraintsRows[p] != output.maxConstraintsRows[q])
            return output.maxConstraintsRows[p] > output.maxConstraintsRows[q];
        return p < q;
    }
};

template <class Less>
void sortPartitions(DynWorld* world, Less less) {
    DynWorldThreadData* begin = world->thread_data;
    DynWorldThreadData* end = begin + world->partitionOutput.nPartitions;
    if (!std::is_sorted(begin, end, less)) // thousands of free bodies are
        std::sort(begin, end, less);
}

void reserveThreadData(DynWorld* world, int n) {
    if (n <= world->max_thread_data)
        return;
    const int capacity = std::max(n, 2 * world->max_thread_data);
    void* grown = KitMemoryAPI_resize(world->thread_data, static_cast<std::size_t>(capacity) *
                                                              sizeof(DynWorldThreadData));
    if (!grown) {
        KitFatalError(20, "DynWorldStep: out of memory.\n");
        std::abort();
    }
    world->thread_data = static_cast<DynWorldThreadData*>(grown);
    world->max_thread_data = capacity;
}

int rowsOf(const DynWorld* world, int i) {
    return world->partitionOutput.maxConstraintsRows[world->thread_data[i].partitionID];
}

int groupOf(const DynWorld* world, int i) {
    return world->partitionOutput.pgroupIndex[world->thread_data[i].partitionID];
}

// Partitions stand by descending rows.
bool chooseOnePass(const DynWorld* world) {
    switch (world->mSolverPartitionSplitting) {
    case kDynPartitionSplittingOnePass:
        return true;
    case kDynPartitionSplittingGroup:
        return false;
    case kDynPartitionSplittingAutomatic:
        break;
    }
    const int n = world->partitionOutput.nPartitions;
    if (DynsConstraintFramesGetThreaded(world->constraint_frames) < 1)
        return false;
    if (n <= world->maxKiroFrames)
        return true;
    if (n >= sDynWorldOnePassPartitionCountTreshold)
        return false;
    const int r1 = rowsOf(world, 0), r2 = rowsOf(world, 1);
    return r1 < sDynWorldOnePassPartitionSizeTreshold || r1 > r2 * sDynWorldOnePassRatio;
}

// Partitions without a group that share a slice: as many as there are frames, but many if some of
// them are small.
int batchSize(const DynWorld* world, int start) {
    const int n = world->partitionOutput.nPartitions;
    const int maxFrames = std::clamp(world->maxKiroFrames, 1, n);
    const int end = start + std::min(maxFrames, n - start);
    for (int i = start; i < end; ++i)
        if (rowsOf(world, i) <= sDynWorldOnePassPartitionSizeTreshold)
            return sDynWorldOnePassPartitionCountTreshold;
    return maxFrames;
}

} // namespace

bool DynWorldOrderPartitions(DynWorld* world) {
    DynPartitionOutput& output = world->partitionOutput;
    const int n = output.nPartitions;
    reserveThreadData(world, n);
    for (int i = 0; i < n; ++i)
        world->thread_data[i] = {.w = world, .partitionID = i, .frameID = i};
    bool onePass = true;
    if (n > 1) {
        sortPartitions(world, ComparePartitionsMaxRows{output});
        onePass = chooseOnePass(world);
        if (!onePass)
            sortPartitions(world, ComparePartitionGroupAndSize{output});
    }
    for (int i = 0; i < n; ++i) {
        world->thread_data[i].frameID = i;
        output.refIndex[i] = world->thread_data[i].partitionID;
    }
    return onePass;
}

int DynWorldSliceEnd(const DynWorld* world, int start, bool onePass) {
    const int n = world->partitionOutput.nPartitions;
    if (onePass)
        return n;
    const int group = groupOf(world, start);
    if (group == kDynNoPartitionGroup)
        return start + std::min(batchSize(world, start), n - start);
    int end = start + 1;
    while (end < n && groupOf(world, end) == group)
        ++end;
    return end;
}

int DynWorldCountSecondaries(const DynWorld* world, int start, int end) {
    int count = 0;
    for (int i = end; i-- > start; ++count)
        if (world->partitionOutput.partition_type[world->thread_data[i].partitionID] == 0)
            break;
    return count;
}
