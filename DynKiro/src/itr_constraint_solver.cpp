#include <Dyns/itr_constraint_solver.h>

#include "block_sweeps.h"
#include "pool_array.h"

#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Dyns/DynsConstraints.h>
#include <Dyns/DynsParameters.h>
#include <Dyns/smv_boxed_keller.h>
#include <Kit/KitMemoryPool.h>

#include <cmath>
#include <new>

namespace {

const DynsConstraintSolverFactoryImpl<itr_constraint_solver> gFactory("itr_constraint_solver");

} // namespace

void itr_constraint_solver::setup(int N, LCPMatrix* M, DynsConstraints* C, DynsParameters* P,
                                  lcp_solver_function_ptr, DynsBody* const* B, int NB, void*) {
    n = N;
    m = M;
    c = C;
    p = P;
    lcp_solver = smv_boxed_keller;
    b = B;
    nb = NB;
    KitMemoryPool* pool = p->memory_pool_handler;
    auto* place = takePoolArray<DynsBlockSweeps>(pool, 1, "block sweeps");
    mSweeps = new (place) DynsBlockSweeps(*c, nb, *pool);
}

int itr_constraint_solver::solve() {
    const DynsLCPSolverParameters& parameters = p->lcp_parameters;
    KitReal previous = 1.0; // the first sweep is measured against 1
    bool done = false;
    int pass = 0;
    do {
        mSweeps->sweep();
        if (parameters.it_ct_solver_tol > 0) {
            const KitReal error = mSweeps->residual();
            done = parameters.it_ct_solver_tol > error ||
                   parameters.it_ct_solver_tol > std::abs(error - previous) / previous;
            previous = error;
        }
        ++pass;
    } while (!done && pass <= parameters.it_ct_solver_max_it);
    return 0;
}

void itr_constraint_solver::cleanup() {
    mSweeps = nullptr;
}
