#pragma once
#include <Hy/HyPointer.h>
#include <Hy/HyVector3.h>
#include <Kit/KitApi.h>

#include <memory>
#include <vector>

namespace Hy {
class HyCollisionGeometryState;
class HyConstraintState;
class HyDynamicsExtensionState;
class HyPartState;
class HyUniverse;
struct HyContactHistory;

/// What HyUniverse::createState() has captured; owned by the caller.
class HY_API HyUniverseState {
public:
    HyUniverseState(const HyUniverseState&) = delete;
    HyUniverseState& operator=(const HyUniverseState&) = delete;
    ~HyUniverseState();

    /// Brings the universe back to the state, if it is still alive (see HyUniverse::restoreState).
    void restore();
    /// The universe that was captured, null once it is destroyed.
    [[nodiscard]] HyUniverse* getInstance() const { return mInstance.get(); }
    /// Whether intersect subscribers hear of the contacts of the restored state; off at first.
    void setEnableIntersectSubscribersOnRestore(bool on) {
        mEnableIntersectSubscribersOnRestore = on;
    }

private:
    friend class HyUniverse;
    HyUniverseState();

    HyPointer<HyUniverse> mInstance;
    std::vector<std::unique_ptr<HyCollisionGeometryState>> mCollisionGeometries;
    std::vector<std::unique_ptr<HyPartState>> mParts; ///< in the order of the parts' creation
    std::vector<std::unique_ptr<HyConstraintState>> mConstraints;
    std::vector<std::unique_ptr<HyDynamicsExtensionState>> mExtensions;
    HyVector3 mGravity; ///< m/s²
    // Most contacts of a pair, by the requests of the ids 0.
    unsigned mPartPartContactCount = 0;
    unsigned mPartSensorContactCount = 0;
    unsigned mSensorSensorContactCount = 0;
    std::unique_ptr<HyContactHistory> mContacts;
    bool mAutoSleep = true;
    bool mEnableIntersectSubscribersOnRestore = false;
};

} // namespace Hy
