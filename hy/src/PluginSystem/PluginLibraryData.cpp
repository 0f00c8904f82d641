#include "PluginLibraryData.h"

#include <Hy/HyPluginFuncInterface.h>

#include <algorithm>

namespace Hy::HyPluginSystem {

PluginLibraryData::~PluginLibraryData() {
    if (!mIsStatic)
        delete mInterface;
}

PluginLibraryData* PluginLibraryDataCollection::findData(const std::string& path) const {
    for (const auto& library : mLibraries)
        if (library->mFilePath == path)
            return library.get();
    return nullptr;
}

PluginLibraryData&
PluginLibraryDataCollection::findOrCreateData(const std::string& path,
                                              HyPluginFuncInterface* staticInterface) {
    if (PluginLibraryData* data = findData(path))
        return *data;
    mLibraries.push_back(std::make_unique<PluginLibraryData>(path, staticInterface));
    return *mLibraries.back();
}

HyPluginFuncInterface* PluginLibraryDataCollection::getInterface(const std::string& path) const {
    const PluginLibraryData* data = findData(path);
    return data ? data->mInterface : nullptr;
}

void PluginLibraryDataCollection::destroyData(PluginLibraryData& data) {
    const auto place = std::find_if(mLibraries.begin(), mLibraries.end(),
                                    [&](const auto& library) { return library.get() == &data; });
    if (place != mLibraries.end())
        mLibraries.erase(place);
}

} // namespace Hy::HyPluginSystem
