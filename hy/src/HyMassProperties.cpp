#include <Hy/HyMassProperties.h>
#include <Hy/HyPart.h>
#include <Kit/KitMessage.h>

#include "HyTensor.h"

#include <algorithm>
#include <cmath>

namespace Hy {

namespace {

constexpr int kJacobiSweeps = 10;
/// A mass below this share of another one is what rounding leaves of it.
constexpr HyReal kVanishingMass = 1e-12;
/// A lamina's largest moment is the sum of the others; turning the lamina errs by 1e-16 of that.
constexpr HyReal kMomentSlack = 1e-9;

bool refuse(bool valid, const char* operation, const char* demand) {
    if (!valid)
        KitWarning(0, "HyMassProperties::%s: %s.\n", operation, demand);
    return !valid;
}

} // namespace

HyReal HyMassProperties::sInertiaRatioLimit = 0.01;

HyMassProperties::HyMassProperties(const HyTransform* reference) : mRefTM(reference) {}

HyMassProperties::HyMassProperties(const HyPart* part)
    : mRefTM(part ? part->getTransformPtr() : nullptr) {}

bool HyMassProperties::getHasIdentityReferenceFrame() const {
    return !mRefTM;
}

const HyTransform& HyMassProperties::getReferenceFrame() const {
    return mRefTM ? *mRefTM : HyTransform::kIdentity;
}

// Combining

HyMassProperties& HyMassProperties::operator+=(const HyMassProperties& other) {
    _combineInWorld(other, false, "operator+=");
    return *this;
}

HyMassProperties& HyMassProperties::operator-=(const HyMassProperties& other) {
    if (&other == this)
        KitWarning(0, "HyMassProperties::operator-=: can't subtract self.\n");
    else
        _combineInWorld(other, true, "operator-=");
    return *this;
}

void HyMassProperties::addMassProperties(const HyMassProperties& other,
                                         const HyTransform& relativeTM) {
    _combineInertiaTensors(other, false, &relativeTM, "addMassProperties");
}

void HyMassProperties::subtractMassProperties(const HyMassProperties& other,
                                              const HyTransform& relativeTM) {
    if (&other == this)
        KitWarning(0, "HyMassProperties::subtractMassProperties: can't subtract self.\n");
    else
        _combineInertiaTensors(other, true, &relativeTM, "subtractMassProperties");
}

void HyMassProperties::_combineInWorld(const HyMassProperties& other, bool subtract,
                                       const char* operation) {
    if (other.mRefTM == mRefTM) {
        _combineInertiaTensors(other, subtract, nullptr, operation);
        return;
    }
    HyTransform relative = other.getReferenceFrame();
    if (mRefTM)
        relative.postCompoundWithInverse(*mRefTM);
    _combineInertiaTensors(other, subtract, &relative, operation);
}

// Masses m₁ at c₁ and m₂ at c₂ (negative for a subtraction), each with a tensor about its own centre.
// Moved to the common centre c = (m₁c₁ + m₂c₂)/M by the parallel-axis rule, with d = c₂ − c₁:
//   I = I₁ ± I₂ + m₁ S(c₁ − c) + m₂ S(c₂ − c) = I₁ ± I₂ + (m₁m₂/M) S(d),  S(r) = |r|²E − r rᵀ
void HyMassProperties::_combineInertiaTensors(const HyMassProperties& other, bool subtract,
                                              const HyTransform* relativeTM,
                                              const char* operation) {
    const HyReal m1 = mMass, m2 = subtract ? -other.mMass : other.mMass;
    const HyReal vanishing = kVanishingMass * std::max(std::abs(m1), std::abs(m2));
    if (std::abs(m2) <= vanishing ||
        refuse(!relativeTM || relativeTM->isFinite(), operation, "relativeTM must be finite"))
        return;
    const HyReal mass = m1 + m2;
    if (std::abs(mass) <= vanishing) {
        copy(HyMassProperties());
        return;
    }
    if (refuse(mass > 0, operation, "the mass must not become negative") ||
        refuse(std::isfinite(mass), operation, "the mass must stay finite"))
        return;

    HyTensor added(other.mInertiaTensor);
    HyVector3 c2 = other.mCOMLocalTM.t();
    if (relativeTM) {
        added = added.rotatedBy(HyTensor::rowsOf(*relativeTM));
        c2 = relativeTM->transform(c2);
    }
    const HyReal sign = subtract ? -1 : 1, reducedMass = m1 * (m2 / mass);
    const HyVector3 d = c2 - mCOMLocalTM.t();
    HyTensor sum(mInertiaTensor);
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            sum.m[i][j] += sign * added.m[i][j] - reducedMass * d[i] * d[j];
        sum.m[i][i] += reducedMass * d.squareNorm();
    }
    sum.symmetrise();
    if (refuse(sum.isFinite(), operation, "the inertia tensor must stay finite"))
        return;
    sum.copyTo(mInertiaTensor);
    mCOMLocalTM.t() += d * (m2 / mass);
    mMass = mass;
}

void HyMassProperties::copy(const HyMassProperties& other) {
    mMass = other.mMass;
    mCOMLocalTM = other.mCOMLocalTM;
    setInertiaTensorLocal(other.mInertiaTensor);
}

// Inertia tensor

void HyMassProperties::setInertiaTensorLocal(const HyReal tensor[3][3]) {
    const HyTensor given(tensor);
    if (!refuse(given.isFinite(), "setInertiaTensorLocal", "the tensor must be finite"))
        given.copyTo(mInertiaTensor);
}

void HyMassProperties::getInertiaTensorLocal(HyReal out[3][3]) const {
    HyTensor(mInertiaTensor).copyTo(out);
}

const KitMatrix3& HyMassProperties::getInertiaTensorLocal() const {
    return mInertiaTensor;
}

void HyMassProperties::getInertiaTensorAbsolute(HyReal out[3][3]) const {
    HyTensor tensor(mInertiaTensor);
    if (mRefTM)
        tensor = tensor.rotatedBy(HyTensor::rowsOf(*mRefTM));
    tensor.copyTo(out);
}

void HyMassProperties::scaleInertiaTensor(HyReal scale) {
    if (refuse(scale >= 0 && std::isfinite(scale), "scaleInertiaTensor",
               "scale must be finite and not negative"))
        return;
    HyTensor scaled(mInertiaTensor);
    for (auto& row : scaled.m) {
        for (HyReal& entry : row)
            entry *= scale;
    }
    if (!refuse(scaled.isFinite(), "scaleInertiaTensor", "the inertia tensor must stay finite"))
        scaled.copyTo(mInertiaTensor);
}

void HyMassProperties::getOrthogonalInertiaTensor(HyReal out[3][3], HyTransform& transform) const {
    const HyTransform& reference = getReferenceFrame();
    HyTransform frame = reference;
    HyTensor tensor(mInertiaTensor), relevant = tensor;
    relevant.dropVanishingProducts();
    if (!relevant.isDiagonal()) {
        const HyPrincipalMoments principal(tensor, kJacobiSweeps);
        tensor = HyTensor();
        for (int i = 0; i < 3; ++i) {
            tensor.m[i][i] = principal.moments[i];
            frame.axis(i) = reference.rotate(HyVector3::constCast(principal.axes.m[i]));
        }
    }
    frame.t() = getCOMPositionAbsolute();
    tensor.copyTo(out);
    transform = frame;
}

void HyMassProperties::getOrthogonalInertiaTensor(HyVector3& moments,
                                                  HyTransform& transform) const {
    KitMatrix3 tensor;
    getOrthogonalInertiaTensor(tensor, transform);
    moments = HyVector3(tensor[0][0], tensor[1][1], tensor[2][2]);
}

bool HyMassProperties::makeValidInertiaTensor() {
    return makeValidInertiaTensor(mInertiaTensor);
}

bool HyMassProperties::makeValidInertiaTensor(HyReal tensor[3][3]) {
    const HyTensor given(tensor);
    if (refuse(given.isFinite(), "makeValidInertiaTensor", "the tensor must be finite"))
        return false;
    HyPrincipalMoments principal(given, kJacobiSweeps);
    HyReal* moments = principal.moments;
    const HyReal largest = std::max({moments[0], moments[1], moments[2]});
    if (refuse(largest >= 0, "makeValidInertiaTensor", "a principal moment must not be negative"))
        return false;

    bool changed = false;
    const HyReal least = sInertiaRatioLimit * largest;
    for (int i = 0; i < 3; ++i) {
        if (moments[i] < least - kMomentSlack * largest) {
            moments[i] = least;
            changed = true;
        }
    }
    for (int i = 0; i < 3; ++i) {
        const HyReal b = moments[(i + 1) % 3], c = moments[(i + 2) % 3];
        if (moments[i] > (b + c) * (1 + kMomentSlack)) {
            moments[i] = std::max(b, c);
            changed = true;
        }
    }
    if (changed)
        principal.compose().copyTo(tensor);
    return changed;
}

void HyMassProperties::setInertiaRatioLimit(HyReal ratio) {
    if (ratio > 0 && ratio < 1)
        sInertiaRatioLimit = ratio;
}

// Centre of mass

void HyMassProperties::setCOMPositionLocal(const HyVector3& position) {
    if (!refuse(position.isFinite(), "setCOMPositionLocal", "the position must be finite"))
        mCOMLocalTM.t() = position;
}

void HyMassProperties::getCOMPositionLocal(HyVector3& position) const {
    position = getCOMPositionLocal();
}

HyVector3 HyMassProperties::getCOMPositionLocal() const {
    return mCOMLocalTM.t();
}

void HyMassProperties::setCOMPositionAbsolute(const HyVector3& position) {
    if (!refuse(position.isFinite(), "setCOMPositionAbsolute", "the position must be finite"))
        mCOMLocalTM.t() = mRefTM ? mRefTM->inverseTransform(position) : position;
}

void HyMassProperties::getCOMPositionAbsolute(HyVector3& position) const {
    position = getCOMPositionAbsolute();
}

HyVector3 HyMassProperties::getCOMPositionAbsolute() const {
    return mRefTM ? mRefTM->transform(mCOMLocalTM.t()) : getCOMPositionLocal();
}

void HyMassProperties::setCOMTransformLocal(const HyTransform& transform) {
    if (!refuse(transform.isFinite(), "setCOMTransformLocal", "the transform must be finite"))
        mCOMLocalTM = transform;
}

const HyTransform& HyMassProperties::getCOMTransformLocal() const {
    return mCOMLocalTM;
}

// Mass

void HyMassProperties::setMass(HyReal mass) {
    if (!refuse(mass >= 0 && std::isfinite(mass), "setMass",
                "mass must be finite and not negative"))
        mMass = mass;
}

HyReal HyMassProperties::getMass() const {
    return mMass;
}

} // namespace Hy
