#include <Dync/DyncConstraintParameters.h>

namespace {

constexpr KitReal kDefaultCompliance = 1e-10;
constexpr KitReal kDefaultTimeStep = 1.0F / 60.0F;
constexpr KitReal kDefaultHalfLife = 5;

KitReal criticalDamping(KitReal compliance, KitReal h, KitReal halfLife) {
    return compliance == 0 ? 0 : h * halfLife / compliance;
}

} // namespace

void DyncSetDefaultConstraintParameters(DyncConstraintParameters* p) {
    DyncSetCriticalConstraintParameters(p, kDefaultCompliance, kDefaultCompliance, kDefaultTimeStep,
                                        kDefaultHalfLife);
}

void DyncSetCriticalConstraintParameters(DyncConstraintParameters* p, KitReal linear_compliance,
                                         KitReal angular_compliance, KitReal time_step,
                                         KitReal half_life) {
    const KitReal h = time_step == 0 ? 1.0 / 60 : time_step;
    p->linear_compliance = linear_compliance;
    p->angular_compliance = angular_compliance;
    p->linear_damping = criticalDamping(linear_compliance, h, half_life);
    p->angular_damping = criticalDamping(angular_compliance, h, half_life);
    p->linear_kinetic_loss = linear_compliance / h;
    p->angular_kinetic_loss = angular_compliance / h;
    DyncUpdateConstraintParameters(p, 0, 0, 0, 0, h);
}

void DyncUpdateConstraintParameters(DyncConstraintParameters* p, int, KitReal, KitReal, KitReal,
                                    KitReal h) {
    p->stepsize = h;
    p->h_inv = 1 / h;
    p->h_inv_2 = p->h_inv * p->h_inv;
    p->rhs[0] = 1 / (1 + p->linear_damping * p->linear_compliance / h);
    p->diag[0] = p->linear_compliance * p->rhs[0] * p->h_inv_2;
    p->rhs[1] = 1 / (1 + p->angular_damping * p->angular_compliance / h);
    p->diag[1] = p->angular_compliance * p->rhs[1] * p->h_inv_2;
    p->rhs[2] = p->rhs[3] = 0;
    p->diag[2] = p->linear_kinetic_loss * p->h_inv;
    p->diag[3] = p->angular_kinetic_loss * p->h_inv;
}
