#include <Hy/HyContactMaterial.h>

#include "HyMaterialValues.h"

#include <Hy/DumpFileHelper.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyMaterialTable.h>
#include <Hy/HyMessage.h>
#include <Hy/HyTireModelParams.h>

#include <utility>

namespace Hy {

HyContactMaterial::HyContactMaterial(HyMaterial* material1, HyMaterial* material2)
    : mSourceMaterial1(material1), mSourceMaterial2(material2) {
    if (material1)
        material1->mDependencies.push_back(this);
    if (material2 && material2 != material1)
        material2->mDependencies.push_back(this);
    update(false);
}

HyContactMaterial::~HyContactMaterial() {
    if (mSourceMaterial1)
        mSourceMaterial1->mDependencies.eraseOnce(this);
    if (mSourceMaterial2 && mSourceMaterial2 != mSourceMaterial1)
        mSourceMaterial2->mDependencies.eraseOnce(this);
    delete mTireModelParams;
}

void HyContactMaterial::forget(const HyMaterial* material) {
    if (mSourceMaterial1 == material)
        mSourceMaterial1 = nullptr;
    if (mSourceMaterial2 == material)
        mSourceMaterial2 = nullptr;
}

HyContactMaterial& HyContactMaterial::operator=(const HyContactMaterial& other) {
    copyAllInternal(other);
    replaceTireModel(other.mTireModelParams);
    updateValue();
    return *this;
}

void HyContactMaterial::copyAllInternal(const HyContactMaterial& other) {
    if (this == &other)
        return;
    mValue = other.mValue;
    mRollingResistanceCoeffParams = other.mRollingResistanceCoeffParams;
}

void HyContactMaterial::updateValue() {
    if (mAutomaticLocking)
        mIsLocked = true;
}

void HyContactMaterial::reset() {
    mRollingResistanceCoeffParams = {};
    replaceTireModel(nullptr);
    HyMaterialBase::reset();
}

void HyContactMaterial::dump(const char* filename) const {
    const DumpFileHelper helper(filename);
    std::FILE* const file = helper.getFilePtr();
    HyMaterialBase::dump(filename);
    std::fprintf(file, "This material is : %s\n", mIsLocked ? "Locked" : "Not Locked");
    std::fprintf(file, "This material is : %s\n",
                 mAutomaticLocking ? "Automat Locking" : "Not Automat Locking");
    std::fprintf(file, "Integrated Slip Displacement : %s\n",
                 getIntegratedSlipDisplacementActivated() ? "Activated" : "Not Activated");
    std::fputs(mTireModelParams ? "This material has a tire model\n"
                                : "This material doesn't have a tire model\n",
               file);
}

// Following.

void HyContactMaterial::update(bool force) {
    if (!mSourceMaterial1 || !mSourceMaterial2 || (mIsLocked && !force))
        return;
    const bool automaticLocking = std::exchange(mAutomaticLocking, false);
    setHyName(mSourceMaterial1->getName() + "+" + mSourceMaterial2->getName());
    HyMaterialTable::updateContactMaterial(mSourceMaterial1, mSourceMaterial2, this);
    mAutomaticLocking = automaticLocking;
}

void HyContactMaterial::setLocked(bool locked) {
    if (locked == mIsLocked)
        return;
    mIsLocked = locked;
    update(false);
}

void HyContactMaterial::setIntegratedSlipDisplacementActivated(bool on) {
    mValue.mIntegratedSlipDisplacementActivated = on;
    updateValue();
}

// Rolling resistance.

void HyContactMaterial::setRollingResistanceCoeffType(RollingResistanceCoeffType type) {
    if (type < kFirstOrderFormula || type > kPressureModel) {
        HyWarning(0, "HyContactMaterial::setRollingResistanceCoeffType: the type must be one of "
                     "RollingResistanceCoeffType.\n");
        return;
    }
    mRollingResistanceCoeffParams.mType = type;
    updateValue();
}

RollingResistanceCoeffType HyContactMaterial::getRollingResistanceCoeffType() const {
    return mRollingResistanceCoeffParams.mType;
}

void HyContactMaterial::setRollingResistance(HyReal HyRollingResistanceCoeffParams::*field,
                                             HyReal value, bool mayBeNegative,
                                             const char* operation) {
    const auto range = mayBeNegative ? HyMaterialRange::kFinite : HyMaterialRange::kNotNegative;
    if (!HyIsMaterialNumber(value, range, operation))
        return;
    mRollingResistanceCoeffParams.*field = value;
    updateValue();
}

void HyContactMaterial::setRollingResistanceBaseCoeff(HyReal coefficient) {
    setRollingResistance(&HyRollingResistanceCoeffParams::mBaseCoeff, coefficient, false,
                         "HyContactMaterial::setRollingResistanceBaseCoeff");
}

HyReal HyContactMaterial::getRollingResistanceBaseCoeff() const {
    return mRollingResistanceCoeffParams.mBaseCoeff;
}

void HyContactMaterial::setRollingResistanceSpeedFactor(HyReal factor) {
    setRollingResistance(&HyRollingResistanceCoeffParams::mSpeedFactor, factor, true,
                         "HyContactMaterial::setRollingResistanceSpeedFactor");
}

HyReal HyContactMaterial::getRollingResistanceSpeedFactor() const {
    return mRollingResistanceCoeffParams.mSpeedFactor;
}

void HyContactMaterial::setRollingResistanceCoeffTable(int n, const HyReal* x, const HyReal* y) {
    if (mRollingResistanceCoeffParams.mTable.set(n, x, y))
        updateValue();
}

const HyTable1D& HyContactMaterial::getRollingResistanceCoeffTable() const {
    return mRollingResistanceCoeffParams.mTable;
}

void HyContactMaterial::setRollingResistanceSpeedFactorPressureModel(HyReal factor) {
    setRollingResistance(&HyRollingResistanceCoeffParams::mSpeedFactorPressureModel, factor, true,
                         "HyContactMaterial::setRollingResistanceSpeedFactorPressureModel");
}

HyReal HyContactMaterial::getRollingResistanceSpeedFactorPressureModel() const {
    return mRollingResistanceCoeffParams.mSpeedFactorPressureModel;
}

void HyContactMaterial::setRollingResistancePressureExponent(HyReal exponent) {
    setRollingResistance(&HyRollingResistanceCoeffParams::mPressureExponent, exponent, true,
                         "HyContactMaterial::setRollingResistancePressureExponent");
}

HyReal HyContactMaterial::getRollingResistancePressureExponent() const {
    return mRollingResistanceCoeffParams.mPressureExponent;
}

void HyContactMaterial::setRollingResistanceNormalForceExponent(HyReal exponent) {
    setRollingResistance(&HyRollingResistanceCoeffParams::mNormalForceExponent, exponent, true,
                         "HyContactMaterial::setRollingResistanceNormalForceExponent");
}

HyReal HyContactMaterial::getRollingResistanceNormalForceExponent() const {
    return mRollingResistanceCoeffParams.mNormalForceExponent;
}

void HyContactMaterial::setRollingResistanceNominalPressure(HyReal pressure) {
    setRollingResistance(&HyRollingResistanceCoeffParams::mNominalPressure, pressure, false,
                         "HyContactMaterial::setRollingResistanceNominalPressure");
}

HyReal HyContactMaterial::getRollingResistanceNominalPressure() const {
    return mRollingResistanceCoeffParams.mNominalPressure;
}

HyReal HyContactMaterial::getRollingResistanceCoefficient(HyReal speed) const {
    return mRollingResistanceCoeffParams.getCoefficient(speed);
}

HyReal HyContactMaterial::getRollingResistanceCoefficient(HyReal speed, HyReal pressure,
                                                          HyReal normalForce) const {
    return mRollingResistanceCoeffParams.getCoefficient(speed, pressure, normalForce);
}

// Tire model.

void HyContactMaterial::replaceTireModel(const HyTireModelParams* params) {
    if (params == mTireModelParams)
        return;
    HyTireModelParams* const copy = params ? params->clone() : nullptr;
    delete std::exchange(mTireModelParams, copy);
}

void HyContactMaterial::setTireModelParams(const HyTireModelParams* params) {
    replaceTireModel(params);
    updateValue();
}

} // namespace Hy
