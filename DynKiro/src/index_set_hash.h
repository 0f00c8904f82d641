#pragma once
#include <cstdint>
#include <span>

/// The lookup2 hash of the set's bytes, seed 0 (Jenkins, "Hash functions", Dr. Dobb's Journal 1997).
[[nodiscard]] std::uint32_t DynsIndexSetHash(std::span<const int> indexSet) noexcept;
