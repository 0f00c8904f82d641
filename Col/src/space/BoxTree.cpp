#include "BoxTree.h"

#include <algorithm>
#include <limits>

namespace {

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr CxFloatBox kNothing{{kInfinity, kInfinity, kInfinity},
                              {-kInfinity, -kInfinity, -kInfinity}};

CxFloatBox merged(const CxFloatBox& a, const CxFloatBox& b) noexcept {
    CxFloatBox r;
    for (int i = 0; i < 3; ++i) {
        r.min[i] = std::min(a.min[i], b.min[i]);
        r.max[i] = std::max(a.max[i], b.max[i]);
    }
    return r;
}

// Half the surface: proportional to how often a random query meets the box.
float halfArea(const CxFloatBox& b) noexcept {
    const float x = b.max[0] - b.min[0], y = b.max[1] - b.min[1], z = b.max[2] - b.min[2];
    return x * y + y * z + z * x;
}

} // namespace

CxFloatBox CxBoxTree::slotBox(const Node& node, int slot) noexcept {
    return {{node.min[0][slot], node.min[1][slot], node.min[2][slot]},
            {node.max[0][slot], node.max[1][slot], node.max[2][slot]}};
}

void CxBoxTree::setSlot(Node& node, int slot, const CxFloatBox& box, int child) noexcept {
    for (int i = 0; i < 3; ++i) {
        node.min[i][slot] = box.min[i];
        node.max[i][slot] = box.max[i];
    }
    node.child[slot] = child;
}

CxFloatBox CxBoxTree::nodeBox(const Node& node) noexcept {
    CxFloatBox box = slotBox(node, 0);
    for (int slot = 1; slot < 4; ++slot)
        box = merged(box, slotBox(node, slot));
    return box;
}

int CxBoxTree::newNode(int place) {
    int node = 0;
    if (mFirstFree < 0) {
        node = static_cast<int>(mNodes.size());
        mNodes.emplace_back();
    } else {
        node = mFirstFree;
        mFirstFree = mNodes[idx(node)].place;
    }
    Node& n = mNodes[idx(node)];
    for (int slot = 0; slot < 4; ++slot)
        setSlot(n, slot, kNothing, kEmpty);
    n.place = place;
    n.used = 0;
    return node;
}

void CxBoxTree::freeNode(int node) {
    mNodes[idx(node)].place = mFirstFree;
    mFirstFree = node;
}

void CxBoxTree::setPlace(int child, int place) {
    if (child < 0)
        mPlace[idx(~child)] = place;
    else
        mNodes[idx(child)].place = place;
}

// The slot that grows least, the smaller one of equal growth, the first of equal ones.
int CxBoxTree::bestSlot(const Node& node, const CxFloatBox& box) const {
    int best = -1;
    float bestGrowth = 0, bestArea = 0;
    for (int slot = 0; slot < 4; ++slot) {
        const CxFloatBox present = slotBox(node, slot);
        const float area = halfArea(present), growth = halfArea(merged(present, box)) - area;
        if (best < 0 || growth < bestGrowth || (growth == bestGrowth && area < bestArea)) {
            best = slot;
            bestGrowth = growth;
            bestArea = area;
        }
    }
    return best;
}

void CxBoxTree::Insert(int id, const CxFloatBox& box) {
    if (mPlace.size() <= idx(id))
        mPlace.resize(idx(id) + 1, -1);
    Remove(id);
    ++mCount;
    ++mChanges;
    if (mRoot < 0)
        mRoot = newNode(-1);
    int at = mRoot;
    for (int depth = 0;; ++depth) {
        Node& node = mNodes[idx(at)];
        if (node.used < 4) {
            int slot = 0;
            while (node.child[slot] != kEmpty)
                ++slot;
            setSlot(node, slot, box, ~id);
            ++node.used;
            mPlace[idx(id)] = 4 * at + slot;
            break;
        }
        const int slot = bestSlot(node, box);
        const CxFloatBox old = slotBox(node, slot);
        const int child = node.child[slot];
        setSlot(node, slot, merged(old, box), child);
        if (child >= 0 && depth < kMaxDepth) {
            at = child;
            continue;
        }
        // A leaf, or a path that may not grow: both go under a new node.
        const int below = newNode(4 * at + slot); // may move the nodes
        mNodes[idx(at)].child[slot] = below;
        Node& pair = mNodes[idx(below)];
        setSlot(pair, 0, old, child);
        setSlot(pair, 1, box, ~id);
        pair.used = 2;
        setPlace(child, 4 * below);
        mPlace[idx(id)] = 4 * below + 1;
        mDeep |= depth + 2 >= kMaxDepth;
        break;
    }
    if (mDeep)
        Tidy();
}

void CxBoxTree::Remove(int id) {
    if (!Contains(id))
        return;
    const int place = mPlace[idx(id)];
    mPlace[idx(id)] = -1;
    --mCount;
    ++mChanges;
    const int at = place / 4;
    Node& node = mNodes[idx(at)];
    setSlot(node, place % 4, kNothing, kEmpty);
    --node.used;
    if (node.place >= 0 && node.used == 1) { // the last child takes the node's place
        int slot = 0;
        while (node.child[slot] == kEmpty)
            ++slot;
        const int up = node.place / 4, upSlot = node.place % 4;
        setSlot(mNodes[idx(up)], upSlot, slotBox(node, slot), node.child[slot]);
        setPlace(node.child[slot], node.place);
        freeNode(at);
        shrinkUpwards(up);
        return;
    }
    shrinkUpwards(at);
}

void CxBoxTree::shrinkUpwards(int node) {
    while (mNodes[idx(node)].place >= 0) {
        const CxFloatBox box = nodeBox(mNodes[idx(node)]);
        const int place = mNodes[idx(node)].place;
        Node& parent = mNodes[idx(place / 4)];
        const CxFloatBox old = slotBox(parent, place % 4);
        if (std::equal(old.min, old.min + 3, box.min) && std::equal(old.max, old.max + 3, box.max))
            return;
        setSlot(parent, place % 4, box, node);
        node = place / 4;
    }
}

void CxBoxTree::Tidy() {
    constexpr int kFewChanges = 64; // below it a build costs more than it brings
    if (!mDeep && (mChanges <= mCount || mChanges < kFewChanges))
        return;
    mDeep = false;
    mChanges = 0;
    mScratch.clear();
    std::vector<int>& ids = mScratch;
    for (std::size_t id = 0; id < mPlace.size(); ++id)
        if (mPlace[id] >= 0)
            ids.push_back(static_cast<int>(id));
    if (ids.empty()) {
        mNodes.clear();
        mFirstFree = -1;
        mRoot = -1;
        return;
    }
    mLeafBoxes.resize(mPlace.size());
    for (const int id : ids)
        mLeafBoxes[idx(id)] = slotBox(mNodes[idx(mPlace[idx(id)] / 4)], mPlace[idx(id)] % 4);
    mNodes.clear();
    mFirstFree = -1;
    mRoot = build(ids.data(), ids.data() + ids.size(), -1);
}

// Halves by the middle of the widest axis, twice, give the four children of a node.
int CxBoxTree::build(int* first, int* last, int place) {
    const auto centre = [this](int id, int axis) {
        const CxFloatBox& b = mLeafBoxes[idx(id)];
        return b.min[axis] + b.max[axis];
    };
    const auto halve = [&](int* from, int* to) {
        float low[3], high[3];
        for (int axis = 0; axis < 3; ++axis) {
            low[axis] = kInfinity;
            high[axis] = -kInfinity;
        }
        for (const int* id = from; id != to; ++id)
            for (int axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], centre(*id, axis));
                high[axis] = std::max(high[axis], centre(*id, axis));
            }
        int widest = 0;
        for (int axis = 1; axis < 3; ++axis)
            if (high[axis] - low[axis] > high[widest] - low[widest])
                widest = axis;
        int* middle = from + (to - from) / 2;
        std::nth_element(from, middle, to, [&](int a, int b) {
            const float ca = centre(a, widest), cb = centre(b, widest);
            return ca != cb ? ca < cb : a < b;
        });
        return middle;
    };
    const int at = newNode(place);
    int* bounds[5] = {first, first, last, last, last};
    if (last - first > 4) {
        bounds[2] = halve(first, last);
        bounds[1] = halve(first, bounds[2]);
        bounds[3] = halve(bounds[2], last);
    } else {
        for (int slot = 1; slot < 5; ++slot)
            bounds[slot] = first + std::min<std::ptrdiff_t>(slot, last - first);
    }
    for (int slot = 0; slot < 4; ++slot) {
        const std::ptrdiff_t count = bounds[slot + 1] - bounds[slot];
        if (count == 0)
            continue;
        const int down = 4 * at + slot;
        ++mNodes[idx(at)].used;
        if (count == 1) {
            const int id = *bounds[slot];
            setSlot(mNodes[idx(at)], slot, mLeafBoxes[idx(id)], ~id);
            mPlace[idx(id)] = down;
        } else {
            const int child = build(bounds[slot], bounds[slot + 1], down); // may move the nodes
            setSlot(mNodes[idx(at)], slot, nodeBox(mNodes[idx(child)]), child);
        }
    }
    return at;
}
