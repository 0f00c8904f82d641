#pragma once
#include <Hy/HyContactMaterial.h>
#include <Hy/HyPointer.h>

#include <memory>

namespace Hy {

/// The older form of a contact material: two linear friction axes, and friction by type.
///
/// A view on numbers that lie elsewhere, and which it changes as HyMaterialBase does, or a holder of
/// numbers of its own. Once its contact material is gone, a setter warns and a getter answers what a
/// new material has.
class HY_API HyContactProperties {
public:
    enum FrictionModel : int {
        kFrictionModelBox = 0,
        kFrictionModelScaledBox = 1,
        kFrictionModelUnknown = 6, ///< set: no friction; got: none, or a model that this form lacks
    };
    enum FrictionType : int {
        kFrictionTypeNone = 0,
        kFrictionTypeOneDirection = 1, ///< along the primary axis
        kFrictionTypeTwoDirection = 2,
        kFrictionTypeUnknown = 3,
    };

    /// With numbers of its own, as of a new material.
    HyContactProperties();
    /// A view on a contact material, which a setter locks. Not owned; null: numbers of its own.
    explicit HyContactProperties(HyContactMaterial* material);
    /// A view on the numbers of a contact, which outlive it. Not owned; null: numbers of its own.
    explicit HyContactProperties(DyncContactMaterial* values);
    HyContactProperties(const HyContactProperties&) = delete;
    HyContactProperties& operator=(const HyContactProperties&) = delete;
    ~HyContactProperties();

    /// The numbers that it works on; null once its contact material is gone.
    [[nodiscard]] DyncContactMaterial* getProxyContact() const;
    /// The contact material that it is a view on; null if there is none.
    [[nodiscard]] HyContactMaterial* getContactMaterial() const { return mContactMaterial; }

    void setRestitution(HyReal restitution);
    [[nodiscard]] HyReal getRestitution() const;
    void setVelThreshold(HyReal speed);
    [[nodiscard]] HyReal getVelThreshold() const;
    void setCompliance(HyReal compliance);
    [[nodiscard]] HyReal getCompliance() const;
    void setDamping(HyReal damping);
    [[nodiscard]] HyReal getDamping() const;
    void setMaxAdhesiveForce(HyReal force);
    [[nodiscard]] HyReal getMaxAdhesiveForce() const;

    // Of the primary linear axis, of the secondary one, and of both.

    void setPrimaryFrictionModel(FrictionModel model);
    void setSecondaryFrictionModel(FrictionModel model);
    void setFrictionModel(FrictionModel model);
    [[nodiscard]] FrictionModel getPrimaryFrictionModel() const;
    [[nodiscard]] FrictionModel getSecondaryFrictionModel() const;
    void setPrimaryBoxFrictionForce(HyReal force);
    void setSecondaryBoxFrictionForce(HyReal force);
    void setBoxFrictionForce(HyReal force);
    [[nodiscard]] HyReal getPrimaryBoxFrictionForce() const;
    [[nodiscard]] HyReal getSecondaryBoxFrictionForce() const;
    void setPrimaryFrictionCoefficient(HyReal coefficient);
    void setSecondaryFrictionCoefficient(HyReal coefficient);
    void setFrictionCoefficient(HyReal coefficient);
    [[nodiscard]] HyReal getPrimaryFrictionCoefficient() const;
    [[nodiscard]] HyReal getSecondaryFrictionCoefficient() const;
    void setPrimarySlip(HyReal slip);
    void setSecondarySlip(HyReal slip);
    void setSlip(HyReal slip);
    [[nodiscard]] HyReal getPrimarySlip() const;
    [[nodiscard]] HyReal getSecondarySlip() const;
    void setPrimarySlide(HyReal speed);
    void setSecondarySlide(HyReal speed);
    void setSlide(HyReal speed);
    [[nodiscard]] HyReal getPrimarySlide() const;
    [[nodiscard]] HyReal getSecondarySlide() const;
    /// Of both linear axes.
    void setStaticFrictionScale(HyReal scale);
    /// Of the primary axis.
    [[nodiscard]] HyReal getStaticFrictionScale() const;

    /// Gives the linear axes that the type names the box model where they had none, and the others,
    /// the angular ones too, none. Unknown: a warning, nothing changes.
    void setFrictionType(FrictionType type);
    /// By which linear axes have a model. The secondary one alone is one direction, with a warning.
    [[nodiscard]] FrictionType getFrictionType() const;

    /// As HyContactMaterial::setTireModelParams(); without a contact material a warning.
    void setTireModelParams(const HyTireModelParams* params);
    /// Null without a contact material.
    [[nodiscard]] const HyTireModelParams* getTireModelParams() const;

private:
    using Values = DyncContactMaterial;
    using AxisValues = HyReal (Values::*)[Values::kFrictionAxisCount];

    [[nodiscard]] const Values& values() const;
    template <typename Change>
    void change(const char* operation, Change apply);
    void setAxis(AxisValues field, Values::FrictionAxis axis, HyReal value, const char* operation);
    void setModel(Values::FrictionAxis axis, FrictionModel model, const char* operation);

    std::unique_ptr<DyncContactMaterial> mOwnProxy;
    DyncContactMaterial* mProxyContact = nullptr; ///< null in a view on a contact material
    HyPointer<HyContactMaterial> mContactMaterial;
};

} // namespace Hy
