#include <Dyns/smv_matrix.h>

#include "constraint_block.h"
#include "dense_ldl.h"

#include <Dyns/DynsConstraints.h>
#include <Kit/KitMessage.h>

#include <algorithm>

void smv_matrix::allocate(int rows) {
    if (rows < 0 || rows > kMaxRows) {
        KitWarning(1, "smv_matrix::allocate: at most 16 rows.\n");
        rows = 0;
    }
    n = lda = ild = rows;
    inverse = inv;
    column_solved = cs;
    std::fill(M, M + n * n, 0.0);
    std::fill(cs, cs + n, 0U);
    flags = kLCPMatrixAllocated;
}

void smv_matrix::destroy() {
    flags = 0;
}

void smv_matrix::reset_sparse_maps() {
    std::fill(M, M + n * n, 0.0);
    std::fill(cs, cs + n, 0U);
    flags = kLCPMatrixAllocated | kLCPMatrixMapsReset;
}

KitReal smv_matrix::setElement(int i, int j, KitReal value) {
    M[i * n + j] = M[j * n + i] = value;
    flags &= ~kLCPMatrixFactored;
    return value;
}

KitReal smv_matrix::getElement(int i, int j) const {
    return M[i * n + j];
}

KitReal smv_matrix::getElementFactor(int i, int j) const {
    return G[std::max(i, j) * n + std::min(i, j)];
}

void smv_matrix::calcJinvMJT(DynsConstraints* c) {
    if (c->n_constraint_rows != n)
        return;
    reset_sparse_maps();
    for (int i = 0; i < n; ++i)
        M[i * n + i] = c->xepsilon[i];
    for (int k = 0; k < c->n_constraints; ++k) {
        const int firstBlock = c->constraint_first_block[k];
        KitReal* rows = M + DynsConstraintFirstRow(*c, k) * n;
        DynsAddOwnProducts(*c, k, rows + DynsConstraintFirstRow(*c, k), n);
        for (int b = firstBlock; b < firstBlock + c->constraint_n_blocks[k]; ++b)
            for (int j = c->g_blocks_heads[c->g_bodies_idx[b]]; j < firstBlock;
                 j = c->g_blocks_next[j])
                DynsAddBlockProduct(*c, b, j, rows + c->g_block_first_row[j], n);
    }
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j)
            M[j * n + i] = M[i * n + j];
}

void smv_matrix::calcJinvMJT(DynsConstraints* c, int constraint) {
    DynsBuildConstraintBlock(*c, constraint, n, M);
}

void smv_matrix::factorize() {
    if ((flags & kLCPMatrixFactored) != 0)
        return;
    std::copy(M, M + n * n, G);
    DynsFactorDenseLdl(G, n, n);
    flags |= kLCPMatrixFactored;
}

void smv_matrix::multiply(const KitReal* x, KitReal* y) {
    for (int i = 0; i < n; ++i) {
        y[i] = 0;
        for (int j = 0; j < n; ++j)
            y[i] += M[i * n + j] * x[j];
    }
}

void smv_matrix::solve(KitReal* x, int) {
    DynsSolveDenseLdl(G, x, n, n);
}

void smv_matrix::solveUnit(KitReal* column, int i) {
    std::fill(column, column + n, 0.0);
    column[i] = 1;
    solve(column, i);
}

void smv_matrix::factor_dense(KitReal* dense, int size) {
    DynsFactorDenseLdl(dense, size, size);
}

void smv_matrix::solve_dense(const KitReal* dense, KitReal* b, int size) {
    DynsSolveDenseLdl(dense, b, size, size);
}

KitReal smv_matrix::getDiagInv(int i) const {
    return G[i * n + i] != 0 ? 1 / G[i * n + i] : 0;
}

const char* smv_matrix::get_name() const {
    return "dense, small matrix using home grown lapack";
}

const KitReal* smv_matrix::inverseColumn(int j) {
    KitReal* column = inv + ild * j;
    if (++column_solved[j] == 1)
        solveUnit(column, j);
    return column;
}
