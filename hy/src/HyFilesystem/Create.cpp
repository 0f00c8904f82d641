#include <Hy/HyFilesystem.h>

#include "Descriptor.h"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <limits>
#include <sys/stat.h>

// New files and directories.

namespace Hy::HyFilesystem {
namespace {

constexpr mode_t kModeForAll = 0777, kModeForUser = 0600;
constexpr const char* kTempFolder = "/tmp";

bool isDirectory(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

bool create(const Directory& directory) {
    const std::string path = directory.toNativePath();
    if (path.empty() || path.size() >= PATH_MAX) // which the system would refuse
        return false;
    const Directory parent = directory.parent();
    if (!parent.exists() && (parent == directory || !create(parent)))
        return false;
    return mkdir(path.c_str(), kModeForAll) == 0 || isDirectory(path);
}

bool create(const File& file) {
    const Directory directory(file);
    if (!directory.exists() && !create(directory))
        return false;
    // O_EXCL: between a look and the opening another process could make the file, or a link.
    return Descriptor(file.toNativePath(), O_RDONLY | O_CREAT | O_EXCL, kModeForAll).isOpen();
}

File createTempFile() {
    static std::atomic<std::uint32_t> count{0}; // names tried in this process
    const std::string prefix =
        std::string(kTempFolder) + "/Halcyr_" + std::to_string(getpid()) + "_";
    constexpr std::uint32_t kLast = std::numeric_limits<std::uint32_t>::max();
    while (count < kLast) {
        const File file(prefix + std::to_string(count++));
        const Descriptor made(file.toNativePath(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW,
                              kModeForUser);
        if (made.isOpen())
            return file;
        if (errno != EEXIST)
            break;
    }
    return File("cannot_create_temp_file");
}

File createTempFileName() {
    File file = createTempFile();
    remove(file);
    return file;
}

} // namespace Hy::HyFilesystem
