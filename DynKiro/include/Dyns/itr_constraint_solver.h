#pragma once
#include <Dyns/constraint_solver.h>

/// Sweeps over the constraints of a partition, block Gauss-Seidel fashion, instead of factoring the
/// whole system. Takes up to it_ct_solver_max_it + 1 sweeps and ends earlier when the residual, or its
/// relative change, falls below it_ct_solver_tol; a tolerance not above 0 measures nothing. A further
/// solve on the same rows goes on from the last forces.
class HY_API itr_constraint_solver : public constraint_solver {
public:
    void setup(int N, LCPMatrix* M, DynsConstraints* C, DynsParameters* P,
               lcp_solver_function_ptr solver, DynsBody* const* B, int NB, void* info) override;
    /// Answers 0.
    int solve() override;
    void cleanup() override;

private:
    class DynsBlockSweeps* mSweeps = nullptr; ///< in the frame's pool
};
