#include <Kit/KitMemoryPool.h>
#include <Kit/KitMessage.h>
#include "KitAlign.h"
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <utility>

namespace {
constexpr std::size_t kGranularity = 16; ///< size and alignment of blocks, bytes
constexpr std::size_t kPadWord = 4;      ///< bytes that an aligned request adds for a word in front
constexpr int kFirstCapacity = 10;       ///< of marks and of overflow pointers
constexpr int kBadSize = 3;              ///< message code of a bad argument
constexpr int kOutOfMemory = 20;

/// Whether a size leaves room for what alignment adds to it.
bool isAddressable(std::size_t size, std::size_t alignment) {
    constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
    return alignment < kMost - 2 * kGranularity && size < kMost - 2 * kGranularity - alignment;
}
} // namespace

KitMemoryPool::~KitMemoryPool() {
    cleanup();
    KitMemoryAPI_destroy(heap_pointers);
    KitMemoryAPI_destroy(_pool_stack);
}

void KitMemoryPool::init(void* buffer, std::size_t size) {
    cleanup();
    const std::size_t padding = KitPadding(buffer, kGranularity);
    const bool isUsable = buffer && size > padding;
    _pool_base = isUsable ? static_cast<std::byte*>(buffer) + padding : nullptr;
    _pool_max = isUsable ? static_cast<std::byte*>(buffer) + size : nullptr;
    _pool_ptr = _pool_base;
}

void* KitMemoryPool::create(std::size_t size, const char* name) {
    const std::size_t remainder = size % kGranularity;
    if (remainder != 0) {
        KitFatalError(kBadSize,
                      "PoolAlloc: allocating %s of size %d. Size must be a multiple of 16 bytes "
                      "(remainder = %d).\n",
                      name, static_cast<int>(size), static_cast<int>(remainder));
        std::abort(); // the handler has returned
    }
    if (heap_mode != 0 || size >= static_cast<std::size_t>(_pool_max - _pool_ptr))
        return heap_create(size);
    void* block = _pool_ptr;
    _pool_ptr += size;
    return block;
}

void* KitMemoryPool::create_aligned(std::size_t size, std::size_t alignment, const char* name) {
    if (size == 0 || !isAddressable(size, alignment))
        return nullptr;
    alignment = std::max(alignment, kPadWord);
    const std::size_t room = KitRoundUp(size + alignment + kPadWord, kGranularity);
    if (heap_mode == 0 && room < static_cast<std::size_t>(_pool_max - _pool_ptr)) {
        auto* block = static_cast<std::byte*>(create(room, name));
        return block + KitPadding(block, alignment);
    }
    heap_mode = 1;
    return heap_create_aligned(size, alignment);
}

void* KitMemoryPool::create_aligned_zeroed(std::size_t size, std::size_t alignment,
                                           const char* name) {
    void* block = create_aligned(size, alignment, name);
    if (block)
        std::memset(block, 0, size);
    return block;
}

void KitMemoryPool::destroy(void*) {}

void KitMemoryPool::destroy_aligned(void*) {}

std::size_t KitMemoryPool::extra_bytes_needed() {
    return std::exchange(bytes_needed, 0);
}

void KitMemoryPool::cleanup() {
    for (int i = 0; i < heap_count; ++i)
        KitMemoryAPI_destroyAligned(heap_pointers[i]);
    heap_count = 0;
    heap_mode = 0;
    _pool_ptr = _pool_stack_ptr > 0 ? _pool_stack[0] : _pool_base;
    _pool_stack_ptr = 0;
}

void KitMemoryPool::push() {
    if (_pool_stack_ptr >= stack_max - 1)
        growMarks();
    _pool_stack[_pool_stack_ptr++] = _pool_ptr;
}

void KitMemoryPool::pop() {
    if (_pool_stack_ptr > 0)
        _pool_ptr = _pool_stack[--_pool_stack_ptr];
}

void* KitMemoryPool::heap_create(std::size_t size) {
    return heap_create_aligned(size, kGranularity);
}

void* KitMemoryPool::heap_create_aligned(std::size_t size, std::size_t alignment) {
    if (size == 0 || !isAddressable(size, alignment))
        return nullptr;
    bytes_needed += size + alignment;
    if (heap_count == heap_max && !growHeapPointers())
        return nullptr;
    void* block = KitMemoryAPI_createAligned(size, alignment);
    if (block)
        heap_pointers[heap_count++] = block;
    return block;
}

void KitMemoryPool::growMarks() {
    const int capacity = stack_max == 0 ? kFirstCapacity : 2 * stack_max;
    void* grown =
        KitMemoryAPI_resize(_pool_stack, static_cast<std::size_t>(capacity) * sizeof(*_pool_stack));
    if (!grown) { // a mark that is missing would make a later pop() free live memory
        KitFatalError(kOutOfMemory, "KitMemoryPool::push: no memory for the stack of marks.\n");
        std::abort();
    }
    _pool_stack = static_cast<std::byte**>(grown);
    stack_max = capacity;
}

bool KitMemoryPool::growHeapPointers() {
    const int capacity = std::max(2 * heap_max, kFirstCapacity);
    void* grown = KitMemoryAPI_resize(heap_pointers,
                                      static_cast<std::size_t>(capacity) * sizeof(*heap_pointers));
    if (!grown)
        return false;
    heap_pointers = static_cast<void**>(grown);
    heap_max = capacity;
    return true;
}
