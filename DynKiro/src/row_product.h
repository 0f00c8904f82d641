#pragma once
#include <Dyns/DynsConstraints.h>
#include <Kit/KitAlignedVector.h>
#include <Kit/KitTypes.h>

/// Products with A = J M^-1 J^T + diag(xepsilon) through the bodies, without A itself: linear in the
/// rows. Buffers keep their capacity.
class DynsRowProduct {
public:
    /// y = A x
    void multiply(const DynsConstraints& c, const KitReal* x, KitReal* y);

    /// Given the values of the tight rows in z, finds those of the free rows (index 0), for which
    /// A z - b is 0; w = A z - b on the tight rows and 0 on the free ones. solveFree(x) turns the free
    /// rows of x into A_ff^-1 x and leaves the others alone.
    template <typename SolveFree>
    void solveFreeRows(const DynsConstraints& c, const int* index_set, const KitReal* b, KitReal* z,
                       KitReal* w, SolveFree solveFree) {
        const int n = c.n_constraint_rows;
        for (int i = 0; i < n; ++i)
            if (index_set[i] == kDynsIndexFree)
                z[i] = 0;
        multiply(c, z, w);
        for (int i = 0; i < n; ++i)
            if (index_set[i] == kDynsIndexFree)
                z[i] = b[i] - w[i];
        solveFree(z);
        multiply(c, z, w);
        for (int i = 0; i < n; ++i)
            w[i] = index_set[i] == kDynsIndexFree ? 0 : w[i] - b[i];
    }

private:
    KitAlignedVector<KitReal> mLoads; ///< force and torque of the rows on each body, six a body
};
