#include <Hy/HyRefCount.h>

#include <Hy/HyMessage.h>

namespace Hy {

namespace {

/// Count of an object that is being destroyed: references taken and dropped by its destructors
/// stay far from 0, so that they do not destroy it again.
constexpr std::int32_t kDyingCount = 0x3FFFFFFF;

} // namespace

HyRefCount::~HyRefCount() {
    if (mCounter != 0 && mCounter != kDyingCount) {
        HyWarning(0, "HyRefCount: deleting still referenced object (refcount = %d)\n", mCounter);
        HyWarning(0, "HyRefCount: memory corruption is possible.\n");
    }
    HySubscriberList<Subscriber>::Walk walk(&mSubscribers);
    while (Subscriber* subscriber = walk.next())
        subscriber->notifyDeleted();
}

bool HyRefCount::isOfClassType(int id) const {
    return id == kHyRefCountClassId;
}

bool HyRefCount::isOfExactClassType(int id) const {
    return id == kHyRefCountClassId;
}

void HyRefCount::unref() {
    if (--mCounter >= 1)
        return;
    mCounter = kDyingCount;
    delete this;
}

void HyRefCount::addHyRefCountSubscriber(Subscriber* subscriber) {
    if (!subscriber) {
        HyWarning(0, "HyRefCount::addHyRefCountSubscriber: subscriber must not be null.\n");
        return;
    }
    mSubscribers.add(subscriber);
}

void HyRefCount::removeHyRefCountSubscriber(Subscriber* subscriber) {
    mSubscribers.removeOnce(subscriber);
}

} // namespace Hy
