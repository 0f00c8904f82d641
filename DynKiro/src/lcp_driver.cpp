#include <Dyns/lcp.h>

#include "block_sweeps.h"
#include "pool_array.h"

#include <Dyns/DynsConstraints.h>
#include <Dyns/DynsParameters.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitMessage.h>
#include <Kit/KitProfile.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {

/// Sweeps that take the place of a solve which did not converge.
constexpr int kFallbackSweeps = 20;
constexpr KitReal kSmallestNorm = 1e-14;

KitReal finiteOrZero(KitReal value, const char* warning) {
    if (std::isfinite(value))
        return value;
    KitWarning(12, "%s", warning);
    return 0;
}

/// Solves once; a solve that does not converge is finished by sweeps from zero.
struct SolveOnce {
    LCPMatrix* m;
    DynsConstraints* c;
    DynsParameters* p;
    lcp_solver_function_ptr solver;
    bool failed = false; ///< some solve did not converge

    int operator()() {
        DynsLCPStatus status;
        const int passes = solver(m, c->lambda, c->rhs, c->lower, c->upper, c->index_set,
                                  &p->lcp_parameters, p->memory_pool_handler, &status);
        if (!status.converged) {
            failed = true;
            sweepFromZero();
        }
        return passes;
    }

    void sweepFromZero() const {
        const KitProfileScope zone("direct: sweeps of a fallback");
        ++c->unconverged_solves;
        ++c->fallback_solves;
        p->memory_pool_handler->push();
        DynsBlockSweeps sweeps(*c, c->n_bodies + 1, *p->memory_pool_handler, DynsSweepOrder::kRows);
        DynsStageTeam alone;
        sweeps.startFromZero();
        sweeps.solve({.sweeps = kFallbackSweeps, .tolerance = 0}, alone, nullptr);
        p->memory_pool_handler->pop();
    }
};

KitReal norm(const KitReal* a, int n) {
    KitReal sum = 0;
    for (int i = 0; i < n; ++i)
        sum += a[i] * a[i];
    return std::sqrt(sum);
}

KitReal distance(const KitReal* a, const KitReal* b, int n) {
    KitReal sum = 0;
    for (int i = 0; i < n; ++i)
        sum += (a[i] - b[i]) * (a[i] - b[i]);
    return std::sqrt(sum);
}

/// Solves again while the friction bounds still change the forces.
int solveWithFrictionBounds(SolveOnce& solve) {
    DynsConstraints* c = solve.c;
    DynsLCPSolverParameters& parameters = solve.p->lcp_parameters;
    const int n = c->n_constraint_rows;
    KitMemoryPool* pool = solve.p->memory_pool_handler;
    pool->push();
    auto* last = takePoolArray<KitReal>(pool, n, "tmp");
    std::copy(c->lambda, c->lambda + n, last);
    KitReal error = 1 + parameters.scaled_box_tolerance;
    int count = 0, k = 0;
    while (k < parameters.max_scaled_box_iterations && error > parameters.scaled_box_tolerance) {
        ++k;
        parameters.warm_start = 1;
        scale_box_lcp_data(n, c->lambda, c->lower, c->upper, c->reference_normal,
                           c->friction_coefficient, c->soil_cohesion_coefficient, c->index_set);
        count += solve();
        error = distance(last, c->lambda, n) / (norm(last, n) + kSmallestNorm);
        std::copy(c->lambda, c->lambda + n, last);
    }
    c->scaled_box_error = error;
    c->scaled_box_iterations = k;
    pool->pop();
    return count;
}

} // namespace

int scale_box_lcp_data(int n, const KitReal* lambda, KitReal* lower, KitReal* upper,
                       const unsigned* reference_normal, const KitReal* friction_coefficient,
                       const KitReal* soil_cohesion_coefficient, int* index_set) {
    int scaled = 0;
    for (int i = 0; i < n; ++i) {
        if (reference_normal[i] == kDynsNoReferenceNormal)
            continue;
        const KitReal normal = finiteOrZero(lambda[i - static_cast<int>(reference_normal[i])],
                                            "Overriding a normal force that was infinite.\n");
        const KitReal friction = finiteOrZero(
            friction_coefficient[i], "Overriding an friction coefficient that was infinite\n");
        const KitReal cohesion = finiteOrZero(
            soil_cohesion_coefficient[i], "Overriding a cohesion coefficient that was infinite\n");
        index_set[i] = kDynsIndexFree;
        ++scaled;
        upper[i] = friction * std::abs(normal) + cohesion;
        lower[i] = -upper[i];
    }
    return scaled;
}

int solve_lcp_system(LCPMatrix* m, DynsConstraints* c, DynsParameters* p,
                     lcp_solver_function_ptr lcp_solver) {
    const KitProfileScope zone("direct: solve");
    SolveOnce solve{m, c, p, lcp_solver};
    int count = solve();
    if (c->use_scaled_box_friction != 0)
        count += solveWithFrictionBounds(solve);
    if (solve.failed)
        count = -std::max(std::abs(count), 1);
    for (int i = 0; i < c->n_constraint_rows; ++i) {
        const KitReal value = std::isfinite(c->lambda[i]) ? c->lambda[i] : 0;
        c->lambda[i] = std::min(std::max(value, c->lower[i]), c->upper[i]);
    }
    c->lcp_iteration_count += count;
    return count;
}
