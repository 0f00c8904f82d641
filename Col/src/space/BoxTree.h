#pragma once
#include <Kit/KitAlignedVector.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

/// A box in single precision, rounded outwards, so that it holds the box in double precision.
struct CxFloatBox {
    float min[3];
    float max[3];
};

[[nodiscard]] inline bool CxOverlap(const CxFloatBox& a, const CxFloatBox& b) noexcept {
    return a.min[0] <= b.max[0] && b.min[0] <= a.max[0] && a.min[1] <= b.max[1] &&
           b.min[1] <= a.max[1] && a.min[2] <= b.max[2] && b.min[2] <= a.max[2];
}

/// A segment that walks through boxes: what lies beyond `limit` is of no interest any more.
struct CxRay {
    CxRay(const lsVec3& start, const lsVec3& unitDirection, KitReal length) noexcept
        : origin(start), direction(unitDirection), limit(length) {
        for (int axis = 0; axis < 3; ++axis) {
            // Not infinite for a direction of 0, since 0 times infinity is no number.
            const KitReal inverse = 1 / direction[axis];
            slope[axis] =
                std::abs(inverse) < kSteepest ? inverse : std::copysign(kSteepest, inverse);
        }
    }
    static constexpr KitReal kSteepest = 1e300;

    lsVec3 origin, direction;
    lsVec3 slope;  ///< inverse of the direction
    KitReal limit; ///< m from the start
};

/// Boxes by id in a tree of four-wide nodes: two cache lines a node, and a query tests four boxes at
/// once. Leaves are added and taken one by one; when as many have changed as there are, or a path
/// grew long, Tidy() builds the tree anew.
class CxBoxTree {
public:
    void Insert(int id, const CxFloatBox& box);
    /// Nothing if the id is not in the tree.
    void Remove(int id);
    [[nodiscard]] bool Contains(int id) const noexcept {
        return static_cast<std::size_t>(id) < mPlace.size() && mPlace[idx(id)] >= 0;
    }
    [[nodiscard]] int GetCount() const noexcept { return mCount; }
    /// Builds the tree anew if it has degraded. The answers to queries stay, their order may change.
    void Tidy();

    /// Calls visit(id) for every leaf whose box meets the given one, closed boxes.
    template <class Visit>
    void Query(const CxFloatBox& box, Visit&& visit) const {
        if (mCount == 0)
            return;
        int stack[kMaxStack];
        int top = 0;
        stack[top++] = mRoot;
        while (top > 0) {
            const Node& node = mNodes[idx(stack[--top])];
            const unsigned hits = overlapMask(node, box);
            for (unsigned slot = 0; slot < 4; ++slot) {
                if ((hits >> slot & 1U) == 0)
                    continue;
                const int child = node.child[slot];
                if (child < 0)
                    visit(~child);
                else
                    stack[top++] = child;
            }
        }
    }

    /// Calls visit(id) for every leaf whose box a ray enters before its limit, about from near to far;
    /// visit may lower the limit.
    template <class Visit>
    void Query(CxRay& ray, Visit&& visit) const {
        struct Waiting {
            int node;
            KitReal enter;
        };
        if (mCount == 0)
            return;
        Waiting stack[kMaxStack];
        int top = 0;
        stack[top++] = {mRoot, 0};
        while (top > 0) {
            const Waiting next = stack[--top];
            if (next.enter > ray.limit)
                continue;
            const Node& node = mNodes[idx(next.node)];
            KitReal enter[4];
            const unsigned hits = enterMask(node, ray, enter);
            const int below = top;
            for (unsigned slot = 0; slot < 4; ++slot) {
                if ((hits >> slot & 1U) == 0)
                    continue;
                const int child = node.child[slot];
                if (child < 0) {
                    if (enter[slot] <= ray.limit)
                        visit(~child);
                    continue;
                }
                int place = top++; // the nearest on top
                for (; place > below && stack[place - 1].enter < enter[slot]; --place)
                    stack[place] = stack[place - 1];
                stack[place] = {child, enter[slot]};
            }
        }
    }

private:
    /// The deepest path that may arise before Tidy() builds anew, and the room that a query needs.
    static constexpr int kMaxDepth = 60;
    static constexpr int kMaxStack = 3 * (kMaxDepth + 2) + 1;
    static constexpr int kEmpty = INT32_MAX;
    /// Covers the rounding of three operations.
    static constexpr KitReal kRoundingUp = 1 + 8 * 2.220446049250313e-16;

    using Lanes = float __attribute__((vector_size(16)));
    struct alignas(64) Node {
        Lanes min[3]; ///< an empty slot has min above max and meets nothing
        Lanes max[3];
        int child[4]; ///< node, or ~id of a leaf, or kEmpty
        int place; ///< 4 node + slot of the parent, -1 for the root; of an unused node, the next such
        int used; ///< slots in use
    };

    static std::size_t idx(int i) noexcept { return static_cast<std::size_t>(i); }
    static unsigned overlapMask(const Node& node, const CxFloatBox& box) noexcept {
        const auto meets = (node.min[0] <= box.max[0]) & (node.max[0] >= box.min[0]) &
                           (node.min[1] <= box.max[1]) & (node.max[1] >= box.min[1]) &
                           (node.min[2] <= box.max[2]) & (node.max[2] >= box.min[2]);
        return static_cast<unsigned>((meets[0] & 1) | (meets[1] & 2) | (meets[2] & 4) |
                                     (meets[3] & 8));
    }
    /// Which boxes of a node the ray enters before its limit, and where, m from the start.
    static unsigned enterMask(const Node& node, const CxRay& ray, KitReal* enter) noexcept {
        using Wide = KitReal __attribute__((vector_size(32)));
        Wide near = {0, 0, 0, 0}, far = near + ray.limit;
        for (int axis = 0; axis < 3; ++axis) {
            const bool upwards = ray.slope[axis] > 0;
            const Lanes &first = upwards ? node.min[axis] : node.max[axis],
                        &last = upwards ? node.max[axis] : node.min[axis];
            const Wide in =
                (__builtin_convertvector(first, Wide) - ray.origin[axis]) * ray.slope[axis];
            const Wide out =
                (__builtin_convertvector(last, Wide) - ray.origin[axis]) * ray.slope[axis];
            near = in > near ? in : near;
            far = out < far ? out : far;
        }
        const auto meets = near <= far * kRoundingUp;
        for (int slot = 0; slot < 4; ++slot)
            enter[slot] = near[slot];
        return static_cast<unsigned>((meets[0] & 1) | (meets[1] & 2) | (meets[2] & 4) |
                                     (meets[3] & 8));
    }
    static CxFloatBox slotBox(const Node& node, int slot) noexcept;
    static void setSlot(Node& node, int slot, const CxFloatBox& box, int child) noexcept;
    static CxFloatBox nodeBox(const Node& node) noexcept;
    int newNode(int place);
    void freeNode(int node);
    void setPlace(int child, int place);
    int bestSlot(const Node& node, const CxFloatBox& box) const;
    void shrinkUpwards(int node);
    int build(int* first, int* last, int place);

    KitAlignedVector<Node> mNodes;
    int mFirstFree = -1;     ///< head of the chain of unused nodes, -1 at its end
    std::vector<int> mPlace; ///< by id: 4 node + slot, -1 if not in the tree
    std::vector<int> mScratch;
    std::vector<CxFloatBox> mLeafBoxes; ///< by id, while the tree is built anew
    int mRoot = -1;
    int mCount = 0;
    int mChanges = 0; ///< since the last build
    bool mDeep = false;
};
