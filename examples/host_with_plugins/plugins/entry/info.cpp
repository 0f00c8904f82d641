#include "Config.h"

bool GetPluginInfo(Hy::HyPluginSystem::HyPluginInfo& info) {
    info.setName(std::string(kName));
    info.setVersion({2, 1, 0});
    info.setCompatibilityVersion({1, 0, 0});
    if (!kNeeds.empty())
        info.addDependency({std::string(kNeeds), {kNeedsMajor, 0, 0}});
    return true;
}
