#pragma once
#include <Kit/KitMemoryPool.h>
#include <Kit/KitMessage.h>

#include <cstddef>
#include <cstdlib>
#include <limits>

/// An array of n from the step's memory, on the alignment of its type, not initialised; null for none. To be without memory in the
/// middle of a step is fatal.
template <typename T>
[[nodiscard]] T* takePoolArray(KitMemoryPool* pool, int n, const char* name) {
    constexpr std::size_t kAlignment = alignof(T) > 16 ? alignof(T) : 16;
    if (n <= 0)
        return nullptr;
    const std::size_t count = static_cast<std::size_t>(n);
    void* block = nullptr;
    if (count <= std::numeric_limits<std::size_t>::max() / (2 * sizeof(T)))
        block = pool->create_aligned(count * sizeof(T), kAlignment, name);
    if (!block) {
        KitFatalError(0, "The solver could not allocate memory for buffer named %s\n", name);
        std::abort();
    }
    return static_cast<T*>(block);
}
