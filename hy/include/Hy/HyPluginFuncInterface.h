#pragma once
#include <Kit/KitApi.h>

#include <string>

namespace Hy::HyPluginSystem {
class HyPluginInfo;
class HyPluginManager;

/// Version of the plug-in system, and the oldest whose plug-ins it takes.
constexpr int kHyPluginSystemVersion = 0x01010000;
constexpr int kHyPluginSystemOldestVersion = 0x01000000;

/// The entry points of a plug-in, null where it has none (see HyPlugin.h). The operations call them
/// and let no exception out.
struct HY_API HyPluginFuncInterface {
    int (*mPtrVersion)() = nullptr;                     ///< GetHyPluginSystemVersion
    bool (*mPtrGetPluginInfo)(HyPluginInfo&) = nullptr; ///< GetPluginInfo
    bool (*mPtrInitialize)(HyPluginManager&, int, char**, std::string*) = nullptr;
    bool (*mPtrUninitialize)(HyPluginManager&, std::string*) = nullptr;
    const char* (*mPtrBuildInfo)() = nullptr; ///< GetPluginBuildInfo

    /// 0 without the function.
    [[nodiscard]] int getPluginSystemVersion() const;
    /// False without the function, and where it throws, which leaves the info empty.
    bool getPluginInfo(HyPluginInfo& info) const;
    /// Empty without the function, or if it answers null.
    [[nodiscard]] std::string getBuildInfo() const;
    /// False without the function, and where it throws.
    /// @param error may be null; receives the text of a std::exception
    bool initialize(HyPluginManager& manager, int argc, char** argv, std::string* error) const;
    bool uninitialize(HyPluginManager& manager, std::string* error) const;

    /// Whether all that is needed is there and fits this library.
    /// @param error may be null; receives the first thing that is wrong
    [[nodiscard]] bool isValid(std::string* error) const;
};

} // namespace Hy::HyPluginSystem
