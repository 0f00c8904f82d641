#include "DynsFrame.h"

#include <Dyns/DynsConstraintFrames.h>
#include <Dyns/constraint_solver.h>
#include <Dyns/lcp.h>
#include <Kit/KitMemoryPool.h>
#include <Kit/KitMessage.h>

#include <unordered_map>

namespace {

// Where each living solver of a frame is held. For look-up only; never destroyed, as static factories
// delete solvers at the end of the process.
std::unordered_map<constraint_solver*, constraint_solver**>& solverHolders() {
    static auto* const holders = new std::unordered_map<constraint_solver*, constraint_solver**>;
    return *holders;
}

void holdNewSolver(constraint_solver*& entry, DynsConstraintSolverFactory& factory) {
    entry = factory.create();
    if (entry)
        solverHolders()[entry] = &entry;
}

void addSolversOfAllFactories(DynsFrame& frame) {
    const DynsConstraintSolverRegistry& registry = DynsConstraintSolverRegistry::instance();
    for (DynsConstraintSolverFactory* factory : registry.getFactories()) {
        const unsigned id = registry.getId(factory->getName());
        if (id < DynsConstraintSolverRegistry::kMaxCount && !frame.ct_solvers[id])
            holdNewSolver(frame.ct_solvers[id], *factory);
    }
}

// Index below count, or 0.
int orFirst(int index, int count) {
    return index >= 0 && index < count ? index : 0;
}

} // namespace

void DynsFrameCreate(DynsParameters* parameters) {
    auto* frame = new DynsFrame;
    (void)DynsFrameAddLinearSolver(frame, &frame->vb_mat);
    (void)DynsFrameAddLinearSolver(frame, &frame->bvb_mat);
    (void)DynsFrameAddStepperModel(frame, &frame->stable_model);
    (void)DynsFrameAddStepperModel(frame, &frame->vintage_kiro);
    frame->lcp_solvers[kDynLCPSolverBM] = cycle_detect_lcp_solver;
    frame->n_lcp_solvers = 1;
    addSolversOfAllFactories(*frame);
    parameters->kiro_frame = frame;
    parameters->memory_pool_handler = new KitMemoryPool;
}

void DynsFrameDestroy(DynsParameters* parameters) {
    if (DynsFrame* frame = parameters->kiro_frame) {
        for (const constraint_solver* solver : frame->ct_solvers)
            delete solver;
        delete frame;
    }
    delete parameters->memory_pool_handler;
    parameters->kiro_frame = nullptr;
    parameters->memory_pool_handler = nullptr;
}

int DynsFrameAddStepperModel(DynsFrame* frame, WorldStepper* model) {
    if (!model || frame->n_stepper_models >= DynsFrame::kMaxStepperModels) {
        KitWarning(12, "DynsFrameAddStepperModel: there must be a model and room for it.\n");
        return frame->n_stepper_models;
    }
    frame->stepper_models[frame->n_stepper_models] = model;
    return ++frame->n_stepper_models;
}

int DynsFrameAddLinearSolver(DynsFrame* frame, LCPMatrix* matrix) {
    if (!matrix || frame->n_linear_solvers >= DynsFrame::kMaxLinearSolvers) {
        KitWarning(12, "DynsFrameAddLinearSolver: there must be a matrix and room for it.\n");
        return frame->n_linear_solvers;
    }
    frame->linear_solvers[frame->n_linear_solvers].mat = matrix;
    return ++frame->n_linear_solvers;
}

WorldStepper* DynsFrameGetStepper(const DynsFrame& frame, const DynsParameters& parameters) {
    return frame.stepper_models[orFirst(parameters.stepper_model, frame.n_stepper_models)];
}

LCPMatrix* DynsFrameGetMatrix(const DynsFrame& frame, const DynsParameters& parameters) {
    return frame.linear_solvers[orFirst(parameters.linear_solver, frame.n_linear_solvers)].mat;
}

lcp_solver_function_ptr DynsFrameGetLcpSolver(const DynsFrame& frame,
                                              const DynsParameters& parameters) {
    return frame
        .lcp_solvers[orFirst(parameters.lcp_parameters.solver_function, frame.n_lcp_solvers)];
}

constraint_solver* DynsFrameGetConstraintSolver(DynsFrame& frame, unsigned id) {
    if (id >= DynsConstraintSolverRegistry::kMaxCount)
        id = 0;
    if (!frame.ct_solvers[id])
        addSolversOfAllFactories(frame);
    return frame.ct_solvers[id] ? frame.ct_solvers[id] : frame.ct_solvers[0];
}

void DynsFrameForgetSolver(constraint_solver* solver) {
    const auto entry = solverHolders().find(solver);
    if (entry == solverHolders().end())
        return;
    *entry->second = nullptr;
    solverHolders().erase(entry);
}
