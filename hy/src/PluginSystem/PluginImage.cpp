#include "PluginImage.h"

#include "PluginLibraryData.h"

#include <dlfcn.h>

namespace Hy::HyPluginSystem {

PluginImage::PluginImage(const PluginLibraryData& data) : mPath(data.mFilePath) {
    dlinfo(data.mHandle, RTLD_DI_LINKMAP, &mLibrary);
}

bool PluginImage::holds(const void* address) const {
    Dl_info info;
    void* holder = nullptr;
    return dladdr1(address, &info, &holder, RTLD_DL_LINKMAP) != 0 && holder == mLibrary;
}

void PluginImage::keep() const {
    dlopen(mPath.c_str(), RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

} // namespace Hy::HyPluginSystem
