#pragma once
#include <Hy/HyTable1D.h>

namespace Hy {

enum RollingResistanceCoeffType : int {
    kFirstOrderFormula = 0,  ///< base + factor v
    kSecondOrderFormula = 1, ///< base + factor v²
    kTable = 2,              ///< table of v
    kPressureModel = 3,      ///< polynomial of v, scaled by powers of pressure and normal force
};

/// How the rolling resistance of a wheel, as a share of its normal force, depends on speed,
/// pressure and normal force.
struct HY_API HyRollingResistanceCoeffParams {
    RollingResistanceCoeffType mType = kSecondOrderFormula;
    HyReal mBaseCoeff = 0;
    HyReal mSpeedFactor = 0;              ///< s/m, or s²/m² in the second order formula
    HyTable1D mTable;                     ///< coefficient by speed in m/s
    HyReal mSpeedFactorPressureModel = 0; ///< s²/m²
    HyReal mPressureExponent = -0.4;      ///< SAE J2452, "Stepwise Coastdown Methodology"
    HyReal mNormalForceExponent = 1;
    HyReal mNominalPressure = 330000; ///< Pa; about 0 leaves the pressure out

    /// The coefficient at a speed in m/s, without the effect of pressure and normal force. An empty
    /// table, or a speed that is not finite: a warning, and 0.
    [[nodiscard]] HyReal getCoefficient(HyReal speed) const;
    /// The coefficient at a speed in m/s. Only the pressure model reads the other two.
    /// @param pressure Pa; about 0 leaves the pressure out
    /// @param normalForce N; without one its factor is what a power that rises gives, or 1
    [[nodiscard]] HyReal getCoefficient(HyReal speed, HyReal pressure, HyReal normalForce) const;
};

} // namespace Hy
