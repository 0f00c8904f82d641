#pragma once
#include <Hy/HyFilesystem.h>

#include <string>

namespace Hy::HyPluginSystem {

/// What the pseudo-path of a static plug-in begins with.
constexpr const char* kStaticPathPrefix = ":/";
constexpr std::size_t kShortestStaticPath = 4; ///< characters

[[nodiscard]] inline bool isStaticPath(const std::string& path) {
    return path.size() >= kShortestStaticPath && path.starts_with(kStaticPathPrefix);
}

/// Name of the file without folders and extension.
[[nodiscard]] inline std::string baseNameOf(const std::string& path) {
    return HyFilesystem::File(path).getBaseName();
}

/// The text of HALCYR_PLUGIN_DISABLED as it was when first asked for; not empty: no plug-ins.
constexpr const char* kDisabledVariable = "HALCYR_PLUGIN_DISABLED";
[[nodiscard]] bool arePluginsDisabled();

} // namespace Hy::HyPluginSystem
