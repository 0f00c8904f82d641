#include <Dyns/StableStepper.h>

#include "stepper_setup.h"

#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraints.h>
#include <Dyns/constraint_solver.h>
#include <Dyns/mass_matrix.h>

void StableStepper::setup(int count, DynsConstraints* constraints, DynsParameters* parameters,
                          DynsBody* const* bodies, lcp_solver_function_ptr solver,
                          LCPMatrix* matrix, constraint_solver* constraintSolver) {
    constexpr KitReal kGyroscopicScale = 1;
    stepperStoreArguments(*this, count, constraints, parameters, bodies, solver, matrix,
                          constraintSolver);
    if (stepperIsSecondary(*this)) {
        invI = stepperCopyInverse(*this);
    } else {
        body_update_inertia_tensor(b, nb, false);
        body_update_momentum(b, nb);
        // Before the inverse, which may add to the momentum what is no part of the motion.
        add_non_inertial_forces(b, nb, kGyroscopicScale);
        invI = mass_matrix_build_stabilized_inverse(b, nb, p, kGyroscopicScale);
    }
    stepperSetUpRows(*this);
}

void StableStepper::get_forces() {
    if (c->n_constraints != 0 && ctsol)
        ctsol->solve();
}

const char* StableStepper::get_name() const {
    return "stable rotational model: very stable with non-inertial forces";
}
