#include <Dyns/WorldStepper.h>

#include <Dyns/DynsBody.h>
#include <Dyns/DynsConstraints.h>
#include <Dyns/constraint_solver.h>
#include <Dyns/jacobian.h>
#include <Dyns/kitreal.h>
#include <Kit/KitMemoryPool.h>

#include <algorithm>

void WorldStepper::initialize() {
    pass = 0;
}

int WorldStepper::check_collisions(int /*reserved*/, int* /*reserved*/, KitReal /*reserved*/) {
    return 0;
}

void WorldStepper::computeAcceleration() {
    body_update_accelerations(b, nb);
}

void WorldStepper::integrate() {
    constexpr int kFiniteRotation = 2;
    body_update_velocity(b, nb, h);
    body_update_position(b, nb, h);
    body_update_quaternion(b, nb, h, kFiniteRotation);
    body_update_rotation(b, nb);
}

void WorldStepper::resetBodyForces() {
    for (int i = 0; i < nb; ++i) {
        std::fill_n(b[i]->cf, 4, 0.0);
        std::fill_n(b[i]->ct, 4, 0.0);
    }
}

// With the last pass of this partition taken out, cf and ct hold what the others do to its bodies.
void WorldStepper::pre_sync_forces() {
    if (c->n_constraints == 0)
        return;
    kitreal_copy(c->n_constraint_rows, rhs0, 1, c->rhs, 1);
    if (pass > 0)
        jacobian_get_forces(c, -1);
    jacobian_with_body_vector_mv(-1, c, c->GM, 0, offsetof(DynsBody, cf), 1, c->rhs);
}

void WorldStepper::post_sync_forces() {
    if (c->n_constraints != 0)
        jacobian_get_forces(c, 1);
    ++pass;
}

void WorldStepper::cleanup() {
    if (ctsol)
        ctsol->cleanup();
    KitMemoryPool* pool = p->memory_pool_handler;
    pool->destroy_aligned(invI);
    pool->destroy_aligned(rhs0);
    invI = nullptr;
    rhs0 = nullptr;
    pool->cleanup();
    p->memory_pool_needed += pool->extra_bytes_needed();
}
