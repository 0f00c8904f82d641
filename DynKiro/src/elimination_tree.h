#pragma once
#include <Kit/KitAlignedVector.h>

#include <cstddef>
#include <span>

struct DynsConstraints;

/// What a vertex of the graph is, in the order in which a front eliminates its pivots.
enum class DynsVertex : unsigned char {
    kConstraint,
    kHub,      ///< the motion of a body
    kWaitsHub, ///< a constraint of hubs alone: without one of them its rows have no mass to act on
};

/// Which constraints of a partition share bodies, in compressed form. The vertices are the
/// constraints, and behind them the hubs: bodies whose motion is eliminated beside the rows.
struct DynsConstraintGraph {
    KitAlignedVector<int> rows;      ///< vertex: rows
    KitAlignedVector<int> bodyStart; ///< vertex: first entry in bodies; one more at the end
    KitAlignedVector<int> bodies;    ///< bodies of each vertex, each once
    int bodyCount = 0;
    KitAlignedVector<int> hubs;         ///< hub: its body
    KitAlignedVector<int> hubVertex;    ///< body: its vertex, -1 for none; empty without hubs
    KitAlignedVector<DynsVertex> kinds; ///< vertex; empty without hubs

    /// Reads the graph of the rows; answers false if it is the same as before.
    bool update(const DynsConstraints& c);
    /// The graph of the same constraints in which some bodies are hubs: instead of coupling all of its
    /// constraints with each other, a hub is coupled with each of them by a body that only they share.
    void augment(const DynsConstraintGraph& plain, std::span<const int> hubBodies);

    [[nodiscard]] int size() const { return static_cast<int>(rows.size()); }
    [[nodiscard]] DynsVertex kind(int vertex) const {
        return kinds.empty() ? DynsVertex::kConstraint : kinds[static_cast<std::size_t>(vertex)];
    }
    [[nodiscard]] int hubOf(int body) const {
        return hubVertex.empty() ? -1 : hubVertex[static_cast<std::size_t>(body)];
    }
};

/// Constraints that are eliminated together, with those that this fills.
struct DynsSupernode {
    int frontStart; ///< first entry in front
    int pivots;     ///< constraints eliminated here, at the beginning of the front
    int frontCount; ///< constraints of the front
    int parent;     ///< supernode that takes the update, -1 for a root
    int first;      ///< first supernode of the subtree that ends here
    int mapStart;   ///< first entry in toParent of the front's constraints behind the pivots
};

/// Fill-reducing order of elimination of the vertices, with the structure of the factor. What is said
/// of constraints holds for hubs too.
///
/// Minimum degree on the quotient graph, in which each body is the clique of its constraints:
/// eliminating a constraint joins its bodies into one, and all constraints that then lie inside that
/// one go with it (Amestoy, Davis, Duff, "An approximate minimum degree ordering algorithm", 1996).
/// A forest of joints is eliminated from its leaves without fill. Supernodes stand in postorder.
class DynsEliminationTree {
public:
    void build(const DynsConstraintGraph& graph);

    [[nodiscard]] std::span<const DynsSupernode> supernodes() const { return mNodes; }
    /// Constraints of a front: the pivots, then the others in order of elimination.
    [[nodiscard]] std::span<const int> front(const DynsSupernode& node) const {
        return {mFront.data() + node.frontStart, static_cast<std::size_t>(node.frontCount)};
    }
    /// Constraints of all fronts.
    [[nodiscard]] std::size_t frontEntries() const { return mFront.size(); }
    /// For each constraint of a front behind the pivots, its place in the front of the parent.
    [[nodiscard]] std::span<const int> toParent(const DynsSupernode& node) const {
        return {mToParent.data() + node.mapStart,
                static_cast<std::size_t>(node.frontCount - node.pivots)};
    }
    /// Constraint: place in the order of elimination.
    [[nodiscard]] const KitAlignedVector<int>& position() const { return mPosition; }
    /// Constraint: the supernode that eliminates it.
    [[nodiscard]] const KitAlignedVector<int>& nodeOf() const { return mNodeOf; }

private:
    void eliminateAll(const DynsConstraintGraph& graph);
    bool sortPivots(const DynsConstraintGraph& graph, const DynsSupernode& node);
    void linkParents();
    void postorder();
    void sortFronts();

    // The result.
    KitAlignedVector<DynsSupernode> mNodes;
    KitAlignedVector<int> mFront, mToParent, mPosition, mNodeOf;
    // Work of a build, kept for its capacity.
    KitAlignedVector<DynsSupernode> mOrdered;
    KitAlignedVector<int> mOrder, mFirstChild, mNextSibling, mStack, mScatter;
    struct Quotient;
    KitAlignedVector<int> mOwner, mHead, mTail, mWeight, mIncidenceNext, mIncidenceOf, mMark;
    KitAlignedVector<unsigned char> mEliminated;
    KitAlignedVector<int> mBuckets, mBucketTails, mBucketOf, mBucketNext,
        mBucketPrevious; ///< by degree
};
