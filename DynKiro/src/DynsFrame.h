#pragma once
#include <Dyns/DynsConstraintSolverRegistry.h>
#include <Dyns/LCPMatrix.h>
#include <Dyns/StableStepper.h>
#include <Dyns/bvbCholRRT.h>
#include <Dyns/kiro_model.h>
#include <Dyns/vbChol.h>

struct DynsParameters;
class constraint_solver;

struct linear_solver_model {
    LCPMatrix* mat = nullptr;
};

/// The solver objects of one constraint frame, so that no state of a solver is shared by two threads.
struct DynsFrame {
    static constexpr int kMaxLinearSolvers = 6;
    static constexpr int kMaxStepperModels = 5;
    static constexpr int kMaxLcpSolvers = 3;

    linear_solver_model linear_solvers[kMaxLinearSolvers]; ///< by DynLinearSolverEnum
    WorldStepper* stepper_models[kMaxStepperModels] = {};  ///< by DynStepperModelEnum
    lcp_solver_function_ptr lcp_solvers[kMaxLcpSolvers] = {};
    /// Owned, by identifier; null where no factory has made one yet.
    constraint_solver* ct_solvers[DynsConstraintSolverRegistry::kMaxCount] = {};
    int n_linear_solvers = 0, n_stepper_models = 0, n_lcp_solvers = 0;

    vbChol vb_mat;
    bvbCholRRT bvb_mat;
    StableStepper stable_model;
    kiro_model vintage_kiro;
};

// What the parameters ask for; an index that names nothing falls back on the first.
[[nodiscard]] WorldStepper* DynsFrameGetStepper(const DynsFrame& frame,
                                                const DynsParameters& parameters);
[[nodiscard]] LCPMatrix* DynsFrameGetMatrix(const DynsFrame& frame,
                                            const DynsParameters& parameters);
[[nodiscard]] lcp_solver_function_ptr DynsFrameGetLcpSolver(const DynsFrame& frame,
                                                            const DynsParameters& parameters);
/// Makes the solver if its factory came after the frame; null only if not even the first kind is
/// there. For the stepping thread.
[[nodiscard]] constraint_solver* DynsFrameGetConstraintSolver(DynsFrame& frame, unsigned id);
/// Clears the entry of the frame that holds the solver, which is being destroyed.
void DynsFrameForgetSolver(constraint_solver* solver);
