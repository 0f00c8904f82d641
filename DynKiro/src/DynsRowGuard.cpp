#include "DynsRowGuard.h"

#include <Dyns/DynsConstraints.h>

#include <algorithm>
#include <cmath>

namespace {

// Not finite if one of the six entries is not: 0 x is NaN for infinities and NaN alone.
KitReal finiteMark(const DynsGRow& row) {
    KitReal mark = 0;
    for (KitReal entry : row)
        mark += 0 * entry;
    return mark;
}

} // namespace

bool DynsRowIsFinite(const DynsConstraints& c, int firstBlock, int nBlocks, int row) {
    KitReal mark = 0 * c.phi[row] + 0 * c.v0[row] + 0 * c.lower[row] + 0 * c.upper[row] +
                   0 * c.xepsilon[row] + 0 * c.xgamma[row];
    for (int block = firstBlock; block < firstBlock + nBlocks; ++block)
        mark += finiteMark(c.G[block][row - c.g_block_first_row[block]]);
    return std::isfinite(mark);
}

void DynsNeutralizeRow(DynsConstraints& c, int firstBlock, int nBlocks, int row) {
    c.phi[row] = c.v0[row] = c.xgamma[row] = c.lower[row] = c.upper[row] = 0;
    c.xepsilon[row] = 1;
    c.friction_coefficient[row] = c.soil_cohesion_coefficient[row] = 0;
    for (int block = firstBlock; block < firstBlock + nBlocks; ++block) {
        const int r = row - c.g_block_first_row[block];
        std::fill_n(c.G[block][r], 6, 0.0);
        std::fill_n(c.GM[block][r], 6, 0.0);
    }
}

void DynsNeutralizeBadRows(DynsConstraints& c, double* rhs0) {
    for (int i = 0; i < c.n_constraints; ++i) {
        const int firstBlock = c.constraint_first_block[i], nBlocks = c.constraint_n_blocks[i];
        const int firstRow = c.g_block_first_row[firstBlock];
        for (int row = firstRow; row < firstRow + c.g_block_size[firstBlock]; ++row) {
            KitReal mark = 0 * rhs0[row];
            for (int block = firstBlock; block < firstBlock + nBlocks; ++block)
                mark += finiteMark(c.GM[block][row - firstRow]);
            if (std::isfinite(mark) && DynsRowIsFinite(c, firstBlock, nBlocks, row))
                continue;
            DynsNeutralizeRow(c, firstBlock, nBlocks, row);
            rhs0[row] = 0;
        }
    }
}
