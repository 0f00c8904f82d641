#pragma once
#include <Hy/HyClass.h>

#include <atomic>
#include <cstdint>
#include <string>

namespace Hy {

/// Root of the high-level classes: identity, name, and subscribers to the object's end.
///
/// An object costs four words until it gets a name or a subscriber. The subscriber operations may
/// be called from any thread; names belong to the thread that owns the object.
class HY_API HyBase {
public:
    enum Event : int {
        kEventDestroy = 0, ///< the object is about to go; only its HyBase part still stands
        kEventCreate = 1,  ///< the object begins; only its HyBase part stands yet
        EVENT_NUM = 2
    };

    /// Is told of an object's events. May remove itself, or others, while it is told.
    class HY_API Subscriber {
    public:
        virtual ~Subscriber() = default;
        /// @param event an Event
        /// @param object whose event it is; see Event for what may be done with it
        virtual void notify(int event, HyBase* object) = 0;
    };

    static constexpr std::array<int, 1> kIDVector{kHyBaseClassId};
    /// Identity of the class.
    [[nodiscard]] static constexpr int getStaticClassType() { return kHyBaseClassId; }
    /// Identities of the class and of all that it derives from, its own first.
    [[nodiscard]] static constexpr std::span<const int> getIDVector() { return kIDVector; }

    /// Registers with the current frame, if there is one, and tells the constructor subscriber.
    HyBase();
    HyBase(const HyBase&) = delete;
    HyBase& operator=(const HyBase&) = delete;

    /// Whether the object is of the class with this identity or of one derived from it.
    [[nodiscard]] virtual bool isOfClassType(int id) const;
    /// Whether the object is of the class with this identity itself.
    [[nodiscard]] virtual bool isOfExactClassType(int id) const;
    /// Tells the subscribers of kEventDestroy, then the subscribers of all events, each in the
    /// order of adding. One removed meanwhile is skipped, one added meanwhile is not told.
    virtual ~HyBase();
    /// Name of the class, "HyPart" for a HyPart.
    [[nodiscard]] virtual const char* getClassName() const;
    /// Sets the name; restricted characters become '_' (see HyNameValidation). Null removes it.
    /// What overrides this calls setNameBase().
    virtual void setName(const char* name);

    /// setName() for a string.
    void setHyName(const std::string& name);
    /// Stores the name as setName() does, without the class's own part in it.
    void setNameBase(const char* name);
    /// Names the object "a_b_number". a is cut at 197 characters, "a_b" at 248, the whole at 255.
    /// @param a,b not null
    /// @param number -1 stands for the creation index
    void setCombinedName(const char* a, const char* b, int number = -1);
    /// The name; an object without one first gets "default_Class_index", index being its creation
    /// index. Valid until the name changes.
    [[nodiscard]] const std::string& getName() const;
    /// Whether the object has got a name yet.
    [[nodiscard]] bool hasName() const;

    /// Appends to the subscribers of one event; who is added twice is told twice.
    /// @param subscriber not owned; stays valid until it is removed
    void addSubscriber(Event event, Subscriber* subscriber);
    /// Removes the first match from the subscribers of one event.
    void removeSubscriber(Event event, Subscriber* subscriber);
    /// Whether it is among the subscribers of this one event.
    [[nodiscard]] bool isSubscribed(Event event, Subscriber* subscriber) const;
    /// Appends to the subscribers of all events.
    void addSubscriber(Subscriber* subscriber);
    /// Removes the first match from the subscribers of all events and from those of each event.
    void removeSubscriber(Subscriber* subscriber);
    /// Whether it is among the subscribers of all events or of any event.
    [[nodiscard]] bool isSubscribed(Subscriber* subscriber) const;

    /// Who is told kEventCreate of every new object; null for nobody. Not owned.
    static void setConstructorSubscriber(Subscriber* subscriber);
    [[nodiscard]] static Subscriber* getConstructorSubscriber();

    /// Lets creation indices, and with them generated names, begin at 0 again.
    static void resetHyBaseCounter();
    /// Index of creation since the last resetHyBaseCounter(); may repeat.
    [[nodiscard]] std::uint32_t getCreationIndex() const { return mCreationIndex; }
    /// Number of the object in the order of creation in this process. Never repeats.
    [[nodiscard]] std::uint64_t getSerial() const { return mSerial; }

private:
    struct Extras;

    Extras& getExtras() const;

    /// Name and subscribers, made when the first of them is asked for.
    mutable std::atomic<Extras*> mExtras{nullptr};
    const std::uint64_t mSerial;
    const std::uint32_t mCreationIndex;

    static std::atomic<std::uint32_t> s_defaultHyBaseCounter;
    static std::atomic<Subscriber*> sConstructorSubscriber;
};

/// Orders objects by creation, null first: the same in every run, as addresses are not.
struct HyCreationOrder {
    [[nodiscard]] bool operator()(const HyBase* a, const HyBase* b) const {
        return (a ? a->getSerial() : 0) < (b ? b->getSerial() : 0);
    }
};

} // namespace Hy
