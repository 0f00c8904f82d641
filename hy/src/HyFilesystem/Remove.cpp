#include <Hy/HyFilesystem.h>

#include "Descriptor.h"

#include <algorithm>
#include <cstdio>
#include <dirent.h>
#include <sys/stat.h>

// Removal of whole trees. Each directory is opened without following links and its entries are named
// relative to it, so that nobody who moves links about meanwhile can lead the removal astray.

namespace Hy::HyFilesystem {
namespace {

struct Entries {
    std::vector<std::string> directories, others; ///< in the order of their bytes
};

Entries entriesOf(DIR* directory) {
    Entries entries;
    while (const dirent* entry = readdir(directory)) {
        std::string name = entry->d_name;
        struct stat status;
        if (name == "." || name == ".." ||
            fstatat(dirfd(directory), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0)
            continue;
        (S_ISDIR(status.st_mode) ? entries.directories : entries.others).push_back(std::move(name));
    }
    std::sort(entries.directories.begin(), entries.directories.end());
    std::sort(entries.others.begin(), entries.others.end());
    return entries;
}

bool removeTree(int parent, const std::string& name) {
    const int number =
        openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    DIR* directory = number < 0 ? nullptr : fdopendir(number);
    if (!directory) {
        if (number >= 0)
            close(number);
        return false;
    }
    const Entries entries = entriesOf(directory);
    const auto removeInner = [&](const std::string& inner) { return removeTree(number, inner); };
    const auto unlinkOther = [&](const std::string& other) {
        return unlinkat(number, other.c_str(), 0) == 0;
    };
    const bool isEmpty =
        std::all_of(entries.directories.begin(), entries.directories.end(), removeInner) &&
        std::all_of(entries.others.begin(), entries.others.end(), unlinkOther);
    closedir(directory);
    return isEmpty && unlinkat(parent, name.c_str(), AT_REMOVEDIR) == 0;
}

} // namespace

bool remove(const File& file) {
    return std::remove(file.toNativePath().c_str()) == 0;
}

bool remove(const Directory& directory) {
    std::string path = directory.toNativePath();
    if (path.size() < 2)
        return false;
    path.pop_back(); // with the separator, a link would be followed
    struct stat status;
    if (lstat(path.c_str(), &status) != 0)
        return false;
    if (S_ISLNK(status.st_mode))
        return unlink(path.c_str()) == 0;
    return removeTree(AT_FDCWD, path);
}

} // namespace Hy::HyFilesystem
