#pragma once
#include <Dync/DyncFrames.h>
#include <Dyns/DynsConstraints.h>
#include <Kit/KitApi.h>
#include <Kit/lsTransform.h>
#include <Kit/lsVec3.h>

/// The row primitives of which builders are made. Each writes Jacobian rows (six entries a body:
/// linear, angular) in the builder's local block and, with `set`, the row's error, target speed and
/// open bounds; without it, only Jacobian and flags. Each answers the number of rows that it wrote.
/// Positions and axes are in world axes; arms p run from the centres of mass. An empty slot's block
/// may hold anything: it is not pushed.

/// A builder's local rows, one block a slot.
struct DyncRowBlock {
    DynsGRow rows[kDynsMaxConstraintBodies][kDynsMaxConstraintRows];

    DynsGRow* operator[](int slot) { return rows[slot]; }
    const DynsGRow* operator[](int slot) const { return rows[slot]; }
};

/// A view of the next free rows of the list, with the local block as its Jacobian.
[[nodiscard]] HY_API DynsInputRowFactors DyncFactorsAtNextRow(DynsConstraints& clist,
                                                              DyncRowBlock& G);

/// Position along an axis n fixed in body ref_body: phi = d01 n. The arm on the other side reaches to
/// where the axis' own body carries it, so that the row is the exact derivative.
HY_API int DyncSetDot2Constraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                                 const lsVec3& d01, const lsVec3& n, const lsVec3* p, int ref_body,
                                 int set_factors);
/// Right angle between r1 of body 0 and r2 of body 1: phi = r1 r2.
HY_API int DyncSetDot1Constraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                                 const lsVec3& r1, const lsVec3& r2, int set_factors);
/// Rotation about n; the caller fills in error and bounds.
HY_API int DyncSetAxialConstraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                                  const lsVec3& n, int set_factors);
/// Distance of the attachments: phi = |d01| - d0, along the x axis where they coincide.
HY_API int DyncSetDistanceConstraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                                     const lsVec3& d01, const lsVec3* p, KitReal d0,
                                     int set_factors);
/// Three rows that join the attachment points, along the axes of a frame (0 or 1) or the world's (-1).
HY_API int DyncSetSphericalConstraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                                      const lsTransform* w, const lsVec3* p,
                                      int linearAxisReferenceBody, int set_factors);
/// The angle of d01 about the frame of ref_body, -atan2(d01 u, d01 v): its derivative in one row. The
/// caller fills in error and bounds. Where d01 has no part along u and v the row is zero.
HY_API int DyncSetDot1AngleConstraint(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                                      int ref_body, const lsVec3& u, const lsVec3& v,
                                      const lsVec3* p, const lsVec3& d01, int set_factors);

/// What a relative orientation is held to.
struct DyncOrientationLock {
    const KitReal* bodyQ[2] = {nullptr, nullptr}; ///< orientations of the bodies, null without body
    bool use_q[2] = {false, false};               ///< the attachment is turned against the body
    KitVector4 qatt[2] = {{1, 0, 0, 0}, {1, 0, 0, 0}}; ///< by these
    KitVector4 qr0 = {1, 0, 0, 0};                     ///< wanted orientation of frame 0 in frame 1
    KitVector3 omega0 = {0, 0, 0};                     ///< wanted rate of frame 0, rad/s
};

/// Lock of the attachment frames of a constraint, with identity target and zero rate.
[[nodiscard]] HY_API DyncOrientationLock
DyncGetOrientationLock(const DynBaseConstraint& constraint);

/// Three rows that hold the relative orientation, exact at any misalignment:
///   q_i = bodyQ_i qatt_i,  QR = conj(q1) q0,  c = q1 qr0,
///   phi = 2 G(qr0) QR,  J = [G(c) E(q0)^T | -G(c) E(q0)^T],  v0 = G(qr0) E(QR)^T omega0,
/// where E and G are the matrices of the left and right quaternion rates. QR, if not null, takes the
/// present relative orientation.
HY_API int DyncSetSphericalLock(DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                                const DyncOrientationLock& lock, KitReal* QR);

/// Slot of the first body that spins fast, -1 if neither does.
[[nodiscard]] HY_API int DyncGetConstraintFastSpinBodyID(const DyncConstraintHeader& head);
/// Two rows that keep axis 0 of both frames aligned. A body that spins fast about its axis is held by
/// dot products, so that its own spin stays out of the rows.
HY_API int DyncAdd2AxesOrientationRows(const DynBaseConstraint& constraint,
                                       DynsInputRowFactors* factors, DyncRowBlock& G, int row,
                                       const lsTransform* w);
