#pragma once
#include <Dyns/LCPMatrix.h>

#include <memory>

/// Row-oriented Cholesky factorisation on the skyline, in the natural order of the rows. Kept plain:
/// the reference that faster matrices are measured against. A pivot that is not positive becomes
/// 1e-12.
class HY_API vbChol : public LCPMatrix {
public:
    vbChol();
    ~vbChol() override;

    void allocate(int rows) override;
    void destroy() override;
    void reset_sparse_maps() override;
    KitReal setElement(int i, int j, KitReal value) override;
    [[nodiscard]] KitReal getElement(int i, int j) const override;
    [[nodiscard]] KitReal getElementFactor(int i, int j) const override;
    void calcJinvMJT(DynsConstraints* c) override;
    void factorize() override;
    /// Runs on the factor: factorize() must have run.
    void multiply(const KitReal* x, KitReal* y) override;
    void solve(KitReal* x, int first) override;
    void solveUnit(KitReal* column, int i) override;
    void factor_dense(KitReal* M, int size) override;
    void solve_dense(const KitReal* M, KitReal* b, int size) override;
    [[nodiscard]] KitReal getDiagInv(int i) const override;
    [[nodiscard]] const char* get_name() const override;
    [[nodiscard]] const KitReal* inverseColumn(int j) override;
    [[nodiscard]] double solveFlops() const override;
    /// Taken where the tight rows are too many for columns of the inverse: freeRowsFlops() says that
    /// it costs more than they.
    bool solveFreeRows(const int* index_set, const KitReal* b, KitReal* z, KitReal* w) override;

    /// First stored column of a row.
    [[nodiscard]] int min_col(int row) const;

private:
    struct Storage;
    std::unique_ptr<Storage> mStorage;
};

/// Column stride of cached inverses of n rows: a multiple of 12, raised to one of 16.
[[nodiscard]] constexpr int DynsInverseStride(int n) {
    return ((n + 11) / 12 * 12 + 15) / 16 * 16;
}
