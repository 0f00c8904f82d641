#pragma once
#include <Kit/KitAlignedVector.h>
#include <Kit/KitTypes.h>

#include <cstddef>
#include <vector>

/// Columns of an inverse, made on demand. Storage comes in chunks that never move and is kept from
/// one system to the next.
class DynsColumnCache {
public:
    /// Forgets all columns; the next ones have `rows` entries.
    void reset(int columns, std::size_t rows) {
        mRows = rows == 0 ? 1 : rows;
        mUsed = 0;
        mPlace.assign(static_cast<std::size_t>(columns), nullptr);
    }
    [[nodiscard]] KitReal* find(int column) const {
        return mPlace[static_cast<std::size_t>(column)];
    }
    /// Room for a column that is not there yet.
    [[nodiscard]] KitReal* add(int column) {
        const std::size_t perChunk = kChunk / mRows > 0 ? kChunk / mRows : 1;
        const std::size_t chunk = mUsed / perChunk;
        if (chunk == mChunks.size())
            mChunks.emplace_back();
        if (mChunks[chunk].size() < perChunk * mRows)
            mChunks[chunk].resize(perChunk * mRows);
        KitReal* place = mChunks[chunk].data() + mUsed % perChunk * mRows;
        ++mUsed;
        mPlace[static_cast<std::size_t>(column)] = place;
        return place;
    }

private:
    static constexpr std::size_t kChunk = 1U << 15U; ///< entries

    std::size_t mRows = 1, mUsed = 0;
    std::vector<KitAlignedVector<KitReal>, KitAlignedAllocator<KitAlignedVector<KitReal>>> mChunks;
    KitAlignedVector<KitReal*> mPlace;
};
