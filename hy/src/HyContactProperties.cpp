#include <Hy/HyContactProperties.h>

#include "HyMaterialValues.h"

#include <Hy/HyMessage.h>

namespace Hy {
namespace {

constexpr auto kPrimary = DyncContactMaterial::kFrictionAxisLinearPrimary;
constexpr auto kSecondary = DyncContactMaterial::kFrictionAxisLinearSecondary;
constexpr auto kLinear = DyncContactMaterial::kFrictionAxisLinear;

const DyncContactMaterial kNewMaterial;

HyContactProperties::FrictionModel modelOf(const DyncContactMaterial& values, int axis) {
    switch (values.model[axis]) {
    case DyncContactMaterial::kFrictionModelBox:
        return HyContactProperties::kFrictionModelBox;
    case DyncContactMaterial::kFrictionModelScaledBox:
        return HyContactProperties::kFrictionModelScaledBox;
    default:
        return HyContactProperties::kFrictionModelUnknown;
    }
}

/// Gives an axis friction of some model, or none.
void setHasFriction(DyncContactMaterial& values, int axis, bool on) {
    if (!on)
        values.model[axis] = DyncContactMaterial::kFrictionModelNone;
    else if (values.model[axis] == DyncContactMaterial::kFrictionModelNone)
        values.model[axis] = DyncContactMaterial::kFrictionModelBox;
}

} // namespace

HyContactProperties::HyContactProperties()
    : mOwnProxy(std::make_unique<DyncContactMaterial>()), mProxyContact(mOwnProxy.get()) {}

HyContactProperties::HyContactProperties(HyContactMaterial* material)
    : mOwnProxy(material ? nullptr : new DyncContactMaterial), mProxyContact(mOwnProxy.get()),
      mContactMaterial(material) {}

HyContactProperties::HyContactProperties(DyncContactMaterial* values)
    : mOwnProxy(values ? nullptr : new DyncContactMaterial),
      mProxyContact(values ? values : mOwnProxy.get()) {}

HyContactProperties::~HyContactProperties() = default;

DyncContactMaterial* HyContactProperties::getProxyContact() const {
    return mContactMaterial.valid() ? &mContactMaterial->mValue : mProxyContact;
}

const DyncContactMaterial& HyContactProperties::values() const {
    const DyncContactMaterial* const present = getProxyContact();
    return present ? *present : kNewMaterial;
}

template <typename Change>
void HyContactProperties::change(const char* operation, Change apply) {
    DyncContactMaterial* const present = getProxyContact();
    if (!present) {
        HyWarning(0, "%s: the contact material must exist.\n", operation);
        return;
    }
    if (apply(*present) && mContactMaterial.valid())
        mContactMaterial->updateValue();
}

void HyContactProperties::setAxis(AxisValues field, Values::FrictionAxis axis, HyReal value,
                                  const char* operation) {
    const auto range =
        field == &Values::slide ? HyMaterialRange::kFinite : HyMaterialRange::kNotNegative;
    change(operation, [&](Values& numbers) {
        return HySetMaterialAxis(numbers.*field, axis, value, range, operation);
    });
}

void HyContactProperties::setModel(Values::FrictionAxis axis, FrictionModel model,
                                   const char* operation) {
    change(operation,
           [&](Values& numbers) { return HySetMaterialModel(numbers, axis, model, operation); });
}

// Normal direction.

void HyContactProperties::setRestitution(HyReal restitution) {
    constexpr const char* kOperation = "HyContactProperties::setRestitution";
    change(kOperation, [=](Values& numbers) {
        return HySetMaterialNumber(numbers.restitution, restitution, kOperation);
    });
}

HyReal HyContactProperties::getRestitution() const {
    return values().restitution;
}

void HyContactProperties::setVelThreshold(HyReal speed) {
    constexpr const char* kOperation = "HyContactProperties::setVelThreshold";
    change(kOperation, [=](Values& numbers) {
        return HySetMaterialNumber(numbers.velThreshold, speed, kOperation);
    });
}

HyReal HyContactProperties::getVelThreshold() const {
    return values().velThreshold;
}

void HyContactProperties::setCompliance(HyReal compliance) {
    constexpr const char* kOperation = "HyContactProperties::setCompliance";
    change(kOperation, [=](Values& numbers) {
        return HySetMaterialCompliance(numbers, compliance, numbers.damping, kOperation);
    });
}

HyReal HyContactProperties::getCompliance() const {
    return values().compliance;
}

void HyContactProperties::setDamping(HyReal damping) {
    constexpr const char* kOperation = "HyContactProperties::setDamping";
    change(kOperation, [=](Values& numbers) {
        return HySetMaterialCompliance(numbers, numbers.compliance, damping, kOperation);
    });
}

HyReal HyContactProperties::getDamping() const {
    return values().damping;
}

void HyContactProperties::setMaxAdhesiveForce(HyReal force) {
    constexpr const char* kOperation = "HyContactProperties::setMaxAdhesiveForce";
    change(kOperation, [=](Values& numbers) {
        return HySetMaterialNumber(numbers.max_adhesive_force, force, kOperation);
    });
}

HyReal HyContactProperties::getMaxAdhesiveForce() const {
    return values().max_adhesive_force;
}

// Friction.

void HyContactProperties::setPrimaryFrictionModel(FrictionModel model) {
    setModel(kPrimary, model, "HyContactProperties::setPrimaryFrictionModel");
}

void HyContactProperties::setSecondaryFrictionModel(FrictionModel model) {
    setModel(kSecondary, model, "HyContactProperties::setSecondaryFrictionModel");
}

void HyContactProperties::setFrictionModel(FrictionModel model) {
    setModel(kLinear, model, "HyContactProperties::setFrictionModel");
}

HyContactProperties::FrictionModel HyContactProperties::getPrimaryFrictionModel() const {
    return modelOf(values(), kPrimary);
}

HyContactProperties::FrictionModel HyContactProperties::getSecondaryFrictionModel() const {
    return modelOf(values(), kSecondary);
}

void HyContactProperties::setPrimaryBoxFrictionForce(HyReal force) {
    setAxis(&Values::boxMaxForce, kPrimary, force,
            "HyContactProperties::setPrimaryBoxFrictionForce");
}

void HyContactProperties::setSecondaryBoxFrictionForce(HyReal force) {
    setAxis(&Values::boxMaxForce, kSecondary, force,
            "HyContactProperties::setSecondaryBoxFrictionForce");
}

void HyContactProperties::setBoxFrictionForce(HyReal force) {
    setAxis(&Values::boxMaxForce, kLinear, force, "HyContactProperties::setBoxFrictionForce");
}

HyReal HyContactProperties::getPrimaryBoxFrictionForce() const {
    return values().boxMaxForce[kPrimary];
}

HyReal HyContactProperties::getSecondaryBoxFrictionForce() const {
    return values().boxMaxForce[kSecondary];
}

void HyContactProperties::setPrimaryFrictionCoefficient(HyReal coefficient) {
    setAxis(&Values::sbCoefficient, kPrimary, coefficient,
            "HyContactProperties::setPrimaryFrictionCoefficient");
}

void HyContactProperties::setSecondaryFrictionCoefficient(HyReal coefficient) {
    setAxis(&Values::sbCoefficient, kSecondary, coefficient,
            "HyContactProperties::setSecondaryFrictionCoefficient");
}

void HyContactProperties::setFrictionCoefficient(HyReal coefficient) {
    setAxis(&Values::sbCoefficient, kLinear, coefficient,
            "HyContactProperties::setFrictionCoefficient");
}

HyReal HyContactProperties::getPrimaryFrictionCoefficient() const {
    return values().sbCoefficient[kPrimary];
}

HyReal HyContactProperties::getSecondaryFrictionCoefficient() const {
    return values().sbCoefficient[kSecondary];
}

void HyContactProperties::setPrimarySlip(HyReal slip) {
    setAxis(&Values::slip, kPrimary, slip, "HyContactProperties::setPrimarySlip");
}

void HyContactProperties::setSecondarySlip(HyReal slip) {
    setAxis(&Values::slip, kSecondary, slip, "HyContactProperties::setSecondarySlip");
}

void HyContactProperties::setSlip(HyReal slip) {
    setAxis(&Values::slip, kLinear, slip, "HyContactProperties::setSlip");
}

HyReal HyContactProperties::getPrimarySlip() const {
    return values().slip[kPrimary];
}

HyReal HyContactProperties::getSecondarySlip() const {
    return values().slip[kSecondary];
}

void HyContactProperties::setPrimarySlide(HyReal speed) {
    setAxis(&Values::slide, kPrimary, speed, "HyContactProperties::setPrimarySlide");
}

void HyContactProperties::setSecondarySlide(HyReal speed) {
    setAxis(&Values::slide, kSecondary, speed, "HyContactProperties::setSecondarySlide");
}

void HyContactProperties::setSlide(HyReal speed) {
    setAxis(&Values::slide, kLinear, speed, "HyContactProperties::setSlide");
}

HyReal HyContactProperties::getPrimarySlide() const {
    return values().slide[kPrimary];
}

HyReal HyContactProperties::getSecondarySlide() const {
    return values().slide[kSecondary];
}

void HyContactProperties::setStaticFrictionScale(HyReal scale) {
    setAxis(&Values::staticFrictionScale, kLinear, scale,
            "HyContactProperties::setStaticFrictionScale");
}

HyReal HyContactProperties::getStaticFrictionScale() const {
    return values().staticFrictionScale[kPrimary];
}

// Friction by type.

void HyContactProperties::setFrictionType(FrictionType type) {
    if (type < kFrictionTypeNone || type > kFrictionTypeTwoDirection) {
        HyWarning(0, "HyContactProperties::setFrictionType: the type must be none, one or two "
                     "directions.\n");
        return;
    }
    change("HyContactProperties::setFrictionType", [type](Values& numbers) {
        setHasFriction(numbers, kPrimary, type != kFrictionTypeNone);
        setHasFriction(numbers, kSecondary, type == kFrictionTypeTwoDirection);
        for (int axis = Values::kFrictionAxisAngularNormal; axis < Values::kFrictionAxisCount;
             ++axis)
            setHasFriction(numbers, axis, false);
        return true;
    });
}

HyContactProperties::FrictionType HyContactProperties::getFrictionType() const {
    const bool primary = values().model[kPrimary] != Values::kFrictionModelNone;
    const bool secondary = values().model[kSecondary] != Values::kFrictionModelNone;
    if (!primary && !secondary)
        return kFrictionTypeNone;
    if (primary && secondary)
        return kFrictionTypeTwoDirection;
    if (secondary)
        HyWarning(0, "HyContactProperties::getFrictionType: The one direction is along the "
                     "secondary axis\n");
    return kFrictionTypeOneDirection;
}

// Tire model.

void HyContactProperties::setTireModelParams(const HyTireModelParams* params) {
    if (mContactMaterial.valid())
        mContactMaterial->setTireModelParams(params);
    else
        HyWarning(0,
                  "HyContactProperties::setTireModelParams: there must be a contact material.\n");
}

const HyTireModelParams* HyContactProperties::getTireModelParams() const {
    return mContactMaterial.valid() ? mContactMaterial->mTireModelParams : nullptr;
}

} // namespace Hy
