#include <Hy/HyPluginFuncInterface.h>

#include "BuildInfo.h"

#include <Hy/HyPluginInfo.h>

#include <exception>

namespace Hy::HyPluginSystem {
namespace {

/// Plug-ins of later systems say how they were built.
constexpr int kLastVersionWithoutBuildInfo = 0x0100FFFF;

/// The result of a call into a plug-in, or another one where it throws.
template <typename Result, typename Call>
Result callGuarded(Result otherwise, std::string* error, const Call& call) {
    try {
        return call();
    } catch (const std::exception& exception) {
        if (error)
            *error = exception.what();
    } catch (...) {
    }
    return otherwise;
}

} // namespace

int HyPluginFuncInterface::getPluginSystemVersion() const {
    return mPtrVersion ? callGuarded(0, nullptr, mPtrVersion) : 0;
}

bool HyPluginFuncInterface::getPluginInfo(HyPluginInfo& info) const {
    if (!mPtrGetPluginInfo)
        return false;
    bool hasThrown = true;
    const bool result = callGuarded(false, nullptr, [&] {
        const bool answer = mPtrGetPluginInfo(info);
        hasThrown = false;
        return answer;
    });
    if (hasThrown)
        info.clear();
    return result;
}

std::string HyPluginFuncInterface::getBuildInfo() const {
    if (!mPtrBuildInfo)
        return {};
    return callGuarded(std::string(), nullptr, [this] {
        const char* text = mPtrBuildInfo();
        return std::string(text ? text : "");
    });
}

bool HyPluginFuncInterface::initialize(HyPluginManager& manager, int argc, char** argv,
                                       std::string* error) const {
    return mPtrInitialize &&
           callGuarded(false, error, [&] { return mPtrInitialize(manager, argc, argv, error); });
}

bool HyPluginFuncInterface::uninitialize(HyPluginManager& manager, std::string* error) const {
    return mPtrUninitialize &&
           callGuarded(false, error, [&] { return mPtrUninitialize(manager, error); });
}

bool HyPluginFuncInterface::isValid(std::string* error) const {
    const auto fail = [error](const std::string& message) {
        if (error)
            *error = message;
        return false;
    };
    const struct {
        bool isThere;
        const char* symbol;
    } required[] = {{mPtrVersion != nullptr, "GetHyPluginSystemVersion"},
                    {mPtrGetPluginInfo != nullptr, "GetPluginInfo"},
                    {mPtrInitialize != nullptr, "InitializePlugin"},
                    {mPtrUninitialize != nullptr, "UninitializePlugin"}};
    for (const auto& function : required)
        if (!function.isThere)
            return fail(std::string("Symbol ") + function.symbol +
                        " was not found in this plugin.");
    const int version = getPluginSystemVersion();
    if (version > kLastVersionWithoutBuildInfo) {
        const std::string build = getBuildInfo();
        if (build.empty())
            return fail("There is no build information found for this plugin.");
        std::string message;
        if (!BuildInfo::parse(build).isCompatible(message))
            return fail(message);
    }
    if (version < kHyPluginSystemOldestVersion || version > kHyPluginSystemVersion)
        return fail("This plugin is incompatible with the current version of Halcyr.");
    return true;
}

} // namespace Hy::HyPluginSystem
