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
class DynsFrontalFactor {
public:
    /// Operations and entries of a factor over the given rows.
    struct Cost {
        double flops = 0;
        double entries = 0;
    };

    /// @param index_set rows with another value than 0 are left out; null takes all
    void factor(const DynsConstraints& c, const DynsConstraintGraph& graph,
                const DynsEliminationTree& tree, const int* index_set);
    /// x = A^-1 x over the rows of the factor; other entries are neither read nor changed.
    void solve(KitReal* x);
    /// column = A^-1 e_row, all rows of the partition; only for a factor over all rows.
    void solveUnit(KitReal* column, int row, int rows);

    [[nodiscard]] static Cost cost(const DynsConstraintGraph& graph,
                                   const DynsEliminationTree& tree, const DynsConstraints& c,
                                   const int* index_set);

private:
    struct Panel {
        std::size_t start; ///< first entry of L, and
        int rowStart;      ///< of the row numbers
        int pivots, rows, ld;
    };

    void listRows(const DynsConstraints& c, const int* index_set);
    void layOut(const DynsEliminationTree& tree);
    void assembleRows(const DynsConstraints& c, const DynsEliminationTree& tree,
                      const DynsSupernode& node, const Panel& panel);
    void addUpdate(const DynsEliminationTree& tree, const DynsSupernode& child,
                   const DynsSupernode& parent, const Panel& panel, const KitReal* childUpdate,
                   KitReal* update);
    void forward(KitReal* x, std::size_t firstNode, bool pathOnly);
    void backward(KitReal* x);

    const DynsEliminationTree* mTree = nullptr;
    KitAlignedVector<int> mRowList, mRowStart; ///< rows of the factor, by constraint
    KitAlignedVector<Panel> mPanels;           ///< supernode
    KitAlignedVector<int> mRows;               ///< row numbers of each front
    KitAlignedVector<KitReal> mL, mInverseDiagonal;
    KitAlignedVector<KitReal> mUpdates; ///< stack of update matrices
    KitAlignedVector<int> mUpdateStack; ///< their supernodes
    KitAlignedVector<int> mOffset, mPlace, mChildOffset;
    KitAlignedVector<int> mConstraintOf; ///< block: its constraint
    KitAlignedVector<KitReal> mBuffer;   ///< one front of a solve
};
