#pragma once
#include <Hy/HyArray.h>

#include <algorithm>

namespace Hy::HyPluginSystem {
class HyPluginInfo;

/// Compares addresses: the plug-in may be gone.
[[nodiscard]] inline bool contains(const HyArray<HyPluginInfo*>& plugins,
                                   const HyPluginInfo* plugin) {
    return std::find(plugins.begin(), plugins.end(), plugin) != plugins.end();
}

} // namespace Hy::HyPluginSystem
