#include <Dyns/mass_matrix.h>

#include "geometric_stiffness.h"
#include "pool_array.h"

#include <Dyns/DynsBody.h>
#include <Kit/KitMatrix3.h>

namespace {

constexpr const char* kBufferName = "inv M";

void copyTensor(KitMatrix3 to, const KitReal from[3][4]) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            to[i][j] = from[i][j];
}

void addDiagonal(KitMatrix3 a, KitReal value) {
    for (int i = 0; i < 3; ++i)
        a[i][i] += value;
}

// A += factor S B Sᵀ = −factor S B S, S the skew matrix of L, B symmetric: row i of S B is L × column
// of B, and S B Sᵀ is positive semidefinite, so A only becomes stiffer.
void addGyroscopicInertia(KitMatrix3 A, const KitVector4 L, const KitReal B[3][4], KitReal factor) {
    KitMatrix3 SB;
    for (int j = 0; j < 3; ++j) {
        SB[0][j] = L[1] * B[2][j] - L[2] * B[1][j];
        SB[1][j] = L[2] * B[0][j] - L[0] * B[2][j];
        SB[2][j] = L[0] * B[1][j] - L[1] * B[0][j];
    }
    for (int i = 0; i < 3; ++i) {
        const KitReal* row = SB[i];
        const KitVector3 full = {L[1] * row[2] - L[2] * row[1], L[2] * row[0] - L[0] * row[2],
                                 L[0] * row[1] - L[1] * row[0]};
        for (int j = i; j < 3; ++j) {
            A[i][j] += factor * full[j];
            A[j][i] = A[i][j];
        }
    }
}

// A += h² K⁺, and h² K⁺ ω on the momentum, so that ω itself stays and only its change is slowed: by
// the inertia alone every step would damp ω by 1/(1 + h² K/I). The symplectic step of a rotation of
// stiffness K is stable below h² K/I = 4; with this inertia h² K/(I + h² K) never reaches 1.
void addGeometricStiffness(KitMatrix3 A, DynsBody& body, KitReal h) {
    KitMatrix3 K;
    takePositiveGeometricStiffness(body, K);
    const KitVector4& w = body.velrot;
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            A[i][j] += h * h * K[i][j];
        body.angularMomentum[i] += h * h * (K[i][0] * w[0] + K[i][1] * w[1] + K[i][2] * w[2]);
    }
}

// An inertia that has no inverse cannot be turned.
void setInverse(MassMatrix& entry, const KitMatrix3 A) {
    if (!KitMatrix3InvertTo3x4(A, entry.invI0, entry.invI1, entry.invI2))
        for (int j = 0; j < 3; ++j)
            entry.invI0[j] = entry.invI1[j] = entry.invI2[j] = 0;
}

// Adds the inverse mass to an entry that has its inverse inertia, and copies all to the body.
void finish(MassMatrix& entry, DynsBody& body, KitReal h) {
    entry.invmass = 1 / (1 / body.invmass + h * body.linear_damping);
    entry.pad1 = entry.pad2 = 0;
    auto& m = body.inverse_massmatrix;
    for (int j = 0; j < 3; ++j) {
        m[0][j] = entry.invI0[j];
        m[1][j] = entry.invI1[j];
        m[2][j] = entry.invI2[j];
    }
    m[0][3] = entry.invmass;
    m[1][3] = m[2][3] = 0;
}

} // namespace

MassMatrix* mass_matrix_build_inverse(DynsParameters* p, DynsBody* const* bodies, int n,
                                      int spherical) {
    MassMatrix* M = takePoolArray<MassMatrix>(p->memory_pool_handler, n, kBufferName);
    const KitReal h = p->stepsize;
    for (int i = 0; i < n; ++i) {
        DynsBody& body = *bodies[i];
        const bool sphere = spherical || (body.flags & kDynsBodySphericalInertia);
        const KitReal mean = (body._i0[0][0] + body._i0[1][1] + body._i0[2][2]) / 3;
        if (sphere && !p->geometric_stiffness) {
            M[i] = {};
            M[i].invI0[0] = M[i].invI1[1] = M[i].invI2[2] = 1 / (mean + h * body.angular_damping);
        } else {
            KitMatrix3 A = {};
            if (sphere)
                addDiagonal(A, mean);
            else
                copyTensor(A, body._I);
            if (p->geometric_stiffness)
                addGeometricStiffness(A, body, h);
            addDiagonal(A, h * body.angular_damping);
            setInverse(M[i], A);
        }
        finish(M[i], body, h);
    }
    return M;
}

MassMatrix* mass_matrix_build_stabilized_inverse(DynsBody* const* bodies, int n, DynsParameters* p,
                                                 KitReal scale) {
    MassMatrix* M = takePoolArray<MassMatrix>(p->memory_pool_handler, n, kBufferName);
    const KitReal h = p->stepsize;
    for (int i = 0; i < n; ++i) {
        DynsBody& body = *bodies[i];
        KitMatrix3 A;
        copyTensor(A, body._I);
        addGyroscopicInertia(A, body.angularMomentum, body._invI, scale * (h * h));
        if (p->geometric_stiffness)
            addGeometricStiffness(A, body, h);
        addDiagonal(A, h * body.angular_damping);
        setInverse(M[i], A);
        finish(M[i], body, h);
    }
    return M;
}

void mass_matrix_mv(int n, KitReal alpha, const MassMatrix* M, const KitReal* x, KitReal beta,
                    KitReal* y) {
    for (int i = 0; i < n; ++i, x += 8, y += 8) {
        const MassMatrix& m = M[i];
        const KitReal* rows[3] = {m.invI0, m.invI1, m.invI2};
        const KitVector3 w = {x[4], x[5], x[6]};
        for (int k = 0; k < 3; ++k) {
            const KitReal* row = rows[k];
            y[k] = beta * y[k] + alpha * (m.invmass * x[k]);
            y[4 + k] = beta * y[4 + k] + alpha * (row[0] * w[0] + row[1] * w[1] + row[2] * w[2]);
        }
    }
}
