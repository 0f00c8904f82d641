#pragma once
#include <Hy/HyArray.h>
#include <algorithm>
#include <functional>

namespace Hy {

/// A set kept as a sorted array without duplicates: contiguous, found by bisection. Where the
/// order of walking affects results, Less must compare something stable, not addresses.
template <typename T, typename Less = std::less<T>>
class SortedVector {
public:
    using value_type = T;
    using iterator = const T*;
    using const_iterator = const T*;

    [[nodiscard]] const T* begin() const { return mValues.begin(); }
    [[nodiscard]] const T* end() const { return mValues.end(); }
    [[nodiscard]] std::size_t size() const { return mValues.size(); }
    [[nodiscard]] bool empty() const { return mValues.empty(); }
    [[nodiscard]] const T& operator[](std::size_t index) const { return mValues[index]; }

    /// False, and no change, if an equivalent value is there.
    bool insert(const T& value) {
        const T* place = lowerBound(value);
        if (isAt(place, value))
            return false;
        mValues.insert(place, value);
        return true;
    }
    /// False if there is no equivalent value.
    bool erase(const T& value) {
        const T* place = lowerBound(value);
        if (!isAt(place, value))
            return false;
        mValues.erase(place);
        return true;
    }
    [[nodiscard]] bool contains(const T& value) const { return isAt(lowerBound(value), value); }
    /// The equivalent value, or end().
    [[nodiscard]] const T* find(const T& value) const {
        const T* place = lowerBound(value);
        return isAt(place, value) ? place : end();
    }

    /// Keeps the storage.
    void clear() { mValues.clear(); }
    void reserve(std::size_t n) { mValues.reserve(n); }
    void swap(SortedVector& other) noexcept { mValues.swap(other.mValues); }

    [[nodiscard]] friend bool operator==(const SortedVector&, const SortedVector&) = default;

private:
    [[nodiscard]] const T* lowerBound(const T& value) const {
        return std::lower_bound(begin(), end(), value, Less());
    }
    [[nodiscard]] bool isAt(const T* place, const T& value) const {
        return place != end() && !Less()(value, *place);
    }

    HyArray<T> mValues;
};

} // namespace Hy
