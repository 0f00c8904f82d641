#pragma once
#include <Kit/KitTypes.h>
#include <Kit/KitApi.h>
#include <cstddef>

struct KitChunk;
/// Called when a caller's block is too small; may install a larger one by KitChunkSetUser().
using KitChunkOverflowCB = void (*)(KitChunk* chunk, void* memBase, std::size_t memSize,
                                    std::size_t wanted);

/// One contiguous block of scratch memory that only grows and is handed out whole.
struct KitChunk {
    void* memBase = nullptr;
    void* memBaseAligned = nullptr;
    std::size_t memSize = 0;        ///< bytes from memBase
    std::size_t memSizeAligned = 0; ///< bytes from memBaseAligned
    std::size_t maxUsed = 0;        ///< the most ever asked for, bytes
    std::size_t alignment = 16;     ///< bytes, at least 1
    KitBool isAuto = 1;             ///< the chunk owns its block and makes it grow
    KitChunkOverflowCB overflowCallback = nullptr;
};

/// Makes an empty automatic chunk of alignment 16. Overwrites the record.
HY_API void KitChunkInit(KitChunk* chunk);
/// Frees an automatic block and leaves the chunk as KitChunkInit() makes it.
HY_API void KitChunkDestroy(KitChunk* chunk);
/// Makes the chunk own a block of size bytes, aligned. No memory is a fatal error.
HY_API void KitChunkSetAuto(KitChunk* chunk, std::size_t size, std::size_t alignment);
/// Makes the chunk use a caller's block, which is not owned.
HY_API void KitChunkSetUser(KitChunk* chunk, void* m, std::size_t size, std::size_t alignment);
/// The aligned block, of at least size bytes. An automatic chunk grows, which invalidates what was
/// handed out; no memory is a fatal error. A caller's block asks the overflow call-back, and gives
/// null if it still does not fit.
[[nodiscard]] HY_API void* KitChunkGetMem(KitChunk* chunk, std::size_t size);
HY_API void KitChunkSetOverflowCB(KitChunk* chunk, KitChunkOverflowCB callback);
[[nodiscard]] HY_API KitChunkOverflowCB KitChunkGetOverflowCB(const KitChunk* chunk);
[[nodiscard]] HY_API std::size_t KitChunkGetAlignment(const KitChunk* chunk);
[[nodiscard]] HY_API std::size_t KitChunkGetMaxUsed(const KitChunk* chunk);
