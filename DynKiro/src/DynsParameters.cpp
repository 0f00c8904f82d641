#include <Dyns/DynsParameters.h>

#include "DynsFrame.h"

#include <Kit/KitMessage.h>

namespace {

// What a frame has from its creation on, for parameters that belong to none.
constexpr int kBuiltInStepperModels = 2;
constexpr int kBuiltInLcpSolvers = 1;
constexpr int kBuiltInLinearSolvers = 2;

bool isBelow(int index, int count) {
    return index >= 0 && index < count;
}

} // namespace

void DynsParametersSetDefault(DynsParameters* parameters) {
    *parameters = DynsParameters{};
}

int DynsValidateKiroParameters(const DynsParameters* parameters) {
    const DynsFrame* frame = parameters->kiro_frame;
    const int model = parameters->stepper_model;
    const int lcpSolver = parameters->lcp_parameters.solver_function;
    const int linearSolver = parameters->linear_solver;
    int valid = 1;
    if (!isBelow(model, frame ? frame->n_stepper_models : kBuiltInStepperModels)) {
        KitWarning(0, "DynsStep : no such model number parameters->stepper_model = : %d\n", model);
        valid = 0;
    }
    if (!isBelow(lcpSolver, frame ? frame->n_lcp_solvers : kBuiltInLcpSolvers)) {
        KitWarning(0, "DynsStep: no such lcp solver : %d\n", lcpSolver);
        valid = 0;
    }
    if (parameters->cpu_resources) {
        KitWarning(0, "DynsStep: no such CPU resource : %d\n", 1);
        valid = 0;
    }
    if (!isBelow(linearSolver, frame ? frame->n_linear_solvers : kBuiltInLinearSolvers)) {
        KitWarning(0, "DynsStep: no such Linear Solver, see DynLinearSolver enumeration): %d\n",
                   linearSolver);
        valid = 0;
    }
    return valid;
}

const char* DynsGetLinearSolverDescription(const DynsParameters* parameters) {
    const DynsFrame* frame = parameters->kiro_frame;
    if (!frame || !isBelow(parameters->linear_solver, frame->n_linear_solvers))
        return nullptr;
    return frame->linear_solvers[parameters->linear_solver].mat->get_name();
}

const char* DynsGetStepperModelDescription(const DynsParameters* parameters) {
    const DynsFrame* frame = parameters->kiro_frame;
    if (!frame || !isBelow(parameters->stepper_model, frame->n_stepper_models))
        return nullptr;
    return frame->stepper_models[parameters->stepper_model]->get_name();
}
