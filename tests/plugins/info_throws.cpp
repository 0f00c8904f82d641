#include "Config.h"

#include <stdexcept>

bool GetPluginInfo(Hy::HyPluginSystem::HyPluginInfo& info) {
    info.setName("half told");
    throw std::runtime_error("no more to tell");
}
