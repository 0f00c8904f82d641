#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyCallbackList.h>
#include <Hy/HyFilesystem.h>
#include <Hy/HyPluginInfo.h>

#include <memory>
#include <string>

namespace Hy::HyPluginSystem {
class HyPluginManagerListener;
class PluginImage;
class PluginLibraryDataCollection;
class PluginLoader;
struct HyPluginFuncInterface;

/// Base of what plug-ins put into the manager's pool for others to find.
class HY_API HyPluginObject {
public:
    virtual ~HyPluginObject() = default;
};

/// Finds plug-ins, checks them, and loads and unloads them in the order of their dependencies.
///
/// A plug-in is a shared library with the functions of HyPlugin.h, in a file ".hyp" or ".so", or part
/// of the program and registered by RegisterStaticPlugin(). One that fails stops no other: the
/// listeners are told why, or, without listeners, a warning is given. To be used from one thread.
///
/// Code is loaded by the calls below and by nothing else, from regular files alone. Where a name is
/// no path of a file, the search directories are looked through: those of the variable
/// HALCYR_PLUGIN_PATH (separated by ':'), the folder "plugins" beside the library's own, the current
/// directory. A variable HALCYR_PLUGIN_DISABLED that is not empty when first looked at keeps all
/// plug-ins out.
class HY_API HyPluginManager {
public:
    using Paths = HyArray<std::string>;
    using Plugins = HyArray<HyPluginInfo*>;

    // Life.

    /// The manager, made on first use. It lives until somebody deletes it or the process ends.
    static HyPluginManager& instance();
    /// The manager or null; makes none.
    [[nodiscard]] static HyPluginManager* currentInstance();
    /// Unloads everything and forgets the listeners, if there is a manager.
    static void reset();
    HyPluginManager(const HyPluginManager&) = delete;
    HyPluginManager& operator=(const HyPluginManager&) = delete;
    /// Unloads everything.
    ~HyPluginManager();

    // Search directories, in the order of searching.

    [[nodiscard]] const Paths& getPluginSearchDirs() const { return mPluginSearchDirs; }
    /// False, and no change, if exactly this text is listed.
    bool addPluginSearchDir(const std::string& directory);
    /// False if it is not listed.
    bool removePluginSearchDir(const std::string& directory);
    /// The directories that a new manager has.
    void resetPluginSearchDirs();
    [[nodiscard]] static HyFilesystem::Directory getDefaultPluginsDirectory();

    // Loading. Names may lack the extension. argc and argv are passed to the plug-ins.

    /// Finds, checks and initializes plug-ins; those that are loaded already are passed over.
    /// @param filterFileName,filterExtension if not empty, only files of this base name, and of this
    /// extension with its dot
    void load(const Paths& paths, const std::string& filterFileName = {},
              const std::string& filterExtension = {}, int argc = 0, char** argv = nullptr);
    void load(const std::string& path, const std::string& filterFileName = {},
              const std::string& filterExtension = {}, int argc = 0, char** argv = nullptr);
    /// load() of all plug-ins in a directory, which may lie in a search directory.
    void loadFromDir(const std::string& directory, const std::string& filterFileName = {},
                     const std::string& filterExtension = {}, int argc = 0, char** argv = nullptr);
    void loadFromDirs(const Paths& directories, const std::string& filterFileName = {},
                      const std::string& filterExtension = {}, int argc = 0, char** argv = nullptr);
    void loadFromSearchDirs(const std::string& filterFileName = {},
                            const std::string& filterExtension = {}, int argc = 0,
                            char** argv = nullptr);
    /// load() of all that are registered as static.
    void loadStatic(int argc = 0, char** argv = nullptr);
    /// What a plug-in tells of itself; it is not initialized, and opened only for the time of the
    /// call. Empty if it cannot be asked.
    [[nodiscard]] HyPluginInfo loadInfo(const std::string& path);

    // Unloading: the plug-ins that depend on one go first. Stops where a listener or a plug-in
    // refuses.

    void unload(const std::string& path);
    void unload(const Paths& paths);
    void unloadAll();

    // Queries. The infos belong to the manager and go with their plug-ins.

    /// Those that are initialized, by name.
    [[nodiscard]] const Plugins& getPlugins() const { return mPlugins; }
    /// The same in an order in which they could be initialized.
    [[nodiscard]] Plugins getQueue() const;
    /// What a plug-in needs, in that order, with itself last.
    [[nodiscard]] Plugins getDependencyPlugins(HyPluginInfo* plugin) const;
    /// The plug-in, then those that need it, in that order.
    [[nodiscard]] Plugins getProvidedPlugins(HyPluginInfo* plugin) const;
    /// Null if there is none.
    [[nodiscard]] HyPluginInfo* getPluginForName(const std::string& name) const;
    [[nodiscard]] HyPluginInfo* getPluginForPath(const std::string& path) const;
    /// Whether a library of this base name is open. A name without extension also stands for that
    /// with and without a final 'g', which marks debug builds.
    [[nodiscard]] bool isLoaded(const std::string& name) const;
    /// Base name of the plug-in that is being initialized, else empty.
    [[nodiscard]] const std::string& getCurrentHYP() const {
        return mDllNameBeingInitializedCurrently;
    }

    // Objects and listeners; not owned.

    /// Null, and one that is in the pool: a warning, and nothing happens.
    void addObject(HyPluginObject* object);
    /// Null: nothing. One that is not in the pool: a warning.
    void removeObject(HyPluginObject* object);
    [[nodiscard]] const HyArray<HyPluginObject*>& getAllObjects() const { return mAllObjects; }
    /// Nothing for null and for one that listens already.
    void addListener(HyPluginManagerListener* listener);
    void removeListener(HyPluginManagerListener* listener);

    // Plug-ins that are linked into the program; may be called before the manager is made.

    /// Lets loadStatic() find a plug-in; its path is ":/" and the name.
    /// @param name of at least two characters
    /// @param plugin not owned, not null; must stay until it is unregistered
    static void RegisterStaticPlugin(const std::string& name, HyPluginFuncInterface* plugin);
    /// Unloads the plug-in and forgets it.
    static void UnregisterStaticPlugin(const std::string& name, HyPluginFuncInterface* plugin);

private:
    HyPluginManager();
    void _initPluginSearchDirs();

    // Search.
    [[nodiscard]] std::string findFileInSearchDirs(const std::string& relPath,
                                                   const std::string& filterFileName,
                                                   const std::string& filterExtension) const;
    [[nodiscard]] std::string findFileInSearchDirsHelper(const std::string& relPath,
                                                         const std::string& filterFileName,
                                                         const std::string& filterExtension) const;
    [[nodiscard]] std::string findDirInSearchDirs(const std::string& name) const;
    void findSharedLibraries(const std::string& directory, const std::string& filterFileName,
                             const std::string& filterExtension, Paths& out) const;

    // Loading.
    void loadHelper(const Paths& paths, const std::string& filterFileName,
                    const std::string& filterExtension, int argc, char** argv);
    void readPaths(const Paths& paths, const std::string& filterFileName,
                   const std::string& filterExtension);
    [[nodiscard]] bool openLibrary(const std::string& path);
    [[nodiscard]] HyPluginInfo* readPath(const std::string& path);
    void initializePlugins(int argc, char** argv);
    [[nodiscard]] bool initializePlugin(HyPluginInfo& plugin, int argc, char** argv);
    void reject(HyPluginInfo& plugin, const char* message);

    // Dependencies.
    void resolveDependencies();
    [[nodiscard]] bool resolveDependencies(HyPluginInfo* plugin, const Plugins& all,
                                           Plugins& resolved, Plugins& stack);
    [[nodiscard]] static bool provides(const HyPluginInfo& plugin, const std::string& name,
                                       const HyVersion& version);
    [[nodiscard]] static HyPluginInfo* findByName(const std::string& name, const Plugins& plugins);
    [[nodiscard]] static HyPluginInfo* findDependency(const HyDependency& dependency,
                                                      const Plugins& plugins);
    static void getDependencyPlugins(HyPluginInfo* plugin, const Plugins& plugins, Plugins& out);
    static void appendInOrder(HyPluginInfo* plugin, const Plugins& plugins, Plugins& stack,
                              Plugins& out);
    static void getProvidedPlugins(HyPluginInfo* plugin, const Plugins& plugins, Plugins& out);
    [[nodiscard]] static bool checkDependency(HyPluginInfo* plugin1, HyPluginInfo* plugin2,
                                              const Plugins& plugins);

    // Unloading.
    void unloadHelper(HyPluginInfo* plugin);
    [[nodiscard]] bool unloadOne(HyPluginInfo* plugin);
    void closeLibrary(const std::string& path);
    [[nodiscard]] bool dropLeftovers(const PluginImage& image);
    void flush();

    // Listeners.
    void notifyPluginError(const std::string& path, const HyPluginInfo* info,
                           const std::string& message);
    [[nodiscard]] bool notifyAboutToInitialise(const HyPluginInfo& info);
    [[nodiscard]] bool notifyAboutToUninitialise(const HyPluginInfo& info);
    void notifyPluginsChanged();

    HyArray<HyPluginObject*> mAllObjects;
    Plugins mPlugins;
    Plugins mPluginsToInitialize; ///< read; after their resolution, dependencies first
    Plugins mPluginsToFlush;      ///< rejected, in the order of rejection
    Plugins mPluginsInUnload;     ///< whose unloading is under way
    HyCallbackList<HyPluginManagerListener> mListeners;
    Paths mPluginSearchDirs;
    std::unique_ptr<PluginLoader> mLoader;
    std::unique_ptr<PluginLibraryDataCollection> mLoadedLibraries;
    std::string mDllNameBeingInitializedCurrently;

    static HyPluginManager* sInstance;
};

/// Is told of plug-ins, and may keep one from being initialized or unloaded. All listeners are asked,
/// in the order of adding; one may remove itself or others while told.
class HY_API HyPluginManagerListener {
public:
    /// Begins to listen; makes the manager if there is none.
    HyPluginManagerListener();
    HyPluginManagerListener(const HyPluginManagerListener&) = delete;
    HyPluginManagerListener& operator=(const HyPluginManagerListener&) = delete;
    virtual ~HyPluginManagerListener();

    /// The information is null if the plug-in had not told of itself yet.
    virtual void onPluginError(const std::string& /*path*/, const HyPluginInfo* /*info*/,
                               const std::string& /*message*/) {}
    /// False keeps the plug-in out, silently.
    virtual bool onAboutToInitialize(const HyPluginInfo&) { return true; }
    /// False keeps the plug-in in.
    virtual bool onAboutToUninitialize(const HyPluginInfo&) { return true; }
    /// The object is in the pool.
    virtual void onObjectAdded(HyPluginObject*) {}
    /// The object is still in the pool.
    virtual void onRemoveObject(HyPluginObject*) {}
    /// getPlugins() may answer otherwise than before.
    virtual void onPluginsChanged() {}
};

} // namespace Hy::HyPluginSystem
