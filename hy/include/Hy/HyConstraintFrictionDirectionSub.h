#pragma once
#include <Hy/FrictionDirectionSubscriber.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyPointer.h>

namespace Hy {

/// Aims friction by an attachment axis of a constraint of the part, such as a wheel's hinge.
class HY_API HyConstraintFrictionDirectionSub : public FrictionDirectionSubscriber {
public:
    /// @param constraint not owned; without it the subscriber does nothing
    /// @param bodyID which of its parts this is for
    /// @param axisID 0 for the primary attachment axis, else the secondary
    /// @param type parallel, or perpendicular
    HyConstraintFrictionDirectionSub(HyConstraint* constraint, int bodyID, int axisID,
                                     eFrictionDirectionType type);

    /// A warning, and nothing, unless the part is the one that this is for.
    void notify(HyPart* part, HyDynamicsContactInput* contacts) override;
    void notify(HyPart* part, HyDynamicsContact* contact) override;
    /// Nothing: the constraint gives the direction.
    void setReferenceDirection(const HyVector3& direction) override;
    /// The axis in the part's frame; zero without the constraint.
    [[nodiscard]] HyVector3 getReferenceDirection() const override;
    [[nodiscard]] eFrictionDirectionType getFrictionDirectionType() const override {
        return mDirectionType;
    }

private:
    bool findAxis(const HyPart* part, HyVector3& axis) const;

    HyPointer<HyConstraint> mConstraint;
    int mBodyID;
    int mAxisID;
    eFrictionDirectionType mDirectionType;
};

} // namespace Hy
