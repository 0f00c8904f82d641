#pragma once
// What the source of a plug-in includes: it defines the functions below, all but the last spelling of
// the fourth, and exports no more than them.
#include <Hy/HyPluginFuncInterface.h>
#include <Hy/HyPluginInfo.h>
#include <Hy/HyPluginManager.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

extern "C" {

/// kHyPluginSystemVersion, as the plug-in was compiled with.
HY_API int GetHyPluginSystemVersion();
/// Fills in at least the name. Called before anything is initialized, and perhaps nothing else.
HY_API bool GetPluginInfo(Hy::HyPluginSystem::HyPluginInfo& info);
/// Registers what the plug-in provides. What it depends on is initialized already.
/// @param argc,argv as the application passed them
/// @param error receives why it failed
/// @return false if it failed; it is then uninitialized and unloaded
HY_API bool InitializePlugin(Hy::HyPluginSystem::HyPluginManager& manager, int argc, char** argv,
                             std::string* error);
/// Takes back what was registered; the library is unloaded next.
/// @param error null if nobody asks
/// @return false to stay loaded
HY_API bool UninitializePlugin(Hy::HyPluginSystem::HyPluginManager& manager, std::string* error);
/// Another spelling, looked for where the first is missing.
HY_API bool UninitialisePlugin(Hy::HyPluginSystem::HyPluginManager& manager, std::string* error);
/// How the plug-in was built: HyPluginBuildInfo().
HY_API const char* GetPluginBuildInfo();
}

namespace Hy::HyPluginSystem {

/// Four lines "key:value": platform (bits of a pointer), compiler, its version, release.
consteval auto HyMakePluginBuildInfo() {
#if defined(__clang__)
    constexpr std::string_view compiler = "Clang";
    constexpr int version = __clang_major__ * 10000 + __clang_minor__ * 100 + __clang_patchlevel__;
#else
    constexpr std::string_view compiler = "GCC";
    constexpr int version = __GNUC__ * 10000 + __GNUC_MINOR__ * 100 + __GNUC_PATCHLEVEL__;
#endif
#if defined(NDEBUG)
    constexpr std::string_view release = "1";
#else
    constexpr std::string_view release = "0";
#endif
    std::array<char, 128> text{};
    std::size_t end = 0;
    const auto add = [&](std::string_view piece) {
        for (const char c : piece)
            text[end++] = c;
    };
    add(sizeof(void*) == 8 ? "platform:64" : "platform:32");
    add("\ncompiler name:");
    add(compiler);
    add("\ncompiler version:");
    for (int unit = 100000; unit > 0; unit /= 10)
        text[end++] = static_cast<char>('0' + version / unit % 10);
    add("\nrelease:");
    add(release);
    add("\n");
    return text;
}
constexpr auto kHyPluginBuildInfo = HyMakePluginBuildInfo();

/// What GetPluginBuildInfo() should answer in a plug-in that is compiled like this.
[[nodiscard]] inline const char* HyPluginBuildInfo() {
    return kHyPluginBuildInfo.data();
}

} // namespace Hy::HyPluginSystem
