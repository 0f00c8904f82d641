#include <Hy/HyPluginManager.h>

#include "PluginList.h"

#include <algorithm>
#include <cctype>

// Which plug-in needs which.

namespace Hy::HyPluginSystem {
namespace {

bool isEqualInLowerCase(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
        return std::tolower(x) == std::tolower(y);
    });
}

} // namespace

void HyPluginManager::reject(HyPluginInfo& plugin, const char* message) {
    mPluginsToFlush.addUnique(&plugin);
    notifyPluginError(plugin.getPath(), &plugin, message);
}

void HyPluginManager::resolveDependencies() {
    Plugins all = mPlugins;
    all.insert(all.end(), mPluginsToInitialize.begin(), mPluginsToInitialize.end());
    Plugins resolved;
    for (HyPluginInfo* plugin : mPluginsToInitialize) {
        Plugins stack;
        static_cast<void>(resolveDependencies(plugin, all, resolved, stack));
    }
    mPluginsToInitialize = resolved;
}

bool HyPluginManager::resolveDependencies(HyPluginInfo* plugin, const Plugins& all,
                                          Plugins& resolved, Plugins& stack) {
    if (contains(resolved, plugin))
        return true;
    if (contains(stack, plugin)) {
        reject(*plugin, "Circular dependency detected.\n");
        return false;
    }
    stack.push_back(plugin);
    for (HyDependency& dependency : plugin->mDependencies) {
        HyPluginInfo* found = findByName(dependency.getName(), all);
        if (!found) {
            reject(*plugin, "Missing dependency.");
            return false;
        }
        if (!provides(*found, dependency.getName(), dependency.getVersion())) {
            reject(*plugin, "HyDependency not matching with the version.");
            return false;
        }
        if (contains(mPluginsToInitialize, found) &&
            !resolveDependencies(found, all, resolved, stack)) {
            reject(*plugin, "HyDependency failed to load.");
            return false;
        }
        dependency.mResolved = found;
    }
    resolved.push_back(plugin);
    return true;
}

bool HyPluginManager::provides(const HyPluginInfo& plugin, const std::string& name,
                               const HyVersion& version) {
    return (isEqualInLowerCase(plugin.getName(), name) ||
            isEqualInLowerCase(plugin.mDeclaredName, name)) &&
           plugin.getVersion().compare(version) >= 0 &&
           plugin.getCompatibilityVersion().compare(version) <= 0;
}

/// By the name that shows first, then by those that the plug-ins gave themselves.
HyPluginInfo* HyPluginManager::findByName(const std::string& name, const Plugins& plugins) {
    for (HyPluginInfo* plugin : plugins)
        if (plugin->getName() == name)
            return plugin;
    for (HyPluginInfo* plugin : plugins)
        if (plugin->mDeclaredName == name)
            return plugin;
    return nullptr;
}

/// The plug-in that was found when the dependency was resolved, if it is still there: it has a new
/// name since it was initialized.
HyPluginInfo* HyPluginManager::findDependency(const HyDependency& dependency,
                                              const Plugins& plugins) {
    HyPluginInfo* resolved = dependency.mResolved;
    return resolved && contains(plugins, resolved) ? resolved
                                                   : findByName(dependency.getName(), plugins);
}

HyPluginManager::Plugins HyPluginManager::getQueue() const {
    Plugins queue;
    for (HyPluginInfo* plugin : mPlugins)
        getDependencyPlugins(plugin, mPlugins, queue);
    return queue;
}

HyPluginManager::Plugins HyPluginManager::getDependencyPlugins(HyPluginInfo* plugin) const {
    Plugins needed;
    getDependencyPlugins(plugin, mPlugins, needed);
    return needed;
}

HyPluginManager::Plugins HyPluginManager::getProvidedPlugins(HyPluginInfo* plugin) const {
    Plugins provided;
    getProvidedPlugins(plugin, getQueue(), provided);
    return provided;
}

void HyPluginManager::getDependencyPlugins(HyPluginInfo* plugin, const Plugins& plugins,
                                           Plugins& out) {
    Plugins stack; // an application may have edited infos so that they go round
    appendInOrder(plugin, plugins, stack, out);
}

void HyPluginManager::appendInOrder(HyPluginInfo* plugin, const Plugins& plugins, Plugins& stack,
                                    Plugins& out) {
    if (!plugin || contains(out, plugin) || contains(stack, plugin))
        return;
    stack.push_back(plugin);
    for (const HyDependency& dependency : plugin->getDependencies())
        appendInOrder(findDependency(dependency, plugins), plugins, stack, out);
    stack.pop_back();
    out.push_back(plugin);
}

void HyPluginManager::getProvidedPlugins(HyPluginInfo* plugin, const Plugins& plugins,
                                         Plugins& out) {
    if (!plugin)
        return;
    out.push_back(plugin);
    auto entry = std::find(plugins.begin(), plugins.end(), plugin);
    if (entry == plugins.end())
        return;
    for (++entry; entry != plugins.end(); ++entry)
        if (checkDependency(plugin, *entry, plugins))
            out.push_back(*entry);
}

/// Whether the second plug-in depends on the first, itself or through others.
bool HyPluginManager::checkDependency(HyPluginInfo* plugin1, HyPluginInfo* plugin2,
                                      const Plugins& plugins) {
    const auto isProvided = [&](const HyDependency& dependency) {
        return findDependency(dependency, plugins) == plugin1 ||
               provides(*plugin1, dependency.getName(), dependency.getVersion());
    };
    Plugins dependents;
    getDependencyPlugins(plugin2, plugins, dependents);
    return std::any_of(dependents.begin(), dependents.end(), [&](const HyPluginInfo* dependent) {
        const auto& dependencies = dependent->getDependencies();
        return std::any_of(dependencies.begin(), dependencies.end(), isProvided);
    });
}

} // namespace Hy::HyPluginSystem
