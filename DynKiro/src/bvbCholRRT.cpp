#include <Dyns/bvbCholRRT.h>

#include "column_cache.h"
#include "dense_ldl.h"
#include "frontal_factor.h"
#include "skyline.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/vbChol.h>

#include <algorithm>

struct bvbCholRRT::Storage {
    const DynsConstraints* rows = nullptr; ///< what A was built from; null if set by elements
    DynsConstraintGraph graph;
    DynsEliminationTree tree;
    DynsFrontalFactor full, freeRows;
    DynsFrontalFactor::Cost cost; ///< of the factor over all rows
    bool fullStands = false;
    mutable DynsSkyline elements; ///< A set by elements, or for those who ask for elements
    mutable DynsSkyline natural;
    mutable bool naturalStands = false;
    DynsColumnCache columns;
    KitAlignedVector<unsigned> columnSolved;
    KitAlignedVector<KitReal> loads; ///< force and torque of the rows on each body, six a body
    KitAlignedVector<KitReal> work;

    /// y = A x on the rows: through the bodies, and the softness.
    void multiply(const KitReal* x, KitReal* y);
    const DynsSkyline& naturalFactor() const;
};

void bvbCholRRT::Storage::multiply(const KitReal* x, KitReal* y) {
    const DynsConstraints& c = *rows;
    loads.assign(static_cast<std::size_t>(6 * graph.bodyCount), 0.0);
    for (int b = 0; b < c.n_g_blocks; ++b) {
        KitReal* load = loads.data() + 6 * c.g_bodies_idx[b];
        const KitReal* lambda = x + c.g_block_first_row[b];
        for (int r = 0; r < c.g_block_size[b]; ++r)
            for (int k = 0; k < 6; ++k)
                load[k] += lambda[r] * c.G[b][r][k];
    }
    for (int i = 0; i < c.n_constraint_rows; ++i)
        y[i] = c.xepsilon[i] * x[i];
    for (int b = 0; b < c.n_g_blocks; ++b) {
        const KitReal* load = loads.data() + 6 * c.g_bodies_idx[b];
        KitReal* out = y + c.g_block_first_row[b];
        for (int r = 0; r < c.g_block_size[b]; ++r)
            for (int k = 0; k < 6; ++k)
                out[r] += c.GM[b][r][k] * load[k];
    }
}

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
    mStorage->fullStands = mStorage->naturalStands = false;
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
    if (s.graph.update(*c))
        s.tree.build(s.graph);
    s.cost = DynsFrontalFactor::cost(s.graph, s.tree, *c, nullptr);
}

void bvbCholRRT::factorize() {
    flags |= kLCPMatrixFactored; // the work waits until somebody wants it
}

void bvbCholRRT::makeFullFactor() {
    Storage& s = *mStorage;
    if (s.fullStands)
        return;
    s.full.factor(*s.rows, s.graph, s.tree, nullptr);
    s.fullStands = true;
}

void bvbCholRRT::multiply(const KitReal* x, KitReal* y) {
    if (mStorage->rows == nullptr)
        mStorage->naturalFactor().multiply(x, y);
    else
        mStorage->multiply(x, y);
}

void bvbCholRRT::solve(KitReal* x, int) {
    if (mStorage->rows == nullptr) {
        mStorage->naturalFactor().solve(x);
        return;
    }
    makeFullFactor();
    mStorage->full.solve(x);
}

void bvbCholRRT::solveUnit(KitReal* column, int i) {
    if (mStorage->rows == nullptr) {
        std::fill(column, column + n, 0.0);
        column[i] = 1;
        mStorage->naturalFactor().solve(column);
        return;
    }
    makeFullFactor();
    mStorage->full.solveUnit(column, i, n);
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
    if (++column_solved[j] == 1)
        solveUnit(mStorage->columns.add(j), j);
    return mStorage->columns.find(j);
}

double bvbCholRRT::solveFlops() const {
    return 4 * mStorage->cost.entries;
}

double bvbCholRRT::pendingFactorFlops() const {
    return mStorage->fullStands ? 0 : mStorage->cost.flops;
}

double bvbCholRRT::freeRowsFlops(const int* index_set) const {
    const Storage& s = *mStorage;
    if (s.rows == nullptr)
        return LCPMatrix::freeRowsFlops(index_set);
    return DynsFrontalFactor::cost(s.graph, s.tree, *s.rows, index_set).flops;
}

bool bvbCholRRT::solveFreeRows(const int* index_set, const KitReal* b, KitReal* z, KitReal* w) {
    Storage& s = *mStorage;
    if (s.rows == nullptr)
        return false;
    s.freeRows.factor(*s.rows, s.graph, s.tree, index_set);
    for (int i = 0; i < n; ++i)
        if (index_set[i] == kDynsIndexFree)
            z[i] = 0;
    s.work.resize(static_cast<std::size_t>(n));
    s.multiply(z, s.work.data());
    for (int i = 0; i < n; ++i)
        if (index_set[i] == kDynsIndexFree)
            z[i] = b[i] - s.work[static_cast<std::size_t>(i)];
    s.freeRows.solve(z);
    s.multiply(z, w);
    for (int i = 0; i < n; ++i)
        w[i] = index_set[i] == kDynsIndexFree ? 0 : w[i] - b[i];
    return true;
}
