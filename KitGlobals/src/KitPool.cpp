#include <Kit/KitPool.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>
#include "KitAlign.h"
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>

namespace {
constexpr int kMaxInt = std::numeric_limits<int>::max();
constexpr float kDoubling = 2;

// Elements may have any size and alignment, so the link is not written as a pointer object.
KitPoolElement* loadNext(const void* element) {
    KitPoolElement* next = nullptr;
    std::memcpy(&next, element, sizeof(next));
    return next;
}

void storeNext(void* element, KitPoolElement* next) {
    std::memcpy(element, &next, sizeof(next));
}

const char* nameOf(const KitPool& pool) {
    return pool.name ? pool.name : "unnamed";
}

/// Stride in bytes, 0 if there is none: a free element holds a pointer.
int strideOf(int structSize, int alignment) {
    if (structSize < 0)
        return 0;
    const auto size = std::max(static_cast<std::size_t>(structSize), sizeof(KitPoolElement));
    const auto stride = KitRoundUp(size, static_cast<std::size_t>(std::max(alignment, 1)));
    return stride > static_cast<std::size_t>(kMaxInt) ? 0 : static_cast<int>(stride);
}

/// Capacity of the next block, 0 if the pool cannot grow.
int nextCount(const KitPool& pool) {
    const double scaled = std::trunc(static_cast<double>(pool.currElementCount) *
                                         static_cast<double>(pool.blockSizeMultiplier) +
                                     0.5);
    const double count = scaled + pool.blockSizeIncrement;
    // With no element free all blocks are full, so that the sum stays countable.
    return count >= 1 && count <= kMaxInt - pool.totalElementCount ? static_cast<int>(count) : 0;
}

/// Chains a block of count elements in front. False, and no change, if it cannot be had.
bool addBlock(KitPool& pool, int count) {
    if (count <= 0 || pool.elementSize <= 0)
        return false;
    const std::size_t alignment =
        std::lcm(static_cast<std::size_t>(std::max(pool.alignment, 1)), alignof(std::max_align_t));
    std::size_t bytes = 0;
    if (__builtin_mul_overflow(static_cast<std::size_t>(count),
                               static_cast<std::size_t>(pool.elementSize), &bytes) ||
        __builtin_add_overflow(bytes, sizeof(KitPoolBlock) + alignment, &bytes))
        return false;
    void* memory = KitMemoryAPI_create(bytes);
    if (!memory)
        return false;

    std::byte* start = static_cast<std::byte*>(memory) + sizeof(KitPoolBlock);
    start += KitPadding(start, alignment);
    std::byte* end =
        start + static_cast<std::size_t>(count) * static_cast<std::size_t>(pool.elementSize);
    pool.currBlock = new (memory) KitPoolBlock{.next = pool.currBlock, .start = start, .end = end};
    pool.currElementCount = count;
    pool.nextFreePtr = start;
    return true;
}

void freeChain(KitPoolBlock* block) {
    while (block) {
        KitPoolBlock* next = block->next;
        KitMemoryAPI_destroy(block);
        block = next;
    }
}
} // namespace

void KitPoolInit(KitPool* pool, int poolSize, int structSize, int alignment) {
    KitPoolInitResizable(pool, poolSize, structSize, 0, kDoubling, alignment);
}

void KitPoolInitResizable(KitPool* pool, int initialCount, int structSize, int blockSizeIncrement,
                          float blockSizeMultiplier, int alignment) {
    *pool = {};
    pool->structSize = structSize;
    pool->alignment = alignment;
    KitPoolSetResizable(pool, blockSizeIncrement, blockSizeMultiplier);
    if (alignment < 0 || alignment % static_cast<int>(sizeof(unsigned int)) != 0)
        KitWarning(0, "KitPoolInit(%s): Alignment must be a multiple of sizeof(unsigned int).\n",
                   nameOf(*pool));
    pool->elementSize = strideOf(structSize, alignment);
    if (!addBlock(*pool, initialCount))
        KitWarning(0, "Failed resizing pool %s\n", nameOf(*pool));
}

void KitPoolSetResizable(KitPool* pool, int blockSizeIncrement, float blockSizeMultiplier) {
    pool->blockSizeIncrement = blockSizeIncrement;
    pool->blockSizeMultiplier = blockSizeMultiplier;
}

void KitPoolSetPoolName(KitPool* pool, const char* name) {
    pool->name = name;
}

void* KitPoolGetStruct(KitPool* pool) {
    if (!pool->currBlock)
        return nullptr;
    void* element = pool->nextFreeListElement;
    if (element) {
        pool->nextFreeListElement = loadNext(element);
    } else {
        if (pool->nextFreePtr == pool->currBlock->end && !addBlock(*pool, nextCount(*pool)))
            return nullptr;
        element = pool->nextFreePtr;
        pool->nextFreePtr += pool->elementSize;
    }
    ++pool->totalElementCount;
    return element;
}

void KitPoolPutStruct(KitPool* pool, void* element) {
    if (!element)
        return;
    if (pool->totalElementCount == 0) {
        KitWarning(0, "KitPoolPutStruct(%s): the element must be in use.\n", nameOf(*pool));
        return;
    }
    storeNext(element, pool->nextFreeListElement);
    pool->nextFreeListElement = static_cast<KitPoolElement*>(element);
    --pool->totalElementCount;
}

void KitPoolReset(KitPool* pool) {
    if (!pool->currBlock)
        return;
    freeChain(pool->currBlock->next);
    pool->currBlock->next = nullptr;
    pool->nextFreePtr = pool->currBlock->start;
    pool->nextFreeListElement = nullptr;
    pool->totalElementCount = 0;
    pool->needResize = 0;
}

void KitPoolTerm(KitPool* pool) {
    freeChain(pool->currBlock);
    *pool = {};
}

int KitPoolGetStructSize(const KitPool* pool) {
    return pool->structSize;
}

int KitPoolGetUsed(const KitPool* pool) {
    return pool->totalElementCount;
}
