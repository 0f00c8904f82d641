#include "DynPartitionInternal.h"

#include <Dyn/DynWorld.h>
#include <Kit/KitAssoc.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <cstdlib>
#include <new>

namespace {

constexpr int kFirstPartitions = 10;

template <class T>
void growArray(T*& array, int capacity, const KitMemoryAPIStruct& mem) {
    void* grown = mem.resize(array, static_cast<std::size_t>(capacity) * sizeof(T));
    if (!grown) {
        KitFatalError(20, "DynPartitionOutputResize: out of memory.\n");
        std::abort();
    }
    array = static_cast<T*>(grown);
}

void growPartitions(DynPartitionOutput* output, int capacity, const KitMemoryAPIStruct& mem) {
    for (int** array : {&output->constraintsStart, &output->constraintsSize,
                        &output->maxConstraintsRows, &output->refIndex, &output->pgroupIndex,
                        &output->sconstraintsSize, &output->bodiesStart, &output->bodiesSize,
                        &output->partition_type, &output->forceAwake, &output->coupling_iterations})
        growArray(*array, capacity, mem);
    output->maxPartition = capacity;
}

void growBodies(DynPartitionOutput* output, int capacity, const KitMemoryAPIStruct& mem) {
    growArray(output->bodies, capacity, mem);
    growArray(output->k_bodies, capacity, mem);
    growArray(output->indices, capacity, mem);
    growArray(output->addedBodies, capacity, mem);
    growArray(output->sorted_bodies, capacity, mem);
    output->maxBodies = capacity;
}

void growConstraints(DynPartitionOutput* output, int capacity, const KitMemoryAPIStruct& mem) {
    growArray(output->constraints, capacity, mem);
    growArray(output->sconstraints, capacity, mem);
    growArray(output->addedConstraints, capacity, mem);
    output->maxConstraints = capacity;
}

} // namespace

void DynPartitionOutputInit(DynPartitionOutput* output, DynWorld* world, int maxBodies,
                            int maxConstraints, const KitMemoryAPIStruct* mem) {
    *output = {};
    output->world = world;
    output->mem = mem ? mem : &KitMemoryAPI;
    output->scratch1 = new (output->mem->create(sizeof(DynPartitionScratch))) DynPartitionScratch;
    DynPartitionOutputResize(output, kFirstPartitions, std::max(maxBodies, 1),
                             std::max(maxConstraints, 1), nullptr);
    output->n_sorted_bodies = 0;
}

void DynPartitionOutputDestroy(DynPartitionOutput* output) {
    const KitMemoryAPIStruct* mem = output->mem;
    if (!mem)
        return;
    for (void* array :
         {static_cast<void*>(output->constraints), static_cast<void*>(output->sconstraints),
          static_cast<void*>(output->constraintsStart), static_cast<void*>(output->constraintsSize),
          static_cast<void*>(output->maxConstraintsRows), static_cast<void*>(output->refIndex),
          static_cast<void*>(output->pgroupIndex), static_cast<void*>(output->sconstraintsSize),
          static_cast<void*>(output->bodies), static_cast<void*>(output->k_bodies),
          static_cast<void*>(output->indices), static_cast<void*>(output->bodiesStart),
          static_cast<void*>(output->bodiesSize), static_cast<void*>(output->partition_type),
          static_cast<void*>(output->forceAwake), static_cast<void*>(output->coupling_iterations),
          static_cast<void*>(output->addedBodies), static_cast<void*>(output->addedConstraints),
          static_cast<void*>(output->sorted_bodies)})
        if (array)
            mem->destroy(array);
    auto* scratch = static_cast<DynPartitionScratch*>(output->scratch1);
    scratch->~DynPartitionScratch();
    mem->destroy(scratch);
    *output = {};
}

void DynPartitionOutputResize(DynPartitionOutput* output, int maxPartitions, int maxBodies,
                              int maxConstraints, const KitMemoryAPIStruct* mem) {
    const KitMemoryAPIStruct& table = mem ? *mem : *output->mem;
    if (maxPartitions > output->maxPartition)
        growPartitions(output, maxPartitions, table);
    if (maxBodies > output->maxBodies) {
        growBodies(output, maxBodies, table);
        output->n_sorted_bodies = -1;
    }
    if (maxConstraints > output->maxConstraints)
        growConstraints(output, maxConstraints, table);
}

void DynPartitionOutputReserve(DynPartitionOutput* output, int bodies, int constraints) {
    const auto atLeast = [](int capacity, int wanted) {
        return wanted > capacity ? std::max(wanted, 2 * capacity) : capacity;
    };
    const int sorted = output->n_sorted_bodies; // the work list itself survives
    DynPartitionOutputResize(output, output->maxPartition, atLeast(output->maxBodies, bodies),
                             atLeast(output->maxConstraints, constraints), nullptr);
    output->n_sorted_bodies = sorted;
}

int DynPartitionOpen(DynPartitionOutput* output) {
    const int p = output->nPartitions;
    if (p >= output->maxPartition)
        DynPartitionOutputResize(output, 2 * output->maxPartition, 0, 0, nullptr);
    output->constraintsStart[p] = output->totalConstraints;
    output->bodiesStart[p] = output->totalBodies;
    output->constraintsSize[p] = output->bodiesSize[p] = output->sconstraintsSize[p] = 0;
    output->maxConstraintsRows[p] = 0;
    output->forceAwake[p] = 0;
    output->coupling_iterations[p] = 0;
    output->pgroupIndex[p] = kDynNoPartitionGroup;
    output->refIndex[p] = p;
    return p;
}

void DynPartitionAppendBody(DynPartitionOutput* output, int p, DynBody* body) {
    if (output->totalBodies >= output->maxBodies)
        DynPartitionOutputReserve(output, output->totalBodies + 1, 0);
    output->bodies[output->totalBodies] = body;
    output->k_bodies[output->totalBodies] = &body->kiroBody;
    ++output->totalBodies;
    ++output->bodiesSize[p];
}

void DynPartitionAppendConstraint(DynPartitionOutput* output, int p,
                                  DynBaseConstraint* constraint) {
    const int needed = std::max(output->totalConstraints, output->nac) + 1;
    if (needed > output->maxConstraints)
        DynPartitionOutputReserve(output, 0, needed);
    output->constraints[output->totalConstraints++] = constraint;
    output->addedConstraints[output->nac++] = constraint;
    ++output->constraintsSize[p];
    ++constraint->bclH.gflag;
}
