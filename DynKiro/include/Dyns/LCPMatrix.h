#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

#include <limits>
#include <span>

struct DynsConstraints;
struct DynsLCPSolverParameters;
class KitMemoryHandler;
class KitMemoryPool;
class KitThreadPool;

/// Values of LCPMatrix::flags.
enum LCPMatrixFlag : int {
    kLCPMatrixAllocated = 2,
    kLCPMatrixFactored = 4,
    kLCPMatrixMapsReset = 16,
};

/// A symmetric positive definite matrix A = J M^-1 J^T + diag(xepsilon) with its factor, as the LCP
/// solver sees it. Storage is never quadratic in the rows; columns of the inverse are made on demand
/// and do not come from the memory pool of a solve, since they outlive it. The factor of the whole
/// matrix may be made as late as the first solve that wants it. Vectors have room for n raised to a
/// multiple of 4.
class HY_API LCPMatrix {
public:
    virtual ~LCPMatrix() = default;

    int n = 0;                         ///< rows
    unsigned* column_solved = nullptr; ///< row: how often column i of the inverse was asked for
    KitReal* inverse = nullptr;        ///< cached columns, where the class keeps them side by side
    int ild = 0;                       ///< leading dimension of inverse
    int solver_error = 0;
    KitMemoryHandler* memory_handler = nullptr; ///< not owned
    KitThreadPool* thread_pool = nullptr;       ///< not owned; null works on the calling thread
    int flags = 0;

    /// An operation of a solve takes as long as so many of a factorisation: it waits for memory.
    static constexpr double kSolveWeight = 4;

    virtual void allocate(int rows) = 0;
    virtual void destroy() = 0;
    /// Forgets structure, cached columns and factor.
    virtual void reset_sparse_maps() = 0;
    virtual KitReal setElement(int i, int j, KitReal value) = 0;
    [[nodiscard]] virtual KitReal getElement(int i, int j) const = 0;
    /// Element of the factor L, 0 outside its structure.
    [[nodiscard]] virtual KitReal getElementFactor(int i, int j) const = 0;
    /// Builds A from the rows of a partition.
    virtual void calcJinvMJT(DynsConstraints* c) = 0;
    virtual void factorize() = 0;
    /// y = A x
    virtual void multiply(const KitReal* x, KitReal* y) = 0;
    /// x = A^-1 x in place.
    virtual void solve(KitReal* x, int first) = 0;
    /// column = A^-1 e_i
    virtual void solveUnit(KitReal* column, int i) = 0;
    /// LDL^T in place on the lower triangle of a row-major n by n matrix. A pivot at or below 1e-14
    /// of the largest diagonal counts as dependent: its unknown becomes 0.
    virtual void factor_dense(KitReal* M, int size) = 0;
    virtual void solve_dense(const KitReal* M, KitReal* b, int size) = 0;
    [[nodiscard]] virtual KitReal getDiagInv(int i) const = 0;
    [[nodiscard]] virtual const char* get_name() const = 0;

    /// Column j of A^-1, n entries, computed when first asked for and kept until the structure is
    /// reset. Counts in column_solved.
    [[nodiscard]] virtual const KitReal* inverseColumn(int j) = 0;

    /// Makes these columns of the inverse together, where that is cheaper than one by one.
    virtual void prepareColumns(std::span<const int> rows) { (void)rows; }

    /// Operations of one solve() with the full factor, an estimate.
    [[nodiscard]] virtual double solveFlops() const { return 2.0 * n * n; }
    /// Operations still to be done before the first solve; 0 once the factor stands.
    [[nodiscard]] virtual double pendingFactorFlops() const { return 0; }
    /// Operations of solveFreeRows() with this index set, those of a solve by their weight, an
    /// estimate; infinite without that road.
    [[nodiscard]] virtual double freeRowsFlops(const int* index_set) const {
        (void)index_set;
        return std::numeric_limits<double>::infinity();
    }
    /// Solves for the rows of index set 0 alone: given the values of the tight rows in z, finds the
    /// free rows so that (A z - b) is 0 there, and w = A z - b on the tight rows.
    /// Answers false where the class has no such road; the LCP solver then takes the dense one.
    virtual bool solveFreeRows(const int* index_set, const KitReal* b, KitReal* z, KitReal* w) {
        (void)index_set, (void)b, (void)z, (void)w;
        return false;
    }
};

/// Type of an LCP solver: finds z in [lower, upper] with w = A z - b complementary. The result is
/// the number of passes, negative if the solve gave up.
using lcp_solver_function_ptr = int (*)(LCPMatrix* m, KitReal* z, KitReal* b, KitReal* lower,
                                        KitReal* upper, int* index_set,
                                        DynsLCPSolverParameters* parameters, KitMemoryPool* pool,
                                        void* info);
