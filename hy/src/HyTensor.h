#pragma once
#include <Hy/HyTransform.h>
#include <Kit/KitEigen3.h>
#include <Kit/KitTypes.h>

#include <algorithm>
#include <cmath>

namespace Hy {

/// Off-diagonal entries up to this share of the largest entry are rounding.
constexpr HyReal kVanishingProduct = 1e-14;

/// A symmetric tensor, or three axes as rows, by value.
struct HyTensor {
    KitMatrix3 m = {};

    HyTensor() = default;
    explicit HyTensor(const HyReal matrix[3][3]) {
        for (int i = 0; i < 3; ++i)
            std::copy_n(matrix[i], 3, m[i]);
    }
    /// The rotation: row i is the image of local axis i.
    static HyTensor rowsOf(const HyTransform& transform) {
        HyTensor rows;
        for (int i = 0; i < 3; ++i)
            std::copy_n(transform.m[i], 3, rows.m[i]);
        return rows;
    }

    void copyTo(HyReal out[3][3]) const {
        for (int i = 0; i < 3; ++i)
            std::copy_n(m[i], 3, out[i]);
    }
    [[nodiscard]] HyReal trace() const { return m[0][0] + m[1][1] + m[2][2]; }
    [[nodiscard]] HyReal largest() const {
        HyReal largest = 0;
        for (const auto& row : m) {
            for (const HyReal entry : row)
                largest = std::max(largest, std::abs(entry));
        }
        return largest;
    }
    /// Sets off-diagonal entries that are rounding to 0, so that no axes are made of them.
    void dropVanishingProducts() {
        const HyReal limit = kVanishingProduct * largest();
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) {
                if (i != j && std::abs(m[i][j]) <= limit)
                    m[i][j] = 0;
            }
        }
    }
    [[nodiscard]] bool isDiagonal() const {
        return m[0][1] == 0 && m[0][2] == 0 && m[1][0] == 0 && m[1][2] == 0 && m[2][0] == 0 &&
               m[2][1] == 0;
    }
    [[nodiscard]] bool isFinite() const {
        for (const auto& row : m) {
            for (const HyReal entry : row) {
                if (!std::isfinite(entry))
                    return false;
            }
        }
        return true;
    }
    void symmetrise() {
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < i; ++j)
                m[i][j] = m[j][i] = 0.5 * (m[i][j] + m[j][i]);
        }
    }

    /// The tensor in the axes that its own axes are given in: the sum of m[k][l] rowₖ rowₗᵀ.
    [[nodiscard]] HyTensor rotatedBy(const HyTensor& rows) const {
        HyTensor half, rotated; // half = m rows, rotated = rowsᵀ m rows
        for (int k = 0; k < 3; ++k) {
            for (int j = 0; j < 3; ++j)
                half.m[k][j] =
                    m[k][0] * rows.m[0][j] + m[k][1] * rows.m[1][j] + m[k][2] * rows.m[2][j];
        }
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j)
                rotated.m[i][j] = rows.m[0][i] * half.m[0][j] + rows.m[1][i] * half.m[1][j] +
                                  rows.m[2][i] * half.m[2][j];
        }
        return rotated;
    }
    [[nodiscard]] HyTensor transposed() const {
        HyTensor result;
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j)
                result.m[i][j] = m[j][i];
        }
        return result;
    }
};

/// Principal moments and their axes as rows, right-handed, in no particular order.
struct HyPrincipalMoments {
    HyReal moments[3];
    HyTensor axes;
    int sweeps; ///< of Jacobi's method; as many as allowed if it has not converged

    HyPrincipalMoments(HyTensor tensor, int maxSweeps) {
        KitMatrix3 columns;
        tensor.symmetrise();
        sweeps = jacobi3x3(tensor.m, columns, maxSweeps);
        axes = HyTensor(columns).transposed();
        for (int i = 0; i < 3; ++i)
            moments[i] = tensor.m[i][i];
    }

    /// The tensor of these moments about these axes, exactly symmetric.
    [[nodiscard]] HyTensor compose() const {
        HyTensor tensor;
        for (int i = 0; i < 3; ++i)
            tensor.m[i][i] = moments[i];
        tensor = tensor.rotatedBy(axes);
        tensor.symmetrise();
        return tensor;
    }
};

} // namespace Hy
