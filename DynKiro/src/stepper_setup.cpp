#include "stepper_setup.h"

#include "DynsRowGuard.h"
#include "pool_array.h"

#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraints.h>
#include <Dyns/constraint_solver.h>
#include <Dyns/jacobian.h>
#include <Dyns/kitreal.h>

void stepperStoreArguments(WorldStepper& model, int nb, DynsConstraints* c, DynsParameters* p,
                           DynsBody* const* b, lcp_solver_function_ptr lcp_solver, LCPMatrix* m,
                           constraint_solver* ctsol) {
    model.nb = nb;
    model.c = c;
    model.p = p;
    model.b = b;
    model.lcp_solver = lcp_solver;
    model.m = m;
    model.ctsol = ctsol;
    model.h = p->stepsize;
    model.h_inv = 1 / model.h;
    model.rhs0 = nullptr;
    if (m)
        m->memory_handler = p->memory_pool_handler;
}

bool stepperIsSecondary(const WorldStepper& model) {
    return DynsConstraintsGetType(model.c) != 0;
}

MassMatrix* stepperCopyInverse(const WorldStepper& model) {
    MassMatrix* M = takePoolArray<MassMatrix>(model.p->memory_pool_handler, model.nb, "inv M");
    for (int i = 0; i < model.nb; ++i) {
        const auto& inverse = model.b[i]->inverse_massmatrix;
        M[i] = {.invI0 = {inverse[0][0], inverse[0][1], inverse[0][2]},
                .invmass = inverse[0][3],
                .invI1 = {inverse[1][0], inverse[1][1], inverse[1][2]},
                .pad1 = 0,
                .invI2 = {inverse[2][0], inverse[2][1], inverse[2][2]},
                .pad2 = 0};
    }
    return M;
}

//   rhs0 = v0/h − γφ/h² − J M⁻¹ p/h − J M⁻¹ f
// with momenta p and applied loads f: the force λ that makes J v' = v0 − γφ/h at the end of the step,
// v' = M⁻¹ (p + h f + h Jᵀλ), solves J M⁻¹ Jᵀ λ = rhs0.
void stepperSetUpRows(WorldStepper& model) {
    DynsConstraints* c = model.c;
    if (c->n_constraints == 0)
        return;
    const int n = c->n_constraint_rows;
    KitReal* rhs0 = takePoolArray<KitReal>(model.p->memory_pool_handler, n, "rhs0");
    model.rhs0 = rhs0;
    jacobian_mass_mm(c, model.invI);
    kitreal_copy(n, c->v0, 1, rhs0, 1);
    kitreal_scal(n, model.h_inv, rhs0, 1);
    kitreal_had(n, -model.h_inv * model.h_inv, c->xgamma, 1, c->phi, 1, 1, rhs0, 1);
    jacobian_with_body_vector_mv(-model.h_inv, c, c->GM, 0, offsetof(DynsBody, linearMomentum), 1,
                                 rhs0);
    jacobian_with_body_vector_mv(-1, c, c->GM, 0, offsetof(DynsBody, force), 1, rhs0);
    DynsNeutralizeBadRows(*c, rhs0);
    if (model.ctsol)
        model.ctsol->setup(n, model.m, c, model.p, model.lcp_solver, model.b, model.nb, nullptr);
}
