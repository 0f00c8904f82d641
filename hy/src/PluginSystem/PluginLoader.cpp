#include "PluginLoader.h"

#include "PluginElf.h"
#include "PluginLibraryData.h"

#include <Hy/HyPluginFuncInterface.h>

#include <dlfcn.h>
#include <sys/stat.h>

namespace Hy::HyPluginSystem {
namespace {

/// Text of the last failure of the dynamic linker.
std::string linkerError() {
    const char* text = dlerror();
    return text ? text : "";
}

/// Stores a function of the library itself, null if it has none of the name: a symbol may also come
/// from a library that it is linked with.
template <typename Function>
void lookUp(const PluginLibraryData& data, const char* symbol, Function& function) {
    void* address = dlsym(data.mHandle, symbol);
    Dl_info info;
    void *own = nullptr, *holder = nullptr; // records of libraries
    const bool isOwn = address && dlinfo(data.mHandle, RTLD_DI_LINKMAP, &own) == 0 &&
                       dladdr1(address, &info, &holder, RTLD_DL_LINKMAP) != 0 && own == holder;
    function = isOwn ? reinterpret_cast<Function>(address) : nullptr;
}

HyPluginFuncInterface* createInterface(const PluginLibraryData& data) {
    auto* functions = new HyPluginFuncInterface;
    lookUp(data, "GetHyPluginSystemVersion", functions->mPtrVersion);
    lookUp(data, "GetPluginInfo", functions->mPtrGetPluginInfo);
    lookUp(data, "InitializePlugin", functions->mPtrInitialize);
    lookUp(data, "UninitializePlugin", functions->mPtrUninitialize);
    if (!functions->mPtrUninitialize)
        lookUp(data, "UninitialisePlugin", functions->mPtrUninitialize);
    lookUp(data, "GetPluginBuildInfo", functions->mPtrBuildInfo);
    return functions;
}

} // namespace

bool isRegularFile(const std::string& path) {
    struct stat status;
    return path.starts_with('/') && path.find('\0') == std::string::npos &&
           stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool PluginLoader::load(const std::string& path, PluginLibraryDataCollection& libraries) {
    return loadLibrary(libraries.findOrCreateData(path, nullptr), libraries);
}

bool PluginLoader::unload(const std::string& path, PluginLibraryDataCollection& libraries) {
    mError.clear();
    if (PluginLibraryData* data = libraries.findData(path))
        return unloadLibrary(*data, libraries);
    mError = "The library was not loaded.";
    return false;
}

bool PluginLoader::loadLibrary(PluginLibraryData& data, PluginLibraryDataCollection& libraries) {
    if (data.mHandle || data.isStatic()) {
        ++data.mLoadCount;
        return true;
    }
    if (!loadLibrary_sys(data, libraries))
        return false;
    data.mInterface = createInterface(data);
    return true;
}

bool PluginLoader::unloadLibrary(PluginLibraryData& data, PluginLibraryDataCollection& libraries) {
    --data.mLoadCount;
    if (data.mLoadCount > 0)
        return false;
    if (!data.isStatic() && !unloadLibrary_sys(data))
        return false;
    libraries.destroyData(data);
    return true;
}

bool PluginLoader::loadLibrary_sys(PluginLibraryData& data,
                                   PluginLibraryDataCollection& libraries) {
    ++data.mLoadCount;
    mError.clear();
    const std::string& path = data.mFilePath;
    if (!isRegularFile(path))
        mError = path + ": not a regular file of an absolute path";
    else if (isCutElf(path))
        mError = path + ": file too short";
    else if (!(data.mHandle = dlopen(path.c_str(), RTLD_LAZY)))
        mError = linkerError();
    if (data.mHandle)
        return true;
    libraries.destroyData(data);
    return false;
}

bool PluginLoader::unloadLibrary_sys(PluginLibraryData& data) {
    if (dlclose(data.mHandle) == 0)
        return true;
    mError = linkerError();
    return false;
}

} // namespace Hy::HyPluginSystem
