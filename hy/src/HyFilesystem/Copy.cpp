#include <Hy/HyFilesystem.h>

#include "Descriptor.h"
#include "Identity.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>

// Copies of files and directories.

namespace Hy::HyFilesystem {
namespace {

constexpr std::size_t kBlockSize = 32768; ///< bytes
constexpr mode_t kPermissions = 07777;

bool writeWhole(int target, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t written = write(target, data, size);
        if (written < 0 && errno != EINTR)
            return false;
        if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        }
    }
    return true;
}

bool copyContents(int source, int target) {
    std::array<char, kBlockSize> block;
    for (;;) {
        const ssize_t got = read(source, block.data(), block.size());
        if (got == 0)
            return true;
        if (got < 0 ? errno != EINTR
                    : !writeWhole(target, block.data(), static_cast<std::size_t>(got)))
            return false;
    }
}

/// The path with all links followed; empty if it does not exist.
std::string realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : std::string();
}

/// The same for a directory that need not exist yet: that of the nearest one above it that does,
/// with a separator at the end.
std::string realPathOfNearest(Directory directory) {
    while (!directory.exists() && directory.parent() != directory)
        directory = directory.parent();
    return realPath(directory.toNativePath()) + Directory::SEPARATOR_NATIVE;
}

bool copyTree(const Directory& source, const Directory& target, bool overwrite, Trail& trail) {
    const TrailEntry here(trail, source.toNativePath());
    if (!here.entered())
        return false;
    const std::string from = realPath(source.toNativePath()) + Directory::SEPARATOR_NATIVE;
    if (realPathOfNearest(target).starts_with(from))
        return false;
    if (!target.exists() && !create(target))
        return false;
    for (const Directory& inner : source.directories())
        if (!copyTree(inner, target.directory(inner.getName()), overwrite, trail))
            return false;
    for (const File& file : source.files())
        if (!copy(file, target, overwrite))
            return false;
    return true;
}

} // namespace

bool copy(const File& file, const Directory& directory, bool overwrite) {
    if (!file.exists() || !directory.exists())
        return false;
    // Non-blocking: a pipe would else wait for its other end.
    const Descriptor source(file.toNativePath(), O_RDONLY | O_NONBLOCK);
    struct stat status;
    if (!source.isOpen() || fstat(source.number(), &status) != 0 || !S_ISREG(status.st_mode))
        return false;
    const std::string path = directory.file(file.getName()).toNativePath();
    struct stat present;
    if (stat(path.c_str(), &present) == 0 && identityOf(present) == identityOf(status))
        return true;
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | (overwrite ? 0 : O_EXCL);
    const Descriptor target(path, flags, status.st_mode & kPermissions);
    if (!target.isOpen())
        return false;
    const bool isWhole = copyContents(source.number(), target.number());
    if (!isWhole)
        unlink(path.c_str());
    return isWhole;
}

bool copy(const Directory& source, const Directory& target, bool overwrite) {
    const std::string from = realPath(source.toNativePath());
    if (!from.empty() && from == realPath(target.toNativePath()))
        return true;
    Trail trail;
    return copyTree(source, target, overwrite, trail);
}

bool rename(const File& file, const std::string& name) {
    const File target = Directory(file).file(name);
    return ::rename(file.toNativePath().c_str(), target.toNativePath().c_str()) == 0;
}

bool rename(const Directory& directory, const std::string& name) {
    const Directory target = directory.parent().directory(name);
    return ::rename(directory.toNativePath().c_str(), target.toNativePath().c_str()) == 0;
}

} // namespace Hy::HyFilesystem
