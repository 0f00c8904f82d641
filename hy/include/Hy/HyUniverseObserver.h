#pragma once
#include <Kit/KitApi.h>

namespace Hy {
class HyCollisionGeometry;
class HyConstraint;
class HyDynamicsExtension;
class HyPart;
class HyUniverse;

/// Follows the contents of a universe (see HyUniverse::registerObserver). Observes one universe at a
/// time and leaves it when destroyed. May unregister itself or others from inside a call.
class HY_API HyUniverseObserver {
public:
    HyUniverseObserver() = default;
    HyUniverseObserver(const HyUniverseObserver&) = delete;
    HyUniverseObserver& operator=(const HyUniverseObserver&) = delete;
    virtual ~HyUniverseObserver();

    /// The universe still has all its contents.
    virtual void onUniverseAboutToBeDestroyed() {}
    /// A state was restored (see HyUniverse::restoreState).
    virtual void onStateRestored() {}
    /// The part is in the universe.
    virtual void onPartAdded(HyPart*) {}
    /// The part has left the universe and is still alive.
    virtual void onPartRemoved(HyPart*) {}
    /// The same for a collision geometry, by itself or of a part.
    virtual void onCollisionGeometryAdded(HyCollisionGeometry*) {}
    virtual void onCollisionGeometryRemoved(HyCollisionGeometry*) {}
    /// The same for a constraint. One that is told of from its own destructor is a HyConstraint only.
    virtual void onConstraintAdded(HyConstraint*) {}
    virtual void onConstraintRemoved(HyConstraint*) {}
    /// The same for an extension.
    virtual void onExtensionAdded(HyDynamicsExtension*) {}
    virtual void onExtensionRemoved(HyDynamicsExtension*) {}

    /// Null while it observes none.
    [[nodiscard]] HyUniverse* getObservedUniverse() const { return mObservedUniverse; }

private:
    friend class HyUniverse;
    HyUniverse* mObservedUniverse = nullptr;
};

} // namespace Hy
