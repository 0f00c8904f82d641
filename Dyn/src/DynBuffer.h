#pragma once
#include <Kit/KitMemory.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <type_traits>
#include <utility>

/// A growing array of plain values that keeps its memory when it is cleared.
template <class T>
class DynBuffer {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    DynBuffer() = default;
    DynBuffer(const DynBuffer&) = delete;
    DynBuffer& operator=(const DynBuffer&) = delete;
    ~DynBuffer() { KitMemoryAPI_destroy(mData); }

    void reserve(int n) {
        if (n <= mCapacity)
            return;
        const int capacity = std::max(n, 2 * mCapacity);
        void* data = KitMemoryAPI_resize(mData, static_cast<std::size_t>(capacity) * sizeof(T));
        if (!data) {
            KitFatalError(20, "DynBuffer: out of memory.\n");
            std::abort(); // a handler that returns must not let the buffer be read
        }
        mData = static_cast<T*>(data);
        mCapacity = capacity;
    }
    /// New entries are not initialised.
    void resize(int n) {
        reserve(n);
        mSize = n;
    }
    void push_back(const T& value) {
        const T copy = value; // may be an entry of this array
        reserve(mSize + 1);
        mData[mSize++] = copy;
    }
    void clear() { mSize = 0; }
    void swap(DynBuffer& other) noexcept {
        std::swap(mData, other.mData);
        std::swap(mSize, other.mSize);
        std::swap(mCapacity, other.mCapacity);
    }

    [[nodiscard]] int size() const { return mSize; }
    [[nodiscard]] T* data() { return mData; }
    [[nodiscard]] T& operator[](int i) { return mData[i]; }
    [[nodiscard]] const T& operator[](int i) const { return mData[i]; }
    [[nodiscard]] T* begin() { return mData; }
    [[nodiscard]] T* end() { return mData + mSize; }

private:
    T* mData = nullptr;
    int mSize = 0;
    int mCapacity = 0;
};
