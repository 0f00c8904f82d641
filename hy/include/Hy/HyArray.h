#pragma once
#include <Hy/HyMemory.h>
#include <Hy/HyMessage.h>
#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <memory>
#include <type_traits>
#include <utility>

namespace Hy {

/// Storage of arrays, from HyMemory. Stateless; without memory the process ends.
template <typename T>
class HyAlloc {
public:
    /// Raw storage of n elements, null for none.
    [[nodiscard]] static T* allocate(std::size_t n) {
        if (n == 0)
            return nullptr;
        void* block = nullptr;
        if (n <= std::numeric_limits<std::ptrdiff_t>::max() / sizeof(T)) {
            if constexpr (isOverAligned())
                block = HyMemory::createAligned(n * sizeof(T), alignof(T));
            else
                block = HyMemory::create(n * sizeof(T));
        }
        if (!block)
            HyFatalErrorOrAbort("HyAlloc::allocate: out of memory.\n");
        return static_cast<T*>(block);
    }

    static void deallocate(T* block) {
        if constexpr (isOverAligned())
            HyMemory::destroyAligned(block);
        else
            HyMemory::destroy(block);
    }

private:
    static constexpr bool isOverAligned() { return alignof(T) > alignof(std::max_align_t); }
};

/// Growable array in one block. Growing moves the elements to a fresh block, which invalidates
/// pointers and iterators. An index or position out of range is a fatal error in every build.
template <typename T>
class HyArray {
public:
    using value_type = T;
    using size_type = std::size_t;
    using difference_type = std::ptrdiff_t;
    using reference = T&;
    using const_reference = const T&;
    using iterator = T*;
    using const_iterator = const T*;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    HyArray() = default;
    /// n default elements.
    explicit HyArray(size_type n) { resize(n); }
    HyArray(size_type n, const T& value) { resize(n, value); }
    HyArray(std::initializer_list<T> values) { appendCopies(values.begin(), values.size()); }
    HyArray(const HyArray& other) { appendCopies(other.mFront, other.size()); }
    HyArray(HyArray&& other) noexcept { swap(other); }
    ~HyArray() { clearMemoryBlock(); }

    /// Keeps this array's storage where it is large enough.
    HyArray& operator=(const HyArray& other) {
        if (this != &other) {
            clear();
            appendCopies(other.mFront, other.size());
        }
        return *this;
    }
    HyArray& operator=(HyArray&& other) noexcept {
        HyArray(std::move(other)).swap(*this);
        return *this;
    }

    [[nodiscard]] iterator begin() { return mFront; }
    [[nodiscard]] iterator end() { return mBack; }
    [[nodiscard]] const_iterator begin() const { return mFront; }
    [[nodiscard]] const_iterator end() const { return mBack; }
    [[nodiscard]] reverse_iterator rbegin() { return reverse_iterator(mBack); }
    [[nodiscard]] reverse_iterator rend() { return reverse_iterator(mFront); }
    [[nodiscard]] const_reverse_iterator rbegin() const { return const_reverse_iterator(mBack); }
    [[nodiscard]] const_reverse_iterator rend() const { return const_reverse_iterator(mFront); }
    [[nodiscard]] T* data() { return mFront; }
    [[nodiscard]] const T* data() const { return mFront; }

    [[nodiscard]] size_type size() const { return static_cast<size_type>(mBack - mFront); }
    [[nodiscard]] size_type capacity() const { return static_cast<size_type>(mEndBlock - mFront); }
    [[nodiscard]] bool empty() const { return mFront == mBack; }

    [[nodiscard]] T& operator[](size_type index) {
        isValidIndex(index);
        return mFront[index];
    }
    [[nodiscard]] const T& operator[](size_type index) const {
        isValidIndex(index);
        return mFront[index];
    }
    [[nodiscard]] T& at(size_type index) { return (*this)[index]; }
    [[nodiscard]] const T& at(size_type index) const { return (*this)[index]; }
    [[nodiscard]] T& front() { return (*this)[0]; }
    [[nodiscard]] const T& front() const { return (*this)[0]; }
    [[nodiscard]] T& back() { return (*this)[size() - 1]; }
    [[nodiscard]] const T& back() const { return (*this)[size() - 1]; }

    /// Makes the capacity at least n.
    void reserve(size_type n) {
        if (n > capacity())
            adopt(HyAlloc<T>::allocate(n), n, size());
    }

    void push_back(const T& value) { emplace(value); }
    void push_back(T&& value) { emplace(std::move(value)); }
    /// Appends a default element.
    T& add() { return emplace(); }
    /// Appends a value unless an equal one is there; tells whether it did.
    bool addUnique(const T& value) {
        if (std::find(mFront, mBack, value) != mBack)
            return false;
        push_back(value);
        return true;
    }
    void pop_back() {
        isValidIndex(size() - 1);
        std::destroy_at(--mBack);
    }

    /// Inserts before a position and answers the first new element.
    iterator insert(const_iterator position, const T& value) {
        const size_type index = indexOf(position);
        push_back(value);
        return rotateIn(index, 1);
    }
    iterator insert(const_iterator position, size_type n, const T& value) {
        const size_type index = indexOf(position);
        const T copy(value); // it may stand in this array
        reserveFor(n);
        mBack = std::uninitialized_fill_n(mBack, n, copy);
        return rotateIn(index, n);
    }
    /// The range must not stand in this array.
    template <std::forward_iterator Iterator>
    iterator insert(const_iterator position, Iterator first, Iterator last) {
        const size_type index = indexOf(position);
        const auto n = static_cast<size_type>(std::distance(first, last));
        reserveFor(n);
        mBack = std::uninitialized_copy(first, last, mBack);
        return rotateIn(index, n);
    }

    /// Removes elements, keeps the order of the others and answers the one behind.
    iterator erase(const_iterator position) {
        isValidIndex(indexOf(position));
        return erase(position, position + 1);
    }
    iterator erase(const_iterator first, const_iterator last) {
        const size_type from = indexOf(first), to = indexOf(last);
        if (from > to)
            failRange();
        if (from < to)
            truncate(std::move(mFront + to, mBack, mFront + from));
        return mFront + from;
    }
    /// Removes the first occurrence; tells whether there was one.
    bool eraseOnce(const T& value) {
        T* found = std::find(mFront, mBack, value);
        if (found == mBack)
            return false;
        erase(found);
        return true;
    }
    /// Removes every occurrence and answers their number.
    size_type eraseAll(const T& value) {
        const T copy(value); // it may stand in this array
        const size_type before = size();
        truncate(std::remove(mFront, mBack, copy));
        return before - size();
    }

    /// New elements are default ones.
    void resize(size_type n) {
        if (n <= size())
            return truncate(mFront + n);
        reserveToResize(n);
        std::uninitialized_value_construct(mBack, mFront + n);
        mBack = mFront + n;
    }
    void resize(size_type n, const T& value) {
        if (n <= size())
            return truncate(mFront + n);
        const T copy(value); // it may stand in this array
        reserveToResize(n);
        std::uninitialized_fill(mBack, mFront + n, copy);
        mBack = mFront + n;
    }

    /// Removes all elements and keeps the storage.
    void clear() { truncate(mFront); }
    /// Removes all elements and releases the storage.
    void clearMemoryBlock() {
        clear();
        HyAlloc<T>::deallocate(mFront);
        mFront = mBack = mEndBlock = nullptr;
    }

    void swap(HyArray& other) noexcept {
        std::swap(mFront, other.mFront);
        std::swap(mBack, other.mBack);
        std::swap(mEndBlock, other.mEndBlock);
    }

    [[nodiscard]] friend bool operator==(const HyArray& a, const HyArray& b) {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

private:
    [[noreturn]] static void failRange() {
        HyFatalErrorOrAbort("HyArray::isValidIndex : range error\n");
    }
    void isValidIndex(size_type index) const {
        if (index >= size()) [[unlikely]]
            failRange();
    }
    /// Index of a position, which may be the end.
    [[nodiscard]] size_type indexOf(const_iterator position) const {
        const auto index = static_cast<size_type>(position - mFront);
        if (index > size()) [[unlikely]]
            failRange();
        return index;
    }

    [[nodiscard]] size_type grownCapacity() const { return capacity() + capacity() / 2 + 1; }

    /// Makes a fresh block the storage; moves the present elements to its front.
    void adopt(T* block, size_type newCapacity, size_type newSize) {
        if constexpr (std::is_nothrow_move_constructible_v<T>)
            std::uninitialized_move(mFront, mBack, block);
        else
            std::uninitialized_copy(mFront, mBack, block);
        std::destroy(mFront, mBack);
        HyAlloc<T>::deallocate(mFront);
        mFront = block;
        mBack = block + newSize;
        mEndBlock = block + newCapacity;
    }

    template <typename... Arguments>
    T& emplace(Arguments&&... arguments) {
        if (mBack == mEndBlock) {
            // The new element comes first: the arguments may stand in the old block.
            const size_type n = size(), newCapacity = grownCapacity();
            T* block = HyAlloc<T>::allocate(newCapacity);
            std::construct_at(block + n, std::forward<Arguments>(arguments)...);
            adopt(block, newCapacity, n + 1);
        } else {
            std::construct_at(mBack, std::forward<Arguments>(arguments)...);
            ++mBack;
        }
        return *(mBack - 1);
    }

    void reserveFor(size_type n) {
        if (n > capacity() - size())
            reserve(std::max(grownCapacity(), sum(size(), n)));
    }
    void reserveToResize(size_type n) {
        if (n > capacity())
            reserve(sum(size(), std::max(size(), n - size())));
    }
    /// Saturates, so that the allocation fails rather than comes out too small.
    [[nodiscard]] static size_type sum(size_type a, size_type b) {
        return b > std::numeric_limits<size_type>::max() - a ? std::numeric_limits<size_type>::max()
                                                             : a + b;
    }
    void appendCopies(const T* first, size_type n) {
        reserve(sum(size(), n));
        mBack = std::uninitialized_copy_n(first, n, mBack);
    }
    void truncate(T* newBack) {
        std::destroy(newBack, mBack);
        mBack = newBack;
    }
    /// Brings the last n elements to an index.
    iterator rotateIn(size_type index, size_type n) {
        std::rotate(mFront + index, mBack - n, mBack);
        return mFront + index;
    }

    T* mFront = nullptr;
    T* mBack = nullptr;
    T* mEndBlock = nullptr;
};

} // namespace Hy
