#include "Config.h"

bool InitializePlugin(Hy::HyPluginSystem::HyPluginManager&, int, char**, std::string*) {
    return false;
}
