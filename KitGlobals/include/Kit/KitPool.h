#pragma once
#include <Kit/KitApi.h>
#include <cstddef>

/// A returned element: its first word links it to the next.
struct KitPoolElement {
    KitPoolElement* nextElement;
};

/// Header at the front of an allocation; the aligned elements follow.
struct KitPoolBlock {
    KitPoolBlock* next;
    std::byte* start; ///< first element
    std::byte* end;   ///< behind the last element
};

/// Elements of one size, taken and returned in constant time. Elements keep their address and are
/// neither zeroed nor constructed. Not thread-safe.
struct KitPool {
    int structSize = 0;                            ///< bytes, as asked for
    int elementSize = 0;                           ///< stride in bytes
    int currElementCount = 0;                      ///< capacity of the newest block, elements
    const char* name = nullptr;                    ///< for messages; not owned
    KitPoolBlock* currBlock = nullptr;             ///< newest block, chained newest first
    std::byte* nextFreePtr = nullptr;              ///< next never-used element of the newest block
    KitPoolElement* nextFreeListElement = nullptr; ///< latest returned element
    float blockSizeMultiplier = 0;                 ///< growth factor
    int blockSizeIncrement = 0;                    ///< growth addend, elements
    int alignment = 0;                             ///< of elements, bytes; 0 for none
    int totalElementCount = 0;                     ///< elements in use
    int freedElementCount = 0;                     ///< reserved
    int needResize = 0;                            ///< reserved
};

/// Makes a pool that grows by doubling, with room for poolSize elements. See
/// KitPoolInitResizable().
HY_API void KitPoolInit(KitPool* pool, int poolSize, int structSize, int alignment);
/// Makes a pool with room for initialCount elements of structSize bytes (raised to a pointer's),
/// each at a multiple of `alignment` bytes, 0 for none. Overwrites the record: end an earlier pool
/// first. A first block that cannot be had (no memory, or a count of 0) is warned of and leaves the
/// pool unusable: it gives null.
HY_API void KitPoolInitResizable(KitPool* pool, int initialCount, int structSize,
                                 int blockSizeIncrement, float blockSizeMultiplier, int alignment);
/// The next block has trunc(newest capacity * multiplier + 0.5) + increment elements.
HY_API void KitPoolSetResizable(KitPool* pool, int blockSizeIncrement, float blockSizeMultiplier);
/// @param name not owned
HY_API void KitPoolSetPoolName(KitPool* pool, const char* name);

/// The latest returned element, else a never-used one, else the first of a new block; null if the
/// pool cannot grow.
[[nodiscard]] HY_API void* KitPoolGetStruct(KitPool* pool);
/// Returns an element of this pool that is in use. Null is ignored.
HY_API void KitPoolPutStruct(KitPool* pool, void* element);

/// Takes all elements back and keeps the newest block, which is the largest.
HY_API void KitPoolReset(KitPool* pool);
/// Frees all blocks; the pool then gives null until initialised again.
HY_API void KitPoolTerm(KitPool* pool);

/// Bytes of an element, as asked for.
[[nodiscard]] HY_API int KitPoolGetStructSize(const KitPool* pool);
/// Elements in use.
[[nodiscard]] HY_API int KitPoolGetUsed(const KitPool* pool);
