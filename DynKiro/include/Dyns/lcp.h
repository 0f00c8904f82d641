#pragma once
#include <Dyns/LCPMatrix.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

struct DynsConstraints;
struct DynsParameters;

/// What a solve tells beyond its count of passes; pass its address as the info of an LCP solver.
struct DynsLCPStatus {
    bool converged = false;
};

/// Block principal pivoting, falling back on single pivots of least index when it begins to cycle.
/// Finds z in [lower, upper] and w = A z - b with w = 0 inside, w >= 0 at lower, w <= 0 at upper,
/// all within parameters->tolerance. The matrix is factored once; a pass solves either over the
/// tight rows on cached columns of the inverse, or over the free rows, whichever takes fewer
/// operations: both give the same point.
/// @param z n entries, result; the last point of the iteration in any case
/// @param b n entries
/// @param index_set n entries of DynsIndex, read if parameters->warm_start is set, written always
/// @param pool work memory, as it was on return
/// @param info null or a DynsLCPStatus
/// @return passes; negative if the solve gave up, and also if it took all passes allowed. Whether
///   the last pass converged is told by info alone.
HY_API int cycle_detect_lcp_solver(LCPMatrix* m, KitReal* z, KitReal* b, KitReal* lower,
                                   KitReal* upper, int* index_set,
                                   DynsLCPSolverParameters* parameters, KitMemoryPool* pool,
                                   void* info);

/// Bounds of the rows that have a normal row: upper = friction times the normal row's present force
/// plus cohesion, lower = -upper, and a free index. A force or coefficient that is not finite counts
/// as 0, with a warning. The arrays are by row.
/// @return rows scaled
HY_API int scale_box_lcp_data(int n, const KitReal* lambda, KitReal* lower, KitReal* upper,
                              const unsigned* reference_normal, const KitReal* friction_coefficient,
                              const KitReal* soil_cohesion_coefficient, int* index_set);

/// Solves the rows of a partition with the given solver, then again while friction bounds follow the
/// normal forces. A solve that does not converge is replaced by sweeps over the constraints' blocks.
/// On return every lambda is finite and inside its bounds.
/// @return sum of the passes, negative if a solve did not converge
HY_API int solve_lcp_system(LCPMatrix* m, DynsConstraints* c, DynsParameters* p,
                            lcp_solver_function_ptr lcp_solver);
