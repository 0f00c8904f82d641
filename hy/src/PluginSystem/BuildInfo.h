#pragma once
#include <string>

namespace Hy::HyPluginSystem {

/// How a plug-in was built, by its own account.
struct BuildInfo {
    int platform = 0;
    std::string compilerName;
    int compilerVersion = 0;
    int release = 0; ///< 1 for a release, 0 for a debug build

    /// Reads four lines "key:value", in the order of the members; the keys do not matter. What is no
    /// number where one is wanted gives a warning and ends the reading.
    [[nodiscard]] static BuildInfo parse(const std::string& text);
    /// Whether plug-ins built so work with this library.
    /// @param error receives why not
    [[nodiscard]] bool isCompatible(std::string& error) const;
};

} // namespace Hy::HyPluginSystem
