#include "Config.h"

#include <cstdio>

bool UninitializePlugin(Hy::HyPluginSystem::HyPluginManager&, std::string*) {
    std::printf("  %.*s ends\n", static_cast<int>(kName.size()), kName.data());
    return true;
}
