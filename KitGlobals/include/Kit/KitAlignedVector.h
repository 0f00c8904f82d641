#pragma once
#include <Kit/KitMemory.h>

#include <cstddef>
#include <new>
#include <vector>

/// Allocator of standard containers over the allocator table, on cache lines.
template <typename T>
struct KitAlignedAllocator {
    using value_type = T;

    KitAlignedAllocator() = default;
    template <typename U>
    KitAlignedAllocator(const KitAlignedAllocator<U>&) noexcept {}

    [[nodiscard]] T* allocate(std::size_t count) {
        if (count > static_cast<std::size_t>(-1) / 2 / sizeof(T))
            throw std::bad_alloc();
        void* block = KitMemoryAPI_createAligned(count * sizeof(T), 64);
        if (block == nullptr)
            throw std::bad_alloc();
        return static_cast<T*>(block);
    }
    void deallocate(T* block, std::size_t) noexcept { KitMemoryAPI_destroyAligned(block); }

    template <typename U>
    bool operator==(const KitAlignedAllocator<U>&) const noexcept {
        return true;
    }
};

/// A vector whose storage is aligned to 64 bytes; keeps its capacity, so that a buffer that lives
/// from step to step settles.
template <typename T>
using KitAlignedVector = std::vector<T, KitAlignedAllocator<T>>;
