#pragma once
#include <Kit/KitTypes.h>

/// Number of rows, known when compiled or not.
template <int R>
struct DynsRowsFixed {
    static constexpr int rows() noexcept { return R; }
};
struct DynsRowsAny {
    int count;
    [[nodiscard]] int rows() const noexcept { return count; }
};

/// Where the numbers of a block stand. Each part begins at an even place.
template <class Rows>
struct DynsSweepLayout : Rows {
    static constexpr int even(int n) noexcept { return (n + 1) & ~1; }

    using Rows::rows;
    [[nodiscard]] constexpr int perRow(int i) const noexcept { return i * even(rows()); }
    [[nodiscard]] constexpr int rhs() const noexcept { return perRow(0); }
    [[nodiscard]] constexpr int lower() const noexcept { return perRow(1); }
    [[nodiscard]] constexpr int upper() const noexcept { return perRow(2); }
    [[nodiscard]] constexpr int lambda() const noexcept { return perRow(3); }
    [[nodiscard]] constexpr int epsilon() const noexcept { return perRow(4); }
    [[nodiscard]] constexpr int friction() const noexcept { return perRow(5); }
    [[nodiscard]] constexpr int cohesion() const noexcept { return perRow(6); }
    /// The constraint's own block of the matrix, row-major with row length rows().
    [[nodiscard]] constexpr int matrix() const noexcept { return perRow(7); }
    [[nodiscard]] constexpr int inverse() const noexcept {
        return matrix() + even(rows() * rows());
    }
    /// J of a slot, 6 numbers a row; J M^-1 stands behind it.
    [[nodiscard]] constexpr int jacobian(int slot) const noexcept {
        return inverse() + even(rows() * rows()) + slot * 12 * rows();
    }
    [[nodiscard]] constexpr int reals(int slots) const noexcept {
        constexpr int kLine = 8;
        return (jacobian(slots) + kLine - 1) / kLine * kLine;
    }
};
