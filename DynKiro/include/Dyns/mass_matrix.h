#pragma once
#include <Dyns/DynsParameters.h>
#include <Dyns/WorldStepper.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

struct DynsBody;

// Effective inverse mass matrix of a partition, one entry a body, from the frame's memory pool. The
// blocks go to inverse_massmatrix of the bodies too, by which they are integrated. Damping d acts
// implicitly: the effective mass is m + h d. With DynsParameters::geometric_stiffness, h^2 times the
// positive part of a body's geometricStiffness K, which is consumed, is added to its inertia, and
// h^2 K w to its angular momentum, so that the term slows acceleration and damps no motion. The
// world inertia and momenta must be up to date.

/// Inverse of mass and inertia.
/// @param spherical not 0: a third of the trace of the body's tensor stands for the tensor
[[nodiscard]] HY_API MassMatrix*
mass_matrix_build_inverse(DynsParameters* p, DynsBody* const* bodies, int n, int spherical);
/// Inverse of mass and of I - scale h^2 S I^-1 S, S the skew matrix of the angular momentum L. With
/// the torque scale (L x w) this is the implicit step (I - h S) w' = L of a free top.
[[nodiscard]] HY_API MassMatrix* mass_matrix_build_stabilized_inverse(DynsBody* const* bodies,
                                                                      int n, DynsParameters* p,
                                                                      KitReal scale);
/// y = alpha M x + beta y for n bodies.
/// @param x,y 8 reals a body: linear x, y, z, one of padding, angular x, y, z, one of padding
HY_API void mass_matrix_mv(int n, KitReal alpha, const MassMatrix* M, const KitReal* x,
                           KitReal beta, KitReal* y);
