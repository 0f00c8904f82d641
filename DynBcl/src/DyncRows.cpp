#include <Dync/DyncRows.h>

#include <Dyns/DynsBody.h>
#include <Kit/KitQuaternion.h>

#include <algorithm>

namespace {

constexpr int kKindMask = 30;

void setRow(DynsGRow& row, const lsVec3& linear, const lsVec3& angular) {
    for (int k = 0; k < 3; ++k) {
        row[k] = linear[k];
        row[3 + k] = angular[k];
    }
}

void setKind(DynsInputRowFactors& factors, int row, int kind) {
    factors.flags[row] = (factors.flags[row] & ~kKindMask) | kind | kDynsRowPosition;
}

void setOpen(DynsInputRowFactors& factors, int row, KitReal phi) {
    factors.phi[row] = phi;
    factors.v0[row] = 0;
    factors.lower[row] = -kKitInfinity;
    factors.upper[row] = kKitInfinity;
}

/// Hamilton product c = a b.
void multiply(KitVector4 c, const KitVector4 a, const KitVector4 b) {
    const KitReal w = a[0] * b[0] - a[1] * b[1] - a[2] * b[2] - a[3] * b[3];
    const KitReal x = a[0] * b[1] + b[0] * a[1] + a[2] * b[3] - a[3] * b[2];
    const KitReal y = a[0] * b[2] + b[0] * a[2] + a[3] * b[1] - a[1] * b[3];
    const KitReal z = a[0] * b[3] + b[0] * a[3] + a[1] * b[2] - a[2] * b[1];
    c[0] = w, c[1] = x, c[2] = y, c[3] = z;
}

/// The matrix G with G(q) p the vector part of conj(q) p.
void gMatrix(KitReal G[3][4], const KitVector4 q) {
    const KitReal w = q[0], x = q[1], y = q[2], z = q[3];
    const KitReal rows[3][4] = {{-x, w, z, -y}, {-y, -z, w, x}, {-z, y, -x, w}};
    std::copy(&rows[0][0], &rows[0][0] + 12, &G[0][0]);
}

/// M = A B^T
void productOfRates(KitMatrix3 M, const KitReal A[3][4], const KitReal B[3][4]) {
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            M[i][j] = 0;
            for (int k = 0; k < 4; ++k)
                M[i][j] += A[i][k] * B[j][k];
        }
}

void attachmentOrientation(KitVector4 q, const DyncOrientationLock& lock, int slot) {
    const KitVector4 identity = {1, 0, 0, 0};
    const KitReal* body = lock.bodyQ[slot] != nullptr ? lock.bodyQ[slot] : identity;
    if (lock.use_q[slot])
        multiply(q, body, lock.qatt[slot]);
    else
        std::copy(body, body + 4, q);
}

} // namespace

DynsInputRowFactors DyncFactorsAtNextRow(DynsConstraints& clist, DyncRowBlock& G) {
    // A builder that did not push its rows may have left its marks here.
    const int n = clist.n_constraint_rows;
    const int room = std::min(kDynsMaxConstraintRows, clist.max_constraint_rows - n);
    for (int row = n; row < n + room; ++row) {
        clist.flags[row] = 0;
        clist.xepsilon[row] = clist.xgamma[row] = 0;
    }
    DynsInputRowFactors factors{
        clist.phi + n,    clist.v0 + n, clist.lower + n, clist.upper + n, clist.xepsilon + n,
        clist.xgamma + n, {},           clist.flags + n};
    for (int i = 0; i < kDynsMaxConstraintBodies; ++i)
        factors.G[i] = G[i];
    return factors;
}

int DyncSetDot2Constraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row, const lsVec3& d01,
                          const lsVec3& n, const lsVec3* p, int ref_body, int set_factors) {
    const lsVec3 r0 = ref_body == 0 ? p[0] - d01 : p[0];
    const lsVec3 r1 = ref_body == 0 ? p[1] : p[1] + d01;
    setRow(G[0][row], n, r0.cross(n));
    setRow(G[1][row], -n, -r1.cross(n));
    setKind(*factors, row, kDynsRowLinear);
    if (set_factors != 0)
        setOpen(*factors, row, d01.dot(n));
    return 1;
}

int DyncSetDot1Constraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row, const lsVec3& r1,
                          const lsVec3& r2, int set_factors) {
    const lsVec3 a = r1.cross(r2);
    setRow(G[0][row], {}, a);
    setRow(G[1][row], {}, -a);
    setKind(*factors, row, kDynsRowAngular);
    if (set_factors != 0)
        setOpen(*factors, row, r1.dot(r2));
    return 1;
}

int DyncSetAxialConstraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row, const lsVec3& n,
                           int set_factors) {
    setRow(G[0][row], {}, n);
    setRow(G[1][row], {}, -n);
    setKind(*factors, row, kDynsRowAngular);
    if (set_factors != 0)
        setOpen(*factors, row, 0);
    return 1;
}

int DyncSetDistanceConstraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                              const lsVec3& d01, const lsVec3* p, KitReal d0, int set_factors) {
    const KitReal length = d01.norm();
    const lsVec3 u = length > 0 ? d01 / length : lsVec3(1, 0, 0);
    setRow(G[0][row], u, p[0].cross(u));
    setRow(G[1][row], -u, -p[1].cross(u));
    setKind(*factors, row, kDynsRowLinear);
    if (set_factors != 0)
        setOpen(*factors, row, length - d0);
    return 1;
}

int DyncSetSphericalConstraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                               const lsTransform* w, const lsVec3* p, int linearAxisReferenceBody,
                               int set_factors) {
    const lsVec3 d01 = w[0].t() - w[1].t();
    for (int k = 0; k < 3; ++k) {
        if (linearAxisReferenceBody >= 0) {
            DyncSetDot2Constraint(factors, G, row + k, d01, w[linearAxisReferenceBody].axis(k), p,
                                  linearAxisReferenceBody, set_factors);
            continue;
        }
        lsVec3 axis;
        axis[k] = 1;
        setRow(G[0][row + k], axis, p[0].cross(axis));
        setRow(G[1][row + k], -axis, -p[1].cross(axis));
        setKind(*factors, row + k, kDynsRowLinear);
        if (set_factors != 0)
            setOpen(*factors, row + k, d01[k]);
    }
    return 3;
}

// theta = -atan2(y, x), y = d u, x = d v, d = d01:
//   theta' = g d' + g (w x d seen from the frame),  g = -(x u - y v)/(x^2 + y^2)
// so that the row is that of a position along g, an axis fixed in the frame's body.
int DyncSetDot1AngleConstraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row, int ref_body,
                               const lsVec3& u, const lsVec3& v, const lsVec3* p, const lsVec3& d01,
                               int set_factors) {
    const KitReal y = d01.dot(u), x = d01.dot(v);
    const KitReal square = x * x + y * y;
    lsVec3 g;
    if (square > 0)
        g = (y * v - x * u) / square;
    DyncSetDot2Constraint(factors, G, row, d01, g, p, ref_body, 0);
    setKind(*factors, row, kDynsRowAngular);
    if (set_factors != 0)
        setOpen(*factors, row, 0);
    return 1;
}

DyncOrientationLock DyncGetOrientationLock(const DynBaseConstraint& constraint) {
    DyncOrientationLock lock;
    for (int i = 0; i < 2; ++i) {
        lock.bodyQ[i] = constraint.bclH.q[i];
        lock.use_q[i] = true;
        KitQuaternionFromTM(lock.qatt[i], constraint.bclH.ref[i]);
    }
    return lock;
}

int DyncSetSphericalLock(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                         const DyncOrientationLock& lock, KitReal* QR) {
    KitVector4 q0, q1, relative, wanted;
    attachmentOrientation(q0, lock, 0);
    attachmentOrientation(q1, lock, 1);
    const KitVector4 conjugate = {q1[0], -q1[1], -q1[2], -q1[3]};
    multiply(relative, conjugate, q0);
    multiply(wanted, q1, lock.qr0);

    KitReal E0[3][4], ER[3][4], Gc[3][4], Gr[3][4];
    KitQuaternionGetEMatrix(E0, q0);
    KitQuaternionGetEMatrix(ER, relative);
    gMatrix(Gc, wanted);
    gMatrix(Gr, lock.qr0);
    KitMatrix3 M, rate;
    productOfRates(M, Gc, E0);
    productOfRates(rate, Gr, ER);
    for (int i = 0; i < 3; ++i) {
        const lsVec3 axis(M[i][0], M[i][1], M[i][2]);
        DyncSetAxialConstraint(factors, G, row + i, axis, 1);
        for (int k = 0; k < 4; ++k)
            factors->phi[row + i] += 2 * Gr[i][k] * relative[k];
        for (int k = 0; k < 3; ++k)
            factors->v0[row + i] += rate[i][k] * lock.omega0[k];
    }
    if (QR != nullptr)
        std::copy(relative, relative + 4, QR);
    return 3;
}

int DyncGetConstraintFastSpinBodyID(const DyncConstraintHeader& head) {
    for (int i = 0; i < 2; ++i)
        if (head.b[i] != nullptr && (head.b[i]->flags & kDynsBodyFastSpinAxis) != 0)
            return i;
    return -1;
}

int DyncAdd2AxesOrientationRows(const DynBaseConstraint& constraint, DynsInputRowFactors* factors,
                                DyncRowBlock& G, int row, const lsTransform* w) {
    const int fast = DyncGetConstraintFastSpinBodyID(constraint.bclH);
    if (fast == 0) {
        DyncSetDot1Constraint(factors, G, row, w[0].axis(0), w[1].axis(1), 1);
        DyncSetDot1Constraint(factors, G, row + 1, w[0].axis(0), w[1].axis(2), 1);
        return 2;
    }
    if (fast == 1) {
        DyncSetDot1Constraint(factors, G, row, w[0].axis(1), w[1].axis(0), 1);
        DyncSetDot1Constraint(factors, G, row + 1, w[0].axis(2), w[1].axis(0), 1);
        return 2;
    }
    // The lock's first row would stop the rotation about the axis itself. All three are built beside
    // the list, which has room for two.
    DyncRowBlock all;
    KitReal phi[3], v0[3], lower[3], upper[3], epsilon[3], gamma[3];
    int flags[3] = {};
    DynsInputRowFactors beside{phi, v0, lower, upper, epsilon, gamma, {}, flags};
    DyncSetSphericalLock(&beside, all, 0, DyncGetOrientationLock(constraint), nullptr);
    for (int k = 0; k < 2; ++k) {
        for (int slot = 0; slot < 2; ++slot)
            std::copy(all[slot][k + 1], all[slot][k + 1] + 6, G[slot][row + k]);
        setKind(*factors, row + k, kDynsRowAngular);
        setOpen(*factors, row + k, phi[k + 1]);
        factors->v0[row + k] = v0[k + 1];
    }
    return 2;
}
