#include <Hy/HyPluginManager.h>

#include "PluginLibraryData.h"
#include "PluginLoader.h"
#include "StaticPath.h"

#include <Hy/HyMessage.h>
#include <Hy/HyPluginFuncInterface.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <utility>

// How plug-ins get from their files into the list.

namespace Hy::HyPluginSystem {
namespace {

/// Lets the dynamic linker find what stands beside a plug-in, and puts the variable back at the end,
/// unset where it was.
class LibraryPathGuard {
public:
    explicit LibraryPathGuard(const std::string& file) {
        if (const char* value = std::getenv(kVariable))
            mOld = value;
        std::string path = HyFilesystem::Directory(HyFilesystem::File(file)).toUniversalPath();
        if (mOld && !mOld->empty())
            path += ":" + *mOld;
        setenv(kVariable, path.c_str(), 1);
    }
    LibraryPathGuard(const LibraryPathGuard&) = delete;
    LibraryPathGuard& operator=(const LibraryPathGuard&) = delete;
    ~LibraryPathGuard() {
        if (mOld)
            setenv(kVariable, mOld->c_str(), 1);
        else
            unsetenv(kVariable);
    }

private:
    static constexpr const char* kVariable = "LD_LIBRARY_PATH";
    std::optional<std::string> mOld;
};

} // namespace

bool arePluginsDisabled() {
    static const bool disabled = [] {
        const char* value = secure_getenv(kDisabledVariable);
        return value && *value;
    }();
    return disabled;
}

void HyPluginManager::load(const Paths& paths, const std::string& filterFileName,
                           const std::string& filterExtension, int argc, char** argv) {
    loadHelper(paths, filterFileName, filterExtension, argc, argv);
}

void HyPluginManager::load(const std::string& path, const std::string& filterFileName,
                           const std::string& filterExtension, int argc, char** argv) {
    loadHelper({path}, filterFileName, filterExtension, argc, argv);
}

void HyPluginManager::loadFromDir(const std::string& directory, const std::string& filterFileName,
                                  const std::string& filterExtension, int argc, char** argv) {
    loadFromDirs({directory}, filterFileName, filterExtension, argc, argv);
}

void HyPluginManager::loadFromDirs(const Paths& directories, const std::string& filterFileName,
                                   const std::string& filterExtension, int argc, char** argv) {
    Paths files;
    for (const std::string& name : directories) {
        const std::string directory = findDirInSearchDirs(name);
        if (directory.empty())
            continue;
        HyInfo(2, "HyPluginManager::loadFromDirs(): Loading plugin from %s\n", directory.c_str());
        findSharedLibraries(directory, filterFileName, filterExtension, files);
    }
    load(files, filterFileName, filterExtension, argc, argv);
}

void HyPluginManager::loadFromSearchDirs(const std::string& filterFileName,
                                         const std::string& filterExtension, int argc,
                                         char** argv) {
    const Paths directories = mPluginSearchDirs; // plug-ins may add some
    loadFromDirs(directories, filterFileName, filterExtension, argc, argv);
}

void HyPluginManager::loadHelper(const Paths& paths, const std::string& filterFileName,
                                 const std::string& filterExtension, int argc, char** argv) {
    readPaths(paths, filterFileName, filterExtension);
    resolveDependencies();
    initializePlugins(argc, argv);
    flush();
}

void HyPluginManager::readPaths(const Paths& paths, const std::string& filterFileName,
                                const std::string& filterExtension) {
    for (const std::string& path : paths) {
        const std::string file = findFileInSearchDirs(path, filterFileName, filterExtension);
        if (file.empty())
            HyWarning(0, "HyPluginManager - Error cannot find plugin file: %s\n", path.c_str());
        // Of a base name with a dot, isLoaded() would take the end for an extension.
        const PluginLibraryData* data = mLoadedLibraries->findData(file);
        if ((data && data->isOpen()) || isLoaded(baseNameOf(file))) {
            HyInfo(2, "HyPluginManager::readPaths(): Already loaded, skipping plugin: %s\n",
                   file.c_str());
            continue;
        }
        if (arePluginsDisabled()) {
            HyWarning(0,
                      "HyPluginManager::readPaths(): NOT loading plugin: %s, env var is set: %s\n",
                      file.c_str(), kDisabledVariable);
            continue;
        }
        if (HyPluginInfo* plugin = readPath(file))
            mPluginsToInitialize.push_back(plugin);
    }
}

/// Opens a library and checks it; one that fails is told of and closed again.
bool HyPluginManager::openLibrary(const std::string& path) {
    std::optional<LibraryPathGuard> guard;
    if (!isStaticPath(path))
        guard.emplace(path);
    HyInfo(2, "HyPluginManager::readPath - Loading plugin file: %s\n", path.c_str());
    if (!mLoader->load(path, *mLoadedLibraries)) {
        const std::string error = mLoader->getError();
        notifyPluginError(path, nullptr, error.empty() ? "Plugin Loader error" : error);
        return false;
    }
    guard.reset();
    const HyPluginFuncInterface* functions = mLoadedLibraries->getInterface(path);
    std::string error;
    if (functions && functions->isValid(&error))
        return true;
    notifyPluginError(path, nullptr, error);
    closeLibrary(path);
    return false;
}

HyPluginInfo* HyPluginManager::readPath(const std::string& path) {
    if (path.empty() || !openLibrary(path))
        return nullptr;
    const PluginLibraryData& data = *mLoadedLibraries->findData(path);
    auto info = std::make_unique<HyPluginInfo>(path);
    info->setStatic(data.isStatic());
    data.mInterface->getPluginInfo(*info);
    info->setPath(path); // a plug-in may have filled in anything
    info->setStatic(data.isStatic());
    info->mDeclaredName = info->getName();
    const bool agreed = notifyAboutToInitialise(*info);
    if (agreed && !info->getName().empty())
        return info.release();
    if (agreed)
        notifyPluginError(path, info.get(), "This plugin has some invalid informations.");
    info.reset();
    closeLibrary(path);
    return nullptr;
}

// A plug-in may itself load others: those find an empty queue, and leave this one alone.
void HyPluginManager::initializePlugins(int argc, char** argv) {
    const Plugins queue = std::exchange(mPluginsToInitialize, Plugins());
    for (HyPluginInfo* plugin : queue) {
        if (initializePlugin(*plugin, argc, argv))
            mPlugins.push_back(plugin);
        else
            mPluginsToFlush.addUnique(plugin);
    }
    std::stable_sort(
        mPlugins.begin(), mPlugins.end(),
        [](const HyPluginInfo* a, const HyPluginInfo* b) { return a->getName() < b->getName(); });
    notifyPluginsChanged();
}

bool HyPluginManager::initializePlugin(HyPluginInfo& plugin, int argc, char** argv) {
    for (const HyDependency& dependency : plugin.getDependencies())
        if (!findDependency(dependency, mPlugins))
            return false;
    const std::string& path = plugin.getPath();
    const std::string base = baseNameOf(path);
    const std::string outer = std::exchange(mDllNameBeingInitializedCurrently, base);
    plugin.setName(base);
    HyInfo(2, "HyPluginManager::initializePlugin - File: %s\n", path.c_str());
    const HyPluginFuncInterface& functions = *mLoadedLibraries->getInterface(path);
    std::string error;
    const bool done = functions.initialize(*this, argc, argv, &error);
    if (!done) {
        notifyPluginError(path, &plugin,
                          error.empty() ? "Problem calling InitializePlugin function" : error);
        functions.uninitialize(*this, nullptr);
    }
    mDllNameBeingInitializedCurrently = outer;
    return done;
}

HyPluginInfo HyPluginManager::loadInfo(const std::string& path) {
    const std::string file = isStaticPath(path) ? path : HyFilesystem::File(path).toUniversalPath();
    PluginLibraryData* data = mLoadedLibraries->findData(file);
    const bool isMine = !(data && data->isOpen()) && !isStaticPath(file) && !arePluginsDisabled() &&
                        mLoader->load(file, *mLoadedLibraries);
    data = mLoadedLibraries->findData(file);
    HyPluginInfo info;
    if (data && data->mInterface && data->mInterface->isValid(nullptr)) {
        info.setPath(file);
        info.setStatic(data->isStatic());
        data->mInterface->getPluginInfo(info);
    }
    if (isMine)
        closeLibrary(file);
    return info;
}

} // namespace Hy::HyPluginSystem
