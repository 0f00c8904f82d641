#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyMessage.h>

#include <cstdlib>

namespace Hy {

/// A square table in which (i, j) and (j, i) are one entry, kept as a packed upper triangle.
/// @tparam T default-constructible and movable; new entries are value-initialised
template <typename T>
class HySymmetricTable {
public:
    HySymmetricTable() = default;
    explicit HySymmetricTable(int size) { resize(size); }

    /// Number of rows.
    [[nodiscard]] int size() const { return mMaxCount; }
    /// Entry of a pair. An index out of range is a fatal error.
    [[nodiscard]] T& getEntry(int i, int j) { return mData[indexOf(i, j)]; }
    [[nodiscard]] const T& getEntry(int i, int j) const { return mData[indexOf(i, j)]; }

    /// Changes the number of rows; entries of rows that stay keep their pair. Moves the entries.
    void resize(int size) {
        rebuild(size, size < mMaxCount ? size : mMaxCount, [](int row) { return row; });
    }
    /// Drops a row with its entries; later rows move up by one.
    void removeRow(int removed) {
        if (removed < 0 || removed >= mMaxCount)
            failIndex(removed, removed);
        rebuild(mMaxCount - 1, mMaxCount - 1,
                [removed](int row) { return row < removed ? row : row + 1; });
    }
    /// Drops all rows and releases the storage.
    void clear() {
        mMaxCount = 0;
        mData.clearMemoryBlock();
    }

private:
    [[noreturn]] static void failIndex(int i, int j) {
        HyFatalError(0, "HySymmetricTable::getEntry: invalid index (%d,%d).\n", i, j);
        std::abort();
    }
    [[nodiscard]] std::size_t indexOf(int i, int j) const {
        const int low = i < j ? i : j, high = i < j ? j : i;
        if (low < 0 || high >= mMaxCount) [[unlikely]]
            failIndex(i, j);
        const auto n = static_cast<std::size_t>(mMaxCount), a = static_cast<std::size_t>(low);
        return n * a + static_cast<std::size_t>(high) - a * (a + 1) / 2;
    }
    /// Gives the table another size and fills its first `kept` rows from the rows that oldRow names.
    template <typename OldRow>
    void rebuild(int size, int kept, OldRow oldRow) {
        HySymmetricTable built;
        built.mMaxCount = size > 0 ? size : 0;
        const auto n = static_cast<std::size_t>(built.mMaxCount);
        built.mData.resize(n * (n + 1) / 2);
        for (int i = 0; i < kept; ++i)
            for (int j = i; j < kept; ++j)
                built.getEntry(i, j) = std::move(getEntry(oldRow(i), oldRow(j)));
        mMaxCount = built.mMaxCount;
        mData.swap(built.mData);
    }

    int mMaxCount = 0;
    HyArray<T> mData; ///< row by row, each from its diagonal on
};

} // namespace Hy
