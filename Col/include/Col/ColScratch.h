#pragma once
#include <Kit/KitApi.h>

#include <cstddef>
#include <new>
#include <span>
#include <type_traits>

/// Scratch memory of the calling thread: a stack of blocks that grows and never shrinks, so that a
/// steady step allocates nothing. What a scope took is free when the scope ends; scopes nest.
class HY_API ColScratchScope {
public:
    ColScratchScope() noexcept;
    ~ColScratchScope();
    ColScratchScope(const ColScratchScope&) = delete;
    ColScratchScope& operator=(const ColScratchScope&) = delete;

    /// Default-constructed elements, aligned to 64 bytes; valid until the scope ends. No memory is a
    /// fatal error.
    template <class T>
    [[nodiscard]] std::span<T> take(std::size_t count) {
        static_assert(std::is_trivially_destructible_v<T>);
        T* first = static_cast<T*>(takeBytes(count, sizeof(T)));
        for (std::size_t i = 0; i < count; ++i)
            new (first + i) T;
        return {first, count};
    }

private:
    void* takeBytes(std::size_t count, std::size_t size);

    std::size_t mBlock; ///< place in the thread's stack at which the scope began
    std::size_t mUsed;
};
