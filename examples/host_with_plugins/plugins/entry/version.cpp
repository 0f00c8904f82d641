#include "Config.h"

int GetHyPluginSystemVersion() {
    return kSystemVersion;
}
