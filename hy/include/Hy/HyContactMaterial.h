#pragma once
#include <Hy/HyMaterialBase.h>
#include <Hy/HyRollingResistanceCoeffParams.h>

namespace Hy {
class HyMaterial;
class HyTireModelParams;

/// What a pair of surfaces does in a contact.
///
/// Made from two materials it follows them, merged by the rule of HyMaterialTable, until it is
/// locked: by setLocked(), or by its first direct edit. Rolling resistance and tire model belong to
/// the pair alone, and no merge touches them.
class HY_API HyContactMaterial : public HyClass<kHyContactMaterialClassId, HyMaterialBase> {
public:
    /// Of no materials, with the values of a new one.
    HyContactMaterial() = default;
    /// Merges two materials at once and follows them. Both may be one; with a null it follows none.
    /// @param material1,material2 not owned; may be destroyed first
    HyContactMaterial(HyMaterial* material1, HyMaterial* material2);
    ~HyContactMaterial() override;
    /// Takes over all values, rolling resistance, and a copy of the tire model, which locks it; name,
    /// materials and user data stay.
    HyContactMaterial& operator=(const HyContactMaterial& other);
    /// Takes over all values and rolling resistance; locks nothing, and leaves the tire model.
    void copyAllInternal(const HyContactMaterial& other);
    [[nodiscard]] const char* getClassName() const override { return "HyContactMaterial"; }
    /// Locks, while automatic locking is on.
    void updateValue() override;
    void reset() override;
    void dump(const char* filename) const override;

    // Following.

    /// Merges the two materials anew and takes the name "first+second". Nothing without both, nor if
    /// it is locked and not forced; it does not lock.
    void update(bool force);
    /// true keeps the values as they are; false, if they were locked, merges the materials at once
    /// and follows them again.
    void setLocked(bool locked);
    [[nodiscard]] bool isLocked() const { return mIsLocked; }
    /// Whether a direct edit locks; on at the start.
    void setAutomaticLocking(bool on) { mAutomaticLocking = on; }
    [[nodiscard]] bool getAutomaticLocking() const { return mAutomaticLocking; }
    /// Null for none, or one that is gone.
    [[nodiscard]] HyMaterial* getSourceMaterial1() const { return mSourceMaterial1; }
    [[nodiscard]] HyMaterial* getSourceMaterial2() const { return mSourceMaterial2; }

    /// Whether the slip of a sticking contact is summed up and taken back.
    void setIntegratedSlipDisplacementActivated(bool on);
    [[nodiscard]] bool getIntegratedSlipDisplacementActivated() const {
        return mValue.mIntegratedSlipDisplacementActivated;
    }

    // Rolling resistance, see HyRollingResistanceCoeffParams. Not finite, or negative where its
    // docstring says so: a warning, and the old value stays.

    void setRollingResistanceCoeffType(RollingResistanceCoeffType type);
    [[nodiscard]] RollingResistanceCoeffType getRollingResistanceCoeffType() const;
    /// Not negative.
    void setRollingResistanceBaseCoeff(HyReal coefficient);
    [[nodiscard]] HyReal getRollingResistanceBaseCoeff() const;
    void setRollingResistanceSpeedFactor(HyReal factor);
    [[nodiscard]] HyReal getRollingResistanceSpeedFactor() const;
    /// Points of the coefficient over the speed in m/s, see HyTable1D::set().
    void setRollingResistanceCoeffTable(int n, const HyReal* x, const HyReal* y);
    [[nodiscard]] const HyTable1D& getRollingResistanceCoeffTable() const;
    void setRollingResistanceSpeedFactorPressureModel(HyReal factor);
    [[nodiscard]] HyReal getRollingResistanceSpeedFactorPressureModel() const;
    void setRollingResistancePressureExponent(HyReal exponent);
    [[nodiscard]] HyReal getRollingResistancePressureExponent() const;
    void setRollingResistanceNormalForceExponent(HyReal exponent);
    [[nodiscard]] HyReal getRollingResistanceNormalForceExponent() const;
    /// Pa, not negative.
    void setRollingResistanceNominalPressure(HyReal pressure);
    [[nodiscard]] HyReal getRollingResistanceNominalPressure() const;
    [[nodiscard]] const HyRollingResistanceCoeffParams& getRollingResistanceCoeffParams() const {
        return mRollingResistanceCoeffParams;
    }
    /// See HyRollingResistanceCoeffParams::getCoefficient().
    [[nodiscard]] HyReal getRollingResistanceCoefficient(HyReal speed) const;
    [[nodiscard]] HyReal getRollingResistanceCoefficient(HyReal speed, HyReal pressure,
                                                         HyReal normalForce) const;

    /// Keeps a copy of the parameters; null removes the present one. The present one itself: nothing.
    void setTireModelParams(const HyTireModelParams* params);
    /// Owned by the contact material; null for none.
    [[nodiscard]] const HyTireModelParams* getTireModelParams() const { return mTireModelParams; }
    [[nodiscard]] HyTireModelParams* getTireModelParams() { return mTireModelParams; }

private:
    friend class HyContactProperties;
    friend class HyMaterial;
    friend class HyMaterialTable;

    void setRollingResistance(HyReal HyRollingResistanceCoeffParams::*field, HyReal value,
                              bool mayBeNegative, const char* operation);
    void replaceTireModel(const HyTireModelParams* params);
    void forget(const HyMaterial* material);

    bool mIsLocked = false;
    bool mAutomaticLocking = true;
    HyMaterial* mSourceMaterial1 = nullptr; ///< forgotten when it is destroyed
    HyMaterial* mSourceMaterial2 = nullptr;
    HyRollingResistanceCoeffParams mRollingResistanceCoeffParams;
    HyTireModelParams* mTireModelParams = nullptr; ///< owned
};

} // namespace Hy
