#pragma once
#include <Dyns/LCPMatrix.h>

/// A dense symmetric matrix of at most 16 rows that holds everything in the object: the block of one
/// constraint in the iterative solver.
class HY_API smv_matrix : public LCPMatrix {
public:
    static constexpr int kMaxRows = 16;

    /// More than 16 rows: a warning, and the matrix has none.
    void allocate(int rows) override;
    void destroy() override;
    void reset_sparse_maps() override;
    KitReal setElement(int i, int j, KitReal value) override;
    [[nodiscard]] KitReal getElement(int i, int j) const override;
    [[nodiscard]] KitReal getElementFactor(int i, int j) const override;
    /// The whole partition, if it has at most 16 rows.
    void calcJinvMJT(DynsConstraints* c) override;
    /// The block of one constraint alone, without its couplings to others.
    void calcJinvMJT(DynsConstraints* c, int constraint);
    void factorize() override;
    void multiply(const KitReal* x, KitReal* y) override;
    void solve(KitReal* x, int first) override;
    void solveUnit(KitReal* column, int i) override;
    void factor_dense(KitReal* dense, int size) override;
    void solve_dense(const KitReal* dense, KitReal* b, int size) override;
    [[nodiscard]] KitReal getDiagInv(int i) const override;
    [[nodiscard]] const char* get_name() const override;
    [[nodiscard]] const KitReal* inverseColumn(int j) override;

    int lda = 0;
    KitReal M[kMaxRows * kMaxRows];   ///< A, row-major
    KitReal G[kMaxRows * kMaxRows];   ///< LDL^T factor, lower triangle
    KitReal inv[kMaxRows * kMaxRows]; ///< cached columns of the inverse
    unsigned cs[kMaxRows];
};
