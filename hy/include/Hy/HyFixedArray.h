#pragma once
#include <Hy/HyArray.h>
#include <type_traits>

namespace Hy {

/// A view of storage that somebody else owns, of fixed length. An index out of range is a fatal
/// error in every build.
template <typename T>
class HyFixedArray {
    using Value = std::remove_const_t<T>;

public:
    using value_type = Value;
    using iterator = T*;
    using const_iterator = const T*;

    HyFixedArray() = default;
    /// @param front first of n elements; null makes the view empty
    HyFixedArray(T* front, std::size_t n) : mFront(front), mBack(front ? front + n : front) {}
    HyFixedArray(HyArray<Value>& array) : HyFixedArray(array.data(), array.size()) {}
    HyFixedArray(const HyArray<Value>& array) requires std::is_const_v<T>
        : HyFixedArray(array.data(), array.size()) {}
    HyFixedArray(const HyFixedArray<Value>& view) requires std::is_const_v<T>
        : HyFixedArray(view.begin(), view.size()) {}

    [[nodiscard]] T* begin() const { return mFront; }
    [[nodiscard]] T* end() const { return mBack; }
    [[nodiscard]] T* data() const { return mFront; }
    [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(mBack - mFront); }
    [[nodiscard]] bool empty() const { return mFront == mBack; }

    [[nodiscard]] T& operator[](std::size_t index) const {
        isValidIndex(index);
        return mFront[index];
    }
    [[nodiscard]] T& at(std::size_t index) const { return (*this)[index]; }
    [[nodiscard]] T& front() const { return (*this)[0]; }
    [[nodiscard]] T& back() const { return (*this)[size() - 1]; }

private:
    void isValidIndex(std::size_t index) const {
        if (index >= size()) [[unlikely]]
            HyFatalErrorOrAbort("HyFixedArray::isValidIndex : range error\n");
    }

    T* mFront = nullptr;
    T* mBack = nullptr;
};

} // namespace Hy
