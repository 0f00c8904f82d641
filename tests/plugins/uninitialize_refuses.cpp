#include "Config.h"

bool UninitializePlugin(Hy::HyPluginSystem::HyPluginManager&, std::string*) {
    return false;
}
