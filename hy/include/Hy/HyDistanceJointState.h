#pragma once
#include <Hy/HyConstraintState.h>

namespace Hy {

/// State of a HyDistanceJoint.
class HY_API HyDistanceJointState : public HyConstraintState {
public:
    HyReal mDistance = 0; ///< m
};

} // namespace Hy
