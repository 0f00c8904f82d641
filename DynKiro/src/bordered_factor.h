#pragma once
#include "column_cache.h"
#include "frontal_factor.h"

#include <Kit/KitAlignedVector.h>
#include <Kit/KitTypes.h>

struct DynsConstraints;

/// A over a set of rows that changes by a few rows at a time: the factor over a base set, bordered by
/// the rows that have entered the set since and by a force that holds each row that has left it at
/// zero. With B the base, E what entered and L what left, over z_B, z_E and the forces m on L
///   [ A_BB    A_BE   -I_L ]   whose Schur complement on (E, L) is quasi-definite:
///   [ A_EB    A_EE        ]   [ A_EE - A_EB A_BB^-1 A_BE    .             ]
///   [ -I_L^T              ]   [ (A_BB^-1 A_BE)_L            -(A_BB^-1)_LL ]
/// (Gill, Murray, Saunders, Wright, "A Schur-complement method for sparse quadratic programming",
/// 1990.) Columns of A_BB^-1 are kept while the base stands.
class DynsBorderedFactor {
public:
    /// Forgets the values of the factor. Its structure may serve again.
    void forget() { mStands = false; }
    /// The graph of the constraints or the order of elimination has changed.
    void forgetStructure() { mStands = mPlanStands = false; }

    /// Makes the rows with index 0 the base.
    void factor(const DynsConstraints& c, const DynsConstraintGraph& graph,
                const DynsEliminationTree& tree, const int* index_set, KitThreadPool* pool);
    /// Operations of border() and one solve with this set; infinite without a base, or where the
    /// border would be too large.
    /// @param solveFlops operations of a solve with the base alone
    [[nodiscard]] double flops(const int* index_set, double solveFlops) const;
    /// Borders the base so that it stands for the rows with index 0.
    void border(const DynsConstraints& c, const int* index_set, KitThreadPool* pool);
    [[nodiscard]] bool hasBorder() const { return !mBorder.empty(); }
    /// x = A^-1 x over the present rows, whose other entries are neither read nor changed. Loses
    /// digits where rows that left make the base nearly dependent.
    void solve(KitReal* x, KitThreadPool* pool);

private:
    struct Element {
        int row;
        KitReal value;
    };
    void makeColumns(KitThreadPool* pool);
    void listElements(const DynsConstraints& c, int row);
    void makeComplement();
    [[nodiscard]] KitReal productWithElements(int k, const KitReal* x) const;

    DynsFrontalFactor mFactor;
    bool mStands = false, mPlanStands = false;
    KitAlignedVector<unsigned char> mInBase; ///< row
    DynsColumnCache mColumns;                ///< A_BB^-1 e, or A_BB^-1 A_Be of a row that entered
    int mColumnCount = 0;
    KitAlignedVector<int> mBorder; ///< rows that entered, then those that left
    int mEntered = 0;
    KitAlignedVector<Element> mElements; ///< of A, in the rows that entered
    KitAlignedVector<int> mElementStart;
    KitAlignedVector<int> mConstraintOfRow;
    KitAlignedVector<KitReal*> mMissing;
    KitAlignedVector<KitReal> mComplement, mForces, mSolution;
};
