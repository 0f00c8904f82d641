#include "Config.h"

bool UninitialisePlugin(Hy::HyPluginSystem::HyPluginManager&, std::string*) {
    return true;
}
