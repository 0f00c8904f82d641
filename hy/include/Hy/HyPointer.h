#pragma once
#include <Hy/HyBase.h>
#include <Hy/HyMessage.h>

#include <concepts>

namespace Hy {

/// Points to an object that it does not own, and becomes null when the object is destroyed.
/// @tparam T a class derived from HyBase; may be incomplete where nothing is assigned
template <class T>
class HyPointer : public HyBase::Subscriber {
public:
    HyPointer() = default;
    HyPointer(T* object) { changeTo(object); }
    HyPointer(const HyPointer& other) : HyPointer(other.base) {}
    ~HyPointer() override { clear(); }

    HyPointer& operator=(const HyPointer& other) { return *this = other.base; }
    HyPointer& operator=(T* object) {
        changeTo(object);
        return *this;
    }
    /// Takes an object whose class is known only at run time. One that is no T: a warning, and the
    /// old object stays.
    template <std::derived_from<HyBase> Other>
    requires(!std::convertible_to<Other*, T*>) HyPointer& operator=(Other* object) {
        if (!object || object->isOfClassType(T::getStaticClassType()))
            changeTo(static_cast<T*>(static_cast<HyBase*>(object)));
        else
            HyWarning(0, "HyPointer::operator=: the object must be of the pointer's class.\n");
        return *this;
    }

    /// Points to another object, or to none.
    void changeTo(T* object) {
        if (object == base)
            return;
        if (base)
            base->removeSubscriber(HyBase::kEventDestroy, this);
        base = object;
        if (base)
            base->addSubscriber(HyBase::kEventDestroy, this);
    }
    /// Points to nothing, as a new pointer does.
    void init() { changeTo(nullptr); }
    /// Points to nothing.
    void clear() { changeTo(nullptr); }

    [[nodiscard]] bool isNull() const { return !base; }
    [[nodiscard]] bool valid() const { return base != nullptr; }
    [[nodiscard]] T* get() const { return base; }
    operator T*() const { return base; }
    /// @pre not null
    T* operator->() const { return base; }
    /// @pre not null
    [[nodiscard]] T& operator*() const { return *base; }

    /// The object's end: the subscription goes with it.
    void notify(int event, HyBase*) override {
        if (event == HyBase::kEventDestroy)
            base = nullptr;
    }

private:
    T* base = nullptr;
};

} // namespace Hy
