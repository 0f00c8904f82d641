#pragma once
#include <Kit/KitTypes.h>

/// A pivot at or below this part of the largest diagonal entry belongs to a dependent row.
constexpr KitReal kDynsDependentPivot = 1e-14;

/// LDL^T in place on the lower triangle of a row-major matrix with row length ld. The pivot of a
/// dependent row is stored as 0, and DynsSolveDenseLdl gives its unknown the value 0.
void DynsFactorDenseLdl(KitReal* M, int n, int ld) noexcept;
/// The same for a quasi-definite matrix: the pivots from `positive` on are negative. The two parts
/// may have different units.
void DynsFactorDenseLdl(KitReal* M, int n, int ld, int positive) noexcept;
/// Solves in place in b.
void DynsSolveDenseLdl(const KitReal* M, KitReal* b, int n, int ld) noexcept;
