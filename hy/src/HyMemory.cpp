#include <Hy/HyMemory.h>
#include <Kit/KitMemory.h>

namespace Hy {

void* HyMemory::create(std::size_t size) {
    return KitMemoryAPI_create(size);
}

void* HyMemory::createZeroed(std::size_t size) {
    return KitMemoryAPI_createZeroed(size);
}

void* HyMemory::createAligned(std::size_t size, std::size_t alignment) {
    return KitMemoryAPI_createAligned(size, alignment);
}

void HyMemory::destroy(void* block) {
    KitMemoryAPI_destroy(block);
}

void HyMemory::destroyAligned(void* block) {
    KitMemoryAPI_destroyAligned(block);
}

void* HyMemory::resize(void* block, std::size_t size) {
    return KitMemoryAPI_resize(block, size);
}

} // namespace Hy
