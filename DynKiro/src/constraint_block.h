#pragma once
#include <Kit/KitTypes.h>

struct DynsConstraints;

/// Adds GM_i G_j^T, the product of two blocks of one body, to a row-major matrix with row length ld.
void DynsAddBlockProduct(const DynsConstraints& c, int i, int j, KitReal* A, int ld) noexcept;

/// Adds the products of a constraint's blocks with each other: of each with itself, and of those of
/// one body where the constraint has it in several slots.
void DynsAddOwnProducts(const DynsConstraints& c, int constraint, KitReal* A, int ld) noexcept;

/// The diagonal block J M^-1 J^T + diag(xepsilon) of one constraint of the given rows, row-major.
void DynsBuildConstraintBlock(const DynsConstraints& c, int constraint, int rows,
                              KitReal* A) noexcept;

/// Rows of a constraint, those of its first block.
[[nodiscard]] int DynsConstraintRows(const DynsConstraints& c, int constraint) noexcept;
/// Number of the first row of a constraint.
[[nodiscard]] int DynsConstraintFirstRow(const DynsConstraints& c, int constraint) noexcept;
/// Whether forces on the rows of a block move its body: not if its mass counts as infinite.
[[nodiscard]] bool DynsBlockMoves(const DynsConstraints& c, int block) noexcept;
