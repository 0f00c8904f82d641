#pragma once
#include <Kit/KitApi.h>

#include <string>

namespace Hy {

/// A version of three numbers, the first weighing most.
class HY_API HyVersion {
public:
    HyVersion(int major, int minor, int patch) : mMajor(major), mMinor(minor), mPatch(patch) {}

    [[nodiscard]] int getMajor() const { return mMajor; }
    [[nodiscard]] int getMinor() const { return mMinor; }
    [[nodiscard]] int getPatch() const { return mPatch; }

    /// -1, 0 or 1 where this version is lower than, equal to or higher than the other.
    [[nodiscard]] int compare(const HyVersion& other) const;
    [[nodiscard]] bool operator==(const HyVersion& other) const { return compare(other) == 0; }
    [[nodiscard]] bool operator<(const HyVersion& other) const { return compare(other) < 0; }

    /// "1.2.3"
    [[nodiscard]] std::string toString() const;
    /// "1_2_3", fit for a file's name.
    [[nodiscard]] std::string toDLLString() const;

private:
    int mMajor, mMinor, mPatch;
};

/// Version of the library that the program runs with.
[[nodiscard]] HY_API HyVersion HyGetVersion();

} // namespace Hy
