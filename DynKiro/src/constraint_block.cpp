#include "constraint_block.h"

#include <Dyns/DynsConstraints.h>

#include <algorithm>

int DynsConstraintRows(const DynsConstraints& c, int constraint) noexcept {
    return c.g_block_size[c.constraint_first_block[constraint]];
}

int DynsConstraintFirstRow(const DynsConstraints& c, int constraint) noexcept {
    return c.g_block_first_row[c.constraint_first_block[constraint]];
}

bool DynsBlockMoves(const DynsConstraints& c, int block) noexcept {
    const KitReal* entries = &c.GM[block][0][0];
    return std::any_of(entries, entries + 6 * c.g_block_size[block],
                       [](KitReal entry) { return entry != 0; });
}

void DynsAddBlockProduct(const DynsConstraints& c, int i, int j, KitReal* A, int ld) noexcept {
    const DynsGRow* gm = c.GM[i];
    const DynsGRow* g = c.G[j];
    for (int a = 0; a < c.g_block_size[i]; ++a)
        for (int e = 0; e < c.g_block_size[j]; ++e) {
            KitReal sum = 0;
            for (int k = 0; k < 6; ++k)
                sum += gm[a][k] * g[e][k];
            A[a * ld + e] += sum;
        }
}

void DynsAddOwnProducts(const DynsConstraints& c, int constraint, KitReal* A, int ld) noexcept {
    const int first = c.constraint_first_block[constraint];
    const int end = first + c.constraint_n_blocks[constraint];
    for (int i = first; i < end; ++i)
        for (int j = first; j < end; ++j)
            if (c.g_bodies_idx[i] == c.g_bodies_idx[j])
                DynsAddBlockProduct(c, i, j, A, ld);
}

void DynsBuildConstraintBlock(const DynsConstraints& c, int constraint, int rows,
                              KitReal* A) noexcept {
    std::fill(A, A + rows * rows, 0.0);
    const int row = DynsConstraintFirstRow(c, constraint);
    for (int i = 0; i < rows; ++i)
        A[i * rows + i] = c.xepsilon[row + i];
    DynsAddOwnProducts(c, constraint, A, rows);
    for (int i = 0; i < rows; ++i) // rounding differs on the two sides of the diagonal
        for (int j = 0; j < i; ++j)
            A[j * rows + i] = A[i * rows + j];
}
