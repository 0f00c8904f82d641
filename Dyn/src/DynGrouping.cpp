#include "DynWorldInternal.h"

#include <Dyn/DynBody.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <new>

namespace {

constexpr int kFirstGroupings = 10;

bool growGroupings(DynWorld* world) {
    const int capacity = std::max(kFirstGroupings, 2 * world->n_groupings);
    void* grown = KitMemoryAPI_resize(world->groupings,
                                      static_cast<std::size_t>(capacity) * sizeof(DynGrouping*));
    if (!grown)
        return false;
    world->groupings = static_cast<DynGrouping**>(grown);
    world->max_groupings = capacity;
    return true;
}

bool appendGrouping(DynWorld* world) {
    if (world->n_groupings == world->max_groupings && !growGroupings(world))
        return false;
    void* memory = KitPoolGetStruct(world->groupings_pool);
    if (!memory)
        return false;
    const int index = world->n_groupings;
    const DynGrouping* model = DynGroupingFind(world, 0);
    world->groupings[world->n_groupings++] = new (memory)
        DynGrouping{.world = world,
                    .id = index,
                    .secondaryid = index,
                    .partition = -1,
                    .cross_grouping_depth = -1,
                    .strength = 0,
                    .max_partition_bodies = -1,
                    .k_params = model ? model->k_params : world->params.k_params,
                    .bcl_params = model ? model->bcl_params : world->params.bcl_params};
    return true;
}

} // namespace

DynGrouping* DynGroupingGet(DynWorld* world, int i) {
    if (!world || i < 0)
        return nullptr;
    if (i > kDynMaxGrouping) {
        KitWarning(12, "DynGroupingGet: the group must be at most %d.\n", kDynMaxGrouping);
        return nullptr;
    }
    while (world->n_groupings <= i)
        if (!appendGrouping(world)) {
            KitWarning(20, "DynGroupingGet: no memory for solver group %d.\n", i);
            return nullptr;
        }
    return world->groupings[i];
}

DynGrouping* DynGroupingFind(const DynWorld* world, int i) {
    return i >= 0 && i < world->n_groupings ? world->groupings[i] : nullptr;
}

const DynGrouping* DynGroupingOfBody(const DynBody* body) {
    return body->world ? DynGroupingFind(body->world, body->kiroBody.user_group) : nullptr;
}

int DynGroupingCount(const DynWorld* world) {
    return world->n_groupings;
}

void DynGroupingDestroyAll(DynWorld* world) {
    KitMemoryAPI_destroy(world->groupings);
    world->groupings = nullptr;
    world->n_groupings = world->max_groupings = 0;
    KitPoolTerm(world->groupings_pool);
}
