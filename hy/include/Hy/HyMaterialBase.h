#pragma once
#include <Hy/HyBase.h>
#include <Hy/HyTypes.h>

#include <Dync/DyncContactMaterial.h>

namespace Hy {

/// What a surface, or a pair of surfaces, does in a contact: restitution, softness, friction.
///
/// Friction has five axes, two linear ones in the plane of contact and three angular ones, each with
/// a model and numbers of its own. A setter for kFrictionAxisLinear acts on both linear axes; one for
/// an axis out of range does nothing. A number that is not finite, or negative where only its amount
/// counts, gets a warning, and the old one stays; any finite number is legal, DBL_MAX too.
class HY_API HyMaterialBase : public HyClass<kHyMaterialBaseClassId, HyBase> {
public:
    using FrictionAxis = DyncContactMaterial::FrictionAxis;
    using FrictionModel = DyncContactMaterial::FrictionModel;
    using enum DyncContactMaterial::FrictionAxis;
    using enum DyncContactMaterial::FrictionModel;

    [[nodiscard]] const char* getClassName() const override { return "HyMaterialBase"; }
    /// Is called after each change of the values.
    virtual void updateValue() {}
    /// Brings all values to those of a new material, and the user data to null.
    virtual void reset();
    /// Writes the values in readable form.
    /// @param filename see DumpFileHelper; null for standard error
    virtual void dump(const char* filename) const;

    // Normal direction.

    /// Speed of separation over speed of approach, not negative.
    void setRestitution(HyReal restitution);
    [[nodiscard]] HyReal getRestitution() const { return mValue.restitution; }
    /// Speed of approach in m/s at or below which nothing bounces.
    void setVelThreshold(HyReal speed);
    [[nodiscard]] HyReal getVelThreshold() const { return mValue.velThreshold; }
    /// Inverse of the stiffness, m/N; 0 is rigid.
    void setCompliance(HyReal compliance);
    [[nodiscard]] HyReal getCompliance() const { return mValue.compliance; }
    /// N s/m
    void setDamping(HyReal damping);
    [[nodiscard]] HyReal getDamping() const { return mValue.damping; }
    /// Force by which the surfaces hold on to each other, N.
    void setMaxAdhesiveForce(HyReal force);
    [[nodiscard]] HyReal getMaxAdhesiveForce() const { return mValue.max_adhesive_force; }

    // Friction. A getter answers the primary axis for kFrictionAxisLinear, and for an axis out of
    // range what a new material has.

    void setFrictionModel(FrictionAxis axis, FrictionModel model);
    [[nodiscard]] FrictionModel getFrictionModel(FrictionAxis axis) const;
    /// Bound of the box models: N, N m on the angular axes, m/s² or rad/s² in the proportional ones.
    void setBoxFrictionForce(FrictionAxis axis, HyReal force);
    [[nodiscard]] HyReal getBoxFrictionForce(FrictionAxis axis) const;
    /// Bound of the scaled models over the normal force: a number, m on the angular axes.
    void setFrictionCoefficient(FrictionAxis axis, HyReal coefficient);
    [[nodiscard]] HyReal getFrictionCoefficient(FrictionAxis axis) const;
    /// Speed of slip that a force causes, m/(N s).
    void setSlip(FrictionAxis axis, HyReal slip);
    [[nodiscard]] HyReal getSlip(FrictionAxis axis) const;
    /// Speed of the surface as of a conveyor, m/s; of either sign.
    void setSlide(FrictionAxis axis, HyReal speed);
    [[nodiscard]] HyReal getSlide(FrictionAxis axis) const;
    /// Bound while sticking over bound while sliding.
    void setStaticFrictionScale(FrictionAxis axis, HyReal scale);
    [[nodiscard]] HyReal getStaticFrictionScale(FrictionAxis axis) const;

    /// All numbers as a contact takes them.
    [[nodiscard]] const DyncContactMaterial& getValue() const { return mValue; }

    /// A pointer that the material stores and never touches.
    void setUserData(void* data) { mUserData = data; }
    [[nodiscard]] void* getUserData() const { return mUserData; }

protected:
    DyncContactMaterial mValue;

private:
    void* mUserData = nullptr;
};

} // namespace Hy
