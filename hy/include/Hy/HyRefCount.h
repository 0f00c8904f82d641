#pragma once
#include <Hy/HyClass.h>
#include <Hy/HySubscriberCollection.h>

#include <cstdint>

namespace Hy {

/// An object that its users own together: it is destroyed with the last reference. An object that
/// nobody has referenced yet belongs to who made it. References are counted on one thread.
class HY_API HyRefCount {
public:
    /// Is told of the object's end. May remove itself, or others, while it is told.
    class HY_API Subscriber {
    public:
        virtual ~Subscriber() = default;
        /// Only the HyRefCount part of the object still stands.
        virtual void notifyDeleted() = 0;
    };

    static constexpr std::array<int, 1> kIDVector{kHyRefCountClassId};
    /// Identity of the class.
    [[nodiscard]] static constexpr int getStaticClassType() { return kHyRefCountClassId; }
    /// Identities of the class and of all that it derives from, its own first.
    [[nodiscard]] static constexpr std::span<const int> getIDVector() { return kIDVector; }

    HyRefCount() = default;
    /// A copy is a new object: no references, no subscribers.
    HyRefCount(const HyRefCount&) {}
    /// References and subscribers stay with their object.
    HyRefCount& operator=(const HyRefCount&) { return *this; }

    /// Whether the object is of the class with this identity or of one derived from it.
    [[nodiscard]] virtual bool isOfClassType(int id) const;
    /// Whether the object is of the class with this identity itself.
    [[nodiscard]] virtual bool isOfExactClassType(int id) const;
    /// Warns if references are left, then tells the subscribers in the order of adding.
    virtual ~HyRefCount();

    /// Adds a reference.
    void ref() { ++mCounter; }
    /// Drops a reference; with the last one, or if there is none, destroys the object.
    void unref();
    /// Drops a reference and destroys nothing.
    void unref_nodelete() { --mCounter; }
    [[nodiscard]] int referenceCount() const { return mCounter; }

    /// Appends to the subscribers; who is added twice is told twice.
    /// @param subscriber not owned; stays valid until it is removed
    void addHyRefCountSubscriber(Subscriber* subscriber);
    /// Removes the first match.
    void removeHyRefCountSubscriber(Subscriber* subscriber);

private:
    std::int32_t mCounter = 0;
    HySubscriberList<Subscriber> mSubscribers;
};

} // namespace Hy
