#pragma once
#include <Hy/HyTypes.h>

struct DynBaseConstraint;
struct DyncFriction;

namespace Hy {

/// Dry friction of a joint along or about one of its axes: a force up to a maximum that opposes the
/// motion. A view on the record of the joint, which owns it. Values out of range: a warning, and the
/// old one stays.
class HY_API HyConstraintFriction {
public:
    HyConstraintFriction(const HyConstraintFriction&) = delete;
    HyConstraintFriction& operator=(const HyConstraintFriction&) = delete;
    virtual ~HyConstraintFriction() = default;

    virtual void setEnabled(bool enabled);
    [[nodiscard]] virtual bool getEnabled() const;
    /// N or N m, not negative. Proportional friction overwrites it in each step.
    virtual void setMaxForce(HyReal force);
    [[nodiscard]] virtual HyReal getMaxForce() const;
    /// Velocity per force, in m/(N s) or rad/(N m s), at which it slips within its maximum; not
    /// negative.
    virtual void setLoss(HyReal loss);
    [[nodiscard]] virtual HyReal getLoss() const;
    /// Of proportional friction: maximum force per load across the axis, not negative.
    virtual void setCoefficient(HyReal coefficient);
    [[nodiscard]] virtual HyReal getCoefficient() const;
    /// Raises the maximum until the joint first slips; not negative.
    virtual void setStaticFrictionScale(HyReal scale);
    [[nodiscard]] virtual HyReal getStaticFrictionScale() const;
    /// Lets the maximum follow the load of the last step.
    virtual void setProportional(bool proportional);
    [[nodiscard]] virtual bool getProportional() const;
    /// Part, 0 or 1, whose attachment carries the axis.
    virtual void setPartReferenceIndex(int part);
    [[nodiscard]] virtual int getPartReferenceIndex() const;

protected:
    /// @param friction viewed, not owned
    /// @param constraint that it belongs to; null for none
    HyConstraintFriction(DyncFriction* friction, DynBaseConstraint* constraint)
        : mFriction(friction), mConstraint(constraint) {}

private:
    friend class HyConstraint;
    void wake() const;
    void raiseProportionalFlag() const;
    bool setNotNegative(HyReal& field, HyReal value, const char* operation) const;

    DyncFriction* mFriction;
    DynBaseConstraint* mConstraint;
};

} // namespace Hy
