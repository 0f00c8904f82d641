#include "block_sweeps.h"

#include "constraint_block.h"
#include "pool_array.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/lcp.h>
#include <Dyns/smv_boxed_keller.h>
#include <Kit/KitMemoryPool.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {

using BodySum = KitReal[8];

BodySum* takeBodySums(KitMemoryPool& pool, int bodies) {
    auto* sums = takePoolArray<BodySum>(&pool, bodies, "body force");
    for (int i = 0; i < bodies; ++i)
        std::fill(sums[i], sums[i] + 8, 0.0);
    return sums;
}

/// Product of one row with a force and torque, which stand four entries apart.
KitReal rowTimesForce(const DynsGRow& row, const KitReal* f) noexcept {
    return row[0] * f[0] + row[1] * f[1] + row[2] * f[2] + row[3] * f[4] + row[4] * f[5] +
           row[5] * f[6];
}

void addRowForce(const DynsGRow& row, KitReal lambda, KitReal* f) noexcept {
    f[0] += lambda * row[0];
    f[1] += lambda * row[1];
    f[2] += lambda * row[2];
    f[4] += lambda * row[3];
    f[5] += lambda * row[4];
    f[6] += lambda * row[5];
}

void addForce(const KitReal* f, KitReal* sum, KitReal sign) noexcept {
    for (int k = 0; k < 8; ++k)
        sum[k] += sign * f[k];
}

/// How far a row is from its complementarity condition.
KitReal boxResidual(KitReal w, KitReal z, KitReal lower, KitReal upper) noexcept {
    const bool hasLower = lower != -kKitInfinity, hasUpper = upper != kKitInfinity;
    if (hasLower && hasUpper)
        return std::max(std::min(z - lower, w), z - upper);
    if (hasLower)
        return std::min(w, z - lower);
    return hasUpper ? std::max(w, z - upper) : w;
}

} // namespace

DynsBlockSweeps::DynsBlockSweeps(DynsConstraints& constraints, int bodies, KitMemoryPool& pool)
    : c(constraints), mBodies(bodies), Fb(takeBodySums(pool, bodies)),
      mSums(takeBodySums(pool, bodies)) {
    w = takePoolArray<KitReal>(&pool, c.n_constraint_rows, "w");
    mBlocks = takePoolArray<Block>(&pool, c.n_constraints, "block matrices");
    int entries = 0; // at most 16 a row
    for (int k = 0; k < c.n_constraints; ++k)
        entries += DynsConstraintRows(c, k) * DynsConstraintRows(c, k);
    auto* M = takePoolArray<KitReal>(&pool, entries, "block matrices");
    for (int k = 0; k < c.n_constraints; ++k) {
        const int r = DynsConstraintRows(c, k);
        mBlocks[k] = {M, r, DynsConstraintFirstRow(c, k), c.constraint_first_block[k],
                      c.constraint_n_blocks[k]};
        DynsBuildConstraintBlock(c, k, r, M);
        M += r * r;
    }
    for (int b = 0; b < c.n_g_blocks; ++b)
        addForce(c.g_forces[b], Fb[c.g_bodies_idx[b]], 1);
}

void DynsBlockSweeps::startFromZero() {
    std::fill(c.lambda, c.lambda + c.n_constraint_rows, 0.0);
    for (int b = 0; b < c.n_g_blocks; ++b)
        std::fill(c.g_forces[b], c.g_forces[b] + 8, 0.0);
    for (int i = 0; i < mBodies; ++i)
        std::fill(Fb[i], Fb[i] + 8, 0.0);
}

/// Takes the constraint's own force off its bodies and the effect of what is left off b.
void DynsBlockSweeps::loadOfOthers(const Block& block, KitReal* b) {
    const int end = block.firstBlock + block.blocks;
    for (int g = block.firstBlock; g < end; ++g)
        addForce(c.g_forces[g], Fb[c.g_bodies_idx[g]], -1);
    for (int g = block.firstBlock; g < end; ++g)
        for (int j = 0; j < block.rows; ++j)
            b[j] -= rowTimesForce(c.GM[g][j], Fb[c.g_bodies_idx[g]]);
}

void DynsBlockSweeps::storeForces(const Block& block) {
    for (int g = block.firstBlock; g < block.firstBlock + block.blocks; ++g) {
        std::fill(c.g_forces[g], c.g_forces[g] + 8, 0.0);
        for (int j = 0; j < block.rows; ++j)
            addRowForce(c.G[g][j], c.lambda[block.firstRow + j], c.g_forces[g]);
        addForce(c.g_forces[g], Fb[c.g_bodies_idx[g]], 1);
    }
}

void DynsBlockSweeps::solveBlock(const Block& block) {
    const int f = block.firstRow;
    KitReal b[kSmvMaxRows];
    std::copy(c.rhs + f, c.rhs + f + block.rows, b);
    loadOfOthers(block, b);
    smv_solve_boxed(block.M, block.rows, c.lambda + f, b, c.lower + f, c.upper + f,
                    c.index_set + f);
    // Friction stands behind the normal row: the second row tells whether this is a contact.
    if (c.use_scaled_box_friction != 0 && block.rows > 1 &&
        c.reference_normal[f + 1] != kDynsNoReferenceNormal) {
        scale_box_lcp_data(block.rows, c.lambda + f, c.lower + f, c.upper + f,
                           c.reference_normal + f, c.friction_coefficient + f,
                           c.soil_cohesion_coefficient + f, c.index_set + f);
        smv_solve_boxed(block.M, block.rows, c.lambda + f, b, c.lower + f, c.upper + f,
                        c.index_set + f);
    }
    storeForces(block);
}

void DynsBlockSweeps::sweep() {
    for (int k = 0; k < c.n_constraints; ++k)
        solveBlock(mBlocks[k]);
}

KitReal DynsBlockSweeps::residual() {
    for (int i = 0; i < mBodies; ++i)
        std::fill(mSums[i], mSums[i] + 8, 0.0);
    for (int g = 0; g < c.n_g_blocks; ++g)
        for (int j = 0; j < c.g_block_size[g]; ++j)
            addRowForce(c.G[g][j], c.lambda[c.g_block_first_row[g] + j], mSums[c.g_bodies_idx[g]]);
    for (int i = 0; i < c.n_constraint_rows; ++i)
        w[i] = -c.rhs[i];
    for (int g = 0; g < c.n_g_blocks; ++g)
        for (int j = 0; j < c.g_block_size[g]; ++j)
            w[c.g_block_first_row[g] + j] += rowTimesForce(c.GM[g][j], mSums[c.g_bodies_idx[g]]);
    KitReal sum = 0;
    for (int i = 0; i < c.n_constraint_rows; ++i) {
        const KitReal e = boxResidual(w[i], c.lambda[i], c.lower[i], c.upper[i]);
        sum += e * e;
    }
    return std::sqrt(sum);
}
