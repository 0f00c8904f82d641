#pragma once

struct DynsConstraints;
class KitMemoryPool;

/// The constraints of a partition in groups, one group after the other. Those of one group share no
/// body that they move, so that their order within the group does not matter; a constraint that moves
/// a body with very many constraints may find no such group and stands in the last one, `rest`.
struct DynsColours {
    static constexpr int kMost = 64; ///< groups beside the rest

    int* order = nullptr; ///< constraints: group by group, in each by creation
    int starts[kMost + 2] = {};
    int groups = 0; ///< with the rest, if there is one
    bool hasRest = false;
};

/// Greedy: a constraint, in the order of creation, takes the first colour that no constraint before it
/// has on one of its bodies.
/// @param bodies number of bodies of the partition
[[nodiscard]] DynsColours DynsColourConstraints(const DynsConstraints& c, int bodies,
                                                KitMemoryPool& pool);
