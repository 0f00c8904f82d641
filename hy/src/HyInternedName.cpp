#include "HyInternedName.h"

#include <mutex>
#include <unordered_set>

namespace Hy {

const char* HyInternName(const std::string& name, const char* held) {
    if (name.empty())
        return nullptr;
    if (held && name == held)
        return held;
    static std::mutex mutex;
    static auto* const names = new std::unordered_set<std::string>; // outlives every contact
    const std::lock_guard lock(mutex);
    return names->insert(name).first->c_str();
}

} // namespace Hy
