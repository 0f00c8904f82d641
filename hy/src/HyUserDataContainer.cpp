#include <Hy/HyUserDataContainer.h>

namespace Hy {

const HyUserData& HyUserDataContainer::getData(const std::string& name) const {
    static const HyUserData none{std::string()};
    const auto found = mData.find(HyUserData(name));
    return found == mData.end() ? none : *found;
}

void HyUserDataContainer::setData(const HyUserData& userData) {
    // A copy first: what is given may be the very value that is erased.
    HyUserData copy = userData;
    mData.erase(copy);
    mData.insert(std::move(copy));
}

bool HyUserDataContainer::hasData(const std::string& name) const {
    return mData.contains(HyUserData(name));
}

bool HyUserDataContainer::removeData(const std::string& name) {
    return mData.erase(HyUserData(name)) > 0;
}

} // namespace Hy
