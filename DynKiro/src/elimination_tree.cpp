#include "elimination_tree.h"

#include "constraint_block.h"

#include <Dyns/DynsConstraints.h>

#include <algorithm>
#include <numeric>

bool DynsConstraintGraph::update(const DynsConstraints& c) {
    const auto n = static_cast<std::size_t>(c.n_constraints);
    bool same = n == rows.size() && bodyStart.size() == n + 1;
    rows.resize(n);
    bodyStart.resize(n + 1);
    bodyCount = c.n_bodies + 1;
    std::size_t count = 0;
    const auto put = [&same](KitAlignedVector<int>& list, std::size_t i, int value) {
        if (i >= list.size()) {
            list.push_back(value);
            same = false;
        } else if (list[i] != value) {
            list[i] = value;
            same = false;
        }
    };
    for (std::size_t k = 0; k < n; ++k) {
        const int constraint = static_cast<int>(k);
        put(rows, k, DynsConstraintRows(c, constraint));
        put(bodyStart, k, static_cast<int>(count));
        const std::size_t start = count;
        const int first = c.constraint_first_block[k];
        for (int b = first; b < first + c.constraint_n_blocks[k]; ++b) {
            const int body = c.g_bodies_idx[b];
            const auto begin = bodies.begin() + static_cast<std::ptrdiff_t>(start);
            const auto end = bodies.begin() + static_cast<std::ptrdiff_t>(count);
            if (std::find(begin, end, body) == end)
                put(bodies, count++, body);
        }
    }
    put(bodyStart, n, static_cast<int>(count));
    same = same && bodies.size() == count;
    bodies.resize(count);
    return !same;
}

void DynsConstraintGraph::augment(const DynsConstraintGraph& plain,
                                  std::span<const int> hubBodies) {
    const auto at = [](int i) { return static_cast<std::size_t>(i); };
    const int constraints = plain.size();
    hubs.assign(hubBodies.begin(), hubBodies.end());
    hubVertex.assign(at(plain.bodyCount), -1);
    rows = plain.rows;
    kinds.assign(plain.rows.size(), DynsVertex::kWaitsHub);
    for (const int body : hubs) {
        hubVertex[at(body)] = static_cast<int>(rows.size());
        rows.push_back(6);
        kinds.push_back(DynsVertex::kHub);
    }
    const int incidences = plain.bodyStart[at(constraints)];
    bodies = plain.bodies;
    bodyStart = plain.bodyStart;
    bodyStart.resize(rows.size() + 1);
    std::fill(bodyStart.begin() + constraints, bodyStart.end(), 0);
    for (int i = 0; i < incidences; ++i)
        if (const int hub = hubVertex[at(bodies[at(i)])]; hub >= 0)
            ++bodyStart[at(hub)];
    std::partial_sum(bodyStart.begin() + constraints, bodyStart.end(),
                     bodyStart.begin() + constraints);
    std::for_each(bodyStart.begin() + constraints, bodyStart.end(),
                  [incidences](int& end) { end += incidences; });
    bodies.resize(at(bodyStart.back()));
    bodyCount = plain.bodyCount;
    for (int v = 0; v < constraints; ++v)
        for (int i = plain.bodyStart[at(v)]; i < plain.bodyStart[at(v + 1)]; ++i) {
            const int hub = hubVertex[at(plain.bodies[at(i)])];
            if (hub < 0) {
                kinds[at(v)] = DynsVertex::kConstraint;
                continue;
            }
            // The ends of the hubs' lists become their beginnings as they are filled.
            bodies[at(i)] = bodies[at(--bodyStart[at(hub)])] = bodyCount++;
        }
}

/// The quotient graph: bodies that are joined as constraints between them are eliminated.
struct DynsEliminationTree::Quotient {
    const DynsConstraintGraph& g;
    DynsEliminationTree& t;

    int root(int body) {
        while (t.mOwner[at(body)] != body) {
            t.mOwner[at(body)] = t.mOwner[at(t.mOwner[at(body)])];
            body = t.mOwner[at(body)];
        }
        return body;
    }

    /// Rows that a constraint's elimination would couple, counted twice where it shares two bodies.
    int degree(int v) {
        int sum = 0, previous = -1;
        for (int i = g.bodyStart[at(v)]; i < g.bodyStart[at(v + 1)]; ++i) {
            const int body = root(g.bodies[at(i)]);
            if (body == previous)
                continue;
            previous = body;
            sum += t.mWeight[at(body)] - g.rows[at(v)];
        }
        return sum;
    }

    /// Takes a constraint into the bucket of its degree, or moves it there.
    void place(int v) {
        const int bucket = std::min(degree(v), static_cast<int>(t.mBuckets.size()) - 1);
        if (t.mBucketOf[at(v)] == bucket)
            return;
        remove(v);
        t.mBucketOf[at(v)] = bucket;
        const int previous = t.mBucketTails[at(bucket)];
        t.mBucketPrevious[at(v)] = previous;
        t.mBucketNext[at(v)] = -1;
        (previous >= 0 ? t.mBucketNext[at(previous)] : t.mBuckets[at(bucket)]) = v;
        t.mBucketTails[at(bucket)] = v;
        mLeast = std::min(mLeast, bucket);
    }

    void remove(int v) {
        if (t.mBucketOf[at(v)] < 0)
            return;
        const int next = t.mBucketNext[at(v)], previous = t.mBucketPrevious[at(v)];
        const std::size_t bucket = at(t.mBucketOf[at(v)]);
        (next >= 0 ? t.mBucketPrevious[at(next)] : t.mBucketTails[bucket]) = previous;
        (previous >= 0 ? t.mBucketNext[at(previous)] : t.mBuckets[bucket]) = next;
        t.mBucketOf[at(v)] = -1;
    }

    /// A constraint of least degree, or -1.
    int popLeast() {
        const int buckets = static_cast<int>(t.mBuckets.size());
        while (mLeast < buckets && t.mBuckets[at(mLeast)] < 0)
            ++mLeast;
        if (mLeast == buckets)
            return -1;
        const int v = t.mBuckets[at(mLeast)];
        remove(v);
        return v;
    }

    void setUp() {
        const auto bodies = static_cast<std::size_t>(g.bodyCount);
        t.mOwner.resize(bodies);
        t.mHead.assign(bodies, -1);
        t.mTail.assign(bodies, -1);
        t.mWeight.assign(bodies, 0);
        t.mIncidenceNext.assign(g.bodies.size(), -1);
        t.mIncidenceOf.resize(g.bodies.size());
        t.mEliminated.assign(at(g.size()), 0);
        t.mMark.assign(at(g.size()), -1);
        for (int b = 0; b < g.bodyCount; ++b)
            t.mOwner[at(b)] = b;
        for (int v = 0; v < g.size(); ++v)
            for (int i = g.bodyStart[at(v)]; i < g.bodyStart[at(v + 1)]; ++i) {
                t.mIncidenceOf[at(i)] = v;
                append(g.bodies[at(i)], i);
                t.mWeight[at(g.bodies[at(i)])] += g.rows[at(v)];
            }
        const int rows = std::accumulate(g.rows.begin(), g.rows.end(), 0);
        t.mBuckets.assign(at(rows) + 1, -1);
        t.mBucketTails.assign(at(rows) + 1, -1);
        t.mBucketOf.assign(at(g.size()), -1);
        t.mBucketNext.resize(at(g.size()));
        t.mBucketPrevious.resize(at(g.size()));
        for (int v = 0; v < g.size(); ++v)
            if (g.kind(v) != DynsVertex::kWaitsHub)
                place(v);
    }

    void append(int body, int incidence) {
        if (t.mTail[at(body)] < 0)
            t.mHead[at(body)] = incidence;
        else
            t.mIncidenceNext[at(t.mTail[at(body)])] = incidence;
        t.mTail[at(body)] = incidence;
    }

    /// Joins the bodies of a constraint; the one with the smallest number stands for all.
    int join(int v) {
        int target = root(g.bodies[at(g.bodyStart[at(v)])]);
        for (int i = g.bodyStart[at(v)] + 1; i < g.bodyStart[at(v + 1)]; ++i) {
            int other = root(g.bodies[at(i)]);
            if (other == target)
                continue;
            if (other < target)
                std::swap(other, target);
            t.mOwner[at(other)] = target;
            t.mWeight[at(target)] += t.mWeight[at(other)];
            if (t.mHead[at(other)] < 0)
                continue;
            if (t.mTail[at(target)] < 0)
                t.mHead[at(target)] = t.mHead[at(other)];
            else
                t.mIncidenceNext[at(t.mTail[at(target)])] = t.mHead[at(other)];
            t.mTail[at(target)] = t.mTail[at(other)];
        }
        return target;
    }

    [[nodiscard]] bool inside(int v, int body) {
        for (int i = g.bodyStart[at(v)]; i < g.bodyStart[at(v + 1)]; ++i)
            if (root(g.bodies[at(i)]) != body)
                return false;
        return true;
    }

    static std::size_t at(int i) { return static_cast<std::size_t>(i); }

    int mLeast = 0; ///< no bucket below it has a member
};

void DynsEliminationTree::eliminateAll(const DynsConstraintGraph& graph) {
    Quotient q{graph, *this};
    q.setUp();
    const auto at = Quotient::at;
    mNodes.clear();
    mFront.clear();
    mOrder.clear();
    for (int v = q.popLeast(); v >= 0; v = q.popLeast()) {
        const int body = q.join(v);
        DynsSupernode node{static_cast<int>(mFront.size()), 0, 0, -1, 0, 0};
        mStack.clear(); // constraints that stay
        int previous = -1, weight = 0;
        for (int i = mHead[at(body)]; i >= 0; i = mIncidenceNext[at(i)]) {
            const int u = mIncidenceOf[at(i)];
            const bool seen = mMark[at(u)] == static_cast<int>(mNodes.size());
            mMark[at(u)] = static_cast<int>(mNodes.size());
            if (!seen && mEliminated[at(u)] == 0) {
                if (u == v || q.inside(u, body)) {
                    mEliminated[at(u)] = 1;
                    q.remove(u);
                    mFront.push_back(u);
                } else {
                    mStack.push_back(u);
                    weight += graph.rows[at(u)];
                    if (previous < 0)
                        mHead[at(body)] = i;
                    else
                        mIncidenceNext[at(previous)] = i;
                    previous = i;
                }
            }
        }
        if (previous < 0)
            mHead[at(body)] = -1;
        else
            mIncidenceNext[at(previous)] = -1;
        mTail[at(body)] = previous;
        mWeight[at(body)] = weight;
        node.pivots = static_cast<int>(mFront.size()) - node.frontStart;
        const bool hasHub = sortPivots(graph, node);
        mOrder.insert(mOrder.end(), mFront.begin() + node.frontStart, mFront.end());
        mFront.insert(mFront.end(), mStack.begin(), mStack.end());
        node.frontCount = static_cast<int>(mFront.size()) - node.frontStart;
        mNodes.push_back(node);
        for (const int u : mStack)
            if (mBucketOf[at(u)] >= 0 || hasHub)
                q.place(u);
    }
}

/// Sorts the pivots of a node by kind; answers whether there is a hub among them.
bool DynsEliminationTree::sortPivots(const DynsConstraintGraph& graph, const DynsSupernode& node) {
    if (graph.kinds.empty())
        return false;
    mScatter.assign(mFront.begin() + node.frontStart, mFront.end());
    bool hasHub = false;
    auto place = mFront.begin() + node.frontStart;
    for (const DynsVertex kind : {DynsVertex::kConstraint, DynsVertex::kHub, DynsVertex::kWaitsHub})
        for (const int v : mScatter)
            if (graph.kind(v) == kind) {
                *place++ = v;
                hasHub = hasHub || kind == DynsVertex::kHub;
            }
    return hasHub;
}

/// A supernode's update goes to the one that eliminates the first of its remaining constraints.
void DynsEliminationTree::linkParents() {
    const auto at = Quotient::at;
    mPosition.resize(mOrder.size());
    mNodeOf.resize(mOrder.size());
    for (std::size_t i = 0; i < mOrder.size(); ++i)
        mPosition[at(mOrder[i])] = static_cast<int>(i);
    for (std::size_t s = 0; s < mNodes.size(); ++s)
        for (int k = 0; k < mNodes[s].pivots; ++k)
            mNodeOf[at(mFront[at(mNodes[s].frontStart + k)])] = static_cast<int>(s);
    for (DynsSupernode& node : mNodes) {
        int first = -1;
        for (int k = node.pivots; k < node.frontCount; ++k) {
            const int u = mFront[at(node.frontStart + k)];
            if (first < 0 || mPosition[at(u)] < mPosition[at(first)])
                first = u;
        }
        node.parent = first < 0 ? -1 : mNodeOf[at(first)];
    }
}

void DynsEliminationTree::postorder() {
    const auto at = Quotient::at;
    const int n = static_cast<int>(mNodes.size());
    mFirstChild.assign(at(n), -1);
    mNextSibling.assign(at(n), -1);
    int roots = -1;
    for (int s = n - 1; s >= 0; --s) {
        int& list = mNodes[at(s)].parent < 0 ? roots : mFirstChild[at(mNodes[at(s)].parent)];
        mNextSibling[at(s)] = list;
        list = s;
    }
    mScatter.resize(at(n)); // old number to new
    mOrdered.clear();
    mStack.clear();
    for (int tree = roots; tree >= 0; tree = mNextSibling[at(tree)]) {
        mStack.push_back(tree);
        while (!mStack.empty()) {
            const int s = mStack.back();
            int& child = mFirstChild[at(s)];
            if (child >= 0) {
                mStack.push_back(child);
                child = mNextSibling[at(child)];
                continue;
            }
            mStack.pop_back();
            mScatter[at(s)] = static_cast<int>(mOrdered.size());
            mOrdered.push_back(mNodes[at(s)]);
        }
    }
    mNodes.swap(mOrdered);
    for (int s = 0; s < n; ++s)
        mNodes[at(s)].first = s;
    for (DynsSupernode& node : mNodes)
        if (node.parent >= 0) {
            node.parent = mScatter[at(node.parent)];
            int& first = mNodes[at(node.parent)].first;
            first = std::min(first, node.first);
        }
}

/// Renumbers the constraints in the postorder, sorts what each front keeps, and maps it upwards.
void DynsEliminationTree::sortFronts() {
    const auto at = Quotient::at;
    int position = 0;
    for (std::size_t s = 0; s < mNodes.size(); ++s)
        for (int k = 0; k < mNodes[s].pivots; ++k) {
            const int v = mFront[at(mNodes[s].frontStart + k)];
            mPosition[at(v)] = position++;
            mNodeOf[at(v)] = static_cast<int>(s);
        }
    for (const DynsSupernode& node : mNodes) {
        int* kept = mFront.data() + node.frontStart + node.pivots;
        std::sort(kept, kept + node.frontCount - node.pivots,
                  [this, at](int a, int b) { return mPosition[at(a)] < mPosition[at(b)]; });
    }
    mScatter.resize(mPosition.size());
    mToParent.clear();
    for (DynsSupernode& node : mNodes) {
        node.mapStart = static_cast<int>(mToParent.size());
        if (node.parent < 0)
            continue;
        // Both lists are in order of elimination, so that one walk finds all places.
        const std::span<const int> above = front(mNodes[at(node.parent)]);
        int place = 0;
        for (int k = node.pivots; k < node.frontCount; ++k) {
            const int v = mFront[at(node.frontStart + k)];
            while (above[at(place)] != v)
                ++place;
            mToParent.push_back(place);
        }
    }
}

void DynsEliminationTree::build(const DynsConstraintGraph& graph) {
    eliminateAll(graph);
    linkParents();
    postorder();
    sortFronts();
}
