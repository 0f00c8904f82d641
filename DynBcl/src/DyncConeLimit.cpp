#include "JointBuilder.h"

#include <Dync/DyncJoints.h>

#include <algorithm>
#include <cmath>
#include <numbers>

// The axis a1 of frame 1 stays within the angle h of the axis a0 of frame 0, or of -a0 if h < 0.
//   C = h - s theta, s the sign of h, theta the angle between the axes; the row is that of a0 a1,
//   whose derivative along the motion has the sign of -s theta', and bears force one way only.
int DyncAddConeLimit(DynsConstraints* clist, DynBaseConstraint* constraint,
                     const DyncConstraintParameters* params) {
    const auto& joint = static_cast<const DynConeLimit&>(*constraint);
    JointBuilder b(clist, constraint, params);
    const KitReal h = std::fmod(joint.cone_half_angle, std::numbers::pi);
    const KitReal sign = h < 0 ? -1 : 1;
    const KitReal d = sign * b.axis(0, 0).dot(b.axis(1, 0));
    if (!(d >= joint.cosine)) {
        b.addRightAngle(b.axis(0, 0), b.axis(1, 0));
        b.factors.phi[0] = h - sign * std::acos(std::clamp(d, KitReal{-1}, KitReal{1}));
        b.factors.v0[0] = 0;
        (sign > 0 ? b.factors.lower : b.factors.upper)[0] = 0;
    }
    return b.end();
}
