#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

/// Global softness of the constraints of a solver group. Compliances in m/N or rad/(N m), damping
/// in N s/m or N m s/rad, losses in m/(N s) or rad/(N m s).
struct DyncConstraintParameters {
    KitReal stepsize;
    KitReal linear_compliance, angular_compliance;
    KitReal linear_damping, angular_damping;
    KitReal linear_kinetic_loss, angular_kinetic_loss;
    KitReal h_inv, h_inv_2;
    /// Softness of linear and angular position rows, then of linear and angular velocity rows.
    KitReal diag[4];
    /// Fraction of the error that linear and angular position rows remove in one step.
    KitReal rhs[4];
};

/// Compliance 1e-10 on both kinds, critical for a step of 1/60 s and a half life of 5 steps.
HY_API void DyncSetDefaultConstraintParameters(DyncConstraintParameters* p);
/// Damping and losses from compliances (not negative), step (0 stands for 1/60 s) and half life in
/// steps.
HY_API void DyncSetCriticalConstraintParameters(DyncConstraintParameters* p,
                                                KitReal linear_compliance,
                                                KitReal angular_compliance, KitReal time_step,
                                                KitReal half_life);
/// Computes what depends on the step h. group, max_mass, max_inertia and freq_max are not read.
HY_API void DyncUpdateConstraintParameters(DyncConstraintParameters* p, int group, KitReal max_mass,
                                           KitReal max_inertia, KitReal freq_max, KitReal h);
