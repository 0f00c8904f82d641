#include "Config.h"

const char* GetPluginBuildInfo() {
    return *kBuildInfo ? kBuildInfo : Hy::HyPluginSystem::HyPluginBuildInfo();
}
