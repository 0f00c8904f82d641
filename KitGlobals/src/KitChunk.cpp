#include <Kit/KitChunk.h>
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>
#include "KitAlign.h"
#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {
constexpr std::size_t kUserMargin = 16; ///< bytes asked of the call-back beyond the size wanted

/// Makes the chunk look at a block; nothing of the block is lost but what alignment costs.
void setBlock(KitChunk& chunk, void* base, std::size_t size) {
    const std::size_t padding = KitPadding(base, chunk.alignment);
    const bool isUsable = base && size > padding;
    chunk.memBase = base;
    chunk.memSize = base ? size : 0;
    chunk.memBaseAligned = isUsable ? static_cast<std::byte*>(base) + padding : nullptr;
    chunk.memSizeAligned = isUsable ? size - padding : 0;
}

void freeOwnBlock(KitChunk& chunk) {
    if (chunk.isAuto)
        KitMemoryAPI_destroy(chunk.memBase);
    chunk.memBase = nullptr;
}

/// Gives an automatic chunk a block of size bytes behind alignment. False without memory.
bool resizeOwnBlock(KitChunk& chunk, std::size_t size) {
    std::size_t bytes = 0;
    if (__builtin_add_overflow(size, chunk.alignment, &bytes))
        return false;
    void* grown = KitMemoryAPI_resize(chunk.memBase, bytes);
    if (grown)
        setBlock(chunk, grown, bytes);
    return grown != nullptr;
}

void askForBlock(KitChunk& chunk, std::size_t size) {
    if (chunk.overflowCallback && size <= SIZE_MAX - kUserMargin)
        chunk.overflowCallback(&chunk, chunk.memBase, chunk.memSize, size + kUserMargin);
}
} // namespace

void KitChunkInit(KitChunk* chunk) {
    *chunk = {};
}

void KitChunkDestroy(KitChunk* chunk) {
    freeOwnBlock(*chunk);
    *chunk = {};
}

void KitChunkSetAuto(KitChunk* chunk, std::size_t size, std::size_t alignment) {
    freeOwnBlock(*chunk);
    chunk->isAuto = 1;
    chunk->alignment = std::max<std::size_t>(alignment, 1);
    if (!resizeOwnBlock(*chunk, size)) {
        KitFatalError(0, "KitChunkSetAuto: Could not allocate memory for KitChunk.\n");
        std::abort(); // the handler has returned
    }
}

void KitChunkSetUser(KitChunk* chunk, void* m, std::size_t size, std::size_t alignment) {
    freeOwnBlock(*chunk);
    chunk->isAuto = 0;
    chunk->alignment = std::max<std::size_t>(alignment, 1);
    setBlock(*chunk, m, size);
}

void* KitChunkGetMem(KitChunk* chunk, std::size_t size) {
    chunk->maxUsed = std::max(chunk->maxUsed, size);
    if (size <= chunk->memSizeAligned)
        return chunk->memBaseAligned;
    if (!chunk->isAuto) {
        askForBlock(*chunk, size);
        return size <= chunk->memSizeAligned ? chunk->memBaseAligned : nullptr;
    }
    if (!resizeOwnBlock(*chunk, size)) {
        KitFatalError(0,
                      "KitChunkGetMem: Could not allocate memory to resize KitChunk: old size = "
                      "%d new size = %d\n",
                      static_cast<int>(chunk->memSize), static_cast<int>(size));
        std::abort(); // the handler has returned
    }
    return chunk->memBaseAligned;
}

void KitChunkSetOverflowCB(KitChunk* chunk, KitChunkOverflowCB callback) {
    chunk->overflowCallback = callback;
}

KitChunkOverflowCB KitChunkGetOverflowCB(const KitChunk* chunk) {
    return chunk->overflowCallback;
}

std::size_t KitChunkGetAlignment(const KitChunk* chunk) {
    return chunk->alignment;
}

std::size_t KitChunkGetMaxUsed(const KitChunk* chunk) {
    return chunk->maxUsed;
}
