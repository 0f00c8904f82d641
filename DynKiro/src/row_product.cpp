#include "row_product.h"

#include <cstddef>

void DynsRowProduct::multiply(const DynsConstraints& c, const KitReal* x, KitReal* y) {
    mLoads.assign(6 * (static_cast<std::size_t>(c.n_bodies) + 1), 0.0);
    for (int b = 0; b < c.n_g_blocks; ++b) {
        KitReal* load = mLoads.data() + 6 * static_cast<std::ptrdiff_t>(c.g_bodies_idx[b]);
        const KitReal* lambda = x + c.g_block_first_row[b];
        const DynsGRow* G = c.G[b];
        KitReal sums[6]; // in registers
        for (int k = 0; k < 6; ++k)
            sums[k] = load[k];
        for (int r = 0; r < c.g_block_size[b]; ++r)
            for (int k = 0; k < 6; ++k)
                sums[k] += lambda[r] * G[r][k];
        for (int k = 0; k < 6; ++k)
            load[k] = sums[k];
    }
    for (int i = 0; i < c.n_constraint_rows; ++i)
        y[i] = c.xepsilon[i] * x[i];
    for (int b = 0; b < c.n_g_blocks; ++b) {
        const KitReal* load = mLoads.data() + 6 * static_cast<std::ptrdiff_t>(c.g_bodies_idx[b]);
        KitReal* out = y + c.g_block_first_row[b];
        const DynsGRow* GM = c.GM[b];
        for (int r = 0; r < c.g_block_size[b]; ++r)
            out[r] += (GM[r][0] * load[0] + GM[r][1] * load[1] + GM[r][2] * load[2]) +
                      (GM[r][3] * load[3] + GM[r][4] * load[4] + GM[r][5] * load[5]);
    }
}
