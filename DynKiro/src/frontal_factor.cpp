#include "frontal_factor.h"

#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitProfile.h>

#include <algorithm>
#include <functional>

namespace {

/// Columns after which a front's later columns take what the earlier ones subtract.
constexpr int kOuterBlock = 64;
/// Rows or columns of a large front that one thread takes at once.
constexpr int kStrip = 32;
/// Operations from which a part of a front is worth the waking of threads.
constexpr double kWidePart = 5e5;

std::size_t at(int i) {
    return static_cast<std::size_t>(i);
}

} // namespace

/// Calls body(first, end) for strips of the range; all but the last end at multiples of kStrip.
template <typename Body>
void DynsFrontalFactor::forStrips(int begin, int end, double flops, KitThreadPool* pool,
                                  Body body) {
    if (begin >= end)
        return;
    if (pool == nullptr || flops < kWidePart) {
        body(begin, end);
        return;
    }
    const int first = begin / kStrip;
    mStrips.run(pool, (end + kStrip - 1) / kStrip - first, [&](int i) {
        body(std::max(begin, (first + i) * kStrip), std::min(end, (first + i + 1) * kStrip));
    });
}

// The entries of A between a pivot constraint and those of its front that come later: each pair of
// blocks on one body adds a product.
void DynsFrontalFactor::assembleRows(const DynsConstraints& c, int node, const Scratch& scratch) {
    const DynsPanel& panel = panelOf(node);
    const std::span<const int> front = mTree->front(supernode(node));
    const int* offsets = mPlan.offsets(supernode(node));
    const int* position = mTree->position().data();
    for (int k = 0; k < supernode(node).pivots; ++k) {
        const int v = front[at(k)];
        const int first = offsets[k];
        const std::span<const int> vRows = mPlan.rowsOfVertex(v);
        const int columns = static_cast<int>(vRows.size());
        if (columns == 0)
            continue;
        if (mGraph->kind(v) == DynsVertex::kHub) {
            assembleHub(c, v, first, node, scratch);
            continue;
        }
        for (int e = 0; e < columns; ++e)
            column(panel, first + e)[first + e] += c.xepsilon[vRows[at(e)]];
        const int firstBlock = c.constraint_first_block[v];
        const int vFirst = c.g_block_first_row[firstBlock];
        for (int b = firstBlock; b < firstBlock + c.constraint_n_blocks[v]; ++b) {
            KitReal gm[6 * kDynsMaxConstraintRows]; // of the rows in the factor
            for (int e = 0; e < columns; ++e)
                std::copy_n(c.GM[b][vRows[at(e)] - vFirst], 6, gm + 6 * e);
            if (const int hub = mGraph->hubOf(c.g_bodies_idx[b]); hub >= 0) {
                if (position[hub] > position[v])
                    for (int e = 0; e < columns; ++e)
                        for (int i = 0; i < 6; ++i)
                            column(panel, first + e)[offsets[scratch.place[at(hub)]] + i] +=
                                gm[6 * e + i];
                continue;
            }
            for (int j = c.g_blocks_heads[c.g_bodies_idx[b]]; j != -1; j = c.g_blocks_next[j]) {
                const int w = mConstraintOf[at(j)];
                if (position[w] < position[v])
                    continue;
                const int offset = offsets[scratch.place[at(w)]];
                addProduct(column(panel, first) + offset, panel.ld, j, gm, columns,
                           static_cast<int>(mPlan.rowsOfVertex(w).size()));
            }
        }
    }
}

/// out += G (GM)^T for the rows of a block in the factor and `columns` rows of a GM.
void DynsFrontalFactor::addProduct(KitReal* out, int ld, int block, const KitReal* gm, int columns,
                                   int rows) const {
    const DynsTile tile = DynsKernelVariants().front()->tileTransposed;
    const KitReal* G = mBlocks.data() + mBlockStart[at(block)];
    for (int i = 0; i < rows; i += kDynsPanelRows, G += 6 * kDynsPanelRows)
        for (int j = 0; j < columns; j += kDynsTileColumns)
            tile(out + at(ld) * at(j) + i, at(ld), G, kDynsPanelRows, gm + 6 * j, 6, 6,
                 std::min(kDynsTileColumns, columns - j));
}

/// The rows of J that are in the factor, block by block in tiles, negated, as a tile subtracts. Behind
/// the last row of a block stand zeros, so that whole tiles change nothing else.
void DynsFrontalFactor::gatherBlocks(const DynsConstraints& c) {
    mConstraintOf.resize(at(c.n_g_blocks));
    mBlockStart.resize(at(c.n_g_blocks));
    std::size_t entries = 0;
    for (int k = 0; k < c.n_constraints; ++k) {
        const std::size_t rows = mPlan.rowsOfVertex(k).size();
        const int first = c.constraint_first_block[k];
        for (int b = first; b < first + c.constraint_n_blocks[k]; ++b) {
            mConstraintOf[at(b)] = k;
            mBlockStart[at(b)] = entries;
            entries += 6 * at(DynsPaddedRows(static_cast<int>(rows)));
        }
    }
    mBlocks.assign(entries, 0.0);
    for (int b = 0; b < c.n_g_blocks; ++b) {
        const std::span<const int> rows = mPlan.rowsOfVertex(mConstraintOf[at(b)]);
        for (std::size_t r = 0; r < rows.size(); ++r) {
            const KitReal* g = c.G[b][rows[r] - c.g_block_first_row[b]];
            KitReal* out = mBlocks.data() + mBlockStart[at(b)] +
                           r / kDynsPanelRows * (6 * kDynsPanelRows) + r % kDynsPanelRows;
            for (int k = 0; k < 6; ++k)
                out[k * kDynsPanelRows] = -g[k];
        }
    }
}

/// The columns of a hub: -M^-1, and the rows of its constraints that come later.
void DynsFrontalFactor::assembleHub(const DynsConstraints& c, int hub, int first, int node,
                                    const Scratch& scratch) {
    const DynsPanel& panel = panelOf(node);
    const int* offsets = mPlan.offsets(supernode(node));
    const int body = mGraph->hubs[at(hub - c.n_constraints)];
    const auto& inverse = c.g_bodies[c.g_blocks_heads[body]]->inverse_massmatrix;
    for (int k = 0; k < 3; ++k) {
        column(panel, first + k)[first + k] = -inverse[0][3];
        for (int i = 0; i < 3; ++i)
            column(panel, first + 3 + k)[first + 3 + i] = -inverse[i][k];
    }
    for (int j = c.g_blocks_heads[body]; j != -1; j = c.g_blocks_next[j]) {
        const int w = mConstraintOf[at(j)];
        if (mTree->position()[at(w)] < mTree->position()[at(hub)])
            continue;
        const std::span<const int> wRows = mPlan.rowsOfVertex(w);
        const int offset = offsets[scratch.place[at(w)]];
        for (std::size_t a = 0; a < wRows.size(); ++a)
            for (int k = 0; k < 6; ++k)
                column(panel, first + k)[at(offset) + a] +=
                    c.GM[j][wRows[a] - c.g_block_first_row[j]][k];
    }
}

/// Adds a child's update matrix to the front of its parent: into the panel left of the pivots' end,
/// into the parent's update right of it.
void DynsFrontalFactor::addUpdate(int child, int parent) {
    const DynsPanel &from = panelOf(child), &to = panelOf(parent);
    const std::size_t ldFrom = at(DynsPaddedRows(from.rest()));
    const std::size_t ldTo = at(DynsPaddedRows(to.rest()));
    const std::span<const DynsRun> runs = mPlan.toParent(from);
    for (std::size_t r = 0; r < runs.size(); ++r)
        for (int j = 0; j < runs[r].count; ++j) {
            const int place = runs[r].to + j;
            const KitReal* source = mUpdates.data() + from.update + ldFrom * at(runs[r].from + j);
            KitReal* target = place < to.pivots ? column(to, place)
                                                : mUpdates.data() + to.update +
                                                      ldTo * at(place - to.pivots) - to.pivots;
            for (int i = j; i < runs[r].count; ++i)
                target[runs[r].to + i] += source[runs[r].from + i];
            for (std::size_t q = r + 1; q < runs.size(); ++q) {
                const KitReal* in = source + runs[q].from;
                KitReal* out = target + runs[q].to;
                for (int i = 0; i < runs[q].count; ++i)
                    out[i] += in[i];
            }
        }
}

/// Columns behind `first`, which carry what the columns before them subtract, become columns of L.
void DynsFrontalFactor::factorSection(const DynsPanel& panel, int first, int end,
                                      KitThreadPool* pool) {
    KitReal* L = mL.data() + panel.start;
    KitReal* inverse = mInverseDiagonal.data() + panel.pivotStart;
    for (int j = first; j < end;) {
        const int count = std::min(kOuterBlock - j % kOuterBlock, end - j), behind = j + count;
        const int head = std::min(panel.rows, DynsPaddedRows(behind));
        DynsFactorColumns(L, panel.ld, head, j, count, inverse);
        const double rowFlops = 1.0 * count * count;
        forStrips(head, panel.rows, rowFlops * (panel.rows - head), pool, [&](int begin, int stop) {
            DynsFactorRowsBelow(L, panel.ld, begin, stop, j, count, inverse);
        });
        const double columnFlops = 2.0 * count * (panel.rows - behind);
        forStrips(behind, end, columnFlops * (end - behind), pool, [&](int begin, int stop) {
            DynsSubtractFromColumns(L, panel.ld, panel.rows, begin, stop - begin, column(panel, j),
                                    column(panel, j), count);
        });
        j = behind;
    }
}

/// Subtracts A L^T, with L the columns [first, end), from the pivots' later columns and from the update.
void DynsFrontalFactor::subtractSection(const DynsPanel& panel, int first, int end,
                                        const KitReal* A, KitThreadPool* pool) {
    KitReal* L = mL.data() + panel.start;
    const int k = end - first, rest = panel.rest(), ldu = DynsPaddedRows(rest);
    forStrips(end, panel.pivots, 2.0 * k * (panel.pivots - end) * (panel.rows - end), pool,
              [&](int begin, int stop) {
                  DynsSubtractFromColumns(L, panel.ld, panel.rows, begin, stop - begin, A,
                                          column(panel, first), k);
              });
    forStrips(0, rest, 1.0 * k * rest * rest, pool, [&](int begin, int stop) {
        DynsSubtractLower(mUpdates.data() + panel.update, ldu, rest, begin, stop - begin,
                          A + panel.pivots, column(panel, first) + panel.pivots, panel.ld, k);
    });
}

/// Eliminates the pivots of a front and subtracts what they leave from its update matrix. The pivots
/// of hubs are negative: theirs is added.
void DynsFrontalFactor::eliminate(const DynsPanel& panel, Scratch& scratch, KitThreadPool* pool) {
    if (panel.hubs == 0) {
        factorSection(panel, 0, panel.pivots, pool);
        subtractSection(panel, 0, panel.pivots, column(panel, 0), pool);
        return;
    }
    const int hubs = panel.before, behind = panel.before + panel.hubs;
    factorSection(panel, 0, hubs, pool);
    subtractSection(panel, 0, hubs, column(panel, 0), pool);
    for (KitReal* entry = column(panel, hubs); entry != column(panel, behind); ++entry)
        *entry = -*entry;
    factorSection(panel, hubs, behind, pool);
    scratch.negated.resize(at(panel.ld) * at(panel.hubs) + kDynsPanelRows);
    std::transform(column(panel, hubs), column(panel, behind), scratch.negated.begin(),
                   std::negate<>());
    subtractSection(panel, hubs, behind, scratch.negated.data(), pool);
    factorSection(panel, behind, panel.pivots, pool);
    subtractSection(panel, behind, panel.pivots, column(panel, behind), pool);
}

void DynsFrontalFactor::factorNode(const DynsConstraints& c, int node, Scratch& scratch,
                                   KitThreadPool* pool) {
    const DynsPanel& panel = panelOf(node);
    const auto clearColumn = [](KitReal* column, int j, int ld) {
        std::fill(column + j / kDynsPanelRows * kDynsPanelRows, column + ld, 0.0);
    };
    for (int j = 0; j < panel.pivots; ++j)
        clearColumn(column(panel, j), j, panel.ld);
    const int rest = panel.rest(), ldu = DynsPaddedRows(rest);
    for (int j = 0; j < rest; ++j)
        clearColumn(mUpdates.data() + panel.update + at(ldu) * at(j), j, ldu);
    const std::span<const int> front = mTree->front(supernode(node));
    for (std::size_t k = 0; k < front.size(); ++k)
        scratch.place[at(front[k])] = static_cast<int>(k);
    assembleRows(c, node, scratch);
    for (int child = node - 1; child >= supernode(node).first; child = supernode(child).first - 1)
        addUpdate(child, node);
    eliminate(panel, scratch, pool);
}

void DynsFrontalFactor::factor(const DynsConstraints& c, const DynsConstraintGraph& graph,
                               const DynsEliminationTree& tree, const int* index_set, bool samePlan,
                               KitThreadPool* pool) {
    const KitProfileScope zone("direct: factor");
    mGraph = &graph;
    mTree = &tree;
    if (!samePlan)
        mPlan.build(c, graph, tree, index_set);
    gatherBlocks(c);
    mL.makeRoom(mPlan.entries());
    mUpdates.makeRoom(mPlan.updateEntries());
    mInverseDiagonal.resize(mPlan.pivots() + 1);
    if (mScratch.size() < at(mPlan.width()))
        mScratch.resize(at(mPlan.width()));
    for (int slot = 0; slot < mPlan.width(); ++slot)
        mScratch[at(slot)].place.resize(at(graph.size()));
    for (int round = 0; round < mPlan.rounds(); ++round) {
        KitThreadPool* inner = mPlan.isWide(round) ? nullptr : pool;
        forTasks(round, pool, [&](int task, int slot) {
            for (const DynsNodeRange& range : mPlan.task(task))
                for (int node = range.begin; node < range.end; ++node)
                    factorNode(c, node, mScratch[at(slot)], inner);
        });
    }
}
