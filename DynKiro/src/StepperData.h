#pragma once
#include <Dyns/DynsParameters.h>
#include <Dyns/LCPMatrix.h>
#include <Kit/KitChunk.h>

struct DynsBody;
struct DynsConstraints;
struct DynsFrame;
class KitThreadPool;
class WorldStepper;
class constraint_solver;

/// One constraint frame: rows, parameters, memory and solver objects of the partition that it holds
/// in the present slice. Kept from slice to slice, with all that it has grown to.
struct StepperData {
    StepperData();
    StepperData(const StepperData&) = delete;
    StepperData& operator=(const StepperData&) = delete;

    /// Frees all. The arrays of c came from mem.
    void destroy(const struct KitMemoryAPIStruct* mem);
    /// Gives the frame at least the memory that the rows usually need, and what the last solve in it
    /// lacked.
    void prepareMemory(int maxRows);
    /// Chooses the solver objects that the parameters name. For the stepping thread.
    void chooseSolvers();
    /// Has the solve spread over a pool; null keeps it on one thread.
    void spreadOver(KitThreadPool* pool);

    [[nodiscard]] bool isActive() const { return iteration < max_iteration; }
    /// Whether any one thread may solve it. Without rows it is the calling thread, which has packed it:
    /// another would wait longer for its memory than the solve takes.
    [[nodiscard]] bool isShared() const;
    void setUp(int index); ///< @param index place in the slice
    /// One pass alone: the other partitions' forces in, solved, its own forces out.
    void runPass();
    void postSync(); ///< ends a pass
    /// Setup, all passes, accelerations and cleanup of a partition that shares no body.
    void solveAlone(int index);

    DynsConstraints* c;           ///< owned
    DynsBody* const* b = nullptr; ///< slice of the partition's bodies, not owned
    int nb = 0;
    DynsFrame* kf; ///< owned, by way of kp
    DynsParameters kp;
    KitChunk mc;           ///< owns the memory of kp.memory_pool
    int max_iteration = 1; ///< passes that the partition takes in this step
    int iteration = 0;     ///< passes done
    int partitionIndex = -1;
    bool usesAllThreads = false; ///< in the present slice; else one thread solves it

    // Chosen for the present slice.
    WorldStepper* model = nullptr;
    constraint_solver* ct_solver = nullptr;
    LCPMatrix* linear_solver = nullptr;
    lcp_solver_function_ptr lcp_solver = nullptr;
};
