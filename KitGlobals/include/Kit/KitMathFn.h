#pragma once
#include <Kit/KitTypes.h>
#include <algorithm>
#include <cmath>

// The platform's math library under the engine's names. Arguments of the inverse sine and cosine
// are clamped to +-1, so that rounding of a dot product never makes them fail.

[[nodiscard]] inline KitReal KitExpFn(KitReal x) noexcept {
    return std::exp(x);
}
[[nodiscard]] inline KitReal KitLogFn(KitReal x) noexcept {
    return std::log(x);
}
[[nodiscard]] inline KitReal KitPowFn(KitReal x, KitReal y) noexcept {
    return std::pow(x, y);
}
[[nodiscard]] inline KitReal KitAtan2Fn(KitReal y, KitReal x) noexcept {
    return std::atan2(y, x);
}
[[nodiscard]] inline KitReal KitAtanFn(KitReal x) noexcept {
    return std::atan(x);
}
[[nodiscard]] inline KitReal KitTanFn(KitReal x) noexcept {
    return std::tan(x);
}
[[nodiscard]] inline KitReal KitAcosFn(KitReal x) noexcept {
    return std::acos(std::clamp(x, -1.0, 1.0));
}
[[nodiscard]] inline KitReal KitAsinFn(KitReal x) noexcept {
    return std::asin(std::clamp(x, -1.0, 1.0));
}
[[nodiscard]] inline KitReal KitSinFn(KitReal x) noexcept {
    return std::sin(x);
}
[[nodiscard]] inline KitReal KitCosFn(KitReal x) noexcept {
    return std::cos(x);
}
