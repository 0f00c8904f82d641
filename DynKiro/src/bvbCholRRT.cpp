#include <Dyns/bvbCholRRT.h>

#include "column_cache.h"
#include "dense_ldl.h"
#include "skyline.h"
#include "sparse_system.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/vbChol.h>

#include <algorithm>

struct bvbCholRRT::Storage {
    const DynsConstraints* rows = nullptr; ///< what A was built from; null if set by elements
    DynsSparseSystem system;
    mutable DynsSkyline elements; ///< A set by elements, or for those who ask for elements
    mutable DynsSkyline natural;
    mutable bool naturalStands = false;
    DynsColumnCache columns;
    KitAlignedVector<int> missingRows;
    KitAlignedVector<KitReal*> missingColumns;
    KitAlignedVector<unsigned> columnSolved;

    const DynsSkyline& naturalFactor() const;
};

const DynsSkyline& bvbCholRRT::Storage::naturalFactor() const {
    if (!naturalStands) {
        if (rows != nullptr)
            natural.build(*rows);
        else
            natural = elements;
        natural.factor(DynsBadPivot::kSize);
        naturalStands = true;
    }
    return natural;
}

bvbCholRRT::bvbCholRRT() : mStorage(std::make_unique<Storage>()) {}

bvbCholRRT::~bvbCholRRT() = default;

void bvbCholRRT::allocate(int rows) {
    n = rows;
    ild = DynsInverseStride((n + 3) / 4 * 4);
    mStorage->columnSolved.assign(static_cast<std::size_t>(n), 0U);
    column_solved = mStorage->columnSolved.data();
    mStorage->rows = nullptr;
    mStorage->elements.reset(0);
    flags = kLCPMatrixAllocated;
    solver_error = 0;
}

void bvbCholRRT::destroy() {
    flags = 0;
    mStorage->rows = nullptr;
}

void bvbCholRRT::reset_sparse_maps() {
    if ((flags & kLCPMatrixMapsReset) != 0)
        return;
    std::fill(column_solved, column_solved + n, 0U);
    mStorage->columns.reset(n, static_cast<std::size_t>(ild));
    mStorage->naturalStands = false;
    flags |= kLCPMatrixMapsReset;
}

KitReal bvbCholRRT::setElement(int i, int j, KitReal value) {
    reset_sparse_maps();
    Storage& s = *mStorage;
    if (s.rows != nullptr)
        s.elements.build(*s.rows);
    else if (s.elements.size() != n)
        s.elements.reset(n);
    s.rows = nullptr;
    s.elements.set(i, j, value);
    s.naturalStands = false;
    return value;
}

KitReal bvbCholRRT::getElement(int i, int j) const {
    const Storage& s = *mStorage;
    if (s.rows != nullptr && s.elements.size() != n)
        s.elements.build(*s.rows);
    return s.elements.get(i, j);
}

KitReal bvbCholRRT::getElementFactor(int i, int j) const {
    return mStorage->naturalFactor().get(i, j);
}

void bvbCholRRT::calcJinvMJT(DynsConstraints* c) {
    reset_sparse_maps();
    Storage& s = *mStorage;
    s.rows = c;
    s.elements.reset(0);
    s.system.setUp(*c, thread_pool);
}

void bvbCholRRT::factorize() {
    flags |= kLCPMatrixFactored; // the work waits until somebody wants it
}

void bvbCholRRT::multiply(const KitReal* x, KitReal* y) {
    if (mStorage->rows == nullptr)
        mStorage->naturalFactor().multiply(x, y);
    else
        mStorage->system.multiply(x, y);
}

void bvbCholRRT::solve(KitReal* x, int) {
    if (mStorage->rows == nullptr) {
        mStorage->naturalFactor().solve(x);
        return;
    }
    mStorage->system.solve(x);
}

void bvbCholRRT::solveUnit(KitReal* column, int i) {
    if (mStorage->rows == nullptr) {
        std::fill(column, column + n, 0.0);
        column[i] = 1;
        mStorage->naturalFactor().solve(column);
        return;
    }
    mStorage->system.solveUnits({&i, 1}, {&column, 1});
}

void bvbCholRRT::factor_dense(KitReal* M, int size) {
    DynsFactorDenseLdl(M, size, size);
}

void bvbCholRRT::solve_dense(const KitReal* M, KitReal* b, int size) {
    DynsSolveDenseLdl(M, b, size, size);
}

KitReal bvbCholRRT::getDiagInv(int i) const {
    return mStorage->naturalFactor().inverseDiagonal(i);
}

const char* bvbCholRRT::get_name() const {
    return "block vb chol with tiling using inline functs";
}

const KitReal* bvbCholRRT::inverseColumn(int j) {
    ++column_solved[j];
    if (mStorage->columns.find(j) == nullptr)
        solveUnit(mStorage->columns.add(j), j);
    return mStorage->columns.find(j);
}

void bvbCholRRT::prepareColumns(std::span<const int> rows) {
    Storage& s = *mStorage;
    if (s.rows == nullptr)
        return;
    s.missingRows.clear();
    s.missingColumns.clear();
    for (const int row : rows)
        if (s.columns.find(row) == nullptr) {
            s.missingRows.push_back(row);
            s.missingColumns.push_back(s.columns.add(row));
        }
    if (!s.missingRows.empty())
        s.system.solveUnits(s.missingRows, s.missingColumns);
}

double bvbCholRRT::solveFlops() const {
    return mStorage->rows == nullptr ? LCPMatrix::solveFlops() : mStorage->system.solveFlops();
}

double bvbCholRRT::pendingFactorFlops() const {
    return mStorage->rows == nullptr ? 0 : mStorage->system.pendingFlops();
}

double bvbCholRRT::freeRowsFlops(const int* index_set) const {
    const Storage& s = *mStorage;
    if (s.rows == nullptr)
        return LCPMatrix::freeRowsFlops(index_set);
    return s.system.freeRowsFlops(index_set);
}

bool bvbCholRRT::solveFreeRows(const int* index_set, const KitReal* b, KitReal* z, KitReal* w) {
    Storage& s = *mStorage;
    if (s.rows == nullptr)
        return false;
    s.system.solveFreeRows(index_set, b, z, w);
    return true;
}
