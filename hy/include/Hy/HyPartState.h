#pragma once
#include <Dyn/DynBody.h>
#include <Hy/HyCollisionGeometryState.h>
#include <Hy/HyPart.h>
#include <Hy/HyPointer.h>

#include <memory>
#include <vector>

namespace Hy {

/// What a part was like when HyPart::createState() was called.
class HY_API HyPartState {
public:
    virtual ~HyPartState() = default;
    /// HyPart::restoreState(), if the part still exists.
    void restore();

    HyPointer<HyPart> mInstance;
    std::vector<std::unique_ptr<HyCollisionGeometryState>> mCollisionGeometries;
    HyTransform mTransform;
    HyVector3 mLinearVelocity;
    HyVector3 mAngularVelocity;
    HyPart::EntityControlTypeEnum mControl = HyPart::kControlAnimated;
    bool mFrozen = false;
    bool mDynamicsAwake = false;

    // To the last bit, what the next step and the next decision to sleep depend on.
    DynBodyPose mPose;
    HyVector3 mLinearAcceleration;
    HyVector3 mAngularAcceleration;
    int mEnabledSteps = -1;
};

} // namespace Hy
