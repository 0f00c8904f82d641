#include "frontal_factor.h"

#include "dense_kernels.h"

#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraints.h>

#include <algorithm>
#include <functional>

namespace {

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

/// Entries behind a matrix that whole groups of rows may touch.
constexpr std::size_t kSlack = kDynsPanelRows;

std::size_t panelSize(int ld, int columns) {
    return at(ld) * at(columns) + kSlack;
}

int countRows(const DynsConstraintGraph& graph, const DynsConstraints& c, int constraint,
              const int* index_set) {
    const int rows = graph.rows[at(constraint)];
    if (index_set == nullptr || graph.kind(constraint) == DynsVertex::kHub)
        return rows;
    const int* first = index_set + c.g_block_first_row[c.constraint_first_block[constraint]];
    return static_cast<int>(std::count(first, first + rows, 0));
}

} // namespace

DynsFrontalFactor::Cost DynsFrontalFactor::cost(const DynsConstraintGraph& graph,
                                                const DynsEliminationTree& tree,
                                                const DynsConstraints& c, const int* index_set) {
    Cost sum;
    for (const DynsSupernode& node : tree.supernodes()) {
        const std::span<const int> front = tree.front(node);
        double pivots = 0, rows = 0;
        for (int k = 0; k < node.frontCount; ++k) {
            const double count = countRows(graph, c, front[at(k)], index_set);
            rows += count;
            if (k < node.pivots)
                pivots += count;
        }
        const double rest = rows - pivots;
        sum.flops += pivots * pivots * pivots / 3 + pivots * pivots * rest + pivots * rest * rest;
        sum.entries += pivots * (pivots / 2 + rest);
    }
    return sum;
}

void DynsFrontalFactor::listRows(const DynsConstraints& c, const int* index_set) {
    mRowCount = c.n_constraint_rows;
    mRowStart.resize(at(mGraph->size()) + 1);
    mRowList.clear();
    mConstraintOf.resize(at(c.n_g_blocks));
    for (int k = 0; k < c.n_constraints; ++k) {
        const int block = c.constraint_first_block[k];
        const int first = c.g_block_first_row[block];
        mRowStart[at(k)] = static_cast<int>(mRowList.size());
        for (int row = first; row < first + c.g_block_size[block]; ++row)
            if (index_set == nullptr || index_set[row] == 0)
                mRowList.push_back(row);
        for (int b = block; b < block + c.constraint_n_blocks[k]; ++b)
            mConstraintOf[at(b)] = k;
    }
    for (int v = c.n_constraints; v < mGraph->size(); ++v) {
        mRowStart[at(v)] = static_cast<int>(mRowList.size());
        for (int k = 0; k < 6; ++k)
            mRowList.push_back(mRowCount + 6 * (v - c.n_constraints) + k);
    }
    mRowStart[at(mGraph->size())] = static_cast<int>(mRowList.size());
}

/// Places of the panels of L, and the row numbers of each front.
void DynsFrontalFactor::layOut(const DynsEliminationTree& tree) {
    mPanels.clear();
    mRows.clear();
    std::size_t entries = 0;
    int largest = 0;
    for (const DynsSupernode& node : tree.supernodes()) {
        Panel panel{entries, static_cast<int>(mRows.size()), 0, 0, 0, 0, 0};
        const std::span<const int> front = tree.front(node);
        for (int k = 0; k < node.frontCount; ++k) {
            if (k < node.pivots) {
                const int rows = mRowStart[at(front[at(k)]) + 1] - mRowStart[at(front[at(k)])];
                const DynsVertex kind = mGraph->kind(front[at(k)]);
                panel.pivots += rows;
                (kind == DynsVertex::kConstraint ? panel.before : panel.hubs) +=
                    kind == DynsVertex::kWaitsHub ? 0 : rows;
            }
            mRows.insert(mRows.end(), mRowList.begin() + mRowStart[at(front[at(k)])],
                         mRowList.begin() + mRowStart[at(front[at(k)]) + 1]);
        }
        panel.rows = static_cast<int>(mRows.size()) - panel.rowStart;
        panel.ld = DynsPaddedRows(panel.rows);
        entries += panelSize(panel.ld, panel.pivots);
        largest = std::max(largest, panel.ld);
        mPanels.push_back(panel);
    }
    if (mL.size() < entries)
        mL.resize(entries + entries / 4);
    mInverseDiagonal.resize(mRowList.size() + 1);
    mBuffer.resize(at(largest) + kSlack);
}

// The entries of A between a pivot constraint and those of its front that come later: each pair of
// blocks on one body adds a product.
void DynsFrontalFactor::assembleRows(const DynsConstraints& c, const DynsEliminationTree& tree,
                                     const DynsSupernode& node, const Panel& panel) {
    KitReal* L = mL.data() + panel.start;
    const std::span<const int> front = tree.front(node);
    for (int k = 0; k < node.pivots; ++k) {
        const int v = front[at(k)];
        const int column = mOffset[at(k)];
        const int columns = mRowStart[at(v) + 1] - mRowStart[at(v)];
        if (columns == 0)
            continue;
        if (mGraph->kind(v) == DynsVertex::kHub) {
            assembleHub(c, v, column, panel);
            continue;
        }
        const int* vRows = mRowList.data() + mRowStart[at(v)];
        for (int e = 0; e < columns; ++e)
            L[at(panel.ld) * at(column + e) + at(column + e)] += c.xepsilon[vRows[e]];
        const int firstBlock = c.constraint_first_block[v];
        const int vFirst = c.g_block_first_row[firstBlock];
        for (int b = firstBlock; b < firstBlock + c.constraint_n_blocks[v]; ++b) {
            if (const int hub = mGraph->hubOf(c.g_bodies_idx[b]); hub >= 0) {
                if (tree.position()[at(hub)] > tree.position()[at(v)])
                    for (int e = 0; e < columns; ++e)
                        for (int i = 0; i < 6; ++i)
                            L[at(panel.ld) * at(column + e) +
                              at(mOffset[at(mPlace[at(hub)])] + i)] +=
                                c.GM[b][vRows[e] - vFirst][i];
                continue;
            }
            for (int j = c.g_blocks_heads[c.g_bodies_idx[b]]; j != -1; j = c.g_blocks_next[j]) {
                const int w = mConstraintOf[at(j)];
                if (tree.position()[at(w)] < tree.position()[at(v)])
                    continue;
                const int place = mPlace[at(w)];
                const int rows = mRowStart[at(w) + 1] - mRowStart[at(w)];
                const int* wRows = mRowList.data() + mRowStart[at(w)];
                const int wFirst = c.g_block_first_row[j];
                for (int e = 0; e < columns; ++e) {
                    const KitReal* gm = c.GM[b][vRows[e] - vFirst];
                    KitReal* out = L + at(panel.ld) * at(column + e) + at(mOffset[at(place)]);
                    for (int a = 0; a < rows; ++a) {
                        const KitReal* g = c.G[j][wRows[a] - wFirst];
                        out[a] += gm[0] * g[0] + gm[1] * g[1] + gm[2] * g[2] + gm[3] * g[3] +
                                  gm[4] * g[4] + gm[5] * g[5];
                    }
                }
            }
        }
    }
}

/// The columns of a hub: -M^-1, and the rows of its constraints that come later.
void DynsFrontalFactor::assembleHub(const DynsConstraints& c, int hub, int column,
                                    const Panel& panel) {
    const int body = mGraph->hubs[at(hub - c.n_constraints)];
    KitReal* L = mL.data() + panel.start + at(panel.ld) * at(column);
    const auto& inverse = c.g_bodies[c.g_blocks_heads[body]]->inverse_massmatrix;
    for (int k = 0; k < 3; ++k) {
        L[at(panel.ld) * at(k) + at(column + k)] = -inverse[0][3];
        for (int i = 0; i < 3; ++i)
            L[at(panel.ld) * at(3 + k) + at(column + 3 + i)] = -inverse[i][k];
    }
    for (int j = c.g_blocks_heads[body]; j != -1; j = c.g_blocks_next[j]) {
        const int w = mConstraintOf[at(j)];
        if (mTree->position()[at(w)] < mTree->position()[at(hub)])
            continue;
        const int* wRows = mRowList.data() + mRowStart[at(w)];
        const int rows = mRowStart[at(w) + 1] - mRowStart[at(w)];
        const int offset = mOffset[at(mPlace[at(w)])];
        for (int a = 0; a < rows; ++a)
            for (int k = 0; k < 6; ++k)
                L[at(panel.ld) * at(k) + at(offset + a)] +=
                    c.GM[j][wRows[a] - c.g_block_first_row[j]][k];
    }
}

/// Eliminates the pivots of a front and subtracts what they leave from its update matrix. The pivots
/// of hubs are negative: theirs is added.
void DynsFrontalFactor::eliminate(const Panel& panel, KitReal* update, KitReal* inverseDiagonal) {
    KitReal* L = mL.data() + panel.start;
    const int rest = panel.rows - panel.pivots, ldu = DynsPaddedRows(rest);
    const auto columns = [L, &panel](int j) { return L + at(panel.ld) * at(j); };
    if (panel.hubs == 0) {
        DynsFactorColumns(L, panel.ld, panel.rows, 0, panel.pivots, inverseDiagonal);
        DynsSubtractLower(update, ldu, rest, L + panel.pivots, L + panel.pivots, panel.ld,
                          panel.pivots);
        return;
    }
    const int before = panel.before, behind = before + panel.hubs;
    DynsFactorColumns(L, panel.ld, panel.rows, 0, before, inverseDiagonal);
    DynsSubtractFromColumns(L, panel.ld, panel.rows, before, panel.pivots - before, L, L, before);
    for (KitReal* entry = columns(before); entry != columns(behind); ++entry)
        *entry = -*entry;
    DynsFactorColumns(L, panel.ld, panel.rows, before, panel.hubs, inverseDiagonal);
    mNegated.resize(panelSize(panel.ld, panel.hubs));
    std::transform(columns(before), columns(behind), mNegated.begin(), std::negate<>());
    DynsSubtractFromColumns(L, panel.ld, panel.rows, behind, panel.pivots - behind, mNegated.data(),
                            columns(before), panel.hubs);
    DynsFactorColumns(L, panel.ld, panel.rows, behind, panel.pivots - behind, inverseDiagonal);

    const auto subtract = [&](const KitReal* A, int first, int count) {
        DynsSubtractLower(update, ldu, rest, A + panel.pivots, columns(first) + panel.pivots,
                          panel.ld, count);
    };
    subtract(L, 0, before);
    subtract(mNegated.data(), before, panel.hubs);
    subtract(columns(behind), behind, panel.pivots - behind);
}

/// Adds a child's update matrix to the front of its parent: into the panel left of the pivots' end,
/// into the parent's update right of it.
void DynsFrontalFactor::addUpdate(const DynsEliminationTree& tree, const DynsSupernode& child,
                                  const DynsSupernode& parent, const Panel& panel,
                                  const KitReal* childUpdate, KitReal* update) {
    const std::span<const int> map = tree.toParent(child);
    const std::span<const int> kept = tree.front(child).subspan(at(child.pivots));
    const int count = static_cast<int>(map.size());
    mChildOffset.resize(map.size() + 1);
    mChildOffset[0] = 0;
    for (int k = 0; k < count; ++k)
        mChildOffset[at(k) + 1] =
            mChildOffset[at(k)] + mRowStart[at(kept[at(k)]) + 1] - mRowStart[at(kept[at(k)])];
    const int ldc = DynsPaddedRows(mChildOffset[at(count)]);
    const int ldu = DynsPaddedRows(panel.rows - panel.pivots);
    KitReal* L = mL.data() + panel.start;
    for (int j = 0; j < count; ++j) {
        const bool toPanel = map[at(j)] < parent.pivots;
        for (int e = mChildOffset[at(j)]; e < mChildOffset[at(j) + 1]; ++e) {
            const int column = mOffset[at(map[at(j)])] + e - mChildOffset[at(j)];
            const KitReal* from = childUpdate + at(ldc) * at(e);
            KitReal* to = toPanel ? L + at(panel.ld) * at(column)
                                  : update + at(ldu) * at(column - panel.pivots);
            const int shift = toPanel ? 0 : panel.pivots;
            for (int i = j; i < count; ++i) {
                KitReal* target = to + (mOffset[at(map[at(i)])] - shift);
                const KitReal* source = from + mChildOffset[at(i)];
                const int rows = mChildOffset[at(i) + 1] - mChildOffset[at(i)];
                for (int a = 0; a < rows; ++a)
                    target[a] += source[a];
            }
        }
    }
}

void DynsFrontalFactor::factor(const DynsConstraints& c, const DynsConstraintGraph& graph,
                               const DynsEliminationTree& tree, const int* index_set) {
    mGraph = &graph;
    mTree = &tree;
    listRows(c, index_set);
    layOut(tree);
    mPlace.resize(at(graph.size()));
    mUpdateStack.clear();
    const std::span<const DynsSupernode> nodes = tree.supernodes();
    std::size_t top = 0; // of the stack of update matrices
    std::size_t pivotStart = 0;
    const auto updateSize = [this](int s) {
        const int n = mPanels[at(s)].rows - mPanels[at(s)].pivots;
        return panelSize(DynsPaddedRows(n), n);
    };
    for (std::size_t s = 0; s < nodes.size(); ++s) {
        const DynsSupernode& node = nodes[s];
        const Panel& panel = mPanels[s];
        const std::span<const int> front = tree.front(node);
        mOffset.resize(front.size() + 1);
        mOffset[0] = 0;
        for (std::size_t k = 0; k < front.size(); ++k) {
            mPlace[at(front[k])] = static_cast<int>(k);
            mOffset[k + 1] = mOffset[k] + mRowStart[at(front[k]) + 1] - mRowStart[at(front[k])];
        }
        const int rest = panel.rows - panel.pivots;
        const int ldu = DynsPaddedRows(rest);
        const std::size_t size = panelSize(ldu, rest);
        if (mUpdates.size() < top + size)
            mUpdates.resize((top + size) * 3 / 2);
        KitReal* L = mL.data() + panel.start;
        KitReal* update = mUpdates.data() + top;
        std::fill(L, L + panelSize(panel.ld, panel.pivots), 0.0);
        std::fill(update, update + size, 0.0);
        assembleRows(c, tree, node, panel);

        // The children's updates are the topmost ones; they are added in the order of elimination.
        std::size_t below = top;
        const std::size_t children = mUpdateStack.size() - at(node.childCount);
        for (std::size_t k = children; k < mUpdateStack.size(); ++k)
            below -= updateSize(mUpdateStack[k]);
        std::size_t childTop = below;
        for (std::size_t k = children; k < mUpdateStack.size(); ++k) {
            addUpdate(tree, nodes[at(mUpdateStack[k])], node, panel, mUpdates.data() + childTop,
                      update);
            childTop += updateSize(mUpdateStack[k]);
        }
        mUpdateStack.resize(children);

        eliminate(panel, update, mInverseDiagonal.data() + pivotStart);
        pivotStart += at(panel.pivots);
        if (below != top)
            std::copy(update, update + size, mUpdates.data() + below);
        top = below;
        if (node.parent >= 0) {
            mUpdateStack.push_back(static_cast<int>(s));
            top += size;
        }
    }
}

void DynsFrontalFactor::forward(KitReal* x, std::size_t firstNode, bool pathOnly) {
    std::size_t pivotStart = 0;
    for (std::size_t s = 0; s < firstNode; ++s)
        pivotStart += at(mPanels[s].pivots);
    const std::span<const DynsSupernode> nodes = mTree->supernodes();
    std::size_t onPath = firstNode;
    for (std::size_t s = firstNode; s < mPanels.size(); ++s) {
        const Panel& panel = mPanels[s];
        const std::size_t inverseStart = pivotStart;
        pivotStart += at(panel.pivots);
        if (pathOnly && s != onPath)
            continue;
        onPath = nodes[s].parent < 0 ? mPanels.size() : at(nodes[s].parent);
        const int* rows = mRows.data() + panel.rowStart;
        KitReal* y = mBuffer.data();
        for (int i = 0; i < panel.pivots; ++i)
            y[i] = x[rows[i]];
        for (int i = panel.pivots; i < panel.rows; ++i)
            y[i] = 0;
        for (int k = 0; k < panel.pivots; ++k) {
            const KitReal* column = mL.data() + panel.start + at(panel.ld) * at(k);
            const KitReal value = y[k] * mInverseDiagonal[inverseStart + at(k)];
            y[k] = value;
            for (int i = k + 1; i < panel.rows; ++i)
                y[i] -= column[i] * value;
        }
        for (int i = 0; i < panel.pivots; ++i)
            x[rows[i]] = y[i];
        for (int i = panel.pivots; i < panel.rows; ++i)
            x[rows[i]] += y[i];
    }
}

void DynsFrontalFactor::backward(KitReal* x) {
    std::size_t pivotEnd = mRowList.size();
    for (std::size_t s = mPanels.size(); s-- > 0;) {
        const Panel& panel = mPanels[s];
        pivotEnd -= at(panel.pivots);
        const int* rows = mRows.data() + panel.rowStart;
        KitReal* y = mBuffer.data();
        for (int i = 0; i < panel.rows; ++i)
            y[i] = x[rows[i]];
        for (int k = panel.pivots - 1; k >= 0; --k) {
            const KitReal* column = mL.data() + panel.start + at(panel.ld) * at(k);
            KitReal sums[4] = {};
            int i = k + 1;
            for (; i + 4 <= panel.rows; i += 4)
                for (int j = 0; j < 4; ++j)
                    sums[j] += column[i + j] * y[i + j];
            for (; i < panel.rows; ++i)
                sums[0] += column[i] * y[i];
            y[k] = (y[k] - ((sums[0] + sums[1]) + (sums[2] + sums[3]))) *
                   mInverseDiagonal[pivotEnd + at(k)];
        }
        for (int i = 0; i < panel.pivots; ++i)
            x[rows[i]] = y[i];
    }
}

/// x with zeros for the hubs behind it; x itself without hubs.
KitReal* DynsFrontalFactor::withHubs(KitReal* x) {
    if (mGraph->hubs.empty())
        return x;
    mVector.assign(at(mRowCount) + 6 * mGraph->hubs.size(), 0.0);
    std::copy(x, x + mRowCount, mVector.begin());
    return mVector.data();
}

/// The rest of a solve after forward(): the signs of the hubs' pivots, and L^T.
void DynsFrontalFactor::finishSolve(KitReal* y, KitReal* x) {
    if (y == x) {
        backward(x);
        return;
    }
    for (std::size_t i = at(mRowCount); i < mVector.size(); ++i)
        mVector[i] = -mVector[i];
    backward(y);
    std::copy(y, y + mRowCount, x);
}

void DynsFrontalFactor::solve(KitReal* x) {
    KitReal* y = withHubs(x);
    forward(y, 0, false);
    finishSolve(y, x);
}

void DynsFrontalFactor::solveUnit(KitReal* column, int row) {
    std::fill(column, column + mRowCount, 0.0);
    column[row] = 1;
    const auto constraint =
        std::upper_bound(mRowStart.begin(), mRowStart.end(), row) - mRowStart.begin() - 1;
    KitReal* y = withHubs(column);
    forward(y, at(mTree->nodeOf()[at(static_cast<int>(constraint))]), true);
    finishSolve(y, column);
}
