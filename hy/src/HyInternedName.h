#pragma once
#include <string>

namespace Hy {

/// A text equal to the name that lives until the process ends; null for an empty one. Takes a lock
/// unless the name is the one held already.
/// @param held from an earlier call, or null
[[nodiscard]] const char* HyInternName(const std::string& name, const char* held = nullptr);

} // namespace Hy
