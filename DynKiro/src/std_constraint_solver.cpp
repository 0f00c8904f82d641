#include <Dyns/std_constraint_solver.h>

#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Dyns/DynsConstraints.h>
#include <Dyns/lcp.h>
#include <Kit/KitProfile.h>

namespace {

DynsConstraintSolverFactoryImpl<std_constraint_solver> factory("std_constraint_solver");

} // namespace

void std_constraint_solver::setup(int N, LCPMatrix* M, DynsConstraints* C, DynsParameters* P,
                                  lcp_solver_function_ptr solver, DynsBody* const* B, int NB,
                                  void* /*info*/) {
    n = N;
    m = M;
    c = C;
    p = P;
    lcp_solver = solver;
    b = B;
    nb = NB;
    if (!m)
        return;
    const KitProfileScope zone("direct: assemble");
    m->allocate(c->n_constraint_rows);
    m->calcJinvMJT(c);
    m->factorize();
}

int std_constraint_solver::solve() {
    return m && lcp_solver ? solve_lcp_system(m, c, p, lcp_solver) : 0;
}

void std_constraint_solver::cleanup() {}
