#pragma once
#include <Dyns/WorldStepper.h>

/// True inertia tensor with the gyroscopic torque, which an effective inertia keeps stable at any
/// speed of rotation.
class HY_API StableStepper : public WorldStepper {
public:
    void setup(int nb, DynsConstraints* c, DynsParameters* p, DynsBody* const* b,
               lcp_solver_function_ptr lcp_solver, LCPMatrix* m, constraint_solver* ctsol) override;
    void get_forces() override;
    [[nodiscard]] const char* get_name() const override;
};
