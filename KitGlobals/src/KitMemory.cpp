#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>
#include "KitAlign.h"
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {
constexpr int kOutOfMemory = 20; ///< code of the messages of StdMemoryAllocator

/// Stands in front of an aligned block: its distance from the block that malloc gave.
using Pad = std::uint32_t;

void* createZeroed(std::size_t size) {
    return std::calloc(1, size);
}

void* resize(void* block, std::size_t size) {
    return size == 0 ? nullptr : std::realloc(block, size);
}

/// Answers the block; a missing one is fatal, unless nothing was asked for. The message takes the
/// name of the buffer.
void* checkAllocated(void* block, std::size_t size, const char* message, const char* buffer) {
    if (!block && size > 0) {
        KitFatalError(kOutOfMemory, message, buffer);
        std::abort(); // the handler has returned
    }
    return block;
}
} // namespace

constinit KitMemoryAPIStruct KitMemoryAPI = {
    .create = std::malloc,
    .createZeroed = createZeroed,
    .createAligned = MallocCreateAligned,
    .destroy = std::free,
    .destroyAligned = MallocDestroyAligned,
    .resize = resize,
};

void* KitMemoryAPI_create(std::size_t size) {
    return KitMemoryAPI.create(size);
}

void* KitMemoryAPI_createZeroed(std::size_t size) {
    return KitMemoryAPI.createZeroed(size);
}

void* KitMemoryAPI_createAligned(std::size_t size, std::size_t alignment) {
    return KitMemoryAPI.createAligned(size, alignment);
}

void KitMemoryAPI_destroy(void* block) {
    KitMemoryAPI.destroy(block);
}

void KitMemoryAPI_destroyAligned(void* block) {
    KitMemoryAPI.destroyAligned(block);
}

void* KitMemoryAPI_resize(void* block, std::size_t size) {
    return KitMemoryAPI.resize(block, size);
}

void* MallocCreateAligned(std::size_t size, std::size_t alignment) {
    if (alignment == 0 || alignment % sizeof(Pad) != 0)
        KitWarning(0, "MallocCreateAligned: Alignment must be a multiple of "
                      "sizeof(unsigned int).\n");
    alignment = std::max(alignment, sizeof(Pad));
    if (alignment > std::numeric_limits<Pad>::max() - sizeof(Pad) ||
        size > std::numeric_limits<std::size_t>::max() - sizeof(Pad) - alignment)
        return nullptr;

    auto* block = static_cast<std::byte*>(std::malloc(size + sizeof(Pad) + alignment));
    if (!block)
        return nullptr;
    std::size_t distance = KitPadding(block, alignment);
    if (distance < sizeof(Pad))
        distance += alignment;
    const Pad pad = static_cast<Pad>(distance);
    std::memcpy(block + distance - sizeof(Pad), &pad, sizeof(Pad));
    return block + distance;
}

void MallocDestroyAligned(void* block) {
    if (!block)
        return;
    auto* aligned = static_cast<std::byte*>(block);
    Pad pad = 0;
    std::memcpy(&pad, aligned - sizeof(Pad), sizeof(Pad));
    std::free(aligned - pad);
}

std::size_t KitMemoryCheckGetAllocatedByteCount() {
    return 0;
}

std::size_t KitMemoryCheckGetAllocatedBlockCount() {
    return 0;
}

int KitMemoryCheckMemory(void (*)(const void*, std::size_t)) {
    return 0;
}

KitMemoryHandler::~KitMemoryHandler() = default;

void* StdMemoryAllocator::create(std::size_t size, const char* name) {
    return checkAllocated(
        KitMemoryAPI_create(size), size,
        "StdMemoryAllocator::creaate::cannot allocate memory for buffer named %s\n", name);
}

void* StdMemoryAllocator::create_aligned(std::size_t size, std::size_t alignment,
                                         const char* name) {
    return checkAllocated(
        KitMemoryAPI_createAligned(size, alignment), size,
        "StdMemoryAllocator::creaate_aligned::cannot allocate memory for buffer named %s\n", name);
}

void* StdMemoryAllocator::create_aligned_zeroed(std::size_t size, std::size_t alignment,
                                                const char* name) {
    void* block = checkAllocated(
        KitMemoryAPI_createAligned(size, alignment), size,
        "StdMemoryAllocator::creaate_aligned_zeroed::cannot allocate memory for buffer named %s\n",
        name);
    return block ? std::memset(block, 0, size) : nullptr;
}

void StdMemoryAllocator::destroy(void* p) {
    KitMemoryAPI_destroy(p);
}

void StdMemoryAllocator::destroy_aligned(void* p) {
    KitMemoryAPI_destroyAligned(p);
}

std::size_t StdMemoryAllocator::extra_bytes_needed() {
    return 0;
}

void StdMemoryAllocator::cleanup() {}
