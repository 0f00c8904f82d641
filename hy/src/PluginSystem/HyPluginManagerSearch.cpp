#include <Hy/HyPluginManager.h>

#include "PluginLoader.h"
#include "StaticPath.h"

#include <Hy/HyMessage.h>

#include <algorithm>
#include <cstdlib>

// Where plug-ins are looked for.

namespace Hy::HyPluginSystem {
namespace {

using HyFilesystem::Directory;
using HyFilesystem::File;

constexpr const char* kPathVariable = "HALCYR_PLUGIN_PATH";
constexpr char kPathSeparator = ':';
constexpr const char* kPluginExtension = ".hyp";
constexpr const char* kLibraryExtension = ".so";

/// The file's path, empty where a filter that is not empty does not fit.
std::string applyFileFilter(const File& file, const std::string& filterFileName,
                            const std::string& filterExtension) {
    const bool fits = (filterFileName.empty() || filterFileName == file.getBaseName()) &&
                      (filterExtension.empty() || filterExtension == file.getExtension());
    return fits ? file.toUniversalPath() : std::string();
}

bool isRegular(const File& file) {
    return isRegularFile(file.toNativePath());
}

} // namespace

// secure_getenv: a program with more rights than its user takes no code from where the user says.
void HyPluginManager::_initPluginSearchDirs() {
    const char* variable = secure_getenv(kPathVariable);
    std::string paths = variable ? variable : "";
    paths.erase(std::remove(paths.begin(), paths.end(), '"'), paths.end());
    for (std::size_t begin = 0; begin < paths.size();) {
        const std::size_t end = std::min(paths.find(kPathSeparator, begin), paths.size());
        if (end > begin)
            addPluginSearchDir(paths.substr(begin, end - begin));
        begin = end + 1;
    }
    addPluginSearchDir(getDefaultPluginsDirectory().toNativePath());
    addPluginSearchDir(Directory(Directory::kCurrentDirectory).toUniversalPath());
}

bool HyPluginManager::addPluginSearchDir(const std::string& directory) {
    return mPluginSearchDirs.addUnique(directory);
}

bool HyPluginManager::removePluginSearchDir(const std::string& directory) {
    return mPluginSearchDirs.eraseOnce(directory);
}

void HyPluginManager::resetPluginSearchDirs() {
    mPluginSearchDirs.clear();
    _initPluginSearchDirs();
}

Directory HyPluginManager::getDefaultPluginsDirectory() {
    const File library =
        File::thatContains(reinterpret_cast<const void*>(&HyPluginManager::currentInstance));
    return Directory(library).parent().directory("plugins");
}

std::string HyPluginManager::findFileInSearchDirs(const std::string& relPath,
                                                  const std::string& filterFileName,
                                                  const std::string& filterExtension) const {
    const auto find = [&](const std::string& name) {
        return findFileInSearchDirsHelper(name, filterFileName, filterExtension);
    };
    std::string found = find(relPath);
    const File name(relPath);
    if (!found.empty() || !name.getExtension().empty())
        return found;
    const Directory lib = Directory(name).directory("lib");
    const std::string inLib =
        lib.relativeTo(Directory(Directory::kCurrentDirectory)) + name.getName();
    for (const std::string& stem : {relPath, inLib})
        for (const char* extension : {kPluginExtension, kLibraryExtension})
            if (found.empty())
                found = find(stem + extension);
    return found;
}

std::string HyPluginManager::findFileInSearchDirsHelper(const std::string& relPath,
                                                        const std::string& filterFileName,
                                                        const std::string& filterExtension) const {
    if (isStaticPath(relPath))
        return relPath;
    if (const File file(relPath); isRegular(file))
        return applyFileFilter(file, filterFileName, filterExtension);
    for (const std::string& directory : mPluginSearchDirs)
        if (const File file = Directory(directory).file(relPath); isRegular(file))
            return applyFileFilter(file, filterFileName, filterExtension);
    return {};
}

std::string HyPluginManager::findDirInSearchDirs(const std::string& name) const {
    if (Directory(name).exists())
        return name;
    for (const std::string& directory : mPluginSearchDirs)
        if (const Directory inner = Directory(directory).directory(name); inner.exists())
            return inner.toUniversalPath();
    return {};
}

void HyPluginManager::findSharedLibraries(const std::string& directory,
                                          const std::string& filterFileName,
                                          const std::string& filterExtension, Paths& out) const {
    for (const File& file : Directory(directory).files()) {
        const std::string extension = file.getExtension();
        const std::string path = applyFileFilter(file, filterFileName, filterExtension);
        if (path.empty() || (extension != kLibraryExtension && extension != kPluginExtension))
            continue;
        HyInfo(2, "HyPluginManager::findSharedLibraries(): Found candidate plugin: %s\n",
               path.c_str());
        out.push_back(path);
    }
}

} // namespace Hy::HyPluginSystem
