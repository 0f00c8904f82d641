#include "Config.h"

#include <cstdio>

bool InitializePlugin(Hy::HyPluginSystem::HyPluginManager& manager, int, char**, std::string*) {
    std::printf("  %s begins\n", manager.getCurrentHYP().c_str());
    return true;
}
