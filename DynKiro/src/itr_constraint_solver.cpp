#include <Dyns/itr_constraint_solver.h>

#include "block_sweeps.h"
#include "pool_array.h"

#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Dyns/DynsConstraints.h>
#include <Dyns/DynsParameters.h>
#include <Dyns/smv_boxed_keller.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitProfile.h>

#include <algorithm>
#include <new>

namespace {

const DynsConstraintSolverFactoryImpl<itr_constraint_solver> gFactory("itr_constraint_solver");

} // namespace

itr_constraint_solver::itr_constraint_solver() : mTeam(std::make_unique<DynsStageTeam>()) {}

itr_constraint_solver::~itr_constraint_solver() = default;

void itr_constraint_solver::setup(int N, LCPMatrix* M, DynsConstraints* C, DynsParameters* P,
                                  lcp_solver_function_ptr, DynsBody* const* B, int NB, void*) {
    n = N;
    m = M;
    c = C;
    p = P;
    lcp_solver = smv_boxed_keller;
    b = B;
    nb = NB;
    const KitProfileScope zone("sweeps: set up");
    KitMemoryPool* pool = p->memory_pool_handler;
    auto* place = takePoolArray<DynsBlockSweeps>(pool, 1, "block sweeps");
    const bool large = p->iterative_rows_threshold > 0 && n > p->iterative_rows_threshold;
    mSweeps = new (place)
        DynsBlockSweeps(*c, nb, *pool, large ? DynsSweepOrder::kColours : DynsSweepOrder::kRows);
    if (p->iterative_warm_start)
        mSweeps->startFromGiven();
}

int itr_constraint_solver::solve() {
    const KitProfileScope zone("sweeps: solve");
    const DynsLCPSolverParameters& parameters = p->lcp_parameters;
    mSweeps->solve({.sweeps = std::max(parameters.it_ct_solver_max_it, 0) + 1,
                    .tolerance = parameters.it_ct_solver_tol},
                   *mTeam, p->thread_pool);
    return 0;
}

void itr_constraint_solver::cleanup() {
    mSweeps = nullptr;
}
