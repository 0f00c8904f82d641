#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyStepperBase.h>
#include <Hy/HyUniverseObserver.h>

namespace Hy {
class HyPart;
class HyUniverse;

namespace ICD {
class HyConsumerPart;
class HyMappingPartID;

/// Tells consumers of the parts of a universe: who comes and goes, and after each step where all are.
///
/// Add it to the frame behind the universe, with HyFrame::addStepper(): of equal priority, it then
/// runs after the universe in each phase. A consumer may unregister itself or others from inside a
/// call; one that does so still gets the rest of the calls under way, and so must live to their end.
class HY_API HyProducerPart : public HyClass<kHyProducerPartClassId, HyStepperBase>,
                              public HyUniverseObserver {
public:
    /// Follows the universe from now on, and numbers the parts that are in it.
    /// @param universe,mapping not owned; null: a warning, and nothing will be told. The mapping must
    /// outlive the producer.
    HyProducerPart(HyUniverse* universe, HyMappingPartID* mapping);
    [[nodiscard]] const char* getClassName() const override { return "HyProducerPart"; }

    /// Adds a consumer, not owned; nothing if it is here already. Null: a warning.
    virtual void registerConsumer(HyConsumerPart* consumer);
    /// Nothing if it is not here.
    virtual void unRegisterConsumer(HyConsumerPart* consumer);

    void onPartAdded(HyPart* part) override;
    void onPartRemoved(HyPart* part) override;
    void onUniverseAboutToBeDestroyed() override;

protected:
    void preUpdateImpl() override {}
    void detectCollisionsImpl(HyReal) override {}
    void advanceKinematicsImpl(HyReal) override {}
    void solveDynamicsImpl(HyReal) override {}
    void revertDynamicsImpl() override {}
    void advanceDynamicsImpl(HyReal) override {}
    /// Tells all consumers of all parts, in the order in which each came to be.
    void postUpdateImpl() override;

private:
    HyArray<HyConsumerPart*> mConsumers;     ///< in the order of registering
    HyArray<HyConsumerPart*> mToldConsumers; ///< of the update under way; kept for its storage
    HyMappingPartID* const mMappingPartId;
    HyUniverse* mUniverse = nullptr; ///< null once it is going away
};

} // namespace ICD
} // namespace Hy
