#pragma once
#include <Dyns/constraint_solver.h>

/// Direct solver, the default: factors the matrix of the whole partition once a step and solves the
/// boxed problem by pivoting.
class HY_API std_constraint_solver : public constraint_solver {
public:
    /// Builds and factors M from the rows of C. Without a matrix nothing is solved.
    void setup(int N, LCPMatrix* M, DynsConstraints* C, DynsParameters* P,
               lcp_solver_function_ptr solver, DynsBody* const* B, int NB, void* info) override;
    int solve() override;
    void cleanup() override;
};
