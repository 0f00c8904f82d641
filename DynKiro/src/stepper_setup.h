#pragma once
#include <Dyns/WorldStepper.h>

// Steps of a model's setup that do not depend on the model.

/// Stores the arguments of WorldStepper::setup in the model.
void stepperStoreArguments(WorldStepper& model, int nb, DynsConstraints* c, DynsParameters* p,
                           DynsBody* const* b, lcp_solver_function_ptr lcp_solver, LCPMatrix* m,
                           constraint_solver* ctsol);
/// Whether the partition couples primary ones. Its bodies are theirs and have been set up with their
/// own model; it may change nothing in them.
[[nodiscard]] bool stepperIsSecondary(const WorldStepper& model);
/// The effective inverse of bodies that another partition has set up.
[[nodiscard]] MassMatrix* stepperCopyInverse(const WorldStepper& model);
/// Builds rhs0 and J M^-1 and hands the rows to the constraint solver; nothing without constraints.
void stepperSetUpRows(WorldStepper& model);
