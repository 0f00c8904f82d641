#pragma once
#include <string>

namespace Hy::HyPluginSystem {
class PluginLibraryDataCollection;
struct PluginLibraryData;

/// Opens and closes libraries, and counts how often each was asked for.
class PluginLoader {
public:
    /// Text of the last failure.
    [[nodiscard]] const std::string& getError() const { return mError; }

    [[nodiscard]] bool load(const std::string& path, PluginLibraryDataCollection& libraries);
    /// Takes a load back. False while others remain, and where the library cannot be closed.
    bool unload(const std::string& path, PluginLibraryDataCollection& libraries);

private:
    [[nodiscard]] bool loadLibrary(PluginLibraryData& data, PluginLibraryDataCollection& libraries);
    [[nodiscard]] bool unloadLibrary(PluginLibraryData& data,
                                     PluginLibraryDataCollection& libraries);
    [[nodiscard]] bool loadLibrary_sys(PluginLibraryData& data,
                                       PluginLibraryDataCollection& libraries);
    [[nodiscard]] bool unloadLibrary_sys(PluginLibraryData& data);

    std::string mError;
};

/// Whether a path is absolute and leads to a regular file: nothing else is ever opened.
[[nodiscard]] bool isRegularFile(const std::string& path);

} // namespace Hy::HyPluginSystem
