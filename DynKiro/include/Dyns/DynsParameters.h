#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

#include <cstddef>

class KitMemoryPool;
class KitThreadPool;
struct KitCPUResources;
struct DynsFrame;

enum DynStepperModelEnum : int {
    kDynStableStepper = 0, ///< true inertia, stabilised gyroscopic torque
    kDynsStepper = 1,      ///< spherical inertia, no gyroscopic torque
};

enum DynStepperOptionsEnum : int {
    kDynStepperDefaultOptions = 0,
    kDynStepperOneStageCollisions = 2,
};

enum DynLinearSolverEnum : int {
    kDynVBCholeskySolver = 0,
    kDynBVBRRTCholeskySolver = 1,
    kDynDenseSolver = 2,       ///< refused: no class is registered
    kDynBVBCholeskySolver = 3, ///< refused: no class is registered
};

enum DynLCPSolverEnum : int { kDynLCPSolverBM = 0 };

/// Settings of the solver of one boxed linear complementarity problem.
struct DynsLCPSolverParameters {
    DynLCPSolverEnum solver_function = kDynLCPSolverBM;
    int max_iterations = 35;
    int max_block_iterations = 20;
    KitReal tolerance = 0.001;
    KitReal filter_scale = 1.01; ///< stored only
    int cycle_detection = 1;
    int warm_start = 0;
    int max_scaled_box_iterations = 1;
    KitReal scaled_box_tolerance = 1e-4F;
    int dump_problem = 0;              ///< stored only
    const char* description = nullptr; ///< stored only
    int it_ct_solver_max_it = 20;
    KitReal it_ct_solver_tol = 0.001F;
};

/// Settings and memory of the solve of one partition.
struct DynsParameters {
    KitReal stepsize = -1.0; ///< s
    int coupling_iterations = 5;
    DynStepperModelEnum stepper_model = kDynStableStepper;
    DynStepperOptionsEnum stepper_options = kDynStepperDefaultOptions; ///< stored only
    DynsLCPSolverParameters lcp_parameters;
    void* memory_pool = nullptr;                  ///< memory of the frame
    KitMemoryPool* memory_pool_handler = nullptr; ///< allocator over memory_pool
    std::size_t memory_pool_size = 0;             ///< bytes
    std::size_t memory_pool_needed = 0;       ///< bytes beyond the pool that the last solve wanted
    KitCPUResources* cpu_resources = nullptr; ///< anything but null is refused
    DynLinearSolverEnum linear_solver = kDynBVBRRTCholeskySolver;
    unsigned ct_solver = 0; ///< identifier in the registry of constraint solvers
    DynsFrame* kiro_frame = nullptr;
    void* debug = nullptr;
    /// Adds the geometric stiffness of last step's joint forces to the bodies' effective inertia,
    /// so that a taut chain of light links stays stable. Off by default.
    KitBool geometric_stiffness = 0;
    /// A partition with more rows is given to the iterative solver, which sweeps it by colours; 0
    /// never.
    int iterative_rows_threshold = 0;
    /// The iterative solver begins with the part 1/(1 + xgamma) of the lambda that the rows are given,
    /// that of the last step, as far as their bounds allow, and not with none. Off by default.
    KitBool iterative_warm_start = 0;
    KitThreadPool* thread_pool = nullptr; ///< threads that may share the solve, not owned
};

HY_API void DynsParametersSetDefault(DynsParameters* parameters);
/// Checks the enumerators against what the frame has (the built-in counts without a frame) and
/// that cpu_resources is null. One warning a fault; answers 1 if there is none.
[[nodiscard]] HY_API int DynsValidateKiroParameters(const DynsParameters* parameters);
[[nodiscard]] HY_API const char* DynsGetLinearSolverDescription(const DynsParameters* parameters);
[[nodiscard]] HY_API const char* DynsGetStepperModelDescription(const DynsParameters* parameters);
