#pragma once
#include <Dyns/DynsConstraints.h>
#include <Dyns/WorldStepper.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

#include <cstddef>

// Products with the Jacobian J of a partition, stored in blocks, one for each constraint and body.
// A body vector (DynsBodyVector) is read and written in the solver's bodies themselves: `offset` is
// its place in a DynsBody in bytes, X a further distance in reals.

/// GM = J M^-1, block by block.
/// @param invM one entry a body of the partition
HY_API void jacobian_mass_mm(DynsConstraints* c, const MassMatrix* invM);
/// Y = beta Y + alpha (G x), done once for each block of a row, so that with beta 1 the blocks of a
/// row add up.
/// @param G blocks of the product, c->G or c->GM
/// @param Y one entry a row
HY_API void jacobian_with_body_vector_mv(KitReal alpha, const DynsConstraints* c,
                                         const DynsGBlock* G, int X, std::size_t offset,
                                         KitReal beta, KitReal* Y);
/// The transpose: for each block, the body vector y of its body becomes beta y + alpha G^T x. With
/// beta 1 the blocks of a body add up.
/// @param x one entry a row
HY_API void jacobian_to_body_vector_mv(KitReal alpha, const DynsConstraints* c, const DynsGBlock* G,
                                       const KitReal* x, KitReal beta, int Y, std::size_t offset);
/// g_forces = G^T lambda for each block; alpha times it is added to cf and ct of the block's body.
HY_API void jacobian_get_forces(DynsConstraints* c, KitReal alpha);
