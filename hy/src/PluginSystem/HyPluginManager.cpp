#include <Hy/HyPluginManager.h>

#include "PluginLibraryData.h"
#include "PluginLoader.h"
#include "StaticPath.h"

#include <Hy/HyMessage.h>
#include <Hy/HyPluginFuncInterface.h>

#include <algorithm>

// Life of the manager, what it answers, objects, listeners and static plug-ins.

namespace Hy::HyPluginSystem {
namespace {

struct StaticPlugin {
    std::string path;
    HyPluginFuncInterface* functions;
    [[nodiscard]] bool operator==(const StaticPlugin&) const = default;
};

// A function, so that it is there for static initializers of any file.
HyArray<StaticPlugin>& GetStaticPluginList() {
    static HyArray<StaticPlugin> list;
    return list;
}

} // namespace

HyPluginManager* HyPluginManager::sInstance = nullptr;

// Life.

HyPluginManager::HyPluginManager()
    : mLoader(std::make_unique<PluginLoader>()),
      mLoadedLibraries(std::make_unique<PluginLibraryDataCollection>()) {
    HyAssertImplementation(__FILE__, __LINE__, !sInstance,
                           "Only one instance of the HyPluginManager class must exist.");
    sInstance = this;
    _initPluginSearchDirs();
}

HyPluginManager::~HyPluginManager() {
    unloadAll();
    if (!mAllObjects.empty())
        HyWarning(0, "There are %d objects left in the plugin manager's object pool.\n",
                  static_cast<int>(mAllObjects.size()));
    for (HyPluginInfo* plugin : mPlugins) // which refused to be unloaded
        delete plugin;
    mLoader.reset();
    mLoadedLibraries->destroyAll();
    sInstance = nullptr;
}

HyPluginManager& HyPluginManager::instance() {
    if (!sInstance)
        new HyPluginManager; // which stores itself
    return *sInstance;
}

HyPluginManager* HyPluginManager::currentInstance() {
    return sInstance;
}

void HyPluginManager::reset() {
    if (!sInstance)
        return;
    sInstance->unloadAll();
    while (HyPluginManagerListener* listener = sInstance->mListeners.at(0))
        sInstance->mListeners.remove(listener);
}

// Queries.

HyPluginInfo* HyPluginManager::getPluginForName(const std::string& name) const {
    for (HyPluginInfo* plugin : mPlugins)
        if (plugin->getName() == name)
            return plugin;
    return nullptr;
}

HyPluginInfo* HyPluginManager::getPluginForPath(const std::string& path) const {
    const HyFilesystem::File file(path);
    for (HyPluginInfo* plugin : mPlugins)
        if (HyFilesystem::File(plugin->getPath()) == file)
            return plugin;
    return nullptr;
}

bool HyPluginManager::isLoaded(const std::string& name) const {
    if (name.empty())
        return false;
    HyArray<std::string> candidates; // base names
    const auto add = [&](const std::string& path) { candidates.push_back(baseNameOf(path)); };
    if (!HyFilesystem::File(name).getExtension().empty()) {
        add(name);
    } else {
        for (const char* extension : {".hyp", ".so"}) {
            add(name + "g" + extension);
            if (name.ends_with('g'))
                add(name.substr(0, name.size() - 1) + extension);
            add(name + extension);
        }
    }
    const auto& libraries = mLoadedLibraries->getLibraries();
    return std::any_of(libraries.begin(), libraries.end(), [&](const auto& library) {
        const std::string base = baseNameOf(library->mFilePath);
        return library->isOpen() &&
               std::find(candidates.begin(), candidates.end(), base) != candidates.end();
    });
}

// Objects.

void HyPluginManager::addObject(HyPluginObject* object) {
    if (!object) {
        HyWarning(0, "HyPluginManager::addObject(): trying to add null object\n");
        return;
    }
    if (!mAllObjects.addUnique(object)) {
        HyWarning(0, "HyPluginManager::addObject(): trying to add duplicate object\n");
        return;
    }
    mListeners.forEach([&](HyPluginManagerListener& listener) { listener.onObjectAdded(object); });
}

void HyPluginManager::removeObject(HyPluginObject* object) {
    if (!object)
        return;
    if (std::find(mAllObjects.begin(), mAllObjects.end(), object) == mAllObjects.end()) {
        HyWarning(0, "HyPluginManager::removeObject(): object not in list.\n");
        return;
    }
    mListeners.forEach([&](HyPluginManagerListener& listener) { listener.onRemoveObject(object); });
    mAllObjects.eraseOnce(object);
}

// Listeners.

void HyPluginManager::addListener(HyPluginManagerListener* listener) {
    mListeners.add(listener);
}

void HyPluginManager::removeListener(HyPluginManagerListener* listener) {
    mListeners.remove(listener);
}

void HyPluginManager::notifyPluginError(const std::string& path, const HyPluginInfo* info,
                                        const std::string& message) {
    if (mListeners.empty())
        HyWarning(0, "HyPluginManager: %s (%s)\n", message.c_str(), path.c_str());
    mListeners.forEach(
        [&](HyPluginManagerListener& listener) { listener.onPluginError(path, info, message); });
}

bool HyPluginManager::notifyAboutToInitialise(const HyPluginInfo& info) {
    bool agreed = true;
    mListeners.forEach([&](HyPluginManagerListener& listener) {
        agreed = listener.onAboutToInitialize(info) && agreed;
    });
    return agreed;
}

bool HyPluginManager::notifyAboutToUninitialise(const HyPluginInfo& info) {
    bool agreed = true;
    mListeners.forEach([&](HyPluginManagerListener& listener) {
        agreed = listener.onAboutToUninitialize(info) && agreed;
    });
    return agreed;
}

void HyPluginManager::notifyPluginsChanged() {
    mListeners.forEach([](HyPluginManagerListener& listener) { listener.onPluginsChanged(); });
}

HyPluginManagerListener::HyPluginManagerListener() {
    HyPluginManager::instance().addListener(this);
}

HyPluginManagerListener::~HyPluginManagerListener() {
    if (HyPluginManager* manager = HyPluginManager::currentInstance())
        manager->removeListener(this);
}

// Static plug-ins.

void HyPluginManager::RegisterStaticPlugin(const std::string& name, HyPluginFuncInterface* plugin) {
    const std::string path = kStaticPathPrefix + name;
    if (plugin && isStaticPath(path))
        GetStaticPluginList().addUnique({path, plugin});
    else
        HyWarning(0, "HyPluginManager::RegisterStaticPlugin: the name must have two characters and "
                     "the plug-in must not be null.\n");
}

void HyPluginManager::UnregisterStaticPlugin(const std::string& name,
                                             HyPluginFuncInterface* plugin) {
    const StaticPlugin entry{kStaticPathPrefix + name, plugin};
    auto& list = GetStaticPluginList();
    if (std::find(list.begin(), list.end(), entry) == list.end())
        return;
    if (sInstance)
        sInstance->unload(entry.path);
    list.eraseOnce(entry);
}

void HyPluginManager::loadStatic(int argc, char** argv) {
    Paths paths;
    for (const StaticPlugin& plugin : GetStaticPluginList()) {
        mLoadedLibraries->findOrCreateData(plugin.path, plugin.functions);
        paths.push_back(plugin.path);
    }
    loadHelper(paths, {}, {}, argc, argv);
}

} // namespace Hy::HyPluginSystem
