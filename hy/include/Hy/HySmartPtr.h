#pragma once
#include <utility>

namespace Hy {

/// Holds a reference to a HyRefCount object, or null.
/// @tparam T a class derived from HyRefCount; may be incomplete where nothing is taken or let go
template <class T>
class HySmartPtr {
public:
    HySmartPtr(T* object = nullptr) : m_ptr(object) { take(); }
    HySmartPtr(const HySmartPtr& other) : HySmartPtr(other.m_ptr) {}
    HySmartPtr(HySmartPtr&& other) noexcept : m_ptr(std::exchange(other.m_ptr, nullptr)) {}
    ~HySmartPtr() { release(); }

    HySmartPtr& operator=(T* object) {
        HySmartPtr(object).swap(*this);
        return *this;
    }
    HySmartPtr& operator=(const HySmartPtr& other) { return *this = other.m_ptr; }
    HySmartPtr& operator=(HySmartPtr&& other) noexcept {
        HySmartPtr(std::move(other)).swap(*this);
        return *this;
    }

    [[nodiscard]] bool operator==(const HySmartPtr& other) const { return m_ptr == other.m_ptr; }
    [[nodiscard]] bool operator==(const T* object) const { return m_ptr == object; }

    /// @pre not null
    [[nodiscard]] T& operator*() const { return *m_ptr; }
    /// @pre not null
    T* operator->() const { return m_ptr; }
    [[nodiscard]] T* get() const { return m_ptr; }
    /// Where the pointer itself lies; what is written there is not counted.
    [[nodiscard]] T** getMemoryLocation() { return &m_ptr; }
    [[nodiscard]] bool operator!() const { return !m_ptr; }
    /// Whether it holds an object.
    [[nodiscard]] bool valid() const { return m_ptr != nullptr; }

    /// Lets the object go, and is null.
    void release() {
        // Null first: the object's end may lead back to here.
        if (T* const object = std::exchange(m_ptr, nullptr))
            object->unref();
    }

private:
    void take() {
        if (m_ptr)
            m_ptr->ref();
    }
    void swap(HySmartPtr& other) noexcept { std::swap(m_ptr, other.m_ptr); }

    T* m_ptr;
};

} // namespace Hy
