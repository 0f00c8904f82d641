#include <Hy/LoadSharedLibrary.h>

#include "PluginElf.h"
#include "PluginLoader.h"

#include <Hy/HyFilesystem.h>
#include <Hy/HyMessage.h>

#include <dlfcn.h>
#include <fstream>

namespace Hy::HyPluginSystem {

LoadSharedLibrary::LoadSharedLibrary(const std::string& path) {
    const std::string file = HyFilesystem::File(path).toUniversalPath();
    std::string error;
    if (!isRegularFile(file) || !std::ifstream(file))
        error = "File could not be found";
    else if (isCutElf(file))
        error = "file too short";
    else if (!(mDLLModule = dlopen(file.c_str(), RTLD_NOW)))
        error = dlerror();
    if (!mDLLModule)
        HyWarning(0, "HyPluginManager : %s: (%s)\n", error.c_str(), path.c_str());
}

LoadSharedLibrary::~LoadSharedLibrary() {
    if (mDLLModule)
        dlclose(mDLLModule);
}

} // namespace Hy::HyPluginSystem
