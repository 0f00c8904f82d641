#include <Dyns/DynsConstraints.h>

#include "DynsRowGuard.h"

#include <Dyns/DynsBody.h>
#include <Kit/KitAssoc.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

// Index of a body in the partition, -1 if the partition does not know it.
int findBody(const DynsConstraints& c, const DynsBody& body) {
    int index = -1;
    if (c.indicies)
        index = KitAssocArrayFind(c.indicies, &body);
    else if (body.localPartition == c.partition)
        index = body.localIndex;
    return index < c.max_bodies ? index : -1;
}

bool hasRoom(const DynsConstraints& c, int nSlots, int rows) {
    return rows <= kDynsMaxConstraintRows && c.n_constraints < c.max_constraints &&
           rows <= c.max_constraint_rows - c.n_constraint_rows &&
           nSlots <= c.max_g_blocks - c.n_g_blocks && rows * nSlots <= c.max_g_rows - c.n_g_rows;
}

// Appends the block to the list of its body.
void linkBlock(DynsConstraints& c, int block, int body) {
    c.g_blocks_next[block] = -1;
    if (c.g_blocks_heads[body] < 0)
        c.g_blocks_heads[body] = block;
    else
        c.g_blocks_next[c.g_blocks_tails[body]] = block;
    c.g_blocks_tails[body] = block;
}

void addBlock(DynsConstraints& c, DynsBody* body, int bodyIndex, const DynsGRow* rows, int n) {
    const int block = c.n_g_blocks++;
    c.g_bodies[block] = body;
    c.g_bodies_idx[block] = bodyIndex;
    c.n_bodies = std::max(c.n_bodies, bodyIndex);
    c.g_block_size[block] = n;
    c.g_block_first_row[block] = c.n_constraint_rows;
    c.G[block] = c.g_rows + c.n_g_rows;
    c.GM[block] = c.gm_rows + c.n_g_rows;
    linkBlock(c, block, bodyIndex);
    std::memcpy(c.G[block], rows, static_cast<std::size_t>(n) * sizeof(DynsGRow));
    c.n_g_rows += n;
}

// What a builder wrote beside the rows of its view goes too, as the next constraint takes the rows.
void forgetRows(DynsConstraints& c, int rows) {
    const std::ptrdiff_t first = c.n_constraint_rows;
    std::fill_n(c.reference_normal + first, rows, kDynsNoReferenceNormal);
    std::memset(c.friction_coefficient + first, 0xFF,
                static_cast<std::size_t>(rows) * sizeof(KitReal));
    std::fill_n(c.soil_cohesion_coefficient + first, rows, 0.0);
    std::fill_n(c.friction_model + first, rows, 0U);
}

} // namespace

void DynsConstraintsPushConstraint(DynsConstraints* c, const DynsInputRowFactors* factors,
                                   DynsBody* const* bodies, int n_bodies, int rows, int tag,
                                   void* /*extra*/) {
    if (rows < 1)
        return;
    const int nSlots = std::clamp(n_bodies, 0, kDynsMaxConstraintBodies);
    if (!hasRoom(*c, nSlots, rows)) {
        KitWarning(12, "DynsConstraintsPushConstraint: the rows must fit in the record.\n");
        return;
    }
    const int firstBlock = c->n_g_blocks;
    c->Jtype[c->n_constraints] = tag;
    for (int slot = 0; slot < nSlots; ++slot) {
        DynsBody* body = bodies[slot];
        const int index = body ? findBody(*c, *body) : -1;
        if (index >= 0)
            addBlock(*c, body, index, factors->G[slot], rows);
    }
    const int nBlocks = c->n_g_blocks - firstBlock;
    if (nBlocks == 0) {
        forgetRows(*c, rows);
        return;
    }
    for (int row = c->n_constraint_rows; row < c->n_constraint_rows + rows; ++row)
        if (!DynsRowIsFinite(*c, firstBlock, nBlocks, row))
            DynsNeutralizeRow(*c, firstBlock, nBlocks, row);
    c->constraint_first_block[c->n_constraints] = firstBlock;
    c->constraint_n_blocks[c->n_constraints] = nBlocks;
    ++c->n_constraints;
    c->n_constraint_rows += rows;
}
