#pragma once
#include "elimination_tree.h"

#include <Kit/KitAlignedVector.h>
#include <Kit/KitTypes.h>

#include <cstddef>
#include <span>

struct DynsConstraints;

/// Multifrontal Cholesky factor of A, or of A restricted to some rows (Duff, Reid, "The multifrontal
/// solution of indefinite sparse symmetric linear equations", 1983). Each supernode assembles its
/// rows of A and its children's updates in a dense front, eliminates its pivots, and leaves an update
/// matrix to its parent. Buffers keep their capacity from one factorisation to the next.
///
/// With hubs in the graph it is the factor L D L^T, D = +-1, of the quasi-definite
///   [ A'   W   ]   A' = A without the hubs' parts, W = J M^-1 of the hubs,
///   [ W^T -M^-1]   which gives x from (b, 0), as A = A' + W M W^T
/// (Vanderbei, "Symmetric quasidefinite matrices", SIAM J. Optim. 5, 1995): no hub couples all of its
/// constraints. It loses digits where A' is nearer to singular than A.
class DynsFrontalFactor {
public:
    /// Operations and entries of a factor over the given rows.
    struct Cost {
        double flops = 0;
        double entries = 0;
    };

    /// Hubs take M^-1 from their bodies.
    /// @param index_set rows with another value than 0 are left out; null takes all
    void factor(const DynsConstraints& c, const DynsConstraintGraph& graph,
                const DynsEliminationTree& tree, const int* index_set);
    /// x = A^-1 x over the rows of the factor; other entries are neither read nor changed.
    void solve(KitReal* x);
    /// column = A^-1 e_row, all rows of the partition; only for a factor over all rows.
    void solveUnit(KitReal* column, int row);

    [[nodiscard]] static Cost cost(const DynsConstraintGraph& graph,
                                   const DynsEliminationTree& tree, const DynsConstraints& c,
                                   const int* index_set);

private:
    struct Panel {
        std::size_t start; ///< first entry of L, and
        int rowStart;      ///< of the row numbers
        int pivots, rows, ld;
        int before, hubs; ///< columns of the pivots before the hubs', and of the hubs
    };

    void listRows(const DynsConstraints& c, const int* index_set);
    void layOut(const DynsEliminationTree& tree);
    void assembleHub(const DynsConstraints& c, int hub, int column, const Panel& panel);
    void eliminate(const Panel& panel, KitReal* update, KitReal* inverseDiagonal);
    void assembleRows(const DynsConstraints& c, const DynsEliminationTree& tree,
                      const DynsSupernode& node, const Panel& panel);
    void addUpdate(const DynsEliminationTree& tree, const DynsSupernode& child,
                   const DynsSupernode& parent, const Panel& panel, const KitReal* childUpdate,
                   KitReal* update);
    KitReal* withHubs(KitReal* x);
    void finishSolve(KitReal* y, KitReal* x);
    void forward(KitReal* x, std::size_t firstNode, bool pathOnly);
    void backward(KitReal* x);

    const DynsConstraintGraph* mGraph = nullptr;
    const DynsEliminationTree* mTree = nullptr;
    int mRowCount = 0;                         ///< of the partition; those of the hubs follow
    KitAlignedVector<int> mRowList, mRowStart; ///< rows of the factor, by vertex
    KitAlignedVector<Panel> mPanels;           ///< supernode
    KitAlignedVector<int> mRows;               ///< row numbers of each front
    KitAlignedVector<KitReal> mL, mInverseDiagonal;
    KitAlignedVector<KitReal> mUpdates; ///< stack of update matrices
    KitAlignedVector<int> mUpdateStack; ///< their supernodes
    KitAlignedVector<int> mOffset, mPlace, mChildOffset;
    KitAlignedVector<int> mConstraintOf; ///< block: its constraint
    KitAlignedVector<KitReal> mBuffer;   ///< one front of a solve
    KitAlignedVector<KitReal> mNegated;  ///< columns of hubs
    KitAlignedVector<KitReal> mVector;   ///< of a solve, rows and hubs
};
