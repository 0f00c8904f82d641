#include <Hy/HyPluginManager.h>

#include "PluginExtensions.h"
#include "PluginImage.h"
#include "PluginLibraryData.h"
#include "PluginList.h"
#include "PluginLoader.h"
#include "PluginSteppers.h"

#include <Hy/HyMessage.h>
#include <Hy/HyPluginFuncInterface.h>

#include <utility>

// How plug-ins go.

namespace Hy::HyPluginSystem {
namespace {

void warnOfLeftover(const PluginImage& image, const char* what) {
    HyWarning(0, "HyPluginManager::unload: %s has left %s behind, which is dropped.\n",
              image.getPath().c_str(), what);
}

} // namespace

void HyPluginManager::unload(const std::string& path) {
    if (HyPluginInfo* plugin = getPluginForPath(path))
        unloadHelper(plugin);
}

void HyPluginManager::unload(const Paths& paths) {
    for (const std::string& path : paths)
        unload(path);
}

void HyPluginManager::unloadAll() {
    const Plugins plugins = mPlugins;
    for (HyPluginInfo* plugin : plugins)
        if (contains(mPlugins, plugin))
            unloadHelper(plugin);
}

// The last of the dependents first. What listeners and plug-ins do meanwhile may unload others.
void HyPluginManager::unloadHelper(HyPluginInfo* plugin) {
    const Plugins provided = getProvidedPlugins(plugin);
    for (auto entry = provided.rbegin(); entry != provided.rend(); ++entry)
        if (contains(mPlugins, *entry) && !unloadOne(*entry))
            break;
    notifyPluginsChanged();
}

bool HyPluginManager::unloadOne(HyPluginInfo* plugin) {
    if (contains(mPluginsInUnload, plugin)) // it has asked for that itself
        return false;
    const std::string path = plugin->getPath();
    const HyPluginFuncInterface* functions = mLoadedLibraries->getInterface(path);
    mPluginsInUnload.push_back(plugin);
    const bool agreed = notifyAboutToUninitialise(*plugin) &&
                        (!functions || functions->uninitialize(*this, nullptr));
    mPluginsInUnload.eraseOnce(plugin);
    if (!agreed)
        return false;
    closeLibrary(path);
    mPlugins.eraseOnce(plugin);
    delete plugin;
    return true;
}

void HyPluginManager::closeLibrary(const std::string& path) {
    const PluginLibraryData* data = mLoadedLibraries->findData(path);
    if (data && data->mHandle && data->mLoadCount == 1) {
        const PluginImage image(*data);
        if (!dropLeftovers(image)) {
            HyWarning(0, "HyPluginManager::unload: %s stays in memory, as it is still in use.\n",
                      path.c_str());
            image.keep();
        }
    }
    mLoader->unload(path, *mLoadedLibraries);
}

/// Takes out what points into a library that is about to go. False if something cannot be.
bool HyPluginManager::dropLeftovers(const PluginImage& image) {
    const HyArray<HyPluginObject*> objects = mAllObjects;
    for (HyPluginObject* object : objects)
        if (image.isClassOf(object)) {
            warnOfLeftover(image, "an object");
            removeObject(object);
        }
    for (std::size_t i = mListeners.size(); i > 0; --i)
        if (HyPluginManagerListener* listener = mListeners.at(i - 1);
            listener && image.isClassOf(listener)) {
            warnOfLeftover(image, "a listener");
            mListeners.remove(listener);
        }
    const bool areExtensionsGone = dropExtensions(image);
    return dropSteppers(image) && areExtensionsGone;
}

void HyPluginManager::flush() {
    const Plugins rejected = std::exchange(mPluginsToFlush, Plugins());
    for (HyPluginInfo* plugin : rejected) {
        closeLibrary(plugin->getPath());
        delete plugin;
    }
}

} // namespace Hy::HyPluginSystem
