#include "HeapCounter.h"

#include <Kit/KitMemory.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<long> heapCalls{0};
KitMemoryAPIStruct original;

void* create(std::size_t size) {
    ++heapCalls;
    return original.create(size);
}
void* createZeroed(std::size_t size) {
    ++heapCalls;
    return original.createZeroed(size);
}
void* createAligned(std::size_t size, std::size_t alignment) {
    ++heapCalls;
    return original.createAligned(size, alignment);
}
void* resize(void* block, std::size_t size) {
    ++heapCalls;
    return original.resize(block, size);
}

void* allocate(std::size_t size, std::size_t alignment) {
    ++heapCalls;
    const std::size_t rounded = (size + alignment) / alignment * alignment;
    if (void* block = std::aligned_alloc(alignment, rounded))
        return block;
    throw std::bad_alloc();
}

} // namespace

long HeapCounter::calls() {
    return heapCalls;
}

void HeapCounter::watchMemoryTable(bool on) {
    if (!on) {
        KitMemoryAPI = original;
        return;
    }
    original = KitMemoryAPI;
    KitMemoryAPI.create = create;
    KitMemoryAPI.createZeroed = createZeroed;
    KitMemoryAPI.createAligned = createAligned;
    KitMemoryAPI.resize = resize;
}

void* operator new(std::size_t size) {
    return allocate(size, alignof(std::max_align_t));
}
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocate(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++heapCalls;
    return std::malloc(size > 0 ? size : 1);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    std::free(block);
}
