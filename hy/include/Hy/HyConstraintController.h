#pragma once
#include <Hy/HyConstraint.h>
#include <Hy/HyPointer.h>

namespace Hy {

/// A small input device: turns the events of a key or a stick into the value that drives one
/// coordinate of a constraint. One whose constraint is gone takes events and drives nothing.
class HY_API HyConstraintController : public HyClass<kHyConstraintControllerClassId, HyBase> {
public:
    enum Event { kEventIncrease = 0, kEventDecrease = 1, kEventSet = 2, kEventZero = 3 };

    [[nodiscard]] const char* getClassName() const override { return "HyConstraintController"; }
    /// Not finite, a negative increment, or crossed bounds: a warning, no change.
    /// @param constraint not owned
    /// @param valInc what an increase adds and a decrease takes
    virtual void init(HyConstraint* constraint, HyReal valInc, HyReal valMin, HyReal valMax,
                      int coordinate);
    /// Changes the value, clamped to its bounds, and drives the coordinate by it. An event of no
    /// meaning leaves the value. Not finite: a warning, nothing happens.
    /// @param event an Event
    virtual void notifyEvent(int event, HyReal value);
    /// Takes a value, clamped to its bounds, without driving. Not finite: a warning, no change.
    virtual void reset(HyReal value);

    [[nodiscard]] HyReal getCurrentValue() const { return mCurrVal; }
    [[nodiscard]] HyReal getMinimumValue() const { return mValMin; }
    [[nodiscard]] HyReal getMaximumValue() const { return mValMax; }
    [[nodiscard]] HyReal getIncrement() const { return mValInc; }
    [[nodiscard]] HyConstraint* getConstraint() const { return mConstraint.get(); }
    [[nodiscard]] int getCoordinate() const { return mCoordID; }

protected:
    /// Before an event: what the value is by the coordinate's state.
    virtual void resynchronise(int) {}
    /// After an event; the constraint is alive.
    virtual void drive() {}

    HyReal mValMin = 0, mValMax = 0;
    HyReal mValInc = 0;
    HyReal mCurrVal = 0;
    HyPointer<HyConstraint> mConstraint;
    int mCoordID = 0;
};

/// Its value is the position at which the coordinate is locked.
class HY_API HyLockController : public HyClass<kHyLockControllerClassId, HyConstraintController> {
public:
    [[nodiscard]] const char* getClassName() const override { return "HyLockController"; }
    /// Of the lock, N or N m; any at first.
    void setMaxForce(HyReal force) { mMaxForce = force; }
    [[nodiscard]] HyReal getMaxForce() const { return mMaxForce; }

protected:
    void resynchronise(int event) override;
    void drive() override;

private:
    HyReal mMaxForce = HyConstraint::sDefaultStiffness;
};

/// Its value is the velocity of the position at which the coordinate is locked.
class HY_API HyLockVelocityController
    : public HyClass<kHyLockVelocityControllerClassId, HyConstraintController> {
public:
    [[nodiscard]] const char* getClassName() const override { return "HyLockVelocityController"; }
    /// Of the lock, N or N m; any at first.
    void setMaxForce(HyReal force) { mMaxForce = force; }
    [[nodiscard]] HyReal getMaxForce() const { return mMaxForce; }

protected:
    void resynchronise(int event) override;
    void drive() override;

private:
    HyReal mMaxForce = HyConstraint::sDefaultStiffness;
};

/// Its value is the velocity of a motor.
class HY_API HyMotorController : public HyClass<kHyMotorControllerClassId, HyConstraintController> {
public:
    [[nodiscard]] const char* getClassName() const override { return "HyMotorController"; }
    /// Of the motor, N or N m; any at first.
    void setMaxForce(HyReal force) { mMaxForce = force; }
    [[nodiscard]] HyReal getMaxForce() const { return mMaxForce; }
    /// Locks the coordinate where it is at values below the increment.
    void setAutoLock(bool on) { mAutoLock = on; }
    [[nodiscard]] bool getAutoLock() const { return mAutoLock; }

protected:
    void resynchronise(int event) override;
    void drive() override;

private:
    HyReal mMaxForce = HyConstraint::sDefaultStiffness;
    bool mAutoLock = false;
};

/// Its value is the force of a motor, without bounds.
class HY_API HyMotorForceController
    : public HyClass<kHyMotorForceControllerClassId, HyConstraintController> {
public:
    [[nodiscard]] const char* getClassName() const override { return "HyMotorForceController"; }
    /// @param minVelocity,maxVelocity towards which a negative and a positive force drive
    void init(HyConstraint* constraint, HyReal valInc, HyReal minVelocity, HyReal maxVelocity,
              int coordinate) override;
    /// Locks the coordinate where it is at no force, instead of letting it go.
    void setAutoLock(bool on) { mAutoLock = on; }
    [[nodiscard]] bool getAutoLock() const { return mAutoLock; }

protected:
    void drive() override;

private:
    HyReal mMinVelocity = 0, mMaxVelocity = 0;
    bool mAutoLock = false;
};

/// Its value is the velocity of one stop.
class HY_API HyLimitMotorController
    : public HyClass<kHyLimitMotorControllerClassId, HyConstraintController> {
public:
    [[nodiscard]] const char* getClassName() const override { return "HyLimitMotorController"; }
    void setLimit(HyConstraint::LimitEnum limit) { mLimit = limit; }
    [[nodiscard]] HyConstraint::LimitEnum getLimit() const { return mLimit; }

protected:
    void drive() override;

private:
    HyConstraint::LimitEnum mLimit = HyConstraint::kLimitLower;
};

} // namespace Hy
