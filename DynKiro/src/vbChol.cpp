#include <Dyns/vbChol.h>

#include "column_cache.h"
#include "dense_ldl.h"
#include "row_product.h"
#include "skyline.h"

#include <Dyns/DynsConstraints.h>

#include <algorithm>

struct vbChol::Storage {
    DynsSkyline matrix;                    ///< A, then L in place
    const DynsConstraints* rows = nullptr; ///< what A was built from; null if set by elements
    DynsSkyline freeRows;
    DynsRowProduct product;
    DynsColumnCache columns;
    KitAlignedVector<unsigned> columnSolved;
};

vbChol::vbChol() : mStorage(std::make_unique<Storage>()) {}

vbChol::~vbChol() = default;

void vbChol::allocate(int rows) {
    n = rows;
    ild = DynsInverseStride(n);
    mStorage->columnSolved.assign(static_cast<std::size_t>(n), 0U);
    column_solved = mStorage->columnSolved.data();
    flags = kLCPMatrixAllocated;
    solver_error = 0;
}

void vbChol::destroy() {
    flags = 0;
}

void vbChol::reset_sparse_maps() {
    if ((flags & kLCPMatrixMapsReset) != 0)
        return;
    std::fill(column_solved, column_solved + n, 0U);
    mStorage->columns.reset(n, static_cast<std::size_t>(ild));
    mStorage->rows = nullptr;
    mStorage->matrix.reset(n);
    flags |= kLCPMatrixMapsReset;
}

KitReal vbChol::setElement(int i, int j, KitReal value) {
    reset_sparse_maps();
    mStorage->rows = nullptr;
    mStorage->matrix.set(i, j, value);
    return value;
}

KitReal vbChol::getElement(int i, int j) const {
    return mStorage->matrix.get(i, j);
}

KitReal vbChol::getElementFactor(int i, int j) const {
    return mStorage->matrix.get(i, j);
}

void vbChol::calcJinvMJT(DynsConstraints* c) {
    reset_sparse_maps();
    mStorage->rows = c;
    mStorage->matrix.build(*c);
}

void vbChol::factorize() {
    if ((flags & kLCPMatrixFactored) != 0)
        return;
    mStorage->matrix.factor(DynsBadPivot::kReplace);
    flags |= kLCPMatrixFactored;
}

void vbChol::multiply(const KitReal* x, KitReal* y) {
    mStorage->matrix.multiply(x, y);
}

void vbChol::solve(KitReal* x, int) {
    mStorage->matrix.solve(x);
}

void vbChol::solveUnit(KitReal* column, int i) {
    std::fill(column, column + n, 0.0);
    column[i] = 1;
    mStorage->matrix.solve(column);
}

void vbChol::factor_dense(KitReal* M, int size) {
    DynsFactorDenseLdl(M, size, size);
}

void vbChol::solve_dense(const KitReal* M, KitReal* b, int size) {
    DynsSolveDenseLdl(M, b, size, size);
}

KitReal vbChol::getDiagInv(int i) const {
    return mStorage->matrix.inverseDiagonal(i);
}

const char* vbChol::get_name() const {
    return "variable bandwith cholesky";
}

const KitReal* vbChol::inverseColumn(int j) {
    if (++column_solved[j] == 1)
        solveUnit(mStorage->columns.add(j), j);
    return mStorage->columns.find(j);
}

double vbChol::solveFlops() const {
    return 4.0 * static_cast<double>(mStorage->matrix.entries());
}

bool vbChol::solveFreeRows(const int* index_set, const KitReal* b, KitReal* z, KitReal* w) {
    Storage& s = *mStorage;
    if (s.rows == nullptr)
        return false;
    s.freeRows.build(*s.rows);
    s.freeRows.fixRows(index_set);
    s.freeRows.factor(DynsBadPivot::kReplace);
    s.product.solveFreeRows(*s.rows, index_set, b, z, w, [&s](KitReal* x) { s.freeRows.solve(x); });
    return true;
}

int vbChol::min_col(int row) const {
    return mStorage->matrix.minColumn(row);
}
