#include <Hy/HyRollingResistanceCoeffParams.h>

#include <Hy/HyMessage.h>
#include <Hy/HySmallReal.h>

#include <cmath>

namespace Hy {
namespace {

/// Pressures below have no effect, Pa.
constexpr HyReal kMinPressure = 1e-14;

bool isInput(HyReal value) {
    if (std::isfinite(value))
        return true;
    HyWarning(0, "HyRollingResistanceCoeffParams::getCoefficient: speed, pressure and normal force "
                 "must be finite.\n");
    return false;
}

/// (p / p₀)^α
HyReal pressureFactor(const HyRollingResistanceCoeffParams& params, HyReal pressure) {
    if (!(pressure >= kMinPressure && params.mNominalPressure >= kMinPressure))
        return 1;
    return std::pow(pressure / params.mNominalPressure, params.mPressureExponent);
}

/// F^(β − 1): the force of resistance then grows with F^β.
HyReal normalForceFactor(const HyRollingResistanceCoeffParams& params, HyReal normalForce) {
    const HyReal exponent = params.mNormalForceExponent - 1;
    if (std::abs(exponent) <= HY_SMALL_REAL<double>::epsilon)
        return 1;
    if (normalForce > 0)
        return std::pow(normalForce, exponent);
    return exponent > 0 ? 0 : 1;
}

} // namespace

HyReal HyRollingResistanceCoeffParams::getCoefficient(HyReal speed) const {
    if (!isInput(speed))
        return 0;
    switch (mType) {
    case kFirstOrderFormula:
        return mBaseCoeff + mSpeedFactor * speed;
    case kSecondOrderFormula:
        return mBaseCoeff + mSpeedFactor * speed * speed;
    case kTable:
        return mTable.interpolate(speed);
    case kPressureModel:
        return mBaseCoeff + mSpeedFactor * speed + mSpeedFactorPressureModel * speed * speed;
    }
    return 0;
}

HyReal HyRollingResistanceCoeffParams::getCoefficient(HyReal speed, HyReal pressure,
                                                      HyReal normalForce) const {
    if (mType != kPressureModel)
        return getCoefficient(speed);
    if (!isInput(pressure) || !isInput(normalForce))
        return 0;
    return getCoefficient(speed) * pressureFactor(*this, pressure) *
           normalForceFactor(*this, normalForce);
}

} // namespace Hy
