#pragma once
#include <Dyns/WorldStepper.h>

/// Every body turns as a sphere of the mean of its principal moments, without gyroscopic torque.
class HY_API kiro_model : public WorldStepper {
public:
    void setup(int nb, DynsConstraints* c, DynsParameters* p, DynsBody* const* b,
               lcp_solver_function_ptr lcp_solver, LCPMatrix* m, constraint_solver* ctsol) override;
    void get_forces() override;
    [[nodiscard]] const char* get_name() const override;
};
