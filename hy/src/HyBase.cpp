#include <Hy/HyBase.h>

#include <Hy/HyFrame.h>
#include <Hy/HyMessage.h>
#include <Hy/HyNameValidation.h>
#include <Hy/HySubscriberCollection.h>
#include <Hy/HyThread.h>

#include <algorithm>
#include <memory>

namespace Hy {

namespace {

// A combined name is cut where its first part, its first two parts and its whole reach these.
constexpr std::size_t kMaxFirstPart = 197;
constexpr std::size_t kMaxTwoParts = 248;
constexpr std::size_t kMaxCombinedName = 255;

std::uint64_t takeSerial() {
    static std::atomic<std::uint64_t> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

bool isSubscription(const char* operation, int event, const HyBase::Subscriber* subscriber) {
    if (event < 0 || event >= HyBase::EVENT_NUM) {
        HyWarning(0, "HyBase::%s: event must be kEventDestroy or kEventCreate.\n", operation);
        return false;
    }
    if (!subscriber) {
        HyWarning(0, "HyBase::%s: subscriber must not be null.\n", operation);
        return false;
    }
    return true;
}

} // namespace

struct HyBase::Extras {
    Extras() : mSubscriberMutex(HyThreadMutexCreate()) {}
    Extras(const Extras&) = delete;
    Extras& operator=(const Extras&) = delete;
    ~Extras() { HyThreadMutexDestroy(mSubscriberMutex); }

    /// What the operation on the subscribers gives, done under their mutex.
    template <class Operation>
    auto underMutex(Operation operation) {
        struct Lock {
            HyThreadMutex* mutex;
            explicit Lock(HyThreadMutex* m) : mutex(m) {
                if (mutex)
                    HyThreadMutexLock(mutex);
            }
            ~Lock() {
                if (mutex)
                    HyThreadMutexUnlock(mutex);
            }
        } const lock(mSubscriberMutex);
        return operation(mSubscriberList);
    }

    HySubscriberCollection<Event, Subscriber, EVENT_NUM> mSubscriberList;
    std::string mName;
    HyThreadMutex* const mSubscriberMutex; ///< guards mSubscriberList
};

std::atomic<std::uint32_t> HyBase::s_defaultHyBaseCounter{0};
std::atomic<HyBase::Subscriber*> HyBase::sConstructorSubscriber{nullptr};

HyBase::HyBase()
    : mSerial(takeSerial()),
      mCreationIndex(s_defaultHyBaseCounter.fetch_add(1, std::memory_order_relaxed)) {
    if (HyFrame* frame = HyFrame::currentInstance())
        frame->addHyBaseInstance(this);
    if (Subscriber* subscriber = getConstructorSubscriber())
        subscriber->notify(kEventCreate, this);
}

HyBase::~HyBase() {
    if (Extras* const extras = mExtras.load(std::memory_order_acquire))
        extras->mSubscriberList.notify(kEventDestroy, this);
    if (HyFrame* frame = HyFrame::currentInstance())
        frame->removeHyBaseInstance(this);
    // Loaded anew: a subscriber's call may have made them.
    delete mExtras.load(std::memory_order_acquire);
}

HyBase::Extras& HyBase::getExtras() const {
    Extras* present = mExtras.load(std::memory_order_acquire);
    if (present)
        return *present;
    auto made = std::make_unique<Extras>();
    // Another thread may have been quicker: its extras then stay.
    if (mExtras.compare_exchange_strong(present, made.get(), std::memory_order_acq_rel))
        return *made.release();
    return *present;
}

bool HyBase::isOfClassType(int id) const {
    return id == kHyBaseClassId;
}

bool HyBase::isOfExactClassType(int id) const {
    return id == kHyBaseClassId;
}

const char* HyBase::getClassName() const {
    return "HyBase";
}

void HyBase::setName(const char* name) {
    setNameBase(name);
}

void HyBase::setHyName(const std::string& name) {
    setName(name.c_str());
}

void HyBase::setNameBase(const char* name) {
    getExtras().mName =
        name ? HyNameValidation::replaceRestrictedCharacters(name, '_') : std::string();
}

void HyBase::setCombinedName(const char* a, const char* b, int number) {
    if (!a || !b) {
        HyWarning(0, "HyBase::setCombinedName: neither name may be null.\n");
        return;
    }
    std::string name(a);
    name.resize(std::min(name.size(), kMaxFirstPart));
    name.append("_").append(b);
    name.resize(std::min(name.size(), kMaxTwoParts));
    name.append("_").append(number == -1 ? std::to_string(mCreationIndex) : std::to_string(number));
    name.resize(std::min(name.size(), kMaxCombinedName));
    setName(name.c_str());
}

const std::string& HyBase::getName() const {
    // A name made on first asking is no change of the object: it had been its name all along.
    if (!hasName())
        const_cast<HyBase*>(this)->setCombinedName("default", getClassName());
    return getExtras().mName;
}

bool HyBase::hasName() const {
    const Extras* extras = mExtras.load(std::memory_order_acquire);
    return extras && !extras->mName.empty();
}

void HyBase::addSubscriber(Event event, Subscriber* subscriber) {
    if (isSubscription("addSubscriber", event, subscriber))
        getExtras().underMutex([&](auto& list) { list.addSubscriber(event, subscriber); });
}

void HyBase::removeSubscriber(Event event, Subscriber* subscriber) {
    if (!isSubscription("removeSubscriber", event, subscriber))
        return;
    if (Extras* const extras = mExtras.load(std::memory_order_acquire))
        extras->underMutex([&](auto& list) { list.removeSubscriber(event, subscriber); });
}

bool HyBase::isSubscribed(Event event, Subscriber* subscriber) const {
    Extras* const extras = mExtras.load(std::memory_order_acquire);
    return isSubscription("isSubscribed", event, subscriber) && extras &&
           extras->underMutex(
               [&](auto& list) { return list.containSubscriber(event, subscriber); });
}

void HyBase::addSubscriber(Subscriber* subscriber) {
    if (isSubscription("addSubscriber", kEventDestroy, subscriber))
        getExtras().underMutex([&](auto& list) { list.addSubscriber(subscriber); });
}

void HyBase::removeSubscriber(Subscriber* subscriber) {
    if (Extras* const extras = mExtras.load(std::memory_order_acquire))
        extras->underMutex([&](auto& list) { list.removeSubscriber(subscriber); });
}

bool HyBase::isSubscribed(Subscriber* subscriber) const {
    Extras* const extras = mExtras.load(std::memory_order_acquire);
    return extras &&
           extras->underMutex([&](auto& list) { return list.containSubscriber(subscriber); });
}

void HyBase::setConstructorSubscriber(Subscriber* subscriber) {
    sConstructorSubscriber.store(subscriber, std::memory_order_release);
}

HyBase::Subscriber* HyBase::getConstructorSubscriber() {
    return sConstructorSubscriber.load(std::memory_order_acquire);
}

void HyBase::resetHyBaseCounter() {
    s_defaultHyBaseCounter.store(0, std::memory_order_relaxed);
}

} // namespace Hy
