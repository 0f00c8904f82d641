#pragma once
#include <Hy/HyArray.h>

#include <memory>
#include <string>

namespace Hy::HyPluginSystem {
struct HyPluginFuncInterface;

/// A library that is open, or a static plug-in.
struct PluginLibraryData {
    PluginLibraryData(const std::string& path, HyPluginFuncInterface* staticInterface)
        : mFilePath(path), mInterface(staticInterface), mIsStatic(staticInterface != nullptr) {}
    PluginLibraryData(const PluginLibraryData&) = delete;
    PluginLibraryData& operator=(const PluginLibraryData&) = delete;
    ~PluginLibraryData();

    [[nodiscard]] bool isStatic() const { return mIsStatic; }
    [[nodiscard]] bool isOpen() const { return mLoadCount > 0; }

    const std::string mFilePath;
    void* mHandle = nullptr; ///< from dlopen; null for a static plug-in
    /// Owned unless static; null until the library is open.
    HyPluginFuncInterface* mInterface;
    int mLoadCount = 0;

private:
    const bool mIsStatic;
};

/// The libraries that the manager knows.
class PluginLibraryDataCollection {
public:
    /// Of exactly this path; null if there is none.
    [[nodiscard]] PluginLibraryData* findData(const std::string& path) const;
    /// @param staticInterface of a static plug-in, not owned; else null
    PluginLibraryData& findOrCreateData(const std::string& path,
                                        HyPluginFuncInterface* staticInterface);
    /// Null if the library is not there or not open.
    [[nodiscard]] HyPluginFuncInterface* getInterface(const std::string& path) const;
    void destroyData(PluginLibraryData& data);
    void destroyAll() { mLibraries.clear(); }
    [[nodiscard]] const HyArray<std::unique_ptr<PluginLibraryData>>& getLibraries() const {
        return mLibraries;
    }

private:
    HyArray<std::unique_ptr<PluginLibraryData>> mLibraries;
};

} // namespace Hy::HyPluginSystem
