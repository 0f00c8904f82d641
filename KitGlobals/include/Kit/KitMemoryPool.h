#pragma once
#include <Kit/KitMemory.h>

/// Bump allocator with marks over a buffer of the caller: scratch memory of a solve.
///
/// What does not fit comes from the heap, and its size is summed so that the caller can make the
/// next buffer large enough. An aligned request that does not fit sends all later aligned requests
/// to the heap too, until cleanup(). Nothing is zeroed unless asked for; blocks die at pop() or
/// cleanup(). Not thread-safe.
class HY_API KitMemoryPool final : public KitMemoryHandler {
public:
    KitMemoryPool() = default;
    ~KitMemoryPool() override;

    /// Drops all marks and overflow, and serves from the buffer, which is not owned and must outlive
    /// its use. Blocks start at multiples of 16.
    void init(void* buffer, std::size_t size);

    /// A block aligned to 16. A size that is no multiple of 16 is a fatal error. Null if the heap
    /// has none.
    [[nodiscard]] void* create(std::size_t size, const char* name) override;
    /// Null for size 0 and if the heap has none. An alignment of 0 counts as 4.
    [[nodiscard]] void* create_aligned(std::size_t size, std::size_t alignment,
                                       const char* name) override;
    [[nodiscard]] void* create_aligned_zeroed(std::size_t size, std::size_t alignment,
                                              const char* name) override;
    void destroy(void* p) override;         ///< nothing: memory returns at pop() or cleanup()
    void destroy_aligned(void* p) override; ///< nothing, as destroy()
    [[nodiscard]] std::size_t extra_bytes_needed() override;
    /// Frees the overflow and rewinds to the oldest mark, or to the start if there is none.
    void cleanup() override;

    /// Marks the present top.
    void push();
    /// Rewinds to the latest mark; without one, nothing. Overflow stays until cleanup().
    void pop();

    /// A block of the heap aligned to 16, freed by cleanup(). Null for size 0.
    [[nodiscard]] void* heap_create(std::size_t size);
    [[nodiscard]] void* heap_create_aligned(std::size_t size, std::size_t alignment);

private:
    void growMarks();
    [[nodiscard]] bool growHeapPointers();

    std::byte** _pool_stack = nullptr; ///< marks
    std::byte* _pool_ptr = nullptr;    ///< top
    std::byte* _pool_max = nullptr;    ///< end of the buffer
    std::byte* _pool_base = nullptr;   ///< start of the buffer, aligned
    int _pool_stack_ptr = 0;           ///< number of marks
    int stack_max = 0;
    void** heap_pointers = nullptr;
    std::size_t bytes_needed = 0; ///< overflow since last read
    int heap_count = 0;
    int heap_max = 0;
    int heap_mode = 0; ///< an aligned request has overflowed
};
