#pragma once
#include <Kit/KitApi.h>
#include <cstddef>

/// The functions through which all memory of the system passes. A host that replaces them does so
/// before anything else runs. Sizes are in bytes; a function that cannot serve answers null.
struct KitMemoryAPIStruct {
    void* (*create)(std::size_t size);
    void* (*createZeroed)(std::size_t size);
    void* (*createAligned)(std::size_t size, std::size_t alignment);
    void (*destroy)(void* block);        ///< of create, createZeroed and resize; ignores null
    void (*destroyAligned)(void* block); ///< of createAligned; ignores null
    /// Keeps the contents; null creates. Size 0 gives null and leaves the block alone.
    void* (*resize)(void* block, std::size_t size);
};

/// The table in use; by default plain wrappers of the platform's allocator.
extern HY_API KitMemoryAPIStruct KitMemoryAPI;

[[nodiscard]] HY_API void* KitMemoryAPI_create(std::size_t size);
[[nodiscard]] HY_API void* KitMemoryAPI_createZeroed(std::size_t size);
[[nodiscard]] HY_API void* KitMemoryAPI_createAligned(std::size_t size, std::size_t alignment);
HY_API void KitMemoryAPI_destroy(void* block);
HY_API void KitMemoryAPI_destroyAligned(void* block);
[[nodiscard]] HY_API void* KitMemoryAPI_resize(void* block, std::size_t size);

/// The default of createAligned. An alignment that is 0 or no multiple of 4 is warned of; below 4
/// it counts as 4.
[[nodiscard]] HY_API void* MallocCreateAligned(std::size_t size, std::size_t alignment);
/// Frees a block of MallocCreateAligned(); null is ignored.
HY_API void MallocDestroyAligned(void* block);

/// Allocations are not tracked: these answer 0 and call nothing.
[[nodiscard]] HY_API std::size_t KitMemoryCheckGetAllocatedByteCount();
[[nodiscard]] HY_API std::size_t KitMemoryCheckGetAllocatedBlockCount();
HY_API int KitMemoryCheckMemory(void (*callback)(const void* block, std::size_t size));

/// Allocator that the solver takes. `name` names the buffer in messages.
class HY_API KitMemoryHandler {
public:
    [[nodiscard]] virtual void* create(std::size_t size, const char* name) = 0;
    [[nodiscard]] virtual void* create_aligned(std::size_t size, std::size_t alignment,
                                               const char* name) = 0;
    [[nodiscard]] virtual void* create_aligned_zeroed(std::size_t size, std::size_t alignment,
                                                      const char* name) = 0;
    virtual void destroy(void* p) = 0;
    virtual void destroy_aligned(void* p) = 0;
    /// Bytes that did not fit since the last call, which the next buffer should have more.
    [[nodiscard]] virtual std::size_t extra_bytes_needed() = 0;
    virtual void cleanup() = 0;

    KitMemoryHandler() = default;
    KitMemoryHandler(const KitMemoryHandler&) = delete;
    KitMemoryHandler& operator=(const KitMemoryHandler&) = delete;
    virtual ~KitMemoryHandler();
};

/// Takes each block from KitMemoryAPI. Running out of memory is a fatal error.
class HY_API StdMemoryAllocator final : public KitMemoryHandler {
public:
    [[nodiscard]] void* create(std::size_t size, const char* name) override;
    [[nodiscard]] void* create_aligned(std::size_t size, std::size_t alignment,
                                       const char* name) override;
    [[nodiscard]] void* create_aligned_zeroed(std::size_t size, std::size_t alignment,
                                              const char* name) override;
    void destroy(void* p) override;
    void destroy_aligned(void* p) override;
    [[nodiscard]] std::size_t extra_bytes_needed() override;
    void cleanup() override;
};
