#pragma once
#include <string>
#include <sys/stat.h>
#include <vector>

namespace Hy::HyFilesystem {

/// Which file a path leads to, whatever the path: what links are compared by.
struct Identity {
    dev_t device = 0;
    ino_t node = 0;
    [[nodiscard]] bool operator==(const Identity&) const = default;
};

/// Directories entered on the way to the present one, the outermost first.
using Trail = std::vector<Identity>;

[[nodiscard]] inline Identity identityOf(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

/// Enters a directory for as long as it lives.
class TrailEntry {
public:
    TrailEntry(Trail& trail, const std::string& path) : mTrail(trail) {
        struct stat status;
        if (stat(path.c_str(), &status) != 0 || !S_ISDIR(status.st_mode))
            return;
        const Identity identity = identityOf(status);
        for (const Identity& outer : trail)
            if (outer == identity)
                return;
        mTrail.push_back(identity);
        mEntered = true;
    }
    TrailEntry(const TrailEntry&) = delete;
    TrailEntry& operator=(const TrailEntry&) = delete;
    ~TrailEntry() {
        if (mEntered)
            mTrail.pop_back();
    }

    /// False where the path is no directory, or one that is on the trail already.
    [[nodiscard]] bool entered() const { return mEntered; }

private:
    Trail& mTrail;
    bool mEntered = false;
};

} // namespace Hy::HyFilesystem
