#pragma once
#include <Dyns/LCPMatrix.h>

#include <memory>

/// Sparse Cholesky factorisation in a fill-reducing order, on dense fronts of constraints. The order
/// and the structure of the factor are kept while the graph of the constraints stands. The size of a
/// pivot that is not positive takes its place. All operations answer in the natural order of the rows.
///
/// The factor over all rows is made when it is first needed; solveFreeRows() factors the free rows
/// alone, or borders the factor of a set near to theirs. A thread_pool serves large systems; results
/// do not depend on it.
class HY_API bvbCholRRT : public LCPMatrix {
public:
    bvbCholRRT();
    ~bvbCholRRT() override;

    void allocate(int rows) override;
    void destroy() override;
    void reset_sparse_maps() override;
    /// A matrix whose elements are set one by one is factored on its skyline.
    KitReal setElement(int i, int j, KitReal value) override;
    [[nodiscard]] KitReal getElement(int i, int j) const override;
    /// Of the factor in the natural order, which this call computes.
    [[nodiscard]] KitReal getElementFactor(int i, int j) const override;
    void calcJinvMJT(DynsConstraints* c) override;
    void factorize() override;
    void multiply(const KitReal* x, KitReal* y) override;
    void solve(KitReal* x, int first) override;
    void solveUnit(KitReal* column, int i) override;
    void factor_dense(KitReal* M, int size) override;
    void solve_dense(const KitReal* M, KitReal* b, int size) override;
    [[nodiscard]] KitReal getDiagInv(int i) const override;
    [[nodiscard]] const char* get_name() const override;
    [[nodiscard]] const KitReal* inverseColumn(int j) override;
    void prepareColumns(std::span<const int> rows) override;
    [[nodiscard]] double solveFlops() const override;
    [[nodiscard]] double pendingFactorFlops() const override;
    [[nodiscard]] double freeRowsFlops(const int* index_set) const override;
    bool solveFreeRows(const int* index_set, const KitReal* b, KitReal* z, KitReal* w) override;

private:
    struct Storage;
    std::unique_ptr<Storage> mStorage;
};
