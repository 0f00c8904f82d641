#include "ColDegeneracy.h"
#include <Col/ColScratch.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>

namespace {
/// Cells are wider than the threshold by this, so that rounding parts no neighbours.
constexpr KitReal kCellSlack = 1.0001;
/// Farthest cell number; what lies beyond shares the last cell.
constexpr KitReal kMaxCell = 1e15;
constexpr int kEmpty = -1;

/// Which of two duplicates keeps its place: true if the later one takes it.
bool laterWins(const ColContact& earlier, const ColContact& later) {
    if (earlier.surfaceIndex == later.surfaceIndex)
        return earlier.separation > later.separation;
    return later.surfaceIndex != kColSurfaceNone;
}

struct Cell {
    std::int64_t x, y;
    bool operator==(const Cell&) const = default;
};

/// Contacts by the cell of the tangent plane that they lie in, in open addressing. Contacts are
/// numbered as they stood at the start; slots follow as contacts move.
class CellTable {
public:
    CellTable(ColScratchScope& scratch, const ColContact* contacts, int count, const lsVec3& normal)
        : mOrigin(contacts[0].position),
          mInvWidth(1 / (kCellSlack * std::sqrt(gDegeneracyMinDistance2))) {
        ColPlaneBasis(normal, &mU, &mV);
        const auto n = static_cast<std::size_t>(count);
        const std::size_t size = std::bit_ceil(2 * n);
        mMask = size - 1;
        mHeads = scratch.take<int>(size);
        std::fill(mHeads.begin(), mHeads.end(), kEmpty);
        mNext = scratch.take<int>(n);
        mCells = scratch.take<Cell>(n);
        for (int i = 0; i < count; ++i) {
            mCells[at(i)] = cellOf(contacts[i].position);
            int& head = mHeads[find(mCells[at(i)])];
            mNext[at(i)] = head;
            head = i;
        }
    }

    const Cell& cellOfContact(int number) const { return mCells[at(number)]; }
    /// Calls visit for the number of each contact in the cell and the eight around it.
    template <class Visit>
    void forNeighbours(const Cell& cell, Visit&& visit) const {
        for (std::int64_t dx = -1; dx <= 1; ++dx)
            for (std::int64_t dy = -1; dy <= 1; ++dy)
                for (int i = mHeads[find({cell.x + dx, cell.y + dy})]; i != kEmpty;
                     i = mNext[at(i)])
                    visit(i);
    }

private:
    static std::size_t at(int i) { return static_cast<std::size_t>(i); }
    std::int64_t coordinate(KitReal x) const {
        return static_cast<std::int64_t>(
            std::clamp(std::floor(x * mInvWidth), -kMaxCell, kMaxCell));
    }
    Cell cellOf(const lsVec3& p) const {
        const lsVec3 d = p - mOrigin;
        return {coordinate(d.dot(mU)), coordinate(d.dot(mV))};
    }
    /// Place of the cell's list, or the free place where it would stand.
    std::size_t find(const Cell& cell) const {
        const auto mixed = static_cast<std::uint64_t>(cell.x) * 0x9E3779B97F4A7C15ULL ^
                           static_cast<std::uint64_t>(cell.y) * 0xC2B2AE3D27D4EB4FULL;
        std::size_t place = (mixed ^ mixed >> 32) & mMask;
        while (mHeads[place] != kEmpty && !(mCells[at(mHeads[place])] == cell))
            place = (place + 1) & mMask;
        return place;
    }

    lsVec3 mOrigin, mU, mV;
    KitReal mInvWidth;
    std::size_t mMask = 0;
    std::span<int> mHeads; ///< first contact of the cell, or kEmpty
    std::span<int> mNext;  ///< next contact of the same cell
    std::span<Cell> mCells;
};
} // namespace

int ColRemoveDuplicatesByPairs(ColContact* contacts, int count, const lsVec3& normal) {
    return ColRemoveDuplicates(
        contacts, count,
        [&](const ColContact& a, const ColContact& b) { return Degenerate(a, b, normal); },
        laterWins);
}

int ColRemoveDuplicatesByCells(ColContact* contacts, int count, const lsVec3& normal) {
    if (count < 2 || !(gDegeneracyMinDistance2 > 0))
        return count;
    ColScratchScope scratch;
    const CellTable table(scratch, contacts, count, normal);
    const std::span<int> slotOf = scratch.take<int>(static_cast<std::size_t>(count));
    const std::span<int> numberAt = scratch.take<int>(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        slotOf[static_cast<std::size_t>(i)] = numberAt[static_cast<std::size_t>(i)] = i;

    const auto number = [&](int slot) -> int& { return numberAt[static_cast<std::size_t>(slot)]; };
    const auto slot = [&](int n) -> int& { return slotOf[static_cast<std::size_t>(n)]; };
    const auto move = [&](int from, int to) {
        contacts[to] = contacts[from];
        number(to) = number(from);
        slot(number(to)) = to;
    };
    for (int i = 0; i < count; ++i) {
        int from = i + 1;
        for (;;) {
            int j = std::numeric_limits<int>::max();
            table.forNeighbours(table.cellOfContact(number(i)), [&](int other) {
                const int s = slot(other);
                if (s >= from && s < j && Degenerate(contacts[i], contacts[s], normal))
                    j = s;
            });
            if (j >= count)
                break;
            if (laterWins(contacts[i], contacts[j])) {
                slot(number(i)) = kEmpty;
                move(j, i);
            } else {
                slot(number(j)) = kEmpty;
            }
            if (j != --count)
                move(count, j);
            from = j;
        }
    }
    return count;
}
