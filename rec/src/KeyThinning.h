#pragma once
#include <cstddef>
#include <vector>

namespace Hy {

/// The samples that must stay so that straight motion between those that stay passes every other one
/// within a tolerance; the first and the last stay. From each that stays, the next is the last one up to
/// which all in between are passed.
/// @param passes (first, last, middle) -> bool; indices
template <class Passes>
[[nodiscard]] std::vector<std::size_t> thinKeys(std::size_t count, Passes passes) {
    /// Longer stretches are cut, so that the work stays linear in the count.
    constexpr std::size_t kLongestStretch = 256;
    std::vector<std::size_t> kept;
    if (count == 0)
        return kept;
    kept.push_back(0);
    for (std::size_t last = 2; last < count; ++last) {
        const std::size_t first = kept.back();
        bool arePassed = last - first <= kLongestStretch;
        for (std::size_t i = first + 1; arePassed && i < last; ++i)
            arePassed = passes(first, last, i);
        if (!arePassed)
            kept.push_back(last - 1);
    }
    if (count > 1)
        kept.push_back(count - 1);
    return kept;
}

} // namespace Hy
