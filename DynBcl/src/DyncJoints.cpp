#include <Dync/DyncJoints.h>

#include "JointBuilder.h"

// Equations of a joint hold C = 0; each row is the exact derivative of its C as the primitives give
// it. Coordinates follow the equations, friction follows the coordinates.

int DyncAddBSJoint(DynsConstraints* clist, DynBaseConstraint* constraint,
                   const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addSpherical(static_cast<const DynBSJoint*>(constraint)->linearAxisReferenceBody);
    return b.end();
}

int DyncAddHinge(DynsConstraints* clist, DynBaseConstraint* constraint,
                 const DyncConstraintParameters* params) {
    auto& joint = static_cast<DynHinge&>(*constraint);
    JointBuilder b(clist, constraint, params);
    b.addSpherical(joint.linearAxisReferenceBody);
    b.addAxisAlignment();
    b.addCoordinate(joint.limit);
    return b.end();
}

int DyncAddPrismatic(DynsConstraints* clist, DynBaseConstraint* constraint,
                     const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addPosition(b.axis(0, 1), 0);
    b.addPosition(b.axis(0, 2), 0);
    b.addOrientationLock();
    b.addCoordinate(static_cast<DynPrismatic&>(*constraint).limit);
    return b.end();
}

int DyncAddCylindrical(DynsConstraints* clist, DynBaseConstraint* constraint,
                       const DyncConstraintParameters* params) {
    auto& joint = static_cast<DynCylindrical&>(*constraint);
    JointBuilder b(clist, constraint, params);
    b.addPosition(b.axis(0, 1), 0);
    b.addPosition(b.axis(0, 2), 0);
    b.addAxisAlignment();
    for (DyncLimit& limit : joint.limit)
        b.addCoordinate(&limit);
    return b.end();
}

int DyncAddUniversal(DynsConstraints* clist, DynBaseConstraint* constraint,
                     const DyncConstraintParameters* params) {
    auto& joint = static_cast<DynUniversal&>(*constraint);
    JointBuilder b(clist, constraint, params);
    b.addSpherical(joint.linearAxisReferenceBody);
    b.addRightAngle(b.axis(0, 0), b.axis(1, 1));
    for (DyncLimit& limit : joint.limit)
        b.addCoordinate(&limit);
    return b.end();
}

// The rotation about the common axis is carried over, the two others are free.
int DyncAddHomokinetic(DynsConstraints* clist, DynBaseConstraint* constraint,
                       const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addSpherical(static_cast<const DynHomokinetic*>(constraint)->linearAxisReferenceBody);
    const int first = b.rows;
    b.addOrientationLock();
    b.rows = first + 1;
    for (int row = b.rows; row < b.rows + 2; ++row)
        b.factors.flags[row] = 0; // a friction row may take the place
    return b.end();
}

int DyncAddLinear1(DynsConstraints* clist, DynBaseConstraint* constraint,
                   const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addPosition(b.axis(1, 0), 1);
    return b.end();
}

int DyncAddLinear2(DynsConstraints* clist, DynBaseConstraint* constraint,
                   const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addPosition(b.axis(1, 1), 1);
    b.addPosition(b.axis(1, 2), 1);
    return b.end();
}

int DyncAddLinear3(DynsConstraints* clist, DynBaseConstraint* constraint,
                   const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addPosition(b.axis(1, 1), 1);
    b.addPosition(b.axis(1, 2), 1);
    b.addRightAngle(b.axis(0, 1), b.axis(1, 0));
    return b.end();
}

int DyncAddAngular3(DynsConstraints* clist, DynBaseConstraint* constraint,
                    const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    if (static_cast<const DynAngular3*>(constraint)->rotationEnabled != 0)
        b.addAxisAlignment();
    else
        b.addOrientationLock();
    return b.end();
}

int DyncAddMotorJoint(DynsConstraints* clist, DynBaseConstraint* constraint,
                      const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addCoordinate(static_cast<DynMotorJoint&>(*constraint).limit);
    return b.end();
}

namespace {

/// Rows up to which a joint with many coordinates gives a locked coordinate beyond its stop a second
/// row.
constexpr int kLastPairedRow = 14;

void addManyCoordinates(JointBuilder& b, DyncLimit* limits, int count) {
    for (int k = 0; k < count; ++k)
        b.addCoordinate(&limits[k], b.rows > kLastPairedRow ? b.rows + 1 : kDynsMaxConstraintRows);
}

} // namespace

int DyncAddA1P3Joint(DynsConstraints* clist, DynBaseConstraint* constraint,
                     const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addAxisAlignment();
    addManyCoordinates(b, static_cast<DynA1P3Joint&>(*constraint).limit, 4);
    return b.end();
}

int DyncAddA2P3Joint(DynsConstraints* clist, DynBaseConstraint* constraint,
                     const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addRightAngle(b.axis(0, 0), b.axis(1, 1));
    addManyCoordinates(b, static_cast<DynA2P3Joint&>(*constraint).limit, 5);
    return b.end();
}

int DyncAddFixedPath(DynsConstraints* clist, DynBaseConstraint* constraint,
                     const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addSpherical(-1);
    for (int k = 0; k < 3; ++k)
        b.factors.v0[k] = static_cast<const DynFixedPath*>(constraint)->velocity[k];
    return b.end();
}

namespace {

// What relaxes a row of the joint is not for the lock's row of the same index.
void holdRigidly(JointBuilder& b) {
    for (int row = 0; row < b.rows; ++row) {
        const int kind = (b.factors.flags[row] & kDynsRowAngular) != 0 ? 1 : 0;
        b.factors.xepsilon[row] = b.params->diag[kind];
        b.factors.xgamma[row] = b.params->rhs[kind];
        b.factors.flags[row] |= kDynsRowOwnSoftness;
    }
}

} // namespace

int DyncAddLockJoint(DynsConstraints* clist, DynBaseConstraint* constraint,
                     const DyncConstraintParameters* params) {
    JointBuilder b(clist, constraint, params);
    b.addPosition(b.axis(0, 0), 0);
    b.addRightAngle(b.axis(0, 2), b.axis(1, 0));
    b.addPosition(b.axis(0, 1), 0);
    b.addRightAngle(b.axis(0, 2), b.axis(1, 1));
    b.addPosition(b.axis(0, 2), 0);
    b.addRightAngle(b.axis(0, 1), b.axis(1, 0));
    holdRigidly(b);
    return DyncEndConstraint(clist, constraint, &b.factors, b.rows, params);
}
