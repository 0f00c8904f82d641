#include <Hy/HyBaseUserData.h>

#include <Hy/HyUserDataContainer.h>

namespace Hy {

HyBaseUserData::~HyBaseUserData() {
    delete mUserData;
}

const char* HyBaseUserData::getClassName() const {
    return "HyBaseUserData";
}

HyUserDataContainer& HyBaseUserData::userData() {
    if (!mUserData)
        mUserData = new HyUserDataContainer;
    return *mUserData;
}

const HyUserDataContainer& HyBaseUserData::userData() const {
    static const HyUserDataContainer none;
    return mUserData ? *mUserData : none;
}

} // namespace Hy
