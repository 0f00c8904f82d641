#include <Hy/HyVersion.h>

#include "HyVersionNumbers.h"

#include <Hy/HyStringUtils.h>

#include <compare>
#include <tuple>

namespace Hy {

int HyVersion::compare(const HyVersion& other) const {
    const auto order =
        std::tie(mMajor, mMinor, mPatch) <=> std::tie(other.mMajor, other.mMinor, other.mPatch);
    return order < 0 ? -1 : order > 0;
}

std::string HyVersion::toString() const {
    return HyStringUtils::format("%d.%d.%d", mMajor, mMinor, mPatch);
}

std::string HyVersion::toDLLString() const {
    return HyStringUtils::format("%d_%d_%d", mMajor, mMinor, mPatch);
}

HyVersion HyGetVersion() {
    return {kVersionMajor, kVersionMinor, kVersionPatch};
}

} // namespace Hy
