#include "constraint_colours.h"

#include "constraint_block.h"
#include "pool_array.h"

#include <Dyns/DynsConstraints.h>

#include <algorithm>
#include <bit>
#include <cstdint>

namespace {

using ColourSet = std::uint64_t;

/// Colour of the constraint, which its bodies then have.
int takeColour(const DynsConstraints& c, int constraint, ColourSet* used) {
    const int first = c.constraint_first_block[constraint];
    const int end = first + c.constraint_n_blocks[constraint];
    ColourSet taken = 0;
    for (int block = first; block < end; ++block)
        if (DynsBlockMoves(c, block))
            taken |= used[c.g_bodies_idx[block]];
    const int colour = std::countr_one(taken);
    if (colour == DynsColours::kMost)
        return colour;
    for (int block = first; block < end; ++block)
        if (DynsBlockMoves(c, block))
            used[c.g_bodies_idx[block]] |= ColourSet{1} << colour;
    return colour;
}

/// Stable sort of the constraints by colour. The groups are those colours that have members.
void sortByColour(const int* colours, int n, DynsColours& result) {
    int counts[DynsColours::kMost + 1] = {};
    for (int k = 0; k < n; ++k)
        ++counts[colours[k]];
    int places[DynsColours::kMost + 1] = {}, place = 0;
    for (int colour = 0; colour <= DynsColours::kMost; ++colour) {
        places[colour] = place;
        if (counts[colour] > 0)
            result.starts[result.groups++] = place;
        place += counts[colour];
    }
    result.starts[result.groups] = place;
    result.hasRest = counts[DynsColours::kMost] > 0;
    for (int k = 0; k < n; ++k)
        result.order[places[colours[k]]++] = k;
}

} // namespace

DynsColours DynsColourConstraints(const DynsConstraints& c, int bodies, KitMemoryPool& pool) {
    DynsColours result;
    result.order = takePoolArray<int>(&pool, c.n_constraints, "colour order");
    auto* colours = takePoolArray<int>(&pool, c.n_constraints, "colours");
    auto* used = takePoolArray<ColourSet>(&pool, bodies, "colours of bodies");
    std::fill_n(used, bodies, ColourSet{0});
    for (int k = 0; k < c.n_constraints; ++k)
        colours[k] = takeColour(c, k, used);
    sortByColour(colours, c.n_constraints, result);
    return result;
}
