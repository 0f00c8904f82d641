#pragma once
#include <Dyns/LCPMatrix.h>

struct DynsBody;
struct DynsParameters;

/// Solves the rows of one partition: one object a frame and kind, made by a factory of the registry.
class HY_API constraint_solver {
public:
    constraint_solver() = default;
    constraint_solver(const constraint_solver&) = delete;
    constraint_solver& operator=(const constraint_solver&) = delete;
    /// Leaves the factory that made it.
    virtual ~constraint_solver();

    virtual void setup(int N, LCPMatrix* M, DynsConstraints* C, DynsParameters* P,
                       lcp_solver_function_ptr solver, DynsBody* const* B, int NB, void* info) = 0;
    /// Answers the number of passes, negative if it gave up.
    virtual int solve() = 0;
    virtual void cleanup() = 0;

    int n = 0; ///< rows
    DynsConstraints* c = nullptr;
    DynsParameters* p = nullptr;
    LCPMatrix* m = nullptr;
    lcp_solver_function_ptr lcp_solver = nullptr;
    DynsBody* const* b = nullptr;
    int nb = 0;
};
