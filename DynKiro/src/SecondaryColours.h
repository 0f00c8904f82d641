#pragma once
#include <cstddef>
#include <span>
#include <vector>

struct DynsBody;
struct StepperData;

/// Divides secondary partitions into colours, of which no two partitions of one colour share a body.
///
/// Partitions that share a body and are solved side by side all answer the same error, so that k of
/// them amplify it by -(k - 1) a pass; one after the other they converge as block Gauss-Seidel does.
/// The colouring is greedy in the order of the slice, so that it depends on nothing else.
class SecondaryColours {
public:
    void build(std::span<StepperData* const> secondaries);
    [[nodiscard]] int count() const { return mCount; }
    /// Those of one colour, in the order of the slice.
    [[nodiscard]] std::span<StepperData* const> ofColour(int colour) const;

private:
    struct Entry {
        const DynsBody* body;
        std::size_t position; ///< among the bodies of all partitions, in the order of the slice
    };
    struct Use {
        int colour;
        int next; ///< another colour used on the body, -1 at the end
    };

    void numberBodies(std::span<StepperData* const> secondaries);
    [[nodiscard]] int smallestFreeColour(std::size_t first, std::size_t end, int stamp);
    void sortByColour(std::span<StepperData* const> secondaries);

    int mCount = 0;
    std::vector<Entry> mEntries;
    std::vector<int> mBodyNumbers; ///< by position
    std::vector<int> mHeads;       ///< by body number: first of its uses
    std::vector<Use> mUses;        ///< by position
    std::vector<int> mStamps;      ///< by colour: the partition that last met it
    std::vector<int> mColours;     ///< by partition
    std::vector<StepperData*> mOrder;
    std::vector<int> mStarts; ///< by colour, with the end of the last one
};
