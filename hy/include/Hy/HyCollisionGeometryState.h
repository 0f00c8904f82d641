#pragma once
#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyPointer.h>
#include <Hy/HyTransform.h>

#include <memory>
#include <vector>

namespace Hy {

/// What a placement was like when HyCollisionGeometry::createState() was called.
class HY_API HyCollisionGeometryState {
public:
    virtual ~HyCollisionGeometryState() = default;
    /// HyCollisionGeometry::restoreState(), if the placement still exists.
    void restore();

    HyPointer<HyCollisionGeometry> mInstance;
    HyTransform mAbsoluteTransform; ///< restored where neither part nor composite holds it
    HyReal mRelativeDensity = 1;
    HyCollisionGeometry::TemporaryDisabledStatus mTemporarilyDisabledFlag =
        HyCollisionGeometry::kNotTemporaryDisabled;
    bool mMassEnabled = true;
    bool mCollisionEnabled = true;
    bool mStatic = false;
    bool mFastMoving = false;
};

/// The same for a composite and its children.
class HY_API HyCompositeCollisionGeometryState : public HyCollisionGeometryState {
public:
    std::vector<std::unique_ptr<HyCollisionGeometryState>> mChildStates;
};

} // namespace Hy
