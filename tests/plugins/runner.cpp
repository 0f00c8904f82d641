// Does to the plug-in manager what its arguments say, and prints what comes of it. An argument is
// "command" or "command=text"; paths are relative to the current directory.
#include <Hy/HyFrame.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPluginFuncInterface.h>
#include <Hy/HyPluginManager.h>
#include <Hy/LoadSharedLibrary.h>

#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>

using namespace Hy::HyPluginSystem;

namespace {

HyPluginManager& manager() {
    return HyPluginManager::instance();
}

/// The text without the folder of the plug-ins.
std::string shortened(std::string text) {
    const std::string folder = std::filesystem::current_path().string() + "/";
    for (std::size_t place; (place = text.find(folder)) != std::string::npos;)
        text.erase(place, folder.size());
    while (text.ends_with('\n'))
        text.pop_back();
    return text;
}

void print(const std::string& text) {
    std::printf("%s\n", shortened(text).c_str());
}

void print(const HyPluginManager::Plugins& plugins) {
    std::string names;
    for (const HyPluginInfo* plugin : plugins)
        names += " " + plugin->getName();
    print("plug-ins:" + names);
}

struct Listener : HyPluginManagerListener {
    void onPluginError(const std::string& path, const HyPluginInfo*,
                       const std::string& message) override {
        print("error " + path + ": " + message);
    }
    bool onAboutToInitialize(const HyPluginInfo& info) override {
        return refusedIn.empty() || info.getName() != refusedIn;
    }
    bool onAboutToUninitialize(const HyPluginInfo& info) override {
        print("asked for " + info.getName());
        return info.getName() != refusedOut;
    }
    void onRemoveObject(HyPluginObject*) override { print("object removed"); }
    std::string refusedIn, refusedOut;
};
std::unique_ptr<Listener> listener, second;

// A static plug-in.
std::string text;
HyPluginFuncInterface staticPlugin = {
    .mPtrVersion = [] { return kHyPluginSystemOldestVersion; },
    .mPtrGetPluginInfo =
        [](HyPluginInfo& info) {
            info.setName("inside");
            return true;
        },
    .mPtrInitialize = [](HyPluginManager&, int, char**, std::string*) { return true; },
    .mPtrUninitialize = [](HyPluginManager&, std::string*) { return true; },
};

/// Loads beginnings of a library, of every length by and by.
void loadCuts(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string whole{std::istreambuf_iterator<char>(file), {}};
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    int opened = 0, failed = 0;
    for (int i = 0; i < 300; ++i) {
        const std::size_t length = random() % whole.size();
        const std::string cut = "cut_" + std::to_string(getpid()) + ".so";
        std::ofstream(cut, std::ios::binary) << whole.substr(0, length);
        std::fprintf(stderr, "seed %u, cut %d at %zu\r", seed, i, length);
        ++(manager().loadInfo(cut).getName().empty() ? failed : opened);
        std::filesystem::remove(cut);
    }
    std::fprintf(stderr, "%*s\r", 60, "");
    print(failed > 100 ? "cut ones failed" : "cut ones opened");
}

const std::map<std::string, std::function<void(const std::string&)>> commands = {
    {"listen", [](const std::string&) { listener = std::make_unique<Listener>(); }},
    {"listen-twice", [](const std::string&) { second = std::make_unique<Listener>(); }},
    {"refuse-in", [](const std::string& name) { listener->refusedIn = name; }},
    {"refuse-out", [](const std::string& name) { listener->refusedOut = name; }},
    {"load", [](const std::string& path) { manager().load(path); }},
    {"load-with",
     [](const std::string& argument) {
         char* argv[] = {const_cast<char*>(argument.c_str())};
         manager().load("other/leftover", {}, {}, 1, argv);
     }},
    {"dir", [](const std::string& path) { manager().loadFromDir(path); }},
    {"dir-only", [](const std::string& name) { manager().loadFromDir("good", name, ".so"); }},
    {"search", [](const std::string& dir) { manager().addPluginSearchDir(dir); }},
    {"unload", [](const std::string& path) { manager().unload(path); }},
    {"unload-all", [](const std::string&) { manager().unloadAll(); }},
    {"reset", [](const std::string&) { HyPluginManager::reset(); }},
    {"delete", [](const std::string&) { delete HyPluginManager::currentInstance(); }},
    {"list", [](const std::string&) { print(manager().getPlugins()); }},
    {"queue", [](const std::string&) { print(manager().getQueue()); }},
    {"needs",
     [](const std::string& name) {
         print(manager().getDependencyPlugins(manager().getPluginForName(name)));
     }},
    {"provides",
     [](const std::string& name) {
         print(manager().getProvidedPlugins(manager().getPluginForName(name)));
     }},
    {"cycle",
     [](const std::string&) {
         manager().getPluginForName("base")->addDependency({"top", {1, 0, 0}});
         print(manager().getQueue());
     }},
    {"loaded", [](const std::string& name) { print(manager().isLoaded(name) ? "yes" : "no"); }},
    {"info",
     [](const std::string& path) {
         const HyPluginInfo info = manager().loadInfo(path);
         print("info " + info.getName() + " " + info.getVersion().toString() + " " +
               info.getPath());
     }},
    {"objects",
     [](const std::string&) {
         print("objects: " + std::to_string(manager().getAllObjects().size()));
     }},
    {"mapped",
     [](const std::string& path) {
         void* handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
         print(handle ? "in memory" : "gone");
         if (handle)
             dlclose(handle);
     }},
    {"library",
     [](const std::string& path) {
         print(LoadSharedLibrary(path).getModule() ? "open" : "not open");
     }},
    {"register",
     [](const std::string& name) { HyPluginManager::RegisterStaticPlugin(name, &staticPlugin); }},
    {"unregister",
     [](const std::string& name) { HyPluginManager::UnregisterStaticPlugin(name, &staticPlugin); }},
    {"load-static", [](const std::string&) { manager().loadStatic(); }},
    {"frame",
     [](const std::string&) {
         print("steppers: " + std::to_string(Hy::HyFrame::instance()->getStepperCount()));
     }},
    {"step", [](const std::string&) { Hy::HyFrame::instance()->step(); }},
    {"library-path",
     [](const std::string&) {
         const char* value = std::getenv("LD_LIBRARY_PATH");
         print(value ? std::string("'").append(value) + "'" : "unset");
     }},
    {"cuts", loadCuts},
};

} // namespace

int main(int argc, char** argv) {
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    Hy::setHyInfoLevel(-1);
    KitSetWarningShow([](int, const char* piece) { text += piece; });
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t equals = argument.find('=');
        const auto command = commands.find(argument.substr(0, equals));
        if (command == commands.end())
            return 2;
        command->second(equals == std::string::npos ? "" : argument.substr(equals + 1));
        if (!text.empty())
            print(std::exchange(text, {}));
    }
    listener.reset();
    second.reset();
    Hy::HyFrame::release();
    std::puts("done");
    return 0;
}
