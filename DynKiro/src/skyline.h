#pragma once
#include <Kit/KitAlignedVector.h>
#include <Kit/KitTypes.h>

#include <cstddef>

struct DynsConstraints;

/// What to do with a pivot that is not positive.
enum class DynsBadPivot {
    kReplace, ///< by 1e-12
    kSize,    ///< by its absolute value
};

/// Lower triangle of a symmetric matrix stored from the first non-zero of each row, and its Cholesky
/// factor in place, in the natural order of the rows.
class DynsSkyline {
public:
    /// An n by n matrix of zeros with nothing stored but the diagonal.
    void reset(int n);
    /// A = J M^-1 J^T + diag(xepsilon), in the order of the rows.
    void build(const DynsConstraints& c);
    /// Makes the rows that are not free (index 0), and their columns, those of the unit matrix.
    void fixRows(const int* index_set);
    void factor(DynsBadPivot badPivot);

    [[nodiscard]] int size() const { return static_cast<int>(mMinColumn.size()); }
    [[nodiscard]] int minColumn(int row) const { return mMinColumn[index(row)]; }
    /// Element of what is stored: A before, L after factor(); 0 left of the first stored column.
    [[nodiscard]] KitReal get(int i, int j) const;
    void set(int i, int j, KitReal value);
    /// 1/L_ii
    [[nodiscard]] KitReal inverseDiagonal(int i) const { return mInverse[index(i)]; }
    void solve(KitReal* x) const;
    /// y = L L^T x
    void multiply(const KitReal* x, KitReal* y) const;
    /// Stored entries.
    [[nodiscard]] std::size_t entries() const { return mEntries.size(); }

private:
    [[nodiscard]] static std::size_t index(int i) { return static_cast<std::size_t>(i); }
    [[nodiscard]] const KitReal* row(int i) const {
        return mEntries.data() + mStart[index(i)] - mMinColumn[index(i)];
    }
    [[nodiscard]] KitReal* row(int i) {
        return mEntries.data() + mStart[index(i)] - mMinColumn[index(i)];
    }
    void layOut();
    void addLower(const KitReal* block, int firstRow, int rows, int firstColumn, int columns);

    KitAlignedVector<int> mMinColumn;
    KitAlignedVector<std::ptrdiff_t> mStart; ///< first entry of each row
    KitAlignedVector<KitReal> mEntries, mInverse;
    mutable KitAlignedVector<KitReal> mProduct;
};
