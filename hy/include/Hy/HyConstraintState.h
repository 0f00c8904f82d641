#pragma once
#include <Dyn/DynConstraint.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyPart.h>
#include <Hy/HyPointer.h>

#include <vector>

namespace Hy {

/// What a constraint was like when HyConstraint::createState() was called.
class HY_API HyConstraintState {
public:
    struct Attachment {
        HyPointer<HyPart> mPart;
        HyVector3 mPositionRel; ///< in the part's frame, as the axes
        HyVector3 mPrimaryAxisRel, mSecondaryAxisRel;
        HyTransform mFrame; ///< in the centre-of-mass frame, to the last bit
    };
    struct Coordinate {
        bool mLimited = false;
        HyReal mUpperLimit = 0, mLowerLimit = 0;
        HyReal mUpperLimitVel = 0, mLowerLimitVel = 0;
        HyConstraint::CoordinateControlEnum mControl = HyConstraint::kControlFree;
        HyReal mLock = 0;
        HyReal mPosition = 0; ///< with offset
        HyReal mLockVel = 0, mMotorVel = 0;
        HyReal mInternalPosition = 0; ///< without offset
        HyReal mOffset = 0;
    };

    virtual ~HyConstraintState() = default;
    /// HyConstraint::restoreState(), if the constraint still exists.
    void restore();

    HyPointer<HyConstraint> mInstance;
    bool mEnabled = false;
    std::vector<Attachment> mAttachments;
    std::vector<Coordinate> mCoordinates;

    // To the last bit, what the next step depends on besides.
    DynConstraintCoordinates mStep;
};

} // namespace Hy
