#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// Diagonalises a symmetric matrix by cyclic Jacobi rotations (Golub and Van Loan, "Matrix
/// Computations", section 8.5): tensor = axes D axes^T.
/// @param tensor the matrix, of which the upper triangle is read; becomes D, whose diagonal holds
///        the eigenvalues in no particular order
/// @param axes becomes a rotation: column i is the unit eigenvector of eigenvalue i
/// @param maxSweeps sweeps over the three off-diagonal elements at most
/// @param tolerance stops once the norm of the off-diagonal elements is not above it; at 0, once it
///        vanishes against that of the matrix
/// @return sweeps done; maxSweeps if it has not converged before, as for elements not finite
HY_API int jacobi3x3(KitMatrix3 tensor, KitMatrix3 axes, int maxSweeps,
                     KitReal tolerance = 0) noexcept;
