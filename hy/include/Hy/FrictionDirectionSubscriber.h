#pragma once
#include <Hy/HyVector3.h>

namespace Hy {
class HyDynamicsContact;
class HyDynamicsContactInput;
class HyPart;

/// Aims the primary friction axis of the contacts of a part; see HyPart::setFrictionDirectionSubscriber.
class HY_API FrictionDirectionSubscriber {
public:
    /// How the friction axis lies to the reference direction.
    enum eFrictionDirectionType : int {
        kFrictionDirectionPerpendicular = 0,
        kFrictionDirectionParallel = 1,
        kFrictionDirectionUser = 2, ///< by the subscriber's own rule
        kFrictionDirectionNum = 3
    };

    virtual ~FrictionDirectionSubscriber() = default;
    /// Sets the directions of the contacts of one pair, of which the part is one.
    virtual void notify(HyPart* part, HyDynamicsContactInput* contacts) = 0;
    /// The same for one contact.
    virtual void notify(HyPart* part, HyDynamicsContact* contact) = 0;
    /// In the part's frame.
    virtual void setReferenceDirection(const HyVector3& direction) = 0;
    [[nodiscard]] virtual HyVector3 getReferenceDirection() const = 0;
    [[nodiscard]] virtual eFrictionDirectionType getFrictionDirectionType() const {
        return kFrictionDirectionUser;
    }
};

} // namespace Hy
