#include "JointBuilder.h"

#include <Dync/DyncJoints.h>

namespace {

/// Angle of the link about the frame of one side, measured and driven.
void addLinkAngle(JointBuilder& b, DyncLimit& limit, int side, KitReal length, const lsVec3& u) {
    if (!DyncLimitIsActive(limit))
        return;
    DyncUpdateRotationalPosition(&limit, u, b.axis(side, 1), b.axis(side, 2));
    if (side == 0)
        DyncUpdateOrbitalLimit(*b.constraint, b.params, &limit, b.frames, length, u);
    else
        DyncUpdateRotationalLimit(*b.constraint, b.params, &limit, b.frames.w);
    b.rows += DyncAddDrivenRows(
        &b.factors, b.rows, b.params, &limit, kDynsMaxConstraintRows, [&](int row) {
            DyncSetDot1AngleConstraint(&b.factors, b.G, row, side, b.axis(side, 2), b.axis(side, 1),
                                       b.frames.p, b.frames.d01, 1);
        });
}

} // namespace

// Two parallel hinges with a link between them that has length but no mass: the link is a spring
// along d01, the points keep to one plane across the axis, the axes stay parallel.
int DyncAddDoubleHinge(DynsConstraints* clist, DynBaseConstraint* constraint,
                       const DyncConstraintParameters* params) {
    auto& joint = static_cast<DynDoubleHinge&>(*constraint);
    JointBuilder b(clist, constraint, params);
    DyncLimit& link = joint.limit[0];
    const lsVec3& d01 = b.frames.d01;
    const bool apart = d01.square_norm() > 0;
    const KitReal length = apart ? d01.norm() : 0;
    const lsVec3 u = apart ? d01 / length : lsVec3(1, 0, 0);
    link.previous_position = link.position;
    link.position = length;

    b.rows += DyncSetDistanceConstraint(&b.factors, b.G, 0, d01, b.frames.p, 0, 1);
    DyncSetRowFactorsToSpring(&b.factors, params, 0, link.lock_compliance, link.lock_damping,
                              length + link.m_offset - link.lock_position, link.lock_fmin,
                              link.lock_fmax);
    b.addPosition(b.axis(0, 0), 0);
    b.addRightAngle(b.axis(0, 1), b.axis(1, 0));
    b.addRightAngle(b.axis(0, 2), b.axis(1, 0));
    addLinkAngle(b, joint.limit[1], 0, length, u);
    addLinkAngle(b, joint.limit[2], 1, length, u);
    return b.end();
}
