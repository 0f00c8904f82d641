#pragma once
#include <Dyns/LCPMatrix.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// Most rows of a small problem.
constexpr int kSmvMaxRows = 16;

/// A small boxed mixed LCP: w = M z + q, l <= z <= u, w = 0 inside, w >= 0 at l, w <= 0 at u.
/// M is symmetric, row-major with row length n.
struct smv_mlcp {
    int n;
    const KitReal *M, *q, *l, *u;
    KitReal *z, *w; ///< results
    int* index;     ///< row: 0 free, 2 at l, 4 at u; result
};

enum pivot_type { w_pivot = 0, z_pivot = 1 };

/// Keller's principal pivoting, extended to two bounds: the row of greatest violation drives until
/// its w vanishes or it meets its other bound, while free rows that reach a bound block the way.
/// (Keller, "The general quadratic optimization problem", Mathematical Programming 5, 1973.)
/// At most 8 n pivots; the free rows are solved afresh at the end, so that the rank-one updates leave
/// no drift. A row that depends on the others, and a direction in which nothing stops the step, leave
/// their rows at zero or at the nearer bound: the result is always finite and inside the bounds.
class HY_API smv_boxed_keller_solver {
public:
    explicit smv_boxed_keller_solver(smv_mlcp* problem) : n(problem->n), mlcp(problem) {}

    /// Answers false if the pivots ran out or the data was not finite; z is inside its bounds anyway.
    bool solve();

    int iterations = 0; ///< pivots done

private:
    enum class Step { kNone, kDrivingFree, kOtherBound, kBlockedLower, kBlockedUpper };

    void get_initial_index_set();
    void split_index_set();
    void get_initial_point();
    bool get_pivot_index();
    void get_search_direction();
    Step get_step_length();
    void do_pivot(Step step);
    bool do_pivotal(int row, pivot_type kind);
    void update_q_vector();
    [[nodiscard]] KitReal get_error() const;
    void build_solution();
    void setAside(int row);

    int n;
    int F[kSmvMaxRows], FSZ = 0;   ///< free rows, ascending
    int TL[kSmvMaxRows], TLSZ = 0; ///< rows at the lower bound
    int TU[kSmvMaxRows], TUSZ = 0; ///< rows at the upper bound
    bool aside[kSmvMaxRows] = {};  ///< rows that depend on others: z stays, w is ignored
    KitReal v[kSmvMaxRows];
    KitReal B[kSmvMaxRows * kSmvMaxRows];
    KitReal q1[kSmvMaxRows]; ///< z of a free row, w of a tight one
    bool rising = true;      ///< the driving row leaves its lower bound
    int s = -1;              ///< driving row
    int r = -1;              ///< blocking row
    int r2 = -1, r3 = -1;    ///< rows that block at their lower and upper bound
    KitReal mss = 0;         ///< rate of w of the driving row with its z
    smv_mlcp* mlcp;
};

/// Solves A z - b = w over the bounds for an smv_matrix; the last three arguments are not read. Rows
/// whose bounds coincide are fixed there and the rest is solved. Answers 1 if there were such rows,
/// else 0.
HY_API int smv_boxed_keller(LCPMatrix* m, KitReal* z, KitReal* b, KitReal* lower, KitReal* upper,
                            int* index, DynsLCPSolverParameters* parameters, KitMemoryPool* pool,
                            void* info);

/// The same on a bare row-major matrix of n rows.
HY_API int smv_solve_boxed(const KitReal* M, int n, KitReal* z, const KitReal* b,
                           const KitReal* lower, const KitReal* upper, int* index);
