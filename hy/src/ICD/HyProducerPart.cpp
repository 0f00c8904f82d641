#include <Hy/HyProducerPart.h>

#include <Hy/HyConsumerPart.h>
#include <Hy/HyEulerAngles.h>
#include <Hy/HyMappingPartID.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

namespace Hy::ICD {

HyProducerPart::HyProducerPart(HyUniverse* universe, HyMappingPartID* mapping)
    : mMappingPartId(mapping) {
    if (!universe || !mapping) {
        HyWarning(0, "HyProducerPart::HyProducerPart: the universe and the mapping must not be "
                     "null.\n");
        return;
    }
    mUniverse = universe;
    universe->registerObserver(this, true);
}

void HyProducerPart::registerConsumer(HyConsumerPart* consumer) {
    if (consumer)
        mConsumers.addUnique(consumer);
    else
        HyWarning(0, "HyProducerPart::registerConsumer: the consumer must not be null.\n");
}

void HyProducerPart::unRegisterConsumer(HyConsumerPart* consumer) {
    mConsumers.eraseOnce(consumer);
}

void HyProducerPart::onPartAdded(HyPart* part) {
    const unsigned int id = mMappingPartId->map(part);
    const HyArray<HyConsumerPart*> consumers = mConsumers;
    for (HyConsumerPart* consumer : consumers)
        consumer->partAdded(id);
}

void HyProducerPart::onPartRemoved(HyPart* part) {
    const unsigned int id = mMappingPartId->map(part);
    const HyArray<HyConsumerPart*> consumers = mConsumers;
    for (HyConsumerPart* consumer : consumers)
        consumer->partRemoved(id);
}

void HyProducerPart::onUniverseAboutToBeDestroyed() {
    mUniverse = nullptr;
}

// A producer that the application has taken from its universe does not hear of the universe's end.
void HyProducerPart::postUpdateImpl() {
    if (!mUniverse || getObservedUniverse() != mUniverse)
        return;
    mToldConsumers = mConsumers;
    for (HySafeWalk walk(mUniverse->getParts()); HyPart* part = walk.next();) {
        const unsigned int id = mMappingPartId->map(part);
        const HyVector3 position = part->getPosition();
        const HyEulerAngles angles = part->getOrientationEulerAngles();
        const HyVector3 orientation(angles.getFirst(), angles.getSecond(), angles.getThird());
        const HyVector3 linearVelocity = part->getLinearVelocity();
        const HyVector3 angularVelocity = part->getAngularVelocity();
        for (HyConsumerPart* consumer : mToldConsumers)
            consumer->partUpdated(id, position, orientation, linearVelocity, angularVelocity);
    }
}

} // namespace Hy::ICD
