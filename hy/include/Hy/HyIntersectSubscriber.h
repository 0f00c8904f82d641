#pragma once
#include <Kit/KitApi.h>

namespace Hy {
class HyDynamicsResponseInput;
class HyIntersectResult;

/// What befalls a pair of geometries.
enum eIntersectEventType : int {
    kEventActive = 0,   ///< touches, and did so before
    kEventInactive = 1, ///< touches, and both sleep
    kEventFirst = 2,    ///< touches now
    kEventDisjoint = 3, ///< touches no longer
    kEventCount = 4,
};

/// Is told of pairs, on the stepping thread and in the order of pairs. It may remove itself, others,
/// parts and geometries; what is removed is skipped.
class HY_API HyIntersectSubscriber {
public:
    virtual ~HyIntersectSubscriber() = default;
    /// @param result without contacts
    virtual void notifyDisjoint(eIntersectEventType event, HyIntersectResult* result) = 0;
    /// @param input the contacts of the dynamics, as a HyDynamicsContactInput; empty for sensors
    virtual void notifyIntersect(eIntersectEventType event, HyIntersectResult* result,
                                 HyDynamicsResponseInput* input) = 0;
};

/// Decides whether the subscribers of a list hear of a result.
class HY_API HyAcceptNotificationBase {
public:
    virtual ~HyAcceptNotificationBase() = default;
    [[nodiscard]] virtual bool accept(const HyIntersectResult* result) = 0;
    [[nodiscard]] virtual HyAcceptNotificationBase* clone() const = 0;
};

} // namespace Hy
