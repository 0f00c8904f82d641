#include "DynChecks.h"

#include <Dyn/DynBody.h>
#include <Kit/KitMath.h>
#include <Kit/KitMessage.h>

#include <algorithm>
#include <cmath>

// _i0 holds the tensor in the axes of the centre-of-mass frame, the functions speak of body axes.

namespace {

/// Entries of a tensor that should be equal may differ by this share of its largest entry.
constexpr KitReal kSymmetryTolerance = 1e-9;

// Answers false where a pair of entries differs by more than rounding.
bool symmetrize(KitMatrix3 out, const KitMatrix3 tensor) {
    KitReal largest = 0;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            largest = std::max(largest, std::abs(tensor[i][j]));
    for (int i = 0; i < 3; ++i)
        for (int j = i; j < 3; ++j) {
            if (!(std::abs(tensor[i][j] - tensor[j][i]) <= kSymmetryTolerance * largest))
                return false;
            out[i][j] = out[j][i] = (tensor[i][j] + tensor[j][i]) / 2;
        }
    return true;
}

bool isPositiveDefinite(const KitMatrix3 m) {
    return m[0][0] > 0 && m[0][0] * m[1][1] - m[0][1] * m[1][0] > 0 && KitMatrix3Determinant(m) > 0;
}

// The rotation C of the centre-of-mass frame in the body frame; its rows are the axes of the former.
void getCenterOfMassAxes(const DynBody* body, KitMatrix3 axes) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            axes[i][j] = body->comToBodyTM[j][i];
}

// out = C M Cᵀ
void conjugate(KitMatrix3 out, const KitMatrix3 C, const KitMatrix3 M) {
    KitMatrix3 CM;
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            CM[i][j] = C[i][0] * M[0][j] + C[i][1] * M[1][j] + C[i][2] * M[2][j];
    for (int i = 0; i < 3; ++i)
        for (int j = i; j < 3; ++j)
            out[i][j] = out[j][i] = KitVector3Dot(CM[i], C[j]);
}

void transpose(KitMatrix3 m) {
    std::swap(m[0][1], m[1][0]);
    std::swap(m[0][2], m[2][0]);
    std::swap(m[1][2], m[2][1]);
}

void updateWorldInertia(DynBody* body) {
    DynsBody* solver = &body->kiroBody;
    body_update_inertia_tensor(&solver, 1, false);
}

} // namespace

void DynBodySetMass(DynBody* body, KitReal mass) {
    if (!(mass > 0) || !std::isfinite(mass) || !std::isfinite(1 / mass)) {
        KitWarning(12, "DynBodySetMass: mass must be finite and larger than 0.\n");
        return;
    }
    body->mass = mass;
    DynsBody& solver = body->kiroBody;
    solver.invmass = solver._i0[0][3] = 1 / mass;
    solver._i0[3][3] = mass;
}

KitReal DynBodyGetMass(const DynBody* body) {
    return body->mass;
}

void DynBodySetMassAndScaleInertiaTensor(DynBody* body, KitReal mass) {
    const KitReal oldMass = body->mass;
    DynBodySetMass(body, mass);
    if (body->mass == oldMass)
        return;
    KitMatrix3 tensor;
    DynBodyGetInertiaTensor(body, tensor);
    for (auto& row : tensor)
        KitVector3Scale(row, row, body->mass / oldMass);
    DynBodySetInertiaTensor(body, tensor);
}

bool DynBodyIsValidInertiaTensor(const KitMatrix3 tensor) {
    KitMatrix3 symmetric;
    return symmetrize(symmetric, tensor) && isPositiveDefinite(symmetric) &&
           KitMatrix3SymmetricInvert(symmetric);
}

void DynBodySetInertiaTensor(DynBody* body, const KitMatrix3 tensor) {
    KitMatrix3 own, inverse;
    bool valid = symmetrize(own, tensor);
    if (valid && body->useBodyOffset) {
        KitMatrix3 axes;
        getCenterOfMassAxes(body, axes);
        conjugate(own, axes, own);
    }
    valid = valid && isPositiveDefinite(own);
    std::copy_n(own[0], 9, inverse[0]);
    if (!valid || !KitMatrix3SymmetricInvert(inverse)) {
        KitWarning(12, "DynBodySetInertiaTensor: the tensor must be finite, symmetric and positive "
                       "definite.\n");
        return;
    }
    for (int i = 0; i < 3; ++i) {
        KitVector3Copy(body->kiroBody._i0[i], own[i]);
        KitVector3Copy(body->kiroBody._i0[3 + i], inverse[i]);
    }
    updateWorldInertia(body);
}

void DynBodyGetInertiaTensor(const DynBody* body, KitMatrix3 tensor) {
    for (int i = 0; i < 3; ++i)
        KitVector3Copy(tensor[i], body->kiroBody._i0[i]);
    if (body->useBodyOffset) {
        KitMatrix3 axes;
        getCenterOfMassAxes(body, axes);
        transpose(axes);
        conjugate(tensor, axes, tensor);
    }
}

void DynBodySetSphericalInertiaTensor(DynBody* body, KitReal moment) {
    const KitMatrix3 tensor = {{moment, 0, 0}, {0, moment, 0}, {0, 0, moment}};
    DynBodySetInertiaTensor(body, tensor);
}

void DynBodySetSphericalInertiaFlag(DynBody* body, bool on) {
    if (on)
        body->kiroBody.flags |= kDynsBodySphericalInertia;
    else
        body->kiroBody.flags &= ~kDynsBodySphericalInertia;
    updateWorldInertia(body);
}

bool DynBodyIsSphericalInertiaFlagSet(const DynBody* body) {
    return (body->kiroBody.flags & kDynsBodySphericalInertia) != 0;
}
