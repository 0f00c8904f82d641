#include "Config.h"

#include <stdexcept>

bool InitializePlugin(Hy::HyPluginSystem::HyPluginManager&, int, char**, std::string*) {
    throw std::runtime_error("out of coffee");
}
