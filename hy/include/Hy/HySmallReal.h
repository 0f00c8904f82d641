#pragma once

namespace Hy {

/// What counts as zero for a number near one, by its type.
template <class T>
struct HY_SMALL_REAL;

template <>
struct HY_SMALL_REAL<float> {
    static constexpr float epsilon = 1e-6F;
};

template <>
struct HY_SMALL_REAL<double> {
    /// Held in single precision: 9.9999998245167e-15.
    static constexpr double epsilon = 1e-14F;
};
} // namespace Hy
