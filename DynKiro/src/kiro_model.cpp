#include <Dyns/kiro_model.h>

#include "stepper_setup.h"

#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraints.h>
#include <Dyns/constraint_solver.h>
#include <Dyns/mass_matrix.h>

void kiro_model::setup(int count, DynsConstraints* constraints, DynsParameters* parameters,
                       DynsBody* const* bodies, lcp_solver_function_ptr solver, LCPMatrix* matrix,
                       constraint_solver* constraintSolver) {
    constexpr int kSpherical = 1;
    stepperStoreArguments(*this, count, constraints, parameters, bodies, solver, matrix,
                          constraintSolver);
    if (stepperIsSecondary(*this)) {
        invI = stepperCopyInverse(*this);
    } else {
        body_update_inertia_tensor(b, nb, true);
        body_update_momentum(b, nb);
        invI = mass_matrix_build_inverse(p, b, nb, kSpherical);
    }
    stepperSetUpRows(*this);
}

void kiro_model::get_forces() {
    if (c->n_constraints != 0 && ctsol)
        ctsol->solve();
}

const char* kiro_model::get_name() const {
    return "vintage kiro model: very stable but without non-inertial forces";
}
