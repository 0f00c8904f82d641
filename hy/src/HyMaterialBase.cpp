#include <Hy/HyMaterialBase.h>

#include "HyMaterialValues.h"

#include <Hy/DumpFileHelper.h>

namespace Hy {
namespace {

const DyncContactMaterial kNewMaterial;

/// The value of an axis; of the primary one for both linear axes, and of a new material for none.
template <class T>
T valueOfAxis(const T (DyncContactMaterial::*field)[DyncContactMaterial::kFrictionAxisCount],
              const DyncContactMaterial& values, int axis) {
    if (axis == DyncContactMaterial::kFrictionAxisLinear)
        return (values.*field)[0];
    if (axis < 0 || axis >= DyncContactMaterial::kFrictionAxisCount)
        return (kNewMaterial.*field)[0];
    return (values.*field)[axis];
}

void dumpModel(std::FILE* file, const DyncContactMaterial& values, int axis) {
    switch (values.model[axis]) {
    case DyncContactMaterial::kFrictionModelBox:
        std::fprintf(file, "Friction Model Box\n   max force            %16.6g\n",
                     values.boxMaxForce[axis]);
        break;
    case DyncContactMaterial::kFrictionModelScaledBox:
        std::fprintf(file, "Friction Model Scaled Box\n   coefficient           %16.6g\n",
                     values.sbCoefficient[axis]);
        break;
    case DyncContactMaterial::kFrictionModelBoxProportionalLow:
        std::fprintf(file, "Friction Model Box proportional Low\n   max accel            %16.6g\n",
                     values.boxMaxForce[axis]);
        break;
    case DyncContactMaterial::kFrictionModelBoxProportionalHigh:
        std::fprintf(file, "Friction Model Box proportional High\n   max accel            %16.6g\n",
                     values.boxMaxForce[axis]);
        break;
    case DyncContactMaterial::kFrictionModelScaledBoxFast:
        std::fprintf(file, "Friction Model Scaled Box Fast\n   coefficient           %16.6g\n",
                     values.sbCoefficient[axis]);
        break;
    case DyncContactMaterial::kFrictionModelNeutral:
    case DyncContactMaterial::kFrictionModelNone:
        break;
    }
}

void dumpAxis(std::FILE* file, const DyncContactMaterial& values, int axis) {
    static constexpr const char* kNames[DyncContactMaterial::kFrictionAxisCount] = {
        "kFrictionAxisLinearPrimary", "kFrictionAxisLinearSecondary", "kFrictionAxisAngularNormal",
        "kFrictionAxisAngularPrimary", "kFrictionAxisAngularSecondary"};
    if (values.model[axis] == DyncContactMaterial::kFrictionModelNone ||
        values.model[axis] == DyncContactMaterial::kFrictionModelNeutral)
        return;
    std::fprintf(file, "Axis %s: ", kNames[axis]);
    dumpModel(file, values, axis);
    std::fprintf(file,
                 "   slip                   %16.6g\n"
                 "   slide                  %16.6g\n"
                 "   static friction scale  %16.6g\n",
                 values.slip[axis], values.slide[axis], values.staticFrictionScale[axis]);
}

} // namespace

void HyMaterialBase::reset() {
    mValue = {};
    mUserData = nullptr;
    updateValue();
}

void HyMaterialBase::dump(const char* filename) const {
    const DumpFileHelper helper(filename);
    std::FILE* const file = helper.getFilePtr();
    for (int axis = 0; axis < kFrictionAxisCount; ++axis)
        dumpAxis(file, mValue, axis);
    std::fprintf(file,
                 "restitution               %16.6g\n"
                 "velThreshold              %16.6g\n"
                 "compliance                %16.6g\n"
                 "damping                   %16.6g\n"
                 "max_adhesive_force        %16.6g\n"
                 "options                   %16d\n",
                 mValue.restitution, mValue.velThreshold, mValue.compliance, mValue.damping,
                 mValue.max_adhesive_force, mValue.options);
}

// Normal direction.

void HyMaterialBase::setRestitution(HyReal restitution) {
    if (HySetMaterialNumber(mValue.restitution, restitution, "HyMaterialBase::setRestitution"))
        updateValue();
}

void HyMaterialBase::setVelThreshold(HyReal speed) {
    if (HySetMaterialNumber(mValue.velThreshold, speed, "HyMaterialBase::setVelThreshold"))
        updateValue();
}

void HyMaterialBase::setCompliance(HyReal compliance) {
    if (HySetMaterialCompliance(mValue, compliance, mValue.damping,
                                "HyMaterialBase::setCompliance"))
        updateValue();
}

void HyMaterialBase::setDamping(HyReal damping) {
    if (HySetMaterialCompliance(mValue, mValue.compliance, damping, "HyMaterialBase::setDamping"))
        updateValue();
}

void HyMaterialBase::setMaxAdhesiveForce(HyReal force) {
    if (HySetMaterialNumber(mValue.max_adhesive_force, force,
                            "HyMaterialBase::setMaxAdhesiveForce"))
        updateValue();
}

// Friction.

void HyMaterialBase::setFrictionModel(FrictionAxis axis, FrictionModel model) {
    if (HySetMaterialModel(mValue, axis, model, "HyMaterialBase::setFrictionModel"))
        updateValue();
}

HyMaterialBase::FrictionModel HyMaterialBase::getFrictionModel(FrictionAxis axis) const {
    return valueOfAxis(&DyncContactMaterial::model, mValue, axis);
}

void HyMaterialBase::setBoxFrictionForce(FrictionAxis axis, HyReal force) {
    if (HySetMaterialAxis(mValue.boxMaxForce, axis, force, HyMaterialRange::kNotNegative,
                          "HyMaterialBase::setBoxFrictionForce"))
        updateValue();
}

HyReal HyMaterialBase::getBoxFrictionForce(FrictionAxis axis) const {
    return valueOfAxis(&DyncContactMaterial::boxMaxForce, mValue, axis);
}

void HyMaterialBase::setFrictionCoefficient(FrictionAxis axis, HyReal coefficient) {
    if (HySetMaterialAxis(mValue.sbCoefficient, axis, coefficient, HyMaterialRange::kNotNegative,
                          "HyMaterialBase::setFrictionCoefficient"))
        updateValue();
}

HyReal HyMaterialBase::getFrictionCoefficient(FrictionAxis axis) const {
    return valueOfAxis(&DyncContactMaterial::sbCoefficient, mValue, axis);
}

void HyMaterialBase::setSlip(FrictionAxis axis, HyReal slip) {
    if (HySetMaterialAxis(mValue.slip, axis, slip, HyMaterialRange::kNotNegative,
                          "HyMaterialBase::setSlip"))
        updateValue();
}

HyReal HyMaterialBase::getSlip(FrictionAxis axis) const {
    return valueOfAxis(&DyncContactMaterial::slip, mValue, axis);
}

void HyMaterialBase::setSlide(FrictionAxis axis, HyReal speed) {
    if (HySetMaterialAxis(mValue.slide, axis, speed, HyMaterialRange::kFinite,
                          "HyMaterialBase::setSlide"))
        updateValue();
}

HyReal HyMaterialBase::getSlide(FrictionAxis axis) const {
    return valueOfAxis(&DyncContactMaterial::slide, mValue, axis);
}

void HyMaterialBase::setStaticFrictionScale(FrictionAxis axis, HyReal scale) {
    if (HySetMaterialAxis(mValue.staticFrictionScale, axis, scale, HyMaterialRange::kNotNegative,
                          "HyMaterialBase::setStaticFrictionScale"))
        updateValue();
}

HyReal HyMaterialBase::getStaticFrictionScale(FrictionAxis axis) const {
    return valueOfAxis(&DyncContactMaterial::staticFrictionScale, mValue, axis);
}

} // namespace Hy
