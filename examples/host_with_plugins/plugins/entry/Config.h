#pragma once
#include <Hy/HyPlugin.h>

// What distinguishes the plug-ins of this folder comes from the build: name, dependency, versions.

constexpr std::string_view kName = PLUGIN_NAME;
constexpr std::string_view kNeeds = PLUGIN_NEEDS;     // name of another plug-in, empty for none
constexpr int kNeedsMajor = PLUGIN_NEEDS_MAJOR;       // version of it
constexpr int kSystemVersion = PLUGIN_SYSTEM_VERSION; // of the plug-in system
constexpr const char* kBuildInfo = PLUGIN_BUILD_INFO; // empty for the true one
