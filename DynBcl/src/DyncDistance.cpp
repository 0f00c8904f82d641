#include "JointBuilder.h"

#include <Dync/DyncJoints.h>

// A rope between the attachments x0 and x1: one row while taut, none while slack.
//   C = |d01| - L <= 0, row along u = d01/|d01|; the force acts along u on body 0, so that a rope has
//   lambda <= 0.
int DyncAddDistance(DynsConstraints* clist, DynBaseConstraint* constraint,
                    const DyncConstraintParameters* params) {
    const auto& joint = static_cast<const DynDistance&>(*constraint);
    JointBuilder b(clist, constraint, params);
    if (b.frames.d01.norm() - joint.distance > 0) {
        b.rows += DyncSetDistanceConstraint(&b.factors, b.G, b.rows, b.frames.d01, b.frames.p,
                                            joint.distance, 1);
        b.factors.upper[0] = 0;
    }
    return b.end();
}
