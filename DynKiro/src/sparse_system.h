#pragma once
#include "bordered_factor.h"
#include "elimination_tree.h"
#include "frontal_factor.h"
#include "row_product.h"

#include <Kit/KitAlignedVector.h>
#include <Kit/KitTypes.h>

struct DynsConstraints;

/// A = J M^-1 J^T + diag(xepsilon) of a partition, solved in a fill-reducing order. The order and the
/// structure of the factor are kept while the graph of the constraints stands. Where bodies with many
/// constraints make most of the work they are eliminated as hubs, and each solution is refined.
class DynsSparseSystem {
public:
    /// Takes the rows, which must stand as they are until the last solve.
    /// @param pool threads to work on, null for the calling one alone
    void setUp(const DynsConstraints& c, KitThreadPool* pool);

    /// x = A^-1 x in place. The factor over all rows is made by the first solve.
    void solve(KitReal* x);
    /// column = A^-1 e_row for each of the rows.
    void solveUnits(std::span<const int> rows, std::span<KitReal* const> columns);
    /// See DynsRowProduct::solveFreeRows().
    void solveFreeRows(const int* index_set, const KitReal* b, KitReal* z, KitReal* w);
    /// y = A x
    void multiply(const KitReal* x, KitReal* y);

    /// Operations of one solve with the factor over all rows.
    [[nodiscard]] double solveFlops() const;
    /// Operations to make the factor over all rows, 0 once it stands.
    [[nodiscard]] double pendingFlops() const;
    /// Operations to factor and solve the free rows.
    [[nodiscard]] double freeRowsFlops(const int* index_set) const;
    /// Whether bodies are eliminated as hubs at present.
    [[nodiscard]] bool usesHubs() const { return mUsesHubs; }

private:
    struct Order {
        DynsConstraintGraph graph;
        DynsEliminationTree tree;
        DynsFactorCost cost; ///< over all rows
    };
    struct Base {
        DynsBorderedFactor factor;
        long long lastUse = 0;
    };
    struct Choice {
        std::size_t base;
        bool refactor;
        double flops;
    };

    /// Operations that the rows of possible hubs take at least, with each other.
    struct HubWork {
        double largest = 0, all = 0;
    };

    void chooseOrder();
    HubWork listHubs();
    void buildPlain();
    void buildWithHubs();
    void giveUpHubs();
    void forgetStructure();
    [[nodiscard]] const Order& order() const { return mUsesHubs ? mWithHubs : mPlain; }
    [[nodiscard]] DynsFactorCost cost(const int* index_set) const;
    [[nodiscard]] double solveTime(double entries) const;
    [[nodiscard]] Choice choose(const int* index_set) const;
    void factorAll();
    void solveFree(Base& base, const int* index_set, KitReal* x);
    template <typename Solve>
    bool refine(const int* index_set, const KitReal* b, KitReal* x, Solve solve);

    const DynsConstraints* mRows = nullptr;
    KitThreadPool* mPool = nullptr;
    Order mPlain, mWithHubs;
    bool mPlainStands = false; ///< the order without hubs has been made
    bool mHubsPay = false;     ///< for this graph, where they are exact enough
    bool mUsesHubs = false;
    bool mAllStands = false, mAllPlanned = false;
    DynsFrontalFactor mAll;
    Base mBases[2];
    long long mUses = 0;
    DynsRowProduct mProduct;
    mutable KitAlignedVector<int> mCounts;                    ///< vertex: rows of an index set
    KitAlignedVector<int> mBodyRows, mHubs;                   ///< work of the choice of hubs
    KitAlignedVector<KitReal> mRight, mSolution, mCorrection; ///< work of the refinement
};
