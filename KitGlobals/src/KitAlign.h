#pragma once
#include <cstddef>
#include <cstdint>

/// The smallest multiple of `alignment` (at least 1, any value) that is not below `value`. The
/// caller sees to it that this does not overflow.
constexpr std::size_t KitRoundUp(std::size_t value, std::size_t alignment) {
    const std::size_t excess = value % alignment;
    return excess == 0 ? value : value + (alignment - excess);
}

/// Bytes from a pointer to the next multiple of `alignment`, at least 1.
inline std::size_t KitPadding(const void* p, std::size_t alignment) {
    const std::size_t excess = reinterpret_cast<std::uintptr_t>(p) % alignment;
    return excess == 0 ? 0 : alignment - excess;
}
