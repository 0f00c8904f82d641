#pragma once
#include <Dyns/DynsParameters.h>
#include <Dyns/LCPMatrix.h>

struct DynsBody;
struct DynsConstraints;
class constraint_solver;

/// Block of one body in the effective inverse mass matrix: three rows of the inverse inertia in
/// world axes, each followed by one scalar.
struct MassMatrix {
    KitReal invI0[3], invmass;
    KitReal invI1[3], pad1;
    KitReal invI2[3], pad2;
};

/// Turns the bodies and rows of one partition into a boxed LCP and its result into forces on the
/// bodies. Per step: setup, initialize, then for each coupling pass pre_sync_forces, get_forces,
/// post_sync_forces; at last computeAcceleration and cleanup.
class HY_API WorldStepper {
public:
    virtual ~WorldStepper() = default;

    virtual void initialize();
    virtual void setup(int nb, DynsConstraints* c, DynsParameters* p, DynsBody* const* b,
                       lcp_solver_function_ptr lcp_solver, LCPMatrix* m,
                       constraint_solver* ctsol) = 0;
    /// Reserved for models that look for collisions by themselves; answers 0.
    virtual int check_collisions(int, int*, KitReal);
    virtual void get_forces() = 0;
    virtual void computeAcceleration();
    /// For a model that integrates by itself.
    virtual void integrate();
    virtual void resetBodyForces();
    /// Rebuilds rhs from rhs0 and the other partitions' forces on the bodies.
    virtual void pre_sync_forces();
    /// Adds this partition's forces to the bodies.
    virtual void post_sync_forces();
    virtual void cleanup();
    [[nodiscard]] virtual const char* get_name() const = 0;

    KitReal* rhs0 = nullptr;
    DynsConstraints* c = nullptr;
    DynsParameters* p = nullptr;
    DynsBody* const* b = nullptr;
    LCPMatrix* m = nullptr;
    int nb = 0;
    KitReal h = 0, h_inv = 0;
    lcp_solver_function_ptr lcp_solver = nullptr;
    MassMatrix* invI = nullptr;
    constraint_solver* ctsol = nullptr;
    int pass = 0;
};
