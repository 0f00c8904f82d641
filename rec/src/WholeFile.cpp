#include "WholeFile.h"

#include <Hy/HyMessage.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Hy {

namespace {

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace

bool writeWholeFile(const char* who, const char* path, std::string_view bytes) {
    if (!path || !*path) {
        HyWarning(12, "%s: the path must not be null or empty.\n", who);
        return false;
    }
    struct stat old {};
    if (::stat(path, &old) == 0 && !S_ISREG(old.st_mode)) {
        HyWarning(12, "%s: \"%s\" must be a file.\n", who, path);
        return false;
    }
    const std::string part = std::string(path) + ".part" + std::to_string(::getpid());
    const int file =
        ::open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
    bool isWritten = file >= 0 && writeAll(file, bytes);
    int error = errno;
    if (file >= 0 && ::close(file) != 0 && isWritten) {
        isWritten = false;
        error = errno;
    }
    if (isWritten && std::rename(part.c_str(), path) != 0) {
        isWritten = false;
        error = errno;
    }
    if (!isWritten) {
        if (file >= 0)
            ::unlink(part.c_str());
        HyWarning(12, "%s: \"%s\" cannot be written: %s.\n", who, path, std::strerror(error));
    }
    return isWritten;
}

} // namespace Hy
