#pragma once
#include <Hy/FrictionDirectionSubscriber.h>

namespace Hy {

/// Aims friction by an axis that is fixed in the part. A direction stays where the axis is too near
/// the contact's normal, within about 6 degrees, or has no direction at all.
class HY_API HyFrictionDirectionToAxisSub : public FrictionDirectionSubscriber {
public:
    void notify(HyPart* part, HyDynamicsContactInput* contacts) override;
    void notify(HyPart* part, HyDynamicsContact* contact) override;
    /// Is made a unit vector, unless it is zero. Not finite: a warning, no change.
    void setReferenceDirection(const HyVector3& direction) override;
    [[nodiscard]] HyVector3 getReferenceDirection() const override { return mRefDir; }

protected:
    explicit HyFrictionDirectionToAxisSub(const HyVector3& direction);

private:
    HyVector3 mRefDir; ///< part's frame
};

/// The primary axis lies across the reference axis: normal x axis, as for a wheel about its axle.
class HY_API HyFrictionDirectionPerpendicularToAxisSub : public HyFrictionDirectionToAxisSub {
public:
    /// @param direction in the part's frame
    explicit HyFrictionDirectionPerpendicularToAxisSub(const HyVector3& direction)
        : HyFrictionDirectionToAxisSub(direction) {}
    [[nodiscard]] eFrictionDirectionType getFrictionDirectionType() const override {
        return kFrictionDirectionPerpendicular;
    }
};

/// The primary axis lies along the reference axis, as that of a belt along its run.
class HY_API HyFrictionDirectionParallelToAxisSub : public HyFrictionDirectionToAxisSub {
public:
    /// @param direction in the part's frame
    explicit HyFrictionDirectionParallelToAxisSub(const HyVector3& direction)
        : HyFrictionDirectionToAxisSub(direction) {}
    [[nodiscard]] eFrictionDirectionType getFrictionDirectionType() const override {
        return kFrictionDirectionParallel;
    }
};

} // namespace Hy
