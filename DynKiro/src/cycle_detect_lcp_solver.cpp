#include <Dyns/lcp.h>

#include "dense_ldl.h"
#include "index_set_hash.h"
#include "pool_array.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/DynsParameters.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitMessage.h>
#include <Kit/KitProfile.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace {

/// Passes in single mode, after a cycle, before the block mode comes back.
constexpr int kSinglePassesAfterCycle = 5;
/// Most columns of the inverse that are made, where the matrix has another road. Bounds the memory of
/// a factor: columns are dense.
constexpr int kMaxColumns = 256;

template <typename T>
T* take(KitMemoryPool* pool, int count, const char* name) {
    return takePoolArray<T>(pool, std::max(count + 3, 4) & ~3, name);
}

/// The index sets seen since the table was last emptied, by hash.
class HashTable {
public:
    explicit HashTable(KitMemoryPool* pool) : mPool(pool) { grow(64); }
    [[nodiscard]] bool contains(std::uint32_t key) const {
        return std::find(mKeys, mKeys + mCount, key) != mKeys + mCount;
    }
    void add(std::uint32_t key) {
        if (mCount == mCapacity)
            grow(2 * mCapacity);
        mKeys[mCount++] = key;
    }
    void clear() { mCount = 0; }

private:
    void grow(int capacity) {
        auto* keys = take<std::uint32_t>(mPool, capacity, "hash keys");
        std::copy(mKeys, mKeys + mCount, keys);
        mKeys = keys;
        mCapacity = capacity;
    }

    KitMemoryPool* mPool;
    std::uint32_t* mKeys = nullptr;
    int mCount = 0, mCapacity = 0;
};

/// One boxed LCP on its way: the matrix, its data and the work arrays of a pass.
struct Problem {
    LCPMatrix* m;
    int n;
    KitReal* z;
    const KitReal *b, *lower, *upper;
    int* index_set;
    KitReal tolerance;
    KitMemoryPool* pool;

    KitReal* w = nullptr;
    KitReal* z0 = nullptr; ///< A^-1 b; made when first wanted
    int* tight = nullptr;
    int tightCount = 0;
    KitReal* mjj = nullptr; ///< inverse of A restricted to the tight rows, lower triangle
    KitReal* qjj = nullptr;
    int denseCapacity = 0;

    [[nodiscard]] KitReal boundOf(int row) const {
        if ((index_set[row] & kDynsIndexLower) != 0)
            return lower[row];
        return (index_set[row] & kDynsIndexUpper) != 0 ? upper[row] : 0;
    }
};

const KitReal* freeSolution(Problem& p) {
    if (p.z0 == nullptr) {
        p.z0 = take<KitReal>(p.pool, p.n, "z0");
        std::copy(p.b, p.b + p.n, p.z0);
        std::fill(p.z0 + p.n, p.z0 + ((p.n + 3) & ~3), 0.0);
        p.m->solve(p.z0, 1);
    }
    return p.z0;
}

void listTightRows(Problem& p) {
    p.tightCount = 0;
    for (int i = 0; i < p.n; ++i)
        if (p.index_set[i] != kDynsIndexFree)
            p.tight[p.tightCount++] = i;
}

void reserveDense(Problem& p, int t) {
    if (t <= p.denseCapacity)
        return;
    p.denseCapacity = std::min(p.n, std::max(t, 2 * p.denseCapacity));
    p.mjj = take<KitReal>(p.pool, p.denseCapacity * p.denseCapacity, "mjj");
    p.qjj = take<KitReal>(p.pool, p.denseCapacity, "qjj");
}

// With y the forces that hold the tight rows at their bounds, z = A^-1 (b + E y); y follows from the
// tight rows of A^-1, and A z - b is y on the tight rows and zero elsewhere.
void solveOverTightRows(Problem& p) {
    const KitReal* z0 = freeSolution(p);
    const int t = p.tightCount;
    std::copy(z0, z0 + p.n, p.z);
    std::fill(p.w, p.w + p.n, 0.0);
    if (t == 0)
        return;
    reserveDense(p, t);
    p.m->prepareColumns({p.tight, static_cast<std::size_t>(t)});
    for (int k = 0; k < t; ++k) {
        const KitReal* column = p.m->inverseColumn(p.tight[k]);
        for (int l = 0; l <= k; ++l)
            p.mjj[k * t + l] = column[p.tight[l]];
        p.qjj[k] = p.boundOf(p.tight[k]) - z0[p.tight[k]];
    }
    p.m->factor_dense(p.mjj, t);
    p.m->solve_dense(p.mjj, p.qjj, t);
    for (int k = 0; k < t; ++k) {
        const KitReal* column = p.m->inverseColumn(p.tight[k]);
        const KitReal y = p.qjj[k];
        for (int i = 0; i < p.n; ++i)
            p.z[i] += y * column[i];
        p.w[p.tight[k]] = y;
    }
}

/// Operations of the road over the tight rows, by their weight; columns that exist already cost
/// nothing. Infinite where there would be too many of them.
double tightRoadFlops(const Problem& p) {
    const auto made = p.n - std::count(p.m->column_solved, p.m->column_solved + p.n, 0U);
    std::ptrdiff_t missing = 0;
    for (int k = 0; k < p.tightCount; ++k)
        missing += p.m->column_solved[p.tight[k]] == 0;
    if (made + missing > kMaxColumns)
        return std::numeric_limits<double>::infinity();
    const double t = p.tightCount, n = p.n;
    const double solves = static_cast<double>(missing) + (p.z0 == nullptr ? 1 : 0);
    return LCPMatrix::kSolveWeight * (t * t * t / 3 + 2 * t * n + solves * p.m->solveFlops()) +
           p.m->pendingFactorFlops();
}

void solvePass(Problem& p) {
    const KitProfileScope zone("direct: pass");
    listTightRows(p);
    const bool tightRoad = p.tightCount == 0 || tightRoadFlops(p) < p.m->freeRowsFlops(p.index_set);
    for (int k = 0; k < p.tightCount; ++k)
        p.z[p.tight[k]] = p.boundOf(p.tight[k]);
    if (tightRoad || !p.m->solveFreeRows(p.index_set, p.b, p.z, p.w)) {
        solveOverTightRows(p);
        for (int k = 0; k < p.tightCount; ++k) // without the rounding of the sum
            p.z[p.tight[k]] = p.boundOf(p.tight[k]);
    }
    for (int k = 0; k < p.tightCount; ++k)
        if ((p.index_set[p.tight[k]] & kDynsIndexOut) != 0)
            p.w[p.tight[k]] = 0;
}

int nextIndex(const Problem& p, int row) {
    const int old = p.index_set[row];
    int index = kDynsIndexFree;
    if (p.z[row] < p.lower[row] - p.tolerance)
        index = kDynsIndexLower;
    else if (p.z[row] > p.upper[row] + p.tolerance)
        index = kDynsIndexUpper;
    if (old == kDynsIndexLower && p.w[row] > -p.tolerance)
        index += kDynsIndexLower;
    if (old == kDynsIndexUpper && p.w[row] < p.tolerance)
        index += kDynsIndexUpper;
    return index;
}

/// Moves the rows to the set that the present point asks for; in single mode only the lowest one.
int updateIndexSet(Problem& p, bool single) {
    int changed = 0;
    for (int i = 0; i < p.n; ++i) {
        if ((p.index_set[i] & kDynsIndexOut) != 0)
            continue;
        const int index = nextIndex(p, i);
        if (index == p.index_set[i])
            continue;
        p.index_set[i] = index;
        ++changed;
        if (single)
            break;
    }
    return changed;
}

void startIndexSet(Problem& p, bool warmStart) {
    if (!warmStart)
        std::fill(p.index_set, p.index_set + p.n, static_cast<int>(kDynsIndexFree));
    for (int i = 0; i < p.n; ++i)
        if (std::abs(p.lower[i]) < p.tolerance && std::abs(p.upper[i]) < p.tolerance)
            p.index_set[i] = kDynsIndexOut | kDynsIndexZero;
}

/// How the pivoting moves from block passes to single pivots and back.
struct PivotMode {
    bool single = false;
    bool recent = false; ///< a cycle was met in block mode not long ago
    int countdown = 0;
};

struct PassCount {
    int passes;
    bool converged;
};

PassCount pivot(Problem& p, const DynsLCPSolverParameters& parameters, HashTable& seen) {
    PivotMode mode;
    int it = 0;
    bool converged = false;
    while (it < parameters.max_iterations) {
        solvePass(p);
        converged = updateIndexSet(p, mode.single) == 0;
        bool gaveUp = false;
        bool cycleEntered = false;
        if (parameters.cycle_detection != 0) {
            const std::uint32_t key =
                DynsIndexSetHash({p.index_set, static_cast<std::size_t>(p.n)});
            if (!seen.contains(key)) {
                seen.add(key);
            } else if (mode.single) {
                it = -it;
                gaveUp = true;
            } else {
                mode = {.single = true, .recent = true, .countdown = mode.countdown + 1};
                seen.clear();
                cycleEntered = true;
            }
        }
        if (mode.recent && !cycleEntered)
            ++mode.countdown;
        if (mode.countdown > kSinglePassesAfterCycle) {
            mode = {};
            seen.clear();
        }
        if (parameters.max_block_iterations < it)
            mode.single = true;
        ++it;
        if (converged || gaveUp)
            break;
    }
    return {it == parameters.max_iterations ? -it : it, converged};
}

/// Whether each force is a number within its bounds, but for the tolerance.
bool isWithinBounds(const Problem& p) {
    for (int i = 0; i < p.n; ++i)
        if (!(p.z[i] >= p.lower[i] - p.tolerance && p.z[i] <= p.upper[i] + p.tolerance))
            return false;
    return true;
}

} // namespace

int cycle_detect_lcp_solver(LCPMatrix* m, KitReal* z, KitReal* b, KitReal* lower, KitReal* upper,
                            int* index_set, DynsLCPSolverParameters* parameters,
                            KitMemoryPool* pool, void* info) {
    pool->push();
    Problem p{.m = m,
              .n = m->n,
              .z = z,
              .b = b,
              .lower = lower,
              .upper = upper,
              .index_set = index_set,
              .tolerance = parameters->tolerance,
              .pool = pool};
    p.w = take<KitReal>(pool, p.n, "w");
    p.tight = take<int>(pool, p.n, "tight");
    startIndexSet(p, parameters->warm_start != 0);
    HashTable seen(pool);
    seen.add(DynsIndexSetHash({index_set, static_cast<std::size_t>(p.n)}));
    if (parameters->max_iterations < 0)
        KitWarning(1, "lcp_simple_hash_table: error in size: current item: %d size = %d\n", 1,
                   parameters->max_iterations + 2);
    PassCount result{0, false};
    if (parameters->max_iterations > 0) {
        result = pivot(p, *parameters, seen);
    } else {
        const KitReal* z0 = freeSolution(p);
        std::copy(z0, z0 + p.n, z);
        result.converged = true; // if that is a solution, which the next line tells
    }
    // A force that is no number compares with no bound, so its row would seem to be free.
    result.converged = result.converged && isWithinBounds(p);
    pool->pop();
    if (info != nullptr)
        static_cast<DynsLCPStatus*>(info)->converged = result.converged;
    return result.passes;
}
