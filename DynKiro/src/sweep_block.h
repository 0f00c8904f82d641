#pragma once
#include <Dyns/DynsConstraints.h>

#include <cstddef>
#include <cstdint>

/// Value of DynsSweepBlock::normal for a row whose bounds follow no normal force.
constexpr std::uint8_t kDynsSweepNoNormal = 0xFF;

/// What the forces of all constraints do to one body: its acceleration by them, linear x, y, z,
/// angular x, y, z. One cache line.
struct DynsSweepBody {
    alignas(64) KitReal a[8];
};

/// One constraint as a sweep reads it, its numbers side by side in `data`: of each row the right-hand
/// side, bounds, force, softness and friction; the constraint's own block of the matrix and its
/// inverse; and for each body that it moves the rows of J and of J M^-1.
struct alignas(64) DynsSweepBlock {
    KitReal* data = nullptr;
    int constraint = 0;
    std::uint32_t indexSet = 0; ///< two bits a row: 0 free, 1 at the lower bound, 2 at the upper
    std::uint8_t rows = 0;
    std::uint8_t slots = 0;                           ///< bodies that it moves; one may come twice
    bool hasFriction = false;                         ///< some bounds follow a normal force
    bool isDefinite = false;                          ///< its inverse is good
    std::uint8_t normal[kDynsMaxConstraintRows] = {}; ///< row: its normal row, or none
    int body[kDynsMaxConstraintBodies] = {};          ///< slot: index in the partition
};

/// Length of the data of a constraint, a multiple of a cache line.
[[nodiscard]] std::size_t DynsSweepBlockReals(const DynsConstraints& c, int constraint) noexcept;
/// Fills what stands for the whole step, into data of the right length.
void DynsSweepBlockBuild(DynsSweepBlock& block, const DynsConstraints& c, int constraint,
                         KitReal* data) noexcept;
/// Takes right-hand side, bounds and forces of the rows, and adds what the forces do to the bodies.
/// @param isWarm the forces are a guess: friction bounds follow it, and it is brought inside the bounds
void DynsSweepBlockLoad(DynsSweepBlock& block, const DynsConstraints& c, bool isWarm,
                        DynsSweepBody* bodies) noexcept;
/// Solves the constraint with the effect of all others as a load. Its friction bounds, if it has any,
/// follow its normal force, and it is solved once more. Every force is finite and inside its bounds.
/// @return sum of the squares of its residuals before
KitReal DynsSweepBlockVisit(DynsSweepBlock& block, DynsSweepBody* bodies);
/// Sum of the squares of the residuals of the rows against their bounds; softness is left out.
[[nodiscard]] KitReal DynsSweepBlockResidual(const DynsSweepBlock& block,
                                             const DynsSweepBody* bodies) noexcept;
/// Gives forces, bounds and index set of the rows back.
void DynsSweepBlockStore(const DynsSweepBlock& block, DynsConstraints& c) noexcept;
