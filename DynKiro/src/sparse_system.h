#pragma once
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
    void setUp(const DynsConstraints& c);

    /// x = A^-1 x in place. The factor over all rows is made by the first solve.
    void solve(KitReal* x);
    /// column = A^-1 e_row
    void solveUnit(KitReal* column, int row);
    /// See DynsRowProduct::solveFreeRows(); factors the free rows.
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
        DynsFrontalFactor::Cost cost; ///< over all rows
    };

    void chooseHubs();
    [[nodiscard]] const Order& order() const { return mUsesHubs ? mWithHubs : mPlain; }
    void factor(DynsFrontalFactor& factor, const int* index_set);
    void factorAll();
    bool refine(DynsFrontalFactor& factor, const int* index_set, const KitReal* b, KitReal* x);

    const DynsConstraints* mRows = nullptr;
    Order mPlain, mWithHubs;
    bool mUsesHubs = false;
    bool mAllStands = false;
    DynsFrontalFactor mAll, mFree;
    DynsRowProduct mProduct;
    KitAlignedVector<int> mBodyRows, mHubs;                   ///< work of the choice of hubs
    KitAlignedVector<KitReal> mRight, mSolution, mCorrection; ///< work of the refinement
};
