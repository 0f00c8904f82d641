#include "ProcessPartitionWorkUnit.h"

#include "DynWorldInternal.h"

#include <Dyns/DynsConstraintFrames.h>

// A partition without rows stays with the calling thread, which integrates its bodies afterwards:
// another would wait longer for their memory than the work takes. The others come by descending size.
// Above kHeavyRows one travels alone, and one of kMediumRows or more begins a unit of its own; the
// small ones share units.

namespace {

constexpr int kHeavyRows = 10;
constexpr int kMediumRows = 6;
/// As kDynsMinSharedRows, before rows are built: joints announce 2 to 3 times as many as they use.
constexpr int kMinSharedMaxRows = 3 * kDynsMinSharedRows;

// Fills the unit from entry i on; answers the entry behind the last one taken.
int fillUnit(ProcessPartitionWorkUnit& unit, DynWorld* world, int i, int end) {
    const int* rows = world->partitionOutput.maxConstraintsRows;
    const DynWorldThreadData* data = world->thread_data;
    for (;;) {
        unit.add(&world->thread_data[i]);
        const bool heavy = rows[data[i].partitionID] > kHeavyRows;
        ++i;
        if (i == end || unit.isFull() || heavy || rows[data[i].partitionID] == 0 ||
            rows[data[i].partitionID] >= kMediumRows)
            return i;
    }
}

bool areWorthSharing(const DynWorld* world, int start, int end) {
    int rows = 0;
    for (int i = start; i < end && rows < kMinSharedMaxRows; ++i)
        rows += world->partitionOutput.maxConstraintsRows[world->thread_data[i].partitionID];
    return end - start >= 2 && rows >= kMinSharedMaxRows;
}

KitThreadPool* threadPoolFor(const DynWorld* world, int start, int end) {
    if (!areWorthSharing(world, start, end) ||
        DynsConstraintFramesGetThreaded(world->constraint_frames) < 1 || !world->host.threadPool)
        return nullptr;
    return world->host.threadPool(world->host.owner);
}

} // namespace

void ProcessPartitionWorkUnit::process() {
    for (int i = 0; i < count; ++i)
        fn(data[static_cast<std::size_t>(i)]);
    count = 0;
}

void process_all_threads(DynWorld* world, ProcessPartitionWorkUnit::Function fn, int start,
                         int end) {
    KitThreadPool* pool = threadPoolFor(world, start, end);
    const int* rows = world->partitionOutput.maxConstraintsRows;
    DynWorldThreadData* const data = world->thread_data;
    std::vector<ProcessPartitionWorkUnit>& units = world->scratch->units;
    std::size_t used = 0;
    for (int i = start; i < end;) {
        if (!pool || rows[data[i].partitionID] == 0) {
            fn(&data[i++]);
            continue;
        }
        if (used == units.size())
            units.emplace_back();
        units[used].reset(fn);
        i = fillUnit(units[used++], world, i, end);
    }
    KitThreadPoolExecute(pool, units.data(), used);
}
