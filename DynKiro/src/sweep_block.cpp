#include "sweep_block.h"

#include "constraint_block.h"
#include "small_box.h"
#include "sweep_block_layout.h"

#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr int kIndexOf[] = {kDynsIndexFree, kDynsIndexLower, kDynsIndexUpper};

KitReal finiteOrZero(KitReal value) noexcept {
    return std::isfinite(value) ? value : 0;
}

/// Two numbers in one register: rows of six are three of them. The order of sums does not depend on
/// what the compiler makes of it.
using Pair = KitReal __attribute__((vector_size(16)));

Pair loadPair(const KitReal* x) noexcept {
    Pair pair;
    std::memcpy(&pair, x, sizeof pair);
    return pair;
}

void storePair(KitReal* x, Pair pair) noexcept {
    std::memcpy(x, &pair, sizeof pair);
}

struct Six {
    Pair pairs[3];
};

Six loadSix(const KitReal* x) noexcept {
    return {{loadPair(x), loadPair(x + 2), loadPair(x + 4)}};
}

KitReal dot(const KitReal* row, const Six& a) noexcept {
    const Six r = loadSix(row);
    const Pair sum = r.pairs[0] * a.pairs[0] + r.pairs[1] * a.pairs[1] + r.pairs[2] * a.pairs[2];
    return sum[0] + sum[1];
}

void addScaled(const KitReal* row, KitReal factor, Six& sum) noexcept {
    const Pair both = {factor, factor};
    for (int k = 0; k < 3; ++k)
        sum.pairs[k] += both * loadPair(row + 2 * k);
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

/// Calls work with the number of rows: those of contacts, joints and locks as constants.
template <class Work>
auto withRows(int rows, Work work) {
    switch (rows) {
    case 1:
        return work(DynsRowsFixed<1>{});
    case 3:
        return work(DynsRowsFixed<3>{});
    case 5:
        return work(DynsRowsFixed<5>{});
    case 6:
        return work(DynsRowsFixed<6>{});
    default:
        return work(DynsRowsAny{rows});
    }
}

/// w = J a - rhs: the residual of the rows without their softness.
template <class Rows>
void residualOf(const DynsSweepBlock& block, Rows rows, const DynsSweepBody* bodies, KitReal* w) {
    const DynsSweepLayout<Rows> at{rows};
    const KitReal* d = block.data;
    const int n = rows.rows();
    for (int j = 0; j < n; ++j)
        w[j] = -d[at.rhs() + j];
    for (int slot = 0; slot < block.slots; ++slot) {
        const KitReal* J = d + at.jacobian(slot);
        const Six a = loadSix(bodies[block.body[slot]].a);
        for (int j = 0; j < n; ++j)
            w[j] += dot(J + 6 * j, a);
    }
}

/// Adds what a change of the forces does to the bodies.
template <class Rows>
void push(const DynsSweepBlock& block, Rows rows, const KitReal* change, DynsSweepBody* bodies) {
    const DynsSweepLayout<Rows> at{rows};
    const int n = rows.rows();
    for (int slot = 0; slot < block.slots; ++slot) {
        const KitReal* JM = block.data + at.jacobian(slot) + 6 * n;
        KitReal* a = bodies[block.body[slot]].a;
        Six sum = loadSix(a);
        for (int j = 0; j < n; ++j)
            addScaled(JM + 6 * j, change[j], sum);
        for (int k = 0; k < 3; ++k)
            storePair(a + 2 * k, sum.pairs[k]);
    }
}

/// Friction bounds of the rows that have a normal row.
template <class Rows>
void followNormal(const DynsSweepBlock& block, Rows rows, const KitReal* z) {
    const DynsSweepLayout<Rows> at{rows};
    KitReal* d = block.data;
    for (int j = 0; j < rows.rows(); ++j) {
        if (block.normal[j] == kDynsSweepNoNormal)
            continue;
        const KitReal bound =
            d[at.friction() + j] * std::abs(z[block.normal[j]]) + d[at.cohesion() + j];
        d[at.upper() + j] = std::min(bound, kKitInfinity);
        d[at.lower() + j] = -d[at.upper() + j];
    }
}

template <class Rows>
KitReal visit(DynsSweepBlock& block, Rows rows, DynsSweepBody* bodies) {
    const DynsSweepLayout<Rows> at{rows};
    const int n = rows.rows();
    KitReal* d = block.data;
    KitReal* lambda = d + at.lambda();
    KitReal w[kDynsMaxConstraintRows], b[kDynsMaxConstraintRows], z[kDynsMaxConstraintRows];
    residualOf(block, rows, bodies, w);
    KitReal error = 0;
    for (int j = 0; j < n; ++j) {
        w[j] += d[at.epsilon() + j] * lambda[j];
        const KitReal e = boxResidual(w[j], lambda[j], d[at.lower() + j], d[at.upper() + j]);
        error += e * e;
        KitReal own = 0;
        for (int k = 0; k < n; ++k)
            own += d[at.matrix() + j * n + k] * lambda[k];
        b[j] = own - w[j];
    }
    DynsSmallBox box{.M = d + at.matrix(),
                     .inverse = d + at.inverse(),
                     .b = b,
                     .lower = d + at.lower(),
                     .upper = d + at.upper(),
                     .z = z,
                     .indexSet = block.indexSet,
                     .isDefinite = block.isDefinite};
    DynsSolveSmallBox(box, rows);
    if (block.hasFriction) {
        followNormal(block, rows, z);
        DynsSolveSmallBox(box, rows);
    }
    block.indexSet = box.indexSet;
    for (int j = 0; j < n; ++j) {
        w[j] = z[j] - lambda[j];
        lambda[j] = z[j];
    }
    push(block, rows, w, bodies);
    return error;
}

/// A row whose bounds leave it no finite force gets none.
void loadBounds(KitReal lower, KitReal upper, KitReal& toLower, KitReal& toUpper) noexcept {
    const bool usable = lower <= kKitInfinity && upper >= -kKitInfinity;
    toLower = usable ? std::max(lower, -kKitInfinity) : 0;
    toUpper = usable ? std::min(upper, kKitInfinity) : 0;
}

/// Brings the forces inside their bounds: normal forces first, as the bounds of friction follow them.
void bringInside(DynsSweepBlock& block) {
    const DynsRowsAny rows{block.rows};
    const DynsSweepLayout<DynsRowsAny> at{rows};
    KitReal* d = block.data;
    const auto clamp = [&](bool friction) {
        for (int j = 0; j < block.rows; ++j)
            if ((block.normal[j] != kDynsSweepNoNormal) == friction)
                d[at.lambda() + j] =
                    std::min(std::max(d[at.lambda() + j], d[at.lower() + j]), d[at.upper() + j]);
    };
    clamp(false);
    if (!block.hasFriction)
        return;
    followNormal(block, rows, d + at.lambda());
    clamp(true);
}

/// Normal rows of the friction rows, where they are rows of the same constraint.
void buildFriction(DynsSweepBlock& block, const DynsConstraints& c, int firstRow) {
    const DynsSweepLayout<DynsRowsAny> at{{block.rows}};
    // Friction stands behind the normal row: the second row tells whether this is a contact.
    block.hasFriction = c.use_scaled_box_friction != 0 && block.rows > 1 &&
                        c.reference_normal[firstRow + 1] != kDynsNoReferenceNormal;
    for (int j = 0; j < block.rows; ++j) {
        const unsigned back = c.reference_normal[firstRow + j];
        const bool follows = block.hasFriction && back <= static_cast<unsigned>(j);
        block.normal[j] =
            follows ? static_cast<std::uint8_t>(j - static_cast<int>(back)) : kDynsSweepNoNormal;
        const KitReal friction = follows ? c.friction_coefficient[firstRow + j] : 0;
        const KitReal cohesion = follows ? c.soil_cohesion_coefficient[firstRow + j] : 0;
        if (!std::isfinite(friction))
            KitWarning(12, "Overriding an friction coefficient that was infinite\n");
        if (!std::isfinite(cohesion))
            KitWarning(12, "Overriding a cohesion coefficient that was infinite\n");
        block.data[at.friction() + j] = finiteOrZero(friction);
        block.data[at.cohesion() + j] = finiteOrZero(cohesion);
    }
}

} // namespace

std::size_t DynsSweepBlockReals(const DynsConstraints& c, int constraint) noexcept {
    const DynsSweepLayout<DynsRowsAny> at{{DynsConstraintRows(c, constraint)}};
    return static_cast<std::size_t>(at.reals(c.constraint_n_blocks[constraint]));
}

void DynsSweepBlockBuild(DynsSweepBlock& block, const DynsConstraints& c, int constraint,
                         KitReal* data) noexcept {
    const int rows = DynsConstraintRows(c, constraint);
    const DynsSweepLayout<DynsRowsAny> at{{rows}};
    const int firstRow = DynsConstraintFirstRow(c, constraint);
    block = {.data = data, .constraint = constraint, .rows = static_cast<std::uint8_t>(rows)};
    std::copy_n(c.xepsilon + firstRow, rows, data + at.epsilon());
    buildFriction(block, c, firstRow);
    DynsBuildConstraintBlock(c, constraint, rows, data + at.matrix());
    block.isDefinite = DynsSmallBoxInvert(data + at.matrix(), rows, data + at.inverse());
    const int first = c.constraint_first_block[constraint];
    for (int g = first; g < first + c.constraint_n_blocks[constraint]; ++g) {
        if (!DynsBlockMoves(c, g))
            continue;
        KitReal* J = data + at.jacobian(block.slots);
        std::copy_n(&c.G[g][0][0], 6 * rows, J);
        std::copy_n(&c.GM[g][0][0], 6 * rows, J + 6 * rows);
        block.body[block.slots++] = c.g_bodies_idx[g];
    }
}

void DynsSweepBlockLoad(DynsSweepBlock& block, const DynsConstraints& c, bool isWarm,
                        DynsSweepBody* bodies) noexcept {
    const int firstRow = DynsConstraintFirstRow(c, block.constraint), rows = block.rows;
    const DynsSweepLayout<DynsRowsAny> at{{rows}};
    KitReal* d = block.data;
    std::copy_n(c.rhs + firstRow, rows, d + at.rhs());
    for (int j = 0; j < rows; ++j)
        loadBounds(c.lower[firstRow + j], c.upper[firstRow + j], d[at.lower() + j],
                   d[at.upper() + j]);
    std::transform(c.lambda + firstRow, c.lambda + firstRow + rows, d + at.lambda(), finiteOrZero);
    if (isWarm)
        bringInside(block);
    push(block, DynsRowsAny{rows}, d + at.lambda(), bodies);
}

KitReal DynsSweepBlockVisit(DynsSweepBlock& block, DynsSweepBody* bodies) {
    return withRows(block.rows, [&](auto rows) { return visit(block, rows, bodies); });
}

KitReal DynsSweepBlockResidual(const DynsSweepBlock& block, const DynsSweepBody* bodies) noexcept {
    const DynsRowsAny rows{block.rows};
    const DynsSweepLayout<DynsRowsAny> at{rows};
    const KitReal* d = block.data;
    KitReal w[kDynsMaxConstraintRows], sum = 0;
    residualOf(block, rows, bodies, w);
    for (int j = 0; j < block.rows; ++j) {
        const KitReal e =
            boxResidual(w[j], d[at.lambda() + j], d[at.lower() + j], d[at.upper() + j]);
        sum += e * e;
    }
    return sum;
}

void DynsSweepBlockStore(const DynsSweepBlock& block, DynsConstraints& c) noexcept {
    const int firstRow = DynsConstraintFirstRow(c, block.constraint), rows = block.rows;
    const DynsSweepLayout<DynsRowsAny> at{{rows}};
    std::copy_n(block.data + at.lambda(), rows, c.lambda + firstRow);
    for (int j = 0; j < rows; ++j)
        c.index_set[firstRow + j] = kIndexOf[DynsSmallIndexOf(block.indexSet, j)];
    if (!block.hasFriction)
        return;
    std::copy_n(block.data + at.lower(), rows, c.lower + firstRow);
    std::copy_n(block.data + at.upper(), rows, c.upper + firstRow);
}
