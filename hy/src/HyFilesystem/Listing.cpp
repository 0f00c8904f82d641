#include <Hy/HyFilesystem.h>

#include "Identity.h"

#include <Hy/HyStringUtils.h>

#include <algorithm>
#include <dirent.h>
#include <memory>

// What is in a directory.

namespace Hy::HyFilesystem {
namespace {

/// Names of the entries of a kind, links followed, in the order of their bytes: the order of the
/// file system differs from machine to machine.
std::vector<std::string> namesOf(const std::string& path, mode_t kind) {
    const auto close = [](DIR* directory) { closedir(directory); };
    const std::unique_ptr<DIR, decltype(close)> directory(opendir(path.c_str()), close);
    std::vector<std::string> names;
    while (const dirent* entry = directory ? readdir(directory.get()) : nullptr) {
        std::string name = entry->d_name;
        struct stat status;
        if (name != "." && name != ".." &&
            fstatat(dirfd(directory.get()), name.c_str(), &status, 0) == 0 &&
            (status.st_mode & S_IFMT) == kind)
            names.push_back(std::move(name));
    }
    std::sort(names.begin(), names.end());
    return names;
}

void globInto(const Directory& directory, const std::string& pattern, bool recursive, Trail& trail,
              std::vector<File>& out) {
    const TrailEntry here(trail, directory.toNativePath());
    if (!here.entered())
        return;
    if (recursive)
        for (const Directory& inner : directory.directories())
            globInto(inner, pattern, recursive, trail, out);
    for (const File& file : directory.files())
        if (libwdmatch_match_i(pattern.c_str(), file.getName().c_str()))
            out.push_back(file);
}

} // namespace

std::vector<File> Directory::files() const {
    std::vector<File> out;
    files(out);
    return out;
}

void Directory::files(std::vector<File>& out) const {
    for (const std::string& name : namesOf(toNativePath(), S_IFREG))
        out.push_back(file(name));
}

std::vector<Directory> Directory::directories() const {
    std::vector<Directory> out;
    directories(out);
    return out;
}

void Directory::directories(std::vector<Directory>& out) const {
    for (const std::string& name : namesOf(toNativePath(), S_IFDIR))
        out.push_back(directory(name));
}

bool libwdmatch_match_i(const char* pattern, const char* text) {
    return pattern && text && HyStringUtils::match(text, pattern, false);
}

std::vector<File> glob(const Directory& directory, const std::string& pattern, bool recursive) {
    std::vector<File> out;
    glob(directory, pattern, recursive, out);
    return out;
}

void glob(const Directory& directory, const std::string& pattern, bool recursive,
          std::vector<File>& out) {
    Trail trail;
    globInto(directory, pattern, recursive, trail, out);
}

} // namespace Hy::HyFilesystem
