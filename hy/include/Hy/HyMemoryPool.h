#pragma once
#include <Kit/KitApi.h>
#include <cstddef>

struct KitPool;

namespace Hy {

/// Elements of one size, taken and returned in constant time; neither zeroed nor constructed. The
/// pool doubles as needed. Destroying it frees all elements. Not thread-safe.
class HY_API HyMemoryPool {
public:
    /// @param structSize bytes of an element
    /// @param structCount elements of the first block, at least 1, else the pool gives null
    /// @param alignment of elements, bytes, a multiple of 4, or 0 for none
    HyMemoryPool(int structSize, int structCount, int alignment);
    ~HyMemoryPool();
    HyMemoryPool(const HyMemoryPool&) = delete;
    HyMemoryPool& operator=(const HyMemoryPool&) = delete;

    /// Storage of a T, not constructed; null without memory. A T of another size than the pool's
    /// elements is a fatal error.
    template <typename T>
    [[nodiscard]] T* get() {
        checkStructSize(sizeof(T));
        return static_cast<T*>(_get());
    }
    /// Takes back what get() gave. Null is ignored.
    template <typename T>
    void put(T* element) {
        _put(element);
    }

    [[nodiscard]] void* _get();
    void _put(void* ptr);
    /// Bytes of an element, as asked for.
    [[nodiscard]] int getStructSize() const;

private:
    void checkStructSize(std::size_t size) const;

    KitPool* mPool;
};

} // namespace Hy
