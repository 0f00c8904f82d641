#pragma once
#include <Hy/HyBase.h>
#include <Hy/HyConstraint.h>

namespace Hy {
class HyPart;

/// Names one part, equation or coordinate of a constraint, which owns it.
class HY_API ConstraintAccessor {
public:
    [[nodiscard]] HyConstraint* getConstraint() const { return mConstraint; }
    /// In the constraint's operations.
    [[nodiscard]] int getIndex() const { return mIndex; }

protected:
    ConstraintAccessor(HyConstraint* constraint, int index)
        : mConstraint(constraint), mIndex(index) {}
    ~ConstraintAccessor() = default;

    HyConstraint* mConstraint;
    int mIndex;
};

/// One part of a constraint and the frame by which it is held; see HyConstraint.
class HY_API ConstraintPartAttachment : public HyClass<kConstraintPartAttachmentClassId, HyBase>,
                                        public ConstraintAccessor {
public:
    [[nodiscard]] const char* getClassName() const override { return "ConstraintPartAttachment"; }

    void setPart(HyPart* part) { mConstraint->setPart(mIndex, part); }
    [[nodiscard]] HyPart* getPart() const { return mConstraint->getPart(mIndex); }
    void setPosition(const HyVector3& p) { mConstraint->setPartAttachmentPosition(mIndex, p); }
    [[nodiscard]] HyVector3 getPosition() const {
        return mConstraint->getPartAttachmentPosition(mIndex);
    }
    void setPositionRel(const HyVector3& p) {
        mConstraint->setPartAttachmentPositionRel(mIndex, p);
    }
    [[nodiscard]] HyVector3 getPositionRel() const {
        return mConstraint->getPartAttachmentPositionRel(mIndex);
    }
    void setPrimaryAxis(const HyVector3& axis) { mConstraint->setPartAttachmentAxis(mIndex, axis); }
    void setAxes(const HyVector3& primary, const HyVector3& secondary) {
        mConstraint->setPartAttachmentAxes(mIndex, primary, secondary);
    }
    void setAxesRel(const HyVector3& primary, const HyVector3& secondary) {
        mConstraint->setPartAttachmentAxesRel(mIndex, primary, secondary);
    }
    void getAxes(HyVector3& primary, HyVector3& secondary) const {
        mConstraint->getPartAttachmentAxes(mIndex, primary, secondary);
    }
    void getAxesRel(HyVector3& primary, HyVector3& secondary) const {
        mConstraint->getPartAttachmentAxesRel(mIndex, primary, secondary);
    }
    [[nodiscard]] HyVector3 getForce() const { return mConstraint->getPartForce(mIndex); }
    [[nodiscard]] HyVector3 getTorque() const { return mConstraint->getPartTorque(mIndex); }

private:
    friend class HyConstraint;
    ConstraintPartAttachment(HyConstraint* constraint, int index)
        : ConstraintAccessor(constraint, index) {}
};

/// One equation of a constraint: a row that it always enforces, and that can be relaxed. Its name
/// tells what it holds, "Primary axis position" for instance.
class HY_API ConstraintEquation : public HyClass<kConstraintEquationClassId, HyBase>,
                                  public ConstraintAccessor {
public:
    [[nodiscard]] const char* getClassName() const override { return "ConstraintEquation"; }
    void setRelaxationParameters(HyReal stiffness, HyReal damping, HyReal loss, bool enable) {
        mConstraint->setRelaxationParameters(mIndex, stiffness, damping, loss, enable);
    }
    void getRelaxationParameters(HyReal& stiffness, HyReal& damping, HyReal& loss,
                                 bool& enabled) const {
        mConstraint->getRelaxationParameters(mIndex, stiffness, damping, loss, enabled);
    }
    void setRelaxationMinMaxForce(HyReal minForce, HyReal maxForce) {
        mConstraint->setRelaxationMinMaxForce(mIndex, minForce, maxForce);
    }
    void enableRelaxation(bool enable) { mConstraint->enableRelaxation(mIndex, enable); }
    [[nodiscard]] bool getRelaxationEnabled() const {
        return mConstraint->getRelaxationEnabled(mIndex);
    }
    [[nodiscard]] HyReal getForce() const {
        return mConstraint->getConstraintEquationForce(mIndex);
    }
    [[nodiscard]] HyConstraintFriction* getFriction() const {
        return mConstraint->getConstraintEquationFriction(mIndex);
    }

private:
    friend class HyConstraint;
    ConstraintEquation(HyConstraint* constraint, const HyConstraint::EquationType& type)
        : ConstraintAccessor(constraint, type.row), mFriction(type.friction) {
        setNameBase(type.name);
    }

    int mFriction; ///< entry that acts along the row, -1 for none
};

/// One coordinate of a constraint: a degree of freedom with motor, lock and stops.
class HY_API ConstraintCoordinate : public HyClass<kConstraintCoordinateClassId, HyBase>,
                                    public ConstraintAccessor {
public:
    [[nodiscard]] const char* getClassName() const override { return "ConstraintCoordinate"; }

    [[nodiscard]] HyConstraint::CoordinateTypeEnum getType() const {
        return mConstraint->getCoordinateType(mIndex);
    }
    bool setControl(HyConstraint::CoordinateControlEnum control) {
        return mConstraint->setControl(mIndex, control);
    }
    [[nodiscard]] HyConstraint::CoordinateControlEnum getControl() const {
        return mConstraint->getControl(mIndex);
    }
    void setCurrentPosition(HyReal position) {
        mConstraint->setCoordinateCurrentPosition(mIndex, position);
    }
    [[nodiscard]] HyReal getCurrentPosition() const {
        return mConstraint->getCoordinateCurrentPosition(mIndex);
    }
    [[nodiscard]] HyReal getVelocity() const { return mConstraint->getCoordinateVelocity(mIndex); }
    [[nodiscard]] HyReal getForce() const { return mConstraint->getCoordinateForce(mIndex); }
    void setMotorParameters(HyReal velocity, HyReal maxForce, HyReal loss) {
        mConstraint->setMotorParameters(mIndex, velocity, maxForce, loss);
    }
    void setLockParameters(HyReal position, HyReal maxForce, HyReal stiffness, HyReal damping,
                           HyReal velocity) {
        mConstraint->setLockParameters(mIndex, position, maxForce, stiffness, damping, velocity);
    }
    void setLimitPositions(HyReal lower, HyReal upper) {
        mConstraint->setLimitPositions(mIndex, lower, upper);
    }
    void setLimitsActive(bool active) { mConstraint->setLimitsActive(mIndex, active); }
    [[nodiscard]] bool getLimitsActive() const { return mConstraint->getLimitsActive(mIndex); }
    [[nodiscard]] HyConstraintFriction* getFriction() const {
        return mConstraint->getCoordinateFriction(mIndex);
    }

private:
    friend class HyConstraint;
    ConstraintCoordinate(HyConstraint* constraint, int index, const char* name)
        : ConstraintAccessor(constraint, index) {
        setNameBase(name);
    }
};

} // namespace Hy
