// A host that knows nothing of its plug-ins: it finds, checks and loads them, steps with one, and
// unloads them once nobody objects.
//   host_with_plugins <folder of good ones> <folder of bad ones>
#include "plugins/StepCounter.h"

#include <Hy/Hy.h>
#include <cstdio>

using namespace Hy::HyPluginSystem;

namespace {

/// Says why a plug-in was refused, and keeps one loaded while it is in use.
class Watcher : public HyPluginManagerListener {
public:
    void onPluginError(const std::string& path, const HyPluginInfo*,
                       const std::string& message) override {
        const std::string name = Hy::HyFilesystem::File(path).getBaseName();
        const bool endsLine = message.ends_with('\n');
        std::printf("  %s: %s%s", name.c_str(), message.c_str(), endsLine ? "" : "\n");
        mRefused.addUnique(name);
    }
    bool onAboutToUninitialize(const HyPluginInfo& info) override {
        const bool agreed = info.getName() != mInUse;
        std::printf("  %s %s go\n", info.getName().c_str(), agreed ? "may" : "must not");
        return agreed;
    }
    void setInUse(const std::string& name) { mInUse = name; }
    int getRefusedCount() const { return static_cast<int>(mRefused.size()); }

private:
    Hy::HyArray<std::string> mRefused;
    std::string mInUse;
};

const StepCounter* findCounter(const HyPluginManager& manager) {
    for (HyPluginObject* object : manager.getAllObjects())
        if (const auto* counter = dynamic_cast<const StepCounter*>(object))
            return counter;
    return nullptr;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 3)
        return 2;
    Hy::setHyInfoLevel(0);
    HyPluginManager& manager = HyPluginManager::instance();
    Watcher watcher;
    std::puts("loading the good ones");
    manager.loadFromDir(argv[1]);
    std::puts("refusing the bad ones");
    manager.loadFromDir(argv[2]);
    std::puts("found");
    for (const HyPluginInfo* plugin : manager.getPlugins())
        std::printf("  %s %s\n", plugin->getName().c_str(),
                    plugin->getVersion().toString().c_str());
    const int loaded = static_cast<int>(manager.getPlugins().size());

    Hy::HyFrame* frame = Hy::HyFrame::instance(); // the plug-in joins by itself
    frame->setTimeStep(0.01);
    for (int i = 0; i < 50; ++i)
        frame->step();
    const StepCounter* counter = findCounter(manager);
    const bool counted = counter && counter->getSteps() == 50;
    std::printf("the plug-in saw %d steps, %.2f s\n", counter ? counter->getSteps() : 0,
                counter ? counter->getTime() : 0);

    std::puts("unloading while the top is in use");
    watcher.setInUse("top");
    manager.unload(manager.getPluginForName("base")->getPath()); // which the others need
    const bool vetoed = manager.isLoaded("base");
    watcher.setInUse("");
    std::puts("unloading");
    manager.unloadAll();
    Hy::HyFrame::release();
    std::printf("%d loaded, %d refused, %zu left\n", loaded, watcher.getRefusedCount(),
                manager.getPlugins().size());
    const bool passed = loaded == 4 && watcher.getRefusedCount() == 15 && vetoed && counted &&
                        manager.getPlugins().empty();
    return passed ? 0 : 1;
}
