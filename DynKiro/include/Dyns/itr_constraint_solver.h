#pragma once
#include <Dyns/constraint_solver.h>

#include <memory>

/// Sweeps over the constraints of a partition, block Gauss-Seidel fashion, instead of factoring the
/// whole system. Takes up to it_ct_solver_max_it + 1 sweeps and ends earlier when the residual, or its
/// relative change, falls below it_ct_solver_tol; a tolerance not above 0 measures nothing. A further
/// solve on the same rows goes on from the last forces. The first begins with none, or, with
/// iterative_warm_start, with as much as is stable of the lambda that the rows were given.
///
/// A partition of up to iterative_rows_threshold rows, and any without a threshold, is swept in the
/// order of its rows; the residual is measured after each sweep, without softness, and the first
/// against 1. One with more rows is swept by colours: constraints that share no moving body form a
/// group, greedily in the order of creation, and the groups follow one another, so that the threads
/// of thread_pool sweep a group together. The residual is then measured on the way, each constraint's
/// before it is solved. Both orders converge to the same forces; neither depends on the threads.
class HY_API itr_constraint_solver : public constraint_solver {
public:
    itr_constraint_solver();
    ~itr_constraint_solver() override;

    void setup(int N, LCPMatrix* M, DynsConstraints* C, DynsParameters* P,
               lcp_solver_function_ptr solver, DynsBody* const* B, int NB, void* info) override;
    /// Answers 0.
    int solve() override;
    void cleanup() override;

private:
    class DynsBlockSweeps* mSweeps = nullptr; ///< in the frame's pool
    std::unique_ptr<class DynsStageTeam> mTeam;
};
