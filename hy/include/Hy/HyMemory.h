#pragma once
#include <Kit/KitApi.h>
#include <cstddef>

namespace Hy {
/// The allocator table KitMemoryAPI under the names of this layer; see KitMemory.h.
class HY_API HyMemory {
public:
    [[nodiscard]] static void* create(std::size_t size);
    [[nodiscard]] static void* createZeroed(std::size_t size);
    [[nodiscard]] static void* createAligned(std::size_t size, std::size_t alignment);
    static void destroy(void* block);
    static void destroyAligned(void* block);
    [[nodiscard]] static void* resize(void* block, std::size_t size);
};
} // namespace Hy
