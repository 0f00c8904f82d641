#include <Dyns/DynsConstraints.h>

namespace {

// Behind the last multiplier.
constexpr KitReal kEndOfLambda = 4294967295.0;

enum Bound : int { kAtUpper = 1 | 2, kAtLower = 1 | 4 };

void copyRows(const DynsConstraints& c, int first, int n, KitReal* lambda, KitReal* phi,
              int* dynamic_flags) {
    for (int i = 0; i < n; ++i) {
        const int row = first + i;
        lambda[i] = c.lambda[row];
        phi[i] = c.phi[row];
        if (c.lambda[row] >= c.upper[row])
            dynamic_flags[i] |= kAtUpper;
        if (c.lambda[row] <= c.lower[row])
            dynamic_flags[i] |= kAtLower;
    }
    lambda[n] = kEndOfLambda;
}

} // namespace

// Blocks stand in the order of the slots, without those that took none, so that one walk matches
// them, even if two slots hold the same body. dynamic_flags keeps the bits it has: 1 and 2 are added
// where lambda is at or above its upper bound, 1 and 4 where it is at or below the lower one.
void DynsConstraintsGetForces(const DynsConstraints* c, int constraint, DynsBody* const* bodies,
                              int n_bodies, KitVector4* force, KitVector4* torque, KitReal* lambda,
                              KitReal* phi, int* dynamic_flags) {
    const bool known = constraint >= 0 && constraint < c->n_constraints;
    const int first = known ? c->constraint_first_block[constraint] : 0;
    const int end = known ? first + c->constraint_n_blocks[constraint] : 0;
    for (int slot = 0, block = first; slot < n_bodies; ++slot) {
        const bool matches = block < end && bodies[slot] && c->g_bodies[block] == bodies[slot];
        for (int k = 0; k < 4; ++k) {
            force[slot][k] = matches ? c->g_forces[block][k] : 0;
            torque[slot][k] = matches ? c->g_forces[block][4 + k] : 0;
        }
        block += matches;
    }
    if (known)
        copyRows(*c, c->g_block_first_row[first], c->g_block_size[first], lambda, phi,
                 dynamic_flags);
    else
        lambda[0] = kEndOfLambda;
}
