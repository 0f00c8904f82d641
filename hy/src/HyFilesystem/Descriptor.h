#pragma once
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace Hy::HyFilesystem {

/// An open file, closed at the end. Never a terminal of ours, never left to a child process.
class Descriptor {
public:
    Descriptor(const std::string& path, int flags, mode_t mode = 0)
        : mNumber(open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode)) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (isOpen())
            close(mNumber);
    }

    [[nodiscard]] bool isOpen() const { return mNumber >= 0; }
    [[nodiscard]] int number() const { return mNumber; }

private:
    const int mNumber;
};

} // namespace Hy::HyFilesystem
