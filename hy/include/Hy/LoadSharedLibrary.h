#pragma once
#include <Kit/KitApi.h>

#include <string>

namespace Hy::HyPluginSystem {

/// Keeps a shared library open, all of whose symbols are bound at once.
class HY_API LoadSharedLibrary {
public:
    /// Opens a regular file; a warning if that fails.
    explicit LoadSharedLibrary(const std::string& path);
    LoadSharedLibrary(const LoadSharedLibrary&) = delete;
    LoadSharedLibrary& operator=(const LoadSharedLibrary&) = delete;
    ~LoadSharedLibrary();

    /// For dlsym(3); null if the library is not open.
    [[nodiscard]] void* getModule() const { return mDLLModule; }

private:
    void* mDLLModule = nullptr;
};

} // namespace Hy::HyPluginSystem
